#pragma once

#include "rastrel/platform/os/handle.h"

namespace rastrel::os {

/// Closes a handle and sets the variable to INVALID_HANDLE_VALUE. An invalid or null one is left
/// as it is, so it may be called on any path.
void CloseHandle(HANDLE& handle) noexcept;

/// Owns one descriptor and closes it. Move only.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int descriptor) noexcept : m_Descriptor(descriptor) {}
  ~FileDescriptor() { Reset(); }
  FileDescriptor(FileDescriptor&& other) noexcept : m_Descriptor(other.Release()) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    if (this != &other) Reset(other.Release());
    return *this;
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;

  [[nodiscard]] int Get() const noexcept { return m_Descriptor; }
  [[nodiscard]] bool IsOpen() const noexcept { return m_Descriptor >= 0; }
  /// Gives the descriptor up; the caller closes it.
  [[nodiscard]] int Release() noexcept {
    const int descriptor = m_Descriptor;
    m_Descriptor = -1;
    return descriptor;
  }
  /// Closes the present descriptor and takes another.
  void Reset(int descriptor = -1) noexcept;

 private:
  int m_Descriptor = -1;
};

}  // namespace rastrel::os
