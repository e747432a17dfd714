#pragma once

#include <cstdarg>
#include <span>
#include <string>
#include <string_view>

#include "rastrel/job/format_argument.h"

/// The formatter of the two logs: CAppLog::Printf and the Log of every ticket. Its rules are those
/// of CString::FormatV, which is the printf of the framework's C library for wide text, and not
/// those of formatstringT, which the files have. Independent of the locale.
///
/// - `%%` is a percent sign.
/// - Flags: `-` aligns left; `+` writes the sign of a positive number, a space writes a space
/// there; `0`
///   fills with zeros after the sign, unless the text is aligned left or an integer has a
///   precision;
///   `#` puts `0`, `0x` or `0X` before octal and hexadecimal numbers other than 0, and keeps the
///   point and the zeros of floating ones.
/// - Width and precision are numbers, or `*` for an argument: a negative width aligns left, a
/// negative
///   precision is none.
/// - A precision is the minimum of digits of an integer, the digits after the point of a floating
/// number
///   (of all digits under `g`), and the maximum length of a text.
/// - Sizes: `hh`, `h`, `l`, `ll`, `I`, `I32`, `I64`, `j`, `t`, `z`; `w` marks a text as wide.
/// - `d i` and `o u x X` integers, `e E f F g G a A` floating numbers, 6 digits if no precision is
/// given
///   (13 under `a`); `c s` wide characters and texts, `C S hc hs` narrow ones; `p` an address as 16
///   digits; `n` takes its argument and writes nothing. Any other letter is written as it is.
/// - A format that ends inside a conversion prints nothing for it; so does a conversion that has no
///   argument left.
namespace rastrel::job {

/// For typed arguments. One of another type than its conversion's is printed plainly.
[[nodiscard]] std::wstring PrintfText(std::wstring_view format,
                                      std::span<const FormatArgument> arguments);

/// For the arguments of a C variable list, which are taken by the conversions' sizes. `l` is this
/// machine's long. Narrow text is UTF-8.
[[nodiscard]] std::wstring FormatVariableList(const wchar_t* format, std::va_list list);

}  // namespace rastrel::job
