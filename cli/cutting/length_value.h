#pragma once

#include <string_view>

namespace rastrel::cli {

/// Millimetres of a length above 0 and up to 10 m with its unit, mm, cm or in, or in millimetres
/// without one. `part` is the part of the option's value that is the length, `text` the whole value
/// for the message. Throws CommandError(WrongUse).
[[nodiscard]] double LengthOf(std::string_view option, std::string_view text,
                              std::string_view part);

}  // namespace rastrel::cli
