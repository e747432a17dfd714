#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "rastrel/platform/os/path.h"
#include "tests/support/library_fixture.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::test {

/// A file of a given name and content, and a log of its own.
class WrittenFile {
 public:
  explicit WrittenFile(std::string_view content, std::string name = "file.xml")
      : m_Name(std::move(name)) {
    Write(content);
  }

  void Write(std::string_view content) const { m_Scratch.Write(m_Name, content); }
  /// Its path as library text.
  [[nodiscard]] std::wstring Path() const { return m_Scratch.Wide(m_Name); }
  /// The texts in the application log by now.
  [[nodiscard]] std::string LogTexts() const { return m_Library.LogTexts(); }

 private:
  LibraryRoot m_Library;
  MemoryScratchDirectory m_Scratch;
  std::string m_Name;
};

/// Library path of a file of the examples folder.
[[nodiscard]] inline std::wstring ExamplePath(std::string_view name) {
  return os::FromNative((std::filesystem::path(RASTREL_SOURCE_DIR) / "examples" / name).string());
}

/// The character as often as that.
[[nodiscard]] inline std::string Many(std::size_t count, char character = 'x') {
  return std::string(count, character);
}

}  // namespace rastrel::test
