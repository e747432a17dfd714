#include "rastrel/prefix/path_names.h"

#include <stdexcept>

#include "rastrel/job/format_string.h"

namespace rastrel::prefix {

namespace {

std::wstring CutAtLastDot(const std::wstring& path) {
  const auto dot = path.rfind(L'.');
  if (dot == std::wstring::npos) throw std::length_error("a job file without an extension");
  return path.substr(0, dot);
}

}  // namespace

std::wstring PrefixPathOf(const std::wstring& jobPath) { return CutAtLastDot(jobPath) + L".psp"; }

std::wstring TitleOf(const std::wstring& jobPath) {
  const std::wstring path = CutAtLastDot(jobPath);
  return path.substr(path.rfind(L'\\') + 1);  // all of it if there is none
}

std::wstring TitleSection(const std::wstring& jobPath) {
  formatstringT<wchar_t> section;
  section.Format(L"\n%%%%Title: %s\n\n", TitleOf(jobPath).c_str());
  return section;
}

}  // namespace rastrel::prefix
