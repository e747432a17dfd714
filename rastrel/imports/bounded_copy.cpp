#include "rastrel/imports/bounded_copy.h"

#include <algorithm>
#include <string>
#include <utility>

#include "rastrel/xml/failure.h"

namespace rastrel::imports {

bool BoundedCopy(std::span<wchar_t> field, std::wstring_view value, std::wstring_view element,
                 std::wstring_view path) {
  if (value.size() < field.size()) {
    *std::copy(value.begin(), value.end(), field.begin()) = L'\0';
    return true;
  }
  if (!field.empty()) field.front() = L'\0';
  xml::XmlFailure failure;
  failure.path = path;
  failure.reason = L"the value of " + std::wstring(element) + L" has " +
                   std::to_wstring(value.size()) + L" characters, and its field has room for " +
                   std::to_wstring(field.empty() ? 0 : field.size() - 1);
  xml::ReportXmlFailure(std::move(failure));
  return false;
}

}  // namespace rastrel::imports
