#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <string_view>

namespace rastrel::test {

/// A file that has a path and costs no disk: it is made and cut short as fast as memory allows.
class MemoryFile {
 public:
  MemoryFile() : m_Descriptor(::memfd_create("rastrel-test", MFD_CLOEXEC)) {
    if (m_Descriptor < 0) std::abort();
  }
  ~MemoryFile() { ::close(m_Descriptor); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  [[nodiscard]] std::string Path() const { return "/proc/self/fd/" + std::to_string(m_Descriptor); }
  [[nodiscard]] std::wstring Wide() const {
    const std::string path = Path();
    return {path.begin(), path.end()};
  }

  /// Replaces the content.
  void Write(std::string_view content) const {
    Resize(0);
    while (!content.empty()) {
      const ssize_t written = ::pwrite(m_Descriptor, content.data(), content.size(),
                                       ::lseek(m_Descriptor, 0, SEEK_END));
      if (written <= 0) std::abort();
      content.remove_prefix(static_cast<std::size_t>(written));
    }
  }
  void Resize(long size) const {
    if (::ftruncate(m_Descriptor, size) != 0) std::abort();
  }

 private:
  int m_Descriptor;
};

}  // namespace rastrel::test
