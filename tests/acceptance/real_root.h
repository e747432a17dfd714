#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <thread>

#include "rastrel/job/app_log.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/rastrel.h"
#include "tests/support/environment_guard.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::test {

/// The log callback of jobs whose log nobody reads.
inline void IgnoreLog(const wchar_t* /*text*/) {}

/// A small job: two pages of 120 by 80 points with a colored square each.
inline constexpr const char* TwoPages =
    "%!PS-Adobe-3.0\n%%Pages: 2\n%%EndComments\n<< /PageSize [120 80] >> setpagedevice\n"
    "1 0 0 setrgbcolor 10 10 40 40 rectfill showpage\n"
    "0 0 1 setrgbcolor 20 20 40 40 rectfill showpage\n%%EOF\n";

/// A data root laid out with the programs that were built, and jobs beside it.
class RealRoot {
 public:
  explicit RealRoot(const std::string& name = "root")
      : m_Root((std::filesystem::path(m_Scratch.Path()) / name).string()),
        m_Home("RASTREL_HOME", m_Root),
        m_Resources("RASTREL_RESOURCES", RASTREL_BINARY_DIR),
        m_Output("RASTREL_OUTPUT", nullptr),
        m_Printer("RASTREL_PRINTER", nullptr) {
    Forget();
    CAppLog::Instance();
  }
  ~RealRoot() { Forget(); }

  [[nodiscard]] const std::string& Path() const { return m_Root; }

  /// Writes a job file outside the root and returns its path.
  std::string Job(const std::string& name, const std::string& text = TwoPages) const {
    const auto path = std::filesystem::path(m_Scratch.Path()) / name;
    std::ofstream(path) << text;
    return path.string();
  }

  /// Prepares a ticket for a job file.
  static void Fill(CJobTicket& ticket, const std::string& jobPath) {
    ticket.OpenLog(IgnoreLog);
    ticket.SetJobFile(os::WideFromUtf8(jobPath));
    ticket.m_JobData.PrinterName = L"KVI Tiff Screen Preview";
    ticket.m_JobData.PrintModeFolder = L"TIFF";
    ticket.m_JobData.PrintModeName = L"tiff default.ps";
  }

  /// Every file and folder below the root, except the log and the delivered files.
  [[nodiscard]] std::set<std::string> Content() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(m_Root)) {
      const std::string name = std::filesystem::relative(entry.path(), m_Root).string();
      const bool delivered = name == "output" || name.starts_with("output/");
      if (!delivered && !name.ends_with(".log")) names.insert(name);
    }
    return names;
  }

  /// Names of the delivered files.
  [[nodiscard]] std::set<std::string> Delivered() const {
    std::set<std::string> names;
    const auto folder = std::filesystem::path(m_Root) / "output";
    if (!std::filesystem::exists(folder)) return names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
      names.insert(entry.path().filename().string());
    return names;
  }

  /// Processes of this machine whose environment names this root, but for this one.
  [[nodiscard]] int Processes() const {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
      const std::string id = entry.path().filename().string();
      if (id.find_first_not_of("0123456789") != std::string::npos) continue;
      if (id == std::to_string(::getpid())) continue;
      std::ifstream file(entry.path() / "environ", std::ios::binary);
      std::ostringstream environment;
      environment << file.rdbuf();
      if (environment.str().find(m_Root) != std::string::npos) ++count;
    }
    return count;
  }

 private:
  static void Forget() {
    CAppLog::DeleteInstance();
    CExePaths::DeleteInstance();
  }

  ScratchDirectory m_Scratch;
  std::string m_Root;
  EnvironmentGuard m_Home;
  EnvironmentGuard m_Resources;
  EnvironmentGuard m_Output;
  EnvironmentGuard m_Printer;
};

}  // namespace rastrel::test
