#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What the values of options are made of. What throws, throws CommandError(WrongUse) with the
/// option, its value and what is wrong.
namespace rastrel::cli {

/// Throws: "OPTION VALUE: why".
[[noreturn]] void RefuseValue(std::string_view option, std::string_view text,
                              const std::string& why);

/// Digits with a decimal point, a dot in every locale, and nothing else.
[[nodiscard]] std::optional<double> NumberOf(std::string_view text);

/// The parts between separators; one more than there are separators.
[[nodiscard]] std::vector<std::string_view> Split(std::string_view text, char separator);

/// The value of --dpi: 1 to 4800.
[[nodiscard]] std::int32_t ParseDpi(std::string_view text);

/// A whole number between two.
[[nodiscard]] std::int32_t WholeNumberOf(std::string_view option, std::string_view text,
                                         std::int32_t least, std::int32_t most);

struct Size {
  double widthCm;
  double heightCm;
};
/// A size with its unit, "10x5in", "25.4x12.7cm", "254x127mm".
[[nodiscard]] Size ParseSize(std::string_view option, std::string_view text);

/// So many components of a color, each from 0 to 255 or a percentage; as parts of 1.
[[nodiscard]] std::vector<double> ParseComponents(std::string_view option, std::string_view list,
                                                  std::size_t count, std::string_view text);

/// Throws unless the name may stand in a PostScript string as it is.
void CheckSpotName(std::string_view option, std::string_view name, std::string_view text);

}  // namespace rastrel::cli
