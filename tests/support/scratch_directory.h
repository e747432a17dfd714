#pragma once

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <thread>

#include "rastrel/platform/os/path.h"

namespace rastrel::test {

/// Removes a directory with all that is in it. A program that was ended a moment ago may have
/// started another, which makes a file while the directory is emptied: then once more.
inline void RemoveTree(const std::filesystem::path& path) {
  std::error_code error;
  for (int attempt = 0; attempt < 200; ++attempt) {
    std::filesystem::remove_all(path, error);
    if (!error) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  std::filesystem::remove_all(path);
}

/// A new empty directory for one test, removed at its end whatever it holds then.
class ScratchDirectory {
 public:
  explicit ScratchDirectory(
      const std::filesystem::path& below = std::filesystem::temp_directory_path()) {
    std::string name = below / "rastrel-test-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr) std::abort();
    m_Path = name;
  }
  ~ScratchDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(m_Path, ignored);
  }
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;

  /// Native path without a closing slash.
  [[nodiscard]] std::string Path() const { return m_Path.string(); }
  /// Native path of something in it.
  [[nodiscard]] std::string Path(std::string_view name) const { return (m_Path / name).string(); }
  /// The same as library text.
  [[nodiscard]] std::wstring Wide(std::string_view name = {}) const {
    return os::FromNative(name.empty() ? Path() : Path(name));
  }

  /// Makes a file, and the directories it lies in.
  void Write(std::string_view name, std::string_view content) const {
    std::filesystem::create_directories((m_Path / name).parent_path());
    std::ofstream(m_Path / name, std::ios::binary) << content;
  }
  /// Content of a file, or "(none)".
  [[nodiscard]] std::string Read(std::string_view name) const {
    std::ifstream file(m_Path / name, std::ios::binary);
    if (!file) return "(none)";
    return {std::istreambuf_iterator<char>(file), {}};
  }
  [[nodiscard]] bool Has(std::string_view name) const {
    return std::filesystem::exists(std::filesystem::symlink_status(m_Path / name));
  }

 private:
  std::filesystem::path m_Path;
};

/// The same in memory where the system has such a place, for tests that make and remove very many
/// files. Programs may not be executable there.
class MemoryScratchDirectory : public ScratchDirectory {
 public:
  MemoryScratchDirectory() : ScratchDirectory(Place()) {}

 private:
  static std::filesystem::path Place() {
    const std::filesystem::path memory = "/dev/shm";
    return ::access(memory.c_str(), W_OK | X_OK) == 0 ? memory
                                                      : std::filesystem::temp_directory_path();
  }
};

}  // namespace rastrel::test
