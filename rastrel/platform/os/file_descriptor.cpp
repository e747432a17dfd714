#include "rastrel/platform/os/file_descriptor.h"

#include <unistd.h>

#include <cerrno>

namespace rastrel::os {
namespace {

// Closing happens on the way out of failures, whose errno the caller still wants to read.
void CloseQuietly(int descriptor) noexcept {
  const int saved = errno;
  ::close(descriptor);
  errno = saved;
}

}  // namespace

void CloseHandle(HANDLE& handle) noexcept {
  if (handle <= 0) return;
  CloseQuietly(handle);
  handle = INVALID_HANDLE_VALUE;
}

void FileDescriptor::Reset(int descriptor) noexcept {
  if (m_Descriptor >= 0) CloseQuietly(m_Descriptor);
  m_Descriptor = descriptor;
}

}  // namespace rastrel::os
