#pragma once

#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"

/// Changes of the list of hot folders, `server/folders.toml`, which people write too: all that they
/// wrote stays, but for the tables that go.
namespace rastrel::server {

/// The path of the list of a data root.
[[nodiscard]] std::string FolderListPath(const std::string& dataRoot);

/// The hot folders of a data root; none without the file.
[[nodiscard]] Expected<std::vector<std::string>> FoldersOf(const std::string& dataRoot);

/// The full path of a folder as the list has it: no "." and "..", no slash at its end, and links on
/// the way to it followed. Fails for one that can't be a hot folder: it is missing, no directory,
/// itself a link, or no UTF-8.
[[nodiscard]] Expected<std::string> PathForList(const std::string& folder);

/// Fails if `path` lies in the data root or in one of the folders, is one of them, or holds one: a
/// file would be taken twice, or the server's own. Paths as PathForList makes them.
[[nodiscard]] Expected<void> CheckApart(const std::string& path, const std::string& dataRoot,
                                        const std::vector<std::string>& folders);

/// The list's text with one more folder at its end, and without one. `name` is the file's name in
/// failures: the text is no list of hot folders, or has a form that can't be changed so.
[[nodiscard]] Expected<std::string> WithFolder(const std::string& text, const std::string& path,
                                               const std::string& name);
[[nodiscard]] Expected<std::string> WithoutFolder(const std::string& text, const std::string& path,
                                                  const std::string& name);

/// Writes the text in the list's place (0600), flushed. The folder `server` must be there.
[[nodiscard]] Expected<void> WriteFolderList(const std::string& dataRoot, const std::string& text);

/// The text of the list; "" without the file.
[[nodiscard]] Expected<std::string> FolderListText(const std::string& dataRoot);

}  // namespace rastrel::server
