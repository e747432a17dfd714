#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "rastrel/job/app_log.h"
#include "rastrel/job/exe_paths.h"
#include "tests/support/environment_guard.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::test {

/// A data root of its own in an empty directory, with no shipped programs, and the two process-wide
/// objects made anew in it.
class LibraryRoot {
 public:
  LibraryRoot()
      : m_Home("RASTREL_HOME", m_Root.Path()), m_Resources("RASTREL_RESOURCES", m_Empty.Path()) {
    Forget();
  }
  ~LibraryRoot() { Forget(); }
  LibraryRoot(const LibraryRoot&) = delete;
  LibraryRoot& operator=(const LibraryRoot&) = delete;

  /// Takes the log and the paths down; the next use makes them anew.
  static void Forget() {
    CAppLog::DeleteInstance();
    CExePaths::DeleteInstance();
  }

  /// The data root itself.
  [[nodiscard]] const ScratchDirectory& Directory() const { return m_Root; }
  /// Library path, with its closing separator, of the RIP directory that the data root has.
  [[nodiscard]] std::wstring RipDirectory() const { return m_Root.Wide() + L"/Queue\\rip\\"; }

  /// Name below the data root of this process's application log.
  [[nodiscard]] static std::string LogName() {
    return "Queue/rip/Rastrel-" + std::to_string(::getpid()) + ".log";
  }
  /// The application log as it is on disk.
  [[nodiscard]] std::string Log() const { return m_Root.Read(LogName()); }
  /// The same without the heads "[04/02/2026, 09:08:07][ 512]" of its entries.
  [[nodiscard]] std::string LogTexts() const { return WithoutHeads(Log()); }
  /// The texts logged after a mark that LogMark returned.
  [[nodiscard]] std::string LogTextsBehind(std::size_t mark) const {
    std::ifstream log(m_Root.Path(LogName()), std::ios::binary);
    log.seekg(static_cast<std::streamoff>(mark));
    return WithoutHeads(std::string(std::istreambuf_iterator<char>(log), {}));
  }
  /// Where the log ends now. Makes the log if there is none.
  [[nodiscard]] std::size_t LogMark() const {
    CAppLog::Instance();
    return static_cast<std::size_t>(std::filesystem::file_size(m_Root.Path(LogName())));
  }

  /// A log's content without the heads of its entries.
  [[nodiscard]] static std::string WithoutHeads(std::string_view log) {
    std::string texts;
    while (!log.empty()) {
      const std::size_t head = HeadLength(log);
      if (head == 0) texts += log.front();
      log.remove_prefix(head == 0 ? 1 : head);
    }
    return texts;
  }

  /// Length of the entry head that the text begins with; 0 if there is none.
  [[nodiscard]] static std::size_t HeadLength(std::string_view text) {
    constexpr std::string_view form = "[dd/dd/dddd, dd:dd:dd][";
    if (text.size() < form.size()) return 0;
    for (std::size_t at = 0; at < form.size(); ++at) {
      const bool fits = form[at] == 'd' ? IsDigit(text[at]) : text[at] == form[at];
      if (!fits) return 0;
    }
    std::size_t at = form.size();
    while (at < text.size() && text[at] == ' ') ++at;
    const std::size_t digits = at;
    while (at < text.size() && IsDigit(text[at])) ++at;
    const bool closed = at > digits && at < text.size() && text[at] == ']';
    return closed && at >= form.size() + 4 ? at + 1 : 0;
  }

 private:
  static bool IsDigit(char character) { return character >= '0' && character <= '9'; }

  ScratchDirectory m_Root;
  ScratchDirectory m_Empty;
  EnvironmentGuard m_Home;
  EnvironmentGuard m_Resources;
};

/// A test in a data root of its own.
class LibraryTest : public ::testing::Test {
 protected:
  LibraryRoot m_Library;
};

}  // namespace rastrel::test
