#pragma once

#include <cstddef>
#include <cstdint>

#include "rastrel/export.h"

/// Whole directories by library path (both separators, drive letters), with or without a closing
/// separator. None of these logs.

/// The shortest path, in characters, that DeleteDirectory takes.
inline constexpr std::size_t ShortestRemovablePath = 4;

/// Removes a directory and all below it. Refuses, false and nothing touched, a path of fewer than 4
/// characters, which keeps drive roots out of reach. False too for what is no directory, and at the
/// first thing that can't be removed; what went before is gone then. Nothing is retried, no
/// read-only flag is cleared, and a link is removed, never followed.
RASTREL_API bool DeleteDirectory(const wchar_t* path);

/// Copies a directory's content into another, made with its parents if it is missing; files are
/// written over. Speaks only of the top level: false if the destination can't be made or the source
/// can't be opened. **A file or sub-directory below that can't be copied is passed over and the
/// result is true all the same**; so are links and devices.
[[nodiscard]] bool CopyTree(const wchar_t* source, const wchar_t* destination);

/// Makes every missing element of a path. True if it exists already. False for a null or empty
/// path, for a drive's root or a network's server that does not exist, and where an element can't
/// be made.
[[nodiscard]] bool MakeDirectoryPath(const wchar_t* path);

/// Sum in bytes of all regular files below. What can't be read counts 0.
[[nodiscard]] std::uint64_t GetTreeSize(const wchar_t* path);
