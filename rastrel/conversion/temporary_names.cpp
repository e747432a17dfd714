#include "rastrel/conversion/temporary_names.h"

#include "rastrel/job/exe_paths.h"
#include "rastrel/job/format_string.h"
#include "rastrel/platform/os/temporary_name.h"

namespace rastrel::conversion {

namespace {

constexpr std::size_t MaximumName = 260;  // characters, terminator included

}  // namespace

bool MakeRipTempName(std::wstring& out, const wchar_t* suffix) {
  formatstringT<wchar_t> pattern;
  pattern.Format(L"%svkXXXXXX", CExePaths::Instance().m_RipDir);
  if (pattern.size() >= MaximumName) return false;
  const auto name = os::CompleteTemporaryName(pattern);
  if (!name) return false;
  out = *name + suffix;
  return true;
}

}  // namespace rastrel::conversion
