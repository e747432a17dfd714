#include "rastrel/platform/os/file_lock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>

#include "rastrel/platform/os/path.h"

namespace rastrel::os {

Expected<FileLock> FileLock::Acquire(std::wstring_view path) {
  const std::string native = ToNative(path);
  FileDescriptor file(::open(native.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOCTTY, 0600));
  if (!file.IsOpen()) return Failure{"open", native, errno};
  while (::flock(file.Get(), LOCK_EX) != 0)
    if (errno != EINTR) return Failure{"flock", native, errno};
  return FileLock(std::move(file));
}

}  // namespace rastrel::os
