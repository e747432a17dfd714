#pragma once

#include <mutex>
#include <string>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::server {

/// A file by which processes wake each other: whoever changed something writes a byte of it, and
/// whoever waits watches it (inotify). Nothing is lost if nobody waits, and nothing is left if a
/// process is killed. Any thread.
class Bell {
 public:
  /// Makes the file if it is missing, for this user alone.
  [[nodiscard]] static Expected<Bell> Open(const std::string& path);
  Bell(Bell&& other) noexcept : m_Path(std::move(other.m_Path)), m_File(std::move(other.m_File)) {}

  void Ring();
  /// Readable once the bell rang after the first call; -1 if the system has no watch to give.
  [[nodiscard]] int Descriptor();
  /// Reads all that there is, without waiting.
  void Rest();

 private:
  Bell(std::string path, os::FileDescriptor file)
      : m_Path(std::move(path)), m_File(std::move(file)) {}

  std::string m_Path;
  os::FileDescriptor m_File;
  std::mutex m_Mutex;
  os::FileDescriptor m_Watch;
};

}  // namespace rastrel::server
