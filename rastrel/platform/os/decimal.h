#pragma once

#include <string>

/// Numbers as text, with a point whatever the locale.
namespace rastrel::os {

/// The number rounded to `places` decimals (maximum 17), without trailing zeros and an exponent:
/// "12.5", "3", "-0.0001". For files and arguments of programs. A number that rounds to zero is
/// "0", without a sign. Infinities and NaN are written as the standard library does: "inf", "nan".
[[nodiscard]] std::string ShortDecimal(double value, int places);

/// Appends the same to a text, without a string of its own.
void AppendShortDecimal(std::string& text, double value, int places);

/// The shortest text that reads back as exactly this number: "0.1", "3", "-0", "1e+22". It has an
/// exponent where that is shorter. For people. Infinities and NaN are "inf" and "nan".
[[nodiscard]] std::string ShortestDecimal(double value);

}  // namespace rastrel::os
