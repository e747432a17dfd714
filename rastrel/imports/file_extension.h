#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace rastrel::imports {

/// The extension of a path in lower case, without its dot and without blanks at its ends.
[[nodiscard]] std::wstring FileExtension(std::wstring_view path);

/// Whether a path names something that exists and has one of these extensions (lower case). False
/// for null and for an empty path.
[[nodiscard]] bool IsFileOfType(const wchar_t* path,
                                std::initializer_list<std::wstring_view> extensions);

}  // namespace rastrel::imports
