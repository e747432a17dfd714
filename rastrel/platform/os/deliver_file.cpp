#include "rastrel/platform/os/deliver_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <optional>

#include "rastrel/platform/os/file_content.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/owner.h"

namespace rastrel::os {
namespace {

constexpr mode_t PermissionBits = 07777;

std::string DirectoryOf(const std::string& path) {
  const std::size_t separator = path.rfind('/');
  return separator == path.npos ? "." : path.substr(0, separator + 1);
}

// A new name is on the disk once its directory is.
Expected<void> SyncDirectory(const std::string& path) {
  const FileDescriptor directory(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // Not every directory that may be written to may be read.
  if (!directory.IsOpen()) return {};
  // Some file systems have no such call for directories.
  if (::fsync(directory.Get()) == 0 || errno == EINVAL) return {};
  return Failure{"fsync", path, errno};
}

std::optional<mode_t> PermissionsOf(const std::string& target) {
  struct stat state {};
  if (::lstat(target.c_str(), &state) != 0 || !S_ISREG(state.st_mode)) return {};
  return state.st_mode & PermissionBits;
}

Expected<void> Finish(int file, const std::string& name, std::optional<mode_t> permissions) {
  if (permissions && ::fchmod(file, *permissions) != 0) return Failure{"fchmod", name, errno};
  if (::fsync(file) != 0) return Failure{"fsync", name, errno};
  return {};
}

// A name in the target's directory that no file has, and nobody can have laid out as a link.
Expected<FileDescriptor> MakeHidden(const std::string& target, std::string& name,
                                    const OnHiddenFile& onHidden) {
  for (;;) {
    name = DirectoryOf(target) + "/" + OwnTemporaryName();
    struct stat state {};
    if (::lstat(name.c_str(), &state) == 0) continue;
    onHidden(name);
    FileDescriptor file(::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (file.IsOpen()) return file;
    const int error = errno;
    onHidden({});
    if (error != EEXIST) return Failure{"create", name, error};
  }
}

Expected<void> CopyAndRename(int source, const std::string& target, const OnHiddenFile& onHidden,
                             std::optional<mode_t> permissions) {
  std::string hidden;
  const auto file = MakeHidden(target, hidden, onHidden);
  if (!file) return file.Error();
  auto copied = [&]() -> Expected<void> {
    if (const auto written = AppendContent(file->Get(), source); !written)
      return FailureAt(hidden, written.Error());
    if (auto finished = Finish(file->Get(), hidden, permissions); !finished) return finished;
    if (::rename(hidden.c_str(), target.c_str()) != 0) return Failure{"rename", target, errno};
    return {};
  }();
  if (!copied) ::unlink(hidden.c_str());
  onHidden({});
  return copied;
}

}  // namespace

Expected<void> DeliverFile(const std::string& source, const std::string& target,
                           const OnHiddenFile& onHidden) {
  const FileDescriptor file(::open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NOCTTY));
  if (!file.IsOpen()) return Failure{"open", source, errno};
  const auto permissions = PermissionsOf(target);
  if (auto finished = Finish(file.Get(), source, permissions); !finished) return finished;
  if (::rename(source.c_str(), target.c_str()) != 0) {
    if (errno != EXDEV) return Failure{"rename", target, errno};
    if (auto copied = CopyAndRename(file.Get(), target, onHidden, permissions); !copied)
      return copied;
  }
  return SyncDirectory(DirectoryOf(target));
}

}  // namespace rastrel::os
