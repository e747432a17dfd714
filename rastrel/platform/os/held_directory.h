#pragma once

#include <cstddef>
#include <string>
#include <utility>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"

/// Directories for temporary work whose process may be killed before it removes them. The holder
/// keeps a lock in the directory, which the system takes back however the process ends, so that no
/// other process is ever taken for it. Paths are native.
namespace rastrel::os {

/// Holds a directory as long as the object lives, and at most as long as its process. Any thread.
class DirectoryHold {
 public:
  /// Makes the file HoldFileName in the directory, and locks it. Fails if the file is there
  /// already, or if the file system has no locks.
  [[nodiscard]] static Expected<DirectoryHold> Take(const std::string& directory);

 private:
  explicit DirectoryHold(FileDescriptor file) : m_File(std::move(file)) {}
  FileDescriptor m_File;
};

inline constexpr const char* HoldFileName = ".held";

/// Removes a directory with all in it, following no link. One that can't be removed as a whole
/// counts as held and abandoned from then on, so that the next call of the function below tries
/// again; the failure says why. REQUIRES: nobody else holds it.
Expected<void> RemoveHeldDirectory(const std::string& directory);

/// Removes the directories in `parent` that were held and are not any more, with all in them, and
/// returns how many. Follows no link. Leaves alone files, directories that were never held, and
/// those that can't be opened. To be bounded in time it looks at `names` names and removes
/// `removals` directories at most; the rest is for the next call.
std::size_t RemoveAbandonedDirectories(const std::string& parent, std::size_t names,
                                       std::size_t removals);

}  // namespace rastrel::os
