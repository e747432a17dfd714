#include "rastrel/platform/os/held_directory.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include "rastrel/platform/os/directory_entries.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::os {
namespace {

bool TryLock(int file) {
  while (::flock(file, LOCK_EX | LOCK_NB) != 0)
    if (errno != EINTR) return false;
  return true;
}

// The directory's file of the hold, locked; none if somebody holds it or nobody ever did.
FileDescriptor LockOfAbandoned(int parent, const char* name) {
  constexpr int common = O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
  const FileDescriptor directory(::openat(parent, name, common | O_DIRECTORY));
  if (!directory.IsOpen()) return {};
  FileDescriptor file(::openat(directory.Get(), HoldFileName, common));
  struct stat state {};
  const bool isOne = file.IsOpen() && ::fstat(file.Get(), &state) == 0 && S_ISREG(state.st_mode);
  if (!isOne || !TryLock(file.Get())) return {};
  return file;
}

}  // namespace

Expected<DirectoryHold> DirectoryHold::Take(const std::string& directory) {
  const std::string path = directory + "/" + HoldFileName;
  FileDescriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOCTTY, 0600));
  if (!file.IsOpen()) return Failure{"open", path, errno};
  if (!TryLock(file.Get())) return Failure{"flock", path, errno};
  return DirectoryHold(std::move(file));
}

Expected<void> RemoveHeldDirectory(const std::string& directory) {
  auto removed = RemoveTree(FromNative(directory));
  if (removed) return removed;
  // The hold's file may be among those that have gone.
  const std::string path = directory + "/" + HoldFileName;
  const FileDescriptor file(
      ::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY, 0600));
  return removed;
}

std::size_t RemoveAbandonedDirectories(const std::string& parent, std::size_t names,
                                       std::size_t removals) {
  auto reader = DirectoryReader::Open(AT_FDCWD, parent.c_str(), true);
  std::vector<DirectoryEntry> entries;
  if (!reader || !reader->ReadPiece(entries)) return 0;
  entries.resize(std::min(entries.size(), names));
  std::size_t removed = 0;
  for (const DirectoryEntry& entry : entries) {
    if (removed == removals) break;
    const FileDescriptor lock = LockOfAbandoned(reader->Descriptor(), entry.name.c_str());
    if (lock.IsOpen() && RemoveHeldDirectory(parent + "/" + entry.name)) ++removed;
  }
  return removed;
}

}  // namespace rastrel::os
