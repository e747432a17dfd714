#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file.h"

/// Whole directories by library path (see path.h). None of these logs; the callers do.
namespace rastrel::os {

/// The names in a directory, unsorted and without "." and "..", as FromNative spells them: after
/// the directory's path each leads to its entry. `Failure` if it can't be read.
[[nodiscard]] Expected<std::vector<std::wstring>> ListDirectory(std::wstring_view path);

/// Removes a directory and everything below it. Fails at the first entry that can't be removed; the
/// entries before it, in the file system's order, are gone then. Links below are removed, never
/// followed. The path itself may not be a link, whether it ends in a separator or not: a link is no
/// directory, so that this fails and neither the link nor the directory it leads to changes. Links
/// in the path's earlier elements are followed. Fails for anything that is not a directory, and for
/// a path whose last element is "." or "..". The Failure's `where` is the name of an entry below
/// in its directory, and for the directory itself the path.
[[nodiscard]] Expected<void> RemoveTree(std::wstring_view path);
/// The same by a native path, which is not changed.
[[nodiscard]] Expected<void> RemoveNativeTree(const std::string& path);

/// Removes a directory if it is empty; fails otherwise, and for a link.
[[nodiscard]] Expected<void> RemoveEmptyDirectory(std::wstring_view path);

/// Copies a directory's content into another, which is made, private, with its parents if missing.
/// Files are
/// copied over existing ones with permissions and modification time. Entries that can't be
/// examined, read or written are skipped, and so are links, pipes, sockets and devices. Fails only
/// if the destination could not be made or the source could not be opened.
[[nodiscard]] Expected<void> CopyTreeInto(std::wstring_view source, std::wstring_view destination);

/// Creates every missing element of the path; see MakeDirectoryPath in cfm/directories.h for its
/// rules on drives and networks.
[[nodiscard]] Expected<void> MakePath(std::wstring_view path, Access access = Access::ByUmask);

/// The sum of the sizes of all regular files below, in bytes. An entry that can't be read counts 0;
/// links are not followed.
[[nodiscard]] std::uint64_t TreeSize(std::wstring_view path);

/// How much a directory holds, for comparing it before and after a move.
struct TreeMeasure {
  std::uint64_t files = 0;  ///< all that is no directory, links and pipes included
  std::uint64_t bytes = 0;  ///< of the regular ones
  bool operator==(const TreeMeasure&) const = default;
};
/// Measures all below a directory, by native path. `Failure`, with the path, if anything can't be
/// looked at: unlike TreeSize it never counts too little.
[[nodiscard]] Expected<TreeMeasure> MeasureTree(const std::string& path);

/// Has the files and directories below a directory, and itself, written to the disk. By native
/// path. Returns when they are. Names of the directory's own are its parent's: FlushNamesIn.
[[nodiscard]] Expected<void> FlushTree(const std::string& path);
/// The same for the names in one directory alone, as after a rename.
[[nodiscard]] Expected<void> FlushNamesIn(const std::string& directory);

/// Moves a directory by renaming it, but only if the result is the same as that of CopyTreeInto and
/// RemoveTree: both on one file system, the target missing and its parent there, and
/// below the source nothing but directories that this process may empty and readable regular files
/// with one name each. False, with nothing changed, in every other case.
[[nodiscard]] bool TryRenameTree(std::wstring_view source, std::wstring_view target);

}  // namespace rastrel::os
