#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/platform/os/expected.h"

/// Whole directories by library path (see path.h). None of these logs; the callers do.
namespace rastrel::os {

/// The names in a directory, unsorted and without "." and "..". `Failure` if it can't be read.
[[nodiscard]] Expected<std::vector<std::wstring>> ListDirectory(std::wstring_view path);

/// Removes a directory and everything below it. Fails at the first entry that can't be removed; the
/// entries before it, in the file system's order, are gone then. Links are removed, never followed.
/// The path itself may be a link to a directory: its content is removed, and the result is a
/// failure, since a link is no directory; so it is for anything that is not a directory. The
/// Failure's `where` is the name of the entry in its directory.
[[nodiscard]] Expected<void> RemoveTree(std::wstring_view path);

/// Copies a directory's content into another, which is made with its parents if missing. Files are
/// copied over existing ones with permissions and modification time. Entries that can't be
/// examined, read or written are skipped, and so are links, pipes, sockets and devices. Fails only
/// if the destination could not be made or the source could not be opened.
[[nodiscard]] Expected<void> CopyTreeInto(std::wstring_view source, std::wstring_view destination);

/// Creates every missing element of the path; see MakeDirectoryPath in cfm/directories.h for its
/// rules on drives and networks.
[[nodiscard]] Expected<void> MakePath(std::wstring_view path);

/// The sum of the sizes of all regular files below, in bytes. An entry that can't be read counts 0;
/// links are not followed.
[[nodiscard]] std::uint64_t TreeSize(std::wstring_view path);

/// Moves a directory by renaming it, but only if the result is the same as that of CopyTreeInto and
/// RemoveTree: both on one file system, the target missing and its parent there, and
/// below the source nothing but directories that this process may empty and readable regular files
/// with one name each. False, with nothing changed, in every other case.
[[nodiscard]] bool TryRenameTree(std::wstring_view source, std::wstring_view target);

}  // namespace rastrel::os
