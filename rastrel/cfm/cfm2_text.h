#pragma once

#include <string>
#include <string_view>

/// The pieces of CFM2 text; docs/formats/cfm2.md has the format.
namespace rastrel::cfm {

inline constexpr std::wstring_view Separator = L":=";
inline constexpr std::wstring_view CommentEnd = L"<<";
/// This many characters after a block comment's end are removed with it.
inline constexpr std::size_t CommentTail = 3;

/// The text without tab, space, line feed, carriage return, alert, form feed and vertical tab at
/// its ends. Borrows from `text`.
[[nodiscard]] std::wstring_view Trimmed(std::wstring_view text);

/// The text without its comments. `missingEnd` becomes true if a block comment had no end, which
/// drops all text from it on; it is left alone otherwise.
[[nodiscard]] std::wstring WithoutComments(std::wstring_view text, wchar_t lineDelimiter,
                                           bool& missingEnd);

}  // namespace rastrel::cfm
