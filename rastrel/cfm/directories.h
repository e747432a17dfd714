#pragma once

#include <cstddef>
#include <cstdint>

#include "rastrel/export.h"

/// Operations on whole directories. A path is a library path (both separators, drive letters), with
/// or without a closing separator; a null path is a failure, or a size of 0. The operations block,
/// may be called on any thread, and log nothing.

/// The length, in characters, of the shortest path that DeleteDirectory accepts.
inline constexpr std::size_t ShortestRemovablePath = 4;

/// Removes a directory and everything below it. A path of fewer than 4 characters is refused, so
/// that no drive root is removed: false, and nothing is touched. False too
/// if the path is no directory, and at the first entry that can't be removed; the entries before it
/// are gone then. Nothing is retried, no read-only flag is cleared, and a link below is removed,
/// never followed. A path that is a link itself is no directory: it stays, with the directory it
/// leads to.
RASTREL_API bool DeleteDirectory(const wchar_t* path);

/// Copies a directory's content into another, which is made with its parents if it is missing.
/// Existing files are overwritten. False if the destination can't be made or the source can't be
/// opened. **A file or sub-directory below that can't be copied is skipped, and the result is true
/// all the same.** Links and devices are skipped too.
[[nodiscard]] bool CopyTree(const wchar_t* source, const wchar_t* destination);

/// Makes every missing element of a path. True if it exists already. False for a null or empty
/// path, for a drive's root or a network's server that does not exist, and if an element can't be
/// made; the elements before it stay.
[[nodiscard]] bool MakeDirectoryPath(const wchar_t* path);

/// The sum of the sizes of all regular files below, in bytes. An entry that can't be read counts 0,
/// and so does a path that is no directory.
[[nodiscard]] std::uint64_t GetTreeSize(const wchar_t* path);
