#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/platform/os/expected.h"

/// Reading the values of options. Each failure is a message for the user: "OPTION VALUE: why".
namespace rastrel::cli {

/// "OPTION VALUE: why".
[[nodiscard]] Failure RefusedValue(std::string_view option, std::string_view text,
                                   const std::string& why);

/// Digits with a decimal point, a dot in every locale, and nothing else.
[[nodiscard]] std::optional<double> NumberOf(std::string_view text);

/// The parts between separators; one more than there are separators.
[[nodiscard]] std::vector<std::string_view> Split(std::string_view text, char separator);

/// The value of --dpi: 1 to 4800.
[[nodiscard]] Expected<std::int32_t> ParseDpi(std::string_view text);

/// The value of --copies: 1 to 100,000.
[[nodiscard]] Expected<std::int32_t> ParseCopies(std::string_view text);

/// A whole number from `minimum` to `maximum`.
[[nodiscard]] Expected<std::int32_t> WholeNumberOf(std::string_view option, std::string_view text,
                                                   std::int32_t minimum, std::int32_t maximum);

struct Size {
  double widthCm;
  double heightCm;
};
/// A size with its unit, "10x5in", "25.4x12.7cm", "254x127mm".
[[nodiscard]] Expected<Size> ParseSize(std::string_view option, std::string_view text);

/// A size of which one side may be open, since it follows from the other.
struct PartSize {
  std::optional<double> widthCm;
  std::optional<double> heightCm;
};
/// As ParseSize, also in points, and with one side alone: "10xcm" is a width, "x72pt" a height.
[[nodiscard]] Expected<PartSize> ParsePartSize(std::string_view option, std::string_view text);

/// The two sides of a color's colon: "rgb:255,0,0" is of the model "rgb". Without a colon all of
/// the text is the model.
struct ColorText {
  std::string_view model;
  std::string_view components;
};
/// Views into `text`.
[[nodiscard]] ColorText SplitColor(std::string_view text);

/// `count` components of a color, each from 0 to 255 or a percentage; as parts of 1.
[[nodiscard]] Expected<std::vector<double>> ParseComponents(std::string_view option,
                                                            std::string_view list,
                                                            std::size_t count,
                                                            std::string_view text);

/// A spot color's name, given in UTF-8 or in Windows-1252 (os::Utf8FromUtf8OrAnsi). Fails unless it
/// may be written into a PostScript string as it is.
[[nodiscard]] Expected<std::wstring> ParseSpotName(std::string_view option, std::string_view name,
                                                   std::string_view text);

}  // namespace rastrel::cli
