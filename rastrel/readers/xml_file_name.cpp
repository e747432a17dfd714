#include "rastrel/readers/xml_file_name.h"

#include <string>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::readers {

bool IsNamedXml(const wchar_t* path) {
  constexpr const wchar_t* blanks = L" \t\n\v\f\r";
  if (path == nullptr || *path == L'\0' || !os::Exists(path)) return false;
  std::wstring extension = os::SplitPath(path).extension;
  if (extension.empty()) return false;
  extension.erase(0, 1);
  extension.erase(0, extension.find_first_not_of(blanks));
  extension.resize(extension.find_last_not_of(blanks) + 1);
  return os::LowerAscii(extension) == L"xml";
}

}  // namespace rastrel::readers
