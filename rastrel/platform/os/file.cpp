#include "rastrel/platform/os/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>

#include "rastrel/platform/os/copy_file.h"
#include "rastrel/platform/os/owner.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/quiet_write.h"
#include "rastrel/platform/os/shown_text.h"
#include "rastrel/platform/os/system_calls.h"
#include "rastrel/platform/os/terminal.h"

namespace rastrel::os {
namespace {

constexpr std::size_t ReadPiece = std::size_t{256} << 10;

Failure FailureOf(const char* operation, std::string subject) {
  const int error = errno;
  return {operation, std::move(subject), error};
}

std::int64_t Nanoseconds(const timespec& time) {
  return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

mode_t FileMode(Access access) { return access == Access::Private ? 0600 : 0666; }

Expected<FileDescriptor> Open(const std::string& path, int flags, mode_t mode) {
  return TakeDescriptor(Calls().open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY, mode), "open",
                        path);
}

// Reads to the end. `expected` is only a first guess: files of the proc file system have size 0.
Expected<std::string> ReadToEnd(int descriptor, const std::string& path, std::uint64_t expected,
                                std::uint64_t limit) {
  std::string content;
  std::size_t used = 0;
  for (;;) {
    const std::uint64_t left = used < expected ? expected - used : 0;
    const std::uint64_t piece = std::clamp<std::uint64_t>(left + 1, 4096, ReadPiece);
    content.resize(std::max(content.size(), used + static_cast<std::size_t>(piece)));
    const auto got = ReadSome(descriptor, content.data() + used, static_cast<std::size_t>(piece));
    if (!got) return FailureAt(path, got.Error());
    used += *got;
    if (used > limit) return Failure{"read", path, EFBIG};
    if (*got == 0) break;
  }
  content.resize(used);
  return content;
}

// A file in the directory of `target` under a name that nothing else has.
Expected<FileDescriptor> OpenBeside(const std::string& target, Access access, std::string& name) {
  const std::size_t separator = target.rfind('/');
  const std::string directory =
      separator == std::string::npos ? std::string() : target.substr(0, separator + 1);
  for (;;) {
    name = directory + OwnTemporaryName();
    Expected<FileDescriptor> file = Open(name, O_WRONLY | O_CREAT | O_EXCL, FileMode(access));
    if (file || file.Error().error != EEXIST) return file;
  }
}

// The directory keeps the new name over a crash only when it has been written itself. Not every
// file system lets a directory be written, and the content is safe by then.
void SyncDirectoryOf(const std::string& path) {
  const std::size_t separator = path.rfind('/');
  const std::string directory =
      separator == std::string::npos ? "." : path.substr(0, separator + 1);
  const FileDescriptor handle(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (handle.IsOpen()) ::fsync(handle.Get());
}

Expected<void> FillAndRename(const FileDescriptor& file, const std::string& temporary,
                             const std::string& target, std::string_view content,
                             const struct stat* old) {
  if (const auto written = WriteAll(file.Get(), content); !written)
    return FailureAt(target, written.Error());
  if (old != nullptr && ::fchmod(file.Get(), old->st_mode & 07777U) != 0)
    return FailureOf("fchmod", target);
  if (::fsync(file.Get()) != 0) return FailureOf("fsync", target);
  if (::rename(temporary.c_str(), target.c_str()) != 0) return FailureOf("rename", target);
  return {};
}

// Where a link leads, so that replacing leaves the link in place.
std::string BehindLinks(const std::string& path) {
  const std::unique_ptr<char, void (*)(void*)> real(::realpath(path.c_str(), nullptr), std::free);
  return real ? real.get() : path;
}

}  // namespace

bool Exists(std::wstring_view path) {
  struct stat state {};
  return ::stat(ToNative(path).c_str(), &state) == 0;
}

bool IsDirectory(std::wstring_view path) {
  struct stat state {};
  return ::stat(ToNative(path).c_str(), &state) == 0 && S_ISDIR(state.st_mode);
}

Expected<void> CheckDirectory(std::wstring_view path) {
  const std::string native = ToNative(path);
  struct stat state {};
  if (::stat(native.c_str(), &state) != 0) return Failure{"stat", native, errno};
  if (!S_ISDIR(state.st_mode)) return Failure{"stat", native, ENOTDIR};
  return {};
}

bool IsRegularFile(std::wstring_view path) {
  struct stat state {};
  return ::stat(ToNative(path).c_str(), &state) == 0 && S_ISREG(state.st_mode);
}

bool IsLink(std::wstring_view path) {
  std::string native = ToNative(path);
  while (native.size() > 1 && native.back() == '/') native.pop_back();
  struct stat state {};
  return ::lstat(native.c_str(), &state) == 0 && S_ISLNK(state.st_mode);
}

bool IsReadable(std::wstring_view path) {
  return ::faccessat(AT_FDCWD, ToNative(path).c_str(), R_OK, AT_EACCESS) == 0;
}

std::uint64_t FileSize(std::wstring_view path) {
  struct stat state {};
  if (::stat(ToNative(path).c_str(), &state) != 0 || !S_ISREG(state.st_mode)) return 0;
  return static_cast<std::uint64_t>(state.st_size);
}

Expected<FileStamp> StampOf(std::wstring_view path) {
  const std::string native = ToNative(path);
  struct stat state {};
  if (::stat(native.c_str(), &state) != 0) return FailureOf("stat", native);
  return FileStamp{.size = static_cast<std::uint64_t>(state.st_size),
                   .modified = Nanoseconds(state.st_mtim)};
}

Expected<std::int64_t> LastChangeOf(std::wstring_view path) {
  const std::string native = ToNative(path);
  struct stat state {};
  if (::lstat(native.c_str(), &state) != 0) return FailureOf("lstat", native);
  return Nanoseconds(state.st_ctim);
}

Expected<void> MakeDirectory(std::wstring_view path, Access access) {
  const std::string native = ToNative(path);
  if (::mkdir(native.c_str(), access == Access::Private ? 0700 : 0777) != 0)
    return FailureOf("mkdir", native);
  return {};
}

Expected<void> RemoveFile(std::wstring_view path) {
  const std::string native = ToNative(path);
  if (Calls().unlink(native.c_str()) != 0) return FailureOf("unlink", native);
  return {};
}

Expected<void> RenameFile(std::wstring_view source, std::wstring_view target) {
  const std::string to = ToNative(target);
  if (::rename(ToNative(source).c_str(), to.c_str()) != 0) return FailureOf("rename", to);
  return {};
}

Expected<bool> IsReadOnly(std::wstring_view path) {
  const std::string native = ToNative(path);
  struct stat state {};
  if (::stat(native.c_str(), &state) != 0) return FailureOf("stat", native);
  return (state.st_mode & S_IWUSR) == 0;
}

Expected<void> ClearReadOnly(std::wstring_view path) {
  const std::string native = ToNative(path);
  struct stat state {};
  if (::stat(native.c_str(), &state) != 0) return FailureOf("stat", native);
  if (::chmod(native.c_str(), (state.st_mode & 07777U) | S_IWUSR) != 0)
    return FailureOf("chmod", native);
  return {};
}

Expected<std::string> ReadWholeFile(std::wstring_view path, std::uint64_t limit) {
  const std::string native = ToNative(path);
  const Expected<FileDescriptor> file = Open(native, O_RDONLY | O_NONBLOCK, 0);
  if (!file) return file.Error();
  struct stat state {};
  if (::fstat(file->Get(), &state) != 0) return FailureOf("fstat", native);
  if (!S_ISREG(state.st_mode)) return Failure{"read", native, EINVAL};
  const auto size = static_cast<std::uint64_t>(state.st_size);
  if (size > limit) return Failure{"read", native, EFBIG};
  return ReadToEnd(file->Get(), native, size, limit);
}

Expected<void> ReplaceFile(std::wstring_view path, std::string_view content, Access access) {
  const std::string target = BehindLinks(ToNative(path));
  struct stat old {};
  const bool existed = ::stat(target.c_str(), &old) == 0;
  if (existed && !S_ISREG(old.st_mode))
    return Failure{"rename", target, S_ISDIR(old.st_mode) ? EISDIR : EINVAL};
  std::string temporary;
  const Expected<FileDescriptor> file = OpenBeside(target, access, temporary);
  if (!file) return file.Error();
  const bool inherits = existed && access != Access::Private;
  auto replaced = FillAndRename(*file, temporary, target, content, inherits ? &old : nullptr);
  if (!replaced) {
    ::unlink(temporary.c_str());
    return replaced;
  }
  SyncDirectoryOf(target);
  return {};
}

Expected<FileDescriptor> CreateForWriting(std::wstring_view path, Access access) {
  return Open(ToNative(path), O_WRONLY | O_CREAT | O_TRUNC, FileMode(access));
}

Expected<FileDescriptor> CreateLog(std::wstring_view path) {
  return Open(ToNative(path), O_RDWR | O_CREAT | O_TRUNC, 0600);
}

Expected<FileDescriptor> OpenForWriting(std::wstring_view path) {
  return Open(ToNative(path), O_WRONLY, 0);
}

Expected<FileDescriptor> OpenForReading(std::wstring_view path) {
  return Open(ToNative(path), O_RDONLY, 0);
}

Expected<void> WriteAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = Calls().write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return Failure{"write", {}, written < 0 ? errno : EIO};
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return {};
}

Expected<void> CopyFileOver(std::wstring_view source, std::wstring_view target, Access access) {
  return CopyFileAt({AT_FDCWD, ToNative(source).c_str()}, {AT_FDCWD, ToNative(target).c_str()},
                    LinksInSource::Followed, access);
}

void WriteToStandardError(std::string_view bytes) {
  std::string clean;
  if (IsTerminalDevice(STDERR_FILENO)) bytes = clean = CleanLines(bytes);
  if (WriteWithoutSignal(STDERR_FILENO, bytes.data(), bytes.size()) < 0) return;
}

}  // namespace rastrel::os
