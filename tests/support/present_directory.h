#pragma once

#include <filesystem>

namespace rastrel::test {

/// Makes a directory the present one, for one test.
class PresentDirectory {
 public:
  explicit PresentDirectory(const std::filesystem::path& path)
      : m_Old(std::filesystem::current_path()) {
    std::filesystem::current_path(path);
  }
  ~PresentDirectory() { std::filesystem::current_path(m_Old); }
  PresentDirectory(const PresentDirectory&) = delete;
  PresentDirectory& operator=(const PresentDirectory&) = delete;

 private:
  std::filesystem::path m_Old;
};

}  // namespace rastrel::test
