#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

/// Importers and readers choose files by the extension of their names.
namespace rastrel::imports {

/// The characters at both ends of an extension that don't belong to it. The formats differ.
enum class ExtensionTrim {
  Spaces,      ///< space characters only: plates
  Whitespace,  ///< also tabs, line ends, vertical tabs and form feeds: lists and spreadsheets
};

/// The extension of a library path in lower case (ASCII letters), without its dot and trimmed.
/// Empty if there is none.
[[nodiscard]] std::wstring FileExtension(std::wstring_view path,
                                         ExtensionTrim trim = ExtensionTrim::Spaces);

/// Whether a library path names something that exists and has one of these extensions, given in
/// lower case. False for null and for an empty path.
[[nodiscard]] bool IsFileOfType(const wchar_t* path,
                                std::initializer_list<std::wstring_view> extensions,
                                ExtensionTrim trim = ExtensionTrim::Spaces);

}  // namespace rastrel::imports
