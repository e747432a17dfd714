#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Texts within rule files.
namespace rastrel::cutting {

/// A unit and how many of the base unit it has.
struct Unit {
  std::string_view name;
  double factor;
};

/// Of millimetres: mm, cm, in, pt (1/72 in).
[[nodiscard]] std::span<const Unit> LengthUnits();
/// Of millimetres a second: mm/s, cm/s, in/s, m/min.
[[nodiscard]] std::span<const Unit> SpeedUnits();

/// "12.5 mm", "0.25pt", "3": a decimal number, spaces, and a unit or none, which is the first of
/// the units. Nothing if the text is another.
[[nodiscard]] std::optional<double> Measured(std::string_view text, std::span<const Unit> units);

/// "#rrggbb" as three components from 0 to 1. Nothing if the text is another.
[[nodiscard]] std::optional<std::vector<double>> HexColor(std::string_view text);

}  // namespace rastrel::cutting
