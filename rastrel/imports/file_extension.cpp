#include "rastrel/imports/file_extension.h"

#include <algorithm>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::imports {

std::wstring FileExtension(std::wstring_view path, ExtensionTrim trim) {
  const wchar_t* const trimmed = trim == ExtensionTrim::Spaces ? L" " : L" \t\n\v\f\r";
  std::wstring extension = os::LowerAscii(os::SplitPath(path).extension);
  std::erase(extension, L'.');
  const std::size_t first = extension.find_first_not_of(trimmed);
  if (first == std::wstring::npos) return {};
  return extension.substr(first, extension.find_last_not_of(trimmed) - first + 1);
}

bool IsFileOfType(const wchar_t* path, std::initializer_list<std::wstring_view> extensions,
                  ExtensionTrim trim) {
  if (path == nullptr || *path == L'\0' || !os::Exists(path)) return false;
  return std::ranges::find(extensions, FileExtension(path, trim)) != extensions.end();
}

}  // namespace rastrel::imports
