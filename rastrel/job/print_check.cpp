#include "rastrel/job/print_check.h"

#include "rastrel/job/app_log.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/job/log_cleanup.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/owner.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/trusted_file.h"

namespace rastrel::job {
namespace {

std::string NativeDirectory(const std::wstring& path) {
  std::string native = os::ToNative(path);
  while (native.size() > 1 && native.back() == '/') native.pop_back();
  return native;
}

// The log's own rule: whatever keeps it from being opened keeps the job from running. A log that is
// open already must not be opened again, since that truncates it.
Expected<void> CheckLog() {
  switch (CAppLog::GetState()) {
    case CAppLog::State::Open: return {};
    case CAppLog::State::Failed:
      return FailureOf("the application log could not be opened, and is not tried again");
    case CAppLog::State::None: break;
  }
  const std::wstring name = LogNamePrefix + std::to_wstring(os::CurrentProcessId()) + L".log";
  const auto file = os::CreateLog(CExePaths::Instance().m_RipDir + name);
  if (!file) return FailureOf(Describe(file.Error()));
  return {};
}

}  // namespace

Expected<void> CheckTrustedParts() {
  const CExePaths& paths = CExePaths::Instance();
  const std::string root = os::DataRoot();
  for (const std::wstring& part :
       {paths.m_RipExe, paths.m_OdalisExe, paths.m_QueueExe, os::FromNative(root + "/settings.ini"),
        os::FromNative(root + "/devices.txt")}) {
    // A missing one is reported where it is needed.
    if (!os::Exists(part)) continue;
    if (const auto trusted = os::CheckTrusted(os::ToNative(part), root); !trusted)
      return FailureOf(Describe(trusted.Error()));
  }
  return {};
}

Expected<void> CheckPrintFiles() {
  // The children and the prefix lie below it, and their paths go through command lines.
  const std::string ripDirectory = NativeDirectory(CExePaths::Instance().m_RipDir);
  if (auto named = os::CheckForCommandLine(ripDirectory); !named) return named;
  if (auto trusted = CheckTrustedParts(); !trusted) return trusted;
  if (auto log = CheckLog(); !log) return log;
  const CExePaths& paths = CExePaths::Instance();
  for (const std::wstring& directory : {paths.m_RipDir, paths.m_CFMDir}) {
    const std::string why = WhyNotWritable(NativeDirectory(directory));
    if (!why.empty()) return FailureOf(why);
  }
  return {};
}

std::string WhyNotWritable(const std::string& directory) {
  const std::wstring wide = os::FromNative(directory);
  if (!os::Exists(wide)) return "there is no directory '" + directory + "'";
  if (!os::IsDirectory(wide)) return "'" + directory + "' is no directory";
  const std::wstring name = wide + L"/" + os::FromNative(os::OwnTemporaryName());
  const auto file = os::CreateForWriting(name, os::Access::Private);
  if (!file) return Describe(file.Error());
  return os::RemoveFile(name) ? std::string()
                              : "a file made in '" + directory + "' can't be removed";
}

}  // namespace rastrel::job
