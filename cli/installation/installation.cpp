#include "cli/installation/installation.h"

#include "cli/console/exit_status.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/job/log_cleanup.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/standalone/data_root.h"

namespace rastrel::cli {
namespace {

std::string NativeDirectory(const std::wstring& path) {
  std::string native = os::ToNative(path);
  while (native.size() > 1 && native.back() == '/') native.pop_back();
  return native;
}

// The log's own rule: whatever keeps it from being opened keeps the job from running.
void MakeSureOfLog() {
  const std::wstring name = job::LogNamePrefix + std::to_wstring(os::CurrentProcessId()) + L".log";
  const auto file = os::CreateLog(CExePaths::Instance().m_RipDir + name);
  if (file) return;
  throw CommandError(
      ExitStatus::NotInstalled,
      "the data root can't be used: " + Describe(file.Error()) + "; `rastrel doctor` tells more");
}

void MakeSureOf(const std::string& directory) {
  const std::string why = WhyNotWritable(directory);
  if (why.empty()) return;
  throw CommandError(ExitStatus::NotInstalled,
                     "the data root can't be used: " + why + "; `rastrel doctor` tells more");
}

}  // namespace

void MakeSureOfDataRoot() {
  LayOutQuietly();
  MakeSureOfLog();
  for (const std::string& directory : {RipDirectory(), JobsDirectory(), SpoolDirectory()})
    MakeSureOf(directory);
}

void LayOutQuietly() { standalone::EnsureDataRoot(); }

std::string RipDirectory() { return NativeDirectory(CExePaths::Instance().m_RipDir); }

std::string SpoolDirectory() { return NativeDirectory(CExePaths::Instance().m_CFMDir); }

std::string ModesDirectory() { return NativeDirectory(CExePaths::Instance().m_PModesDir); }

std::string PagesDirectory() { return NativeDirectory(CExePaths::Instance().m_OutputDir); }

std::string JobsDirectory() { return os::DataRoot() + "/jobs"; }

std::string DevicesFile() { return os::DataRoot() + "/devices.txt"; }

std::string WhyNotWritable(const std::string& directory) {
  const std::wstring wide = os::FromNative(directory);
  if (!os::Exists(wide)) return "there is no directory '" + directory + "'";
  if (!os::IsDirectory(wide)) return "'" + directory + "' is no directory";
  const std::wstring name =
      wide + L"/.rastrel-write-" + std::to_wstring(os::CurrentProcessId()) + L".tmp";
  const auto file = os::CreateForWriting(name);
  if (!file) return Describe(file.Error());
  return os::RemoveFile(name) ? std::string()
                              : "a file made in '" + directory + "' can't be removed";
}

}  // namespace rastrel::cli
