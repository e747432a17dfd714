#include "rastrel/imports/bounded_copy.h"

#include <algorithm>
#include <string>
#include <utility>

#include "rastrel/platform/os/text.h"
#include "rastrel/xml/failure.h"

namespace rastrel::imports {

bool BoundedCopy(std::span<wchar_t> field, std::wstring_view value, std::wstring_view element,
                 std::wstring_view path) {
  if (value.size() < field.size()) {
    *std::copy(value.begin(), value.end(), field.begin()) = L'\0';
    return true;
  }
  if (!field.empty()) field.front() = L'\0';
  Failure failure =
      FailureOf("the value of " + os::Utf8FromWide(element) + " has " +
                std::to_string(value.size()) + " characters, and its field has room for " +
                std::to_string(field.empty() ? 0 : field.size() - 1));
  failure.where = os::Utf8FromWide(path);
  xml::ReportXmlFailure(std::move(failure));
  return false;
}

}  // namespace rastrel::imports
