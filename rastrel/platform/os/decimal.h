#pragma once

#include <string>

/// Numbers as text that goes into files and arguments of programs: with a point, whatever the
/// locale, and without an exponent.
namespace rastrel::os {

/// The number rounded to `places` decimals (maximum 17), without trailing zeros: "12.5",
/// "3", "-0.0001". A number that rounds to zero is "0", without a sign. Infinities and NaN are
/// written as the standard library does: "inf", "nan".
[[nodiscard]] std::string ShortDecimal(double value, int places);

}  // namespace rastrel::os
