#pragma once

#include <cstddef>
#include <span>
#include <string_view>

/// Records of the interface have text fields of fixed size. A value that does not fit is a fault of
/// the whole document: a part of a name or a number would be another one.
namespace rastrel::imports {

/// Copies `value` and a terminator into `field`. False if it does not fit: the field is then empty,
/// nothing is written after it, and the failure is reported (xml/failure.h) with the element or
/// attribute, the document's path, and both lengths.
[[nodiscard]] bool BoundedCopy(std::span<wchar_t> field, std::wstring_view value,
                               std::wstring_view element, std::wstring_view path);

}  // namespace rastrel::imports
