#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <string>

#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::test {

/// Content of a file that the system has of a process ("environ", "cmdline", "comm", "stat");
/// `process` is its directory in /proc. Empty if the process has ended. It may end between the
/// opening and the reading, which a stream of the standard library answers with an exception.
[[nodiscard]] inline std::string ProcessFile(const std::filesystem::path& process,
                                             const char* name) {
  const os::FileDescriptor file(::open((process / name).c_str(), O_RDONLY | O_CLOEXEC));
  std::string content;
  std::array<char, 4096> piece{};
  while (file.IsOpen()) {
    const ssize_t count = ::read(file.Get(), piece.data(), piece.size());
    if (count <= 0) break;
    content.append(piece.data(), static_cast<std::size_t>(count));
  }
  return content;
}

}  // namespace rastrel::test
