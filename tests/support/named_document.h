#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

#include "rastrel/job/app_log.h"
#include "rastrel/job/exe_paths.h"
#include "tests/support/environment_guard.h"
#include "tests/support/memory_file.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::test {

/// A document in memory under a name, written anew as often as one likes, and a data root of its
/// own, whose log begins anew now and then: refused documents are reported there.
class NamedDocument {
 public:
  explicit NamedDocument(std::string name = "file.xml")
      : m_Name(std::move(name)), m_Home("RASTREL_HOME", m_Root.Path()) {
    ForgetLog();
    std::filesystem::create_symlink(m_File.Path(), m_Root.Path(m_Name));
  }
  ~NamedDocument() { ForgetLog(); }
  NamedDocument(const NamedDocument&) = delete;
  NamedDocument& operator=(const NamedDocument&) = delete;

  /// Replaces the content and returns the path.
  [[nodiscard]] std::wstring Write(std::string_view content) {
    constexpr int documentsPerLog = 20000;
    if (++m_Documents % documentsPerLog == 0) CAppLog::DeleteInstance();
    m_File.Write(content);
    return m_Root.Wide(m_Name);
  }

 private:
  static void ForgetLog() {
    CAppLog::DeleteInstance();
    CExePaths::DeleteInstance();
  }

  std::string m_Name;
  MemoryScratchDirectory m_Root;
  EnvironmentGuard m_Home;
  MemoryFile m_File;
  int m_Documents = 0;
};

}  // namespace rastrel::test
