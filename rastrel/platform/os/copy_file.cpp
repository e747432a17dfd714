#include "rastrel/platform/os/copy_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>

#include "rastrel/platform/os/file_content.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/system_calls.h"

namespace rastrel::os {
namespace {

FileDescriptor OpenSource(FileAt source, LinksInSource links, struct stat& state) {
  const int flags = links == LinksInSource::Refused ? O_NOFOLLOW : 0;
  // Not blocking: a pipe in the place of a file must not hold the copy up.
  FileDescriptor file(::openat(source.directory, source.name,
                               O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | flags));
  if (!file.IsOpen() || ::fstat(file.Get(), &state) != 0) return {};
  if (S_ISREG(state.st_mode)) return file;
  errno = EINVAL;
  return {};
}

mode_t ModeOfCopy(const struct stat& source, Access access) {
  if (access == Access::Private) return (source.st_mode & S_IRWXU) | S_IRUSR | S_IWUSR;
  return source.st_mode & 0777U;
}

// Opens the target empty. The source itself is recognised before anything is cut off.
FileDescriptor OpenTarget(FileAt target, const struct stat& source, mode_t permissions) {
  const int flags = O_WRONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
  const mode_t mode = permissions | S_IWUSR;
  FileDescriptor file(::openat(target.directory, target.name, flags | O_CREAT | O_EXCL, mode));
  if (file.IsOpen() || errno != EEXIST) return file;
  file.Reset(::openat(target.directory, target.name, flags | O_CREAT, mode));
  struct stat state {};
  if (!file.IsOpen() || ::fstat(file.Get(), &state) != 0) return {};
  const bool same = state.st_dev == source.st_dev && state.st_ino == source.st_ino;
  if (same || !S_ISREG(state.st_mode)) {
    errno = EINVAL;
    return {};
  }
  if (::ftruncate(file.Get(), 0) != 0) return {};
  return file;
}

Expected<void> CopyContent(int source, int target, std::uint64_t size) {
  std::uint64_t left = size;
  while (left > 0) {
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(left, 1U << 30));
    const ssize_t copied = Calls().copy_range(source, nullptr, target, nullptr, wanted, 0);
    if (copied < 0 && errno == EINTR) continue;
    if (copied <= 0) break;
    left -= static_cast<std::uint64_t>(copied);
  }
  // If the kernel can't copy by itself (to another file system, say), the rest goes through memory.
  // Files of the proc file system have no size, so their content always does.
  if (size > 0 && left == 0) return {};
  return AppendContent(target, source);
}

Expected<void> Fill(int source, int target, const struct stat& state, mode_t permissions,
                    const char* name) {
  const auto copied = CopyContent(source, target, static_cast<std::uint64_t>(state.st_size));
  if (!copied) return Failure{"write", name, copied.Error().error};
  if (::fchmod(target, permissions) != 0) return Failure{"fchmod", name, errno};
  const timespec times[2] = {{.tv_sec = 0, .tv_nsec = UTIME_OMIT}, state.st_mtim};
  if (::futimens(target, times) != 0) return Failure{"futimens", name, errno};
  return {};
}

}  // namespace

Expected<void> CopyFileAt(FileAt source, FileAt target, LinksInSource links, Access access) {
  struct stat state {};
  const FileDescriptor from = OpenSource(source, links, state);
  if (!from.IsOpen()) return Failure{"open", source.name, errno};
  const mode_t permissions = ModeOfCopy(state, access);
  const FileDescriptor to = OpenTarget(target, state, permissions);
  if (!to.IsOpen()) return Failure{"create", target.name, errno};
  auto filled = Fill(from.Get(), to.Get(), state, permissions, target.name);
  if (!filled) ::unlinkat(target.directory, target.name, 0);
  return filled;
}

}  // namespace rastrel::os
