#include "rastrel/conversion/bitmap/queue_program.h"

#include <algorithm>
#include <string>

#include "rastrel/job/exe_paths.h"
#include "rastrel/platform/os/file.h"

int GetCmdLineRipDir(wchar_t* buffer, int size) {
  const std::wstring& directory = CExePaths::Instance().m_RipDir;
  const int length = static_cast<int>(directory.size());
  if (buffer == nullptr || size <= length) return length + 1;
  std::copy_n(directory.c_str(), directory.size() + 1, buffer);
  return length;
}

int IsQAvailable() { return rastrel::os::Exists(CExePaths::Instance().m_QueueExe) ? 1 : 0; }
