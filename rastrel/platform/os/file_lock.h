#pragma once

#include <string_view>
#include <utility>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::os {

/// Holds a file's lock against other processes, and against other threads of this one, until it
/// goes out of scope. The file is made if it is missing, and stays. The lock ends with the process.
class FileLock {
 public:
  /// Waits for the lock without a time limit.
  [[nodiscard]] static Expected<FileLock> Acquire(std::wstring_view path);

 private:
  explicit FileLock(FileDescriptor file) : m_File(std::move(file)) {}
  FileDescriptor m_File;
};

}  // namespace rastrel::os
