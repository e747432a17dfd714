#pragma once

#include <array>
#include <span>
#include <string>

#include "rastrel/job/format_argument.h"

namespace rastrel::job {

/// The formatter of CFM2 text, the prefix and file names. It is not the C library's printf, knows
/// no locale, and its texts go into files that other programs read, so its rules must not change.
/// The logs have another one (printf_text.h).
///
/// - `%%` is a percent sign.
/// - Flags: a space makes the fill a space, `0` makes it a zero, `-` aligns left, `+` takes that
///   back, `#` is ignored.
/// - Then a width, then `.` and a precision. A precision makes the fill a zero unless `-` was
/// given,
///   and means nothing else to `d`, `i`, `u` and `o`. The fill comes before a sign.
/// - The modifiers `h`, `l` and `N` are ignored.
/// - `d i u` decimal; `o` octal; `x X` hexadecimal, zeros to the precision, then spaces to the
///   width, never cut; negative numbers under `u o x X` as 32 bits; `e E g G f F` floating, 6
///   digits if no precision is given; `s` text, cut to the precision; `p` a pointer; any other
///   letter, `*` among them, prints the argument plainly.
/// - A format that ends inside a conversion prints nothing for it and takes no argument; so does a
///   conversion that has no argument left.
[[nodiscard]] std::wstring FormatText(std::wstring_view format,
                                      std::span<const FormatArgument> arguments);

}  // namespace rastrel::job

/// The wide string with a printf-like Format. Every literal of the CFM2 text and the prefix goes
/// through it; see rastrel::job::FormatText for its rules.
template <typename Character>
class formatstringT;

template <>
class formatstringT<wchar_t> : public std::wstring {
 public:
  formatstringT() = default;
  formatstringT(std::wstring text)
      : std::wstring(std::move(text)) {}                      // NOLINT(google-explicit-constructor)
  formatstringT(const wchar_t* text) : std::wstring(text) {}  // NOLINT(google-explicit-constructor)
  formatstringT(const formatstringT&) = default;
  formatstringT(formatstringT&&) = default;
  formatstringT& operator=(const formatstringT&) = default;
  formatstringT& operator=(formatstringT&&) = default;
  virtual ~formatstringT() = default;

  using std::wstring::operator=;

  /// Replaces the content by the formatted text. The arguments may refer to this string.
  template <typename... Arguments>
  void Format(const wchar_t* format, const Arguments&... arguments) {
    const std::array<rastrel::job::FormatArgument, sizeof...(Arguments)> list{
        rastrel::job::FormatArgument(arguments)...};
    std::wstring::operator=(rastrel::job::FormatText(format, list));
  }
};
