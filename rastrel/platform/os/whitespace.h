#pragma once

#include <string_view>

namespace rastrel::os {

/// The text without the characters of `set` at both ends: a view into it. By default these are a
/// line's blanks, space and tab; a format that counts more as whitespace names them all.
[[nodiscard]] std::string_view Trim(std::string_view text, std::string_view set = " \t");

}  // namespace rastrel::os
