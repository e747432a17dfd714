#include "cli/installation/installation.h"

#include "cli/installation/sweep.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/job/log_cleanup.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/owner.h"
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

Failure Unusable(const std::string& why) {
  return FailureOf("the data root can't be used: " + why + "; `rastrel doctor` tells more");
}

// The log's own rule: whatever keeps it from being opened keeps the job from running.
Expected<void> MakeSureOfLog() {
  const std::wstring name = job::LogNamePrefix + std::to_wstring(os::CurrentProcessId()) + L".log";
  const auto file = os::CreateLog(CExePaths::Instance().m_RipDir + name);
  if (!file) return Unusable(Describe(file.Error()));
  return {};
}

}  // namespace

Expected<void> MakeSureOfDataRoot() {
  LayOutQuietly();
  if (auto log = MakeSureOfLog(); !log) return log;
  for (const std::string& directory : {RipDirectory(), JobsDirectory(), SpoolDirectory()})
    if (const std::string why = WhyNotWritable(directory); !why.empty()) return Unusable(why);
  return {};
}

void LayOutQuietly() {
  standalone::EnsureDataRoot();
  SweepLeftovers();
}

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
  const std::wstring name = wide + L"/" + os::FromNative(os::OwnTemporaryName());
  const auto file = os::CreateForWriting(name);
  if (!file) return Describe(file.Error());
  return os::RemoveFile(name) ? std::string()
                              : "a file made in '" + directory + "' can't be removed";
}

}  // namespace rastrel::cli
