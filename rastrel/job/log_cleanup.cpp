#include "rastrel/job/log_cleanup.h"

#include "rastrel/job/app_log.h"
#include "rastrel/job/scan_number.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::job {

std::optional<std::uint32_t> ProcessOfLog(const std::wstring& name) {
  const auto dash = name.find(L'-');
  if (dash == std::wstring::npos) return std::nullopt;
  const auto dot = name.find(L'.', dash + 1);
  if (dot == std::wstring::npos) return std::nullopt;
  return ScanUnsigned<std::uint32_t>(std::wstring_view(name).substr(dash + 1, dot - dash - 1));
}

int RemoveOldLogs(CAppLog& log, const std::wstring& directory) {
  const std::wstring root = os::EndsInSeparator(directory) ? directory : directory + L"\\";
  const auto names = os::ListDirectory(root);
  if (!names) {
    log.Write("Can't open rip directory. Oops.");
    return 0;
  }
  int count = 0;
  for (const std::wstring& name : *names) {
    if (name.find(LogNamePrefix) == std::wstring::npos) continue;
    const auto process = ProcessOfLog(name);
    if (!process) {
      log.Printf(L"Invalid log name: '%s'", name);
      continue;
    }
    if (os::CanOpenProcess(*process)) continue;
    const std::wstring path = root + name;
    if (os::RemoveFile(path)) {
      ++count;
    } else {
      log.Printf(L"Can't unlink '%s'", path);
    }
  }
  return count;
}

}  // namespace rastrel::job
