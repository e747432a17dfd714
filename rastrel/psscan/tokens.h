#pragma once

#include <cstddef>
#include <string_view>

#include "rastrel/platform/mfc/string.h"

/// The tokens of comment lines. A text here is one line or the rest of one, without its end.
namespace rastrel::psscan {

/// Reads an integer: spaces, tabs and "{" are skipped; then an optional sign, and digits and dots.
/// The value is that of the digits before the first dot (fractions are truncated; a sign or a dot
/// alone is 0), saturated to 32 bits. Returns the bytes consumed, the skipped ones included; 0
/// with `value` untouched if there is no number.
[[nodiscard]] std::size_t IntegerToken(std::string_view text, int& value);

/// Reads a word, or a string in parentheses with escapes resolved; spaces and tabs before it are
/// skipped. Returns the bytes consumed; the token is empty if the text has no more.
/// - A word ends before the next space or tab.
/// - A string ends at the parenthesis that balances its first one, or at the text's end. The byte
///   after the opening parenthesis is always part of the string, so "()" goes on to the next ")".
///   A backslash does not protect a parenthesis.
/// - Bytes are Windows-1252. In a string, two backslashes are one; a backslash and an integer, read
///   as IntegerToken reads it (decimal, and not octal), are the character of the value's low byte,
///   its sign extended to 16 bits; any other backslash stays.
[[nodiscard]] std::size_t TextToken(std::string_view text, CString& token);

/// Where the bytes of TextToken's token lie in the text, before conversion. Empty with it.
struct RawToken {
  std::string_view bytes;
  bool isString = false;     ///< it was in parentheses
  std::size_t consumed = 0;  ///< as TextToken returns it
};
[[nodiscard]] RawToken FindTextToken(std::string_view text);

/// The value of a number at the start of a text, whitespace skipped: sign, digits, dot, digits,
/// exponent. 0 if there is none; infinite if too large. Never by the locale.
[[nodiscard]] double NumberOf(std::wstring_view text);

/// The text from its first "(" or ")" on; empty if there is none.
[[nodiscard]] std::string_view FromFirstParenthesis(std::string_view line);

/// True if the value of the comment on this line is in the trailer: "(atend)" begins at the
/// line's first parenthesis.
[[nodiscard]] bool IsDeferred(std::string_view line);

}  // namespace rastrel::psscan
