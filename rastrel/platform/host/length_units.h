#pragma once

#include "rastrel/platform/values/world.h"

namespace rastrel::host {

/// The units in which a user reads and types lengths. The numbers are those of
/// Application::GetCurrentUnits.
enum class LengthUnit : int { Centimetres = 0, Millimetres = 1, Inches = 2 };

inline constexpr double MillimetresPerCentimetre = 10;

/// The unit of the host in force; centimetres if it has no application, or names no unit of these.
[[nodiscard]] LengthUnit CurrentLengthUnit();

/// A world length in the unit.
[[nodiscard]] constexpr double FromCentimetres(double centimetres, LengthUnit unit) {
  switch (unit) {
    case LengthUnit::Millimetres: return centimetres * MillimetresPerCentimetre;
    case LengthUnit::Inches: return centimetres / CentimetresPerInch;
    default: return centimetres;
  }
}

/// A length in the unit as a world length.
[[nodiscard]] constexpr double ToCentimetres(double length, LengthUnit unit) {
  switch (unit) {
    case LengthUnit::Millimetres: return length / MillimetresPerCentimetre;
    case LengthUnit::Inches: return length * CentimetresPerInch;
    default: return length;
  }
}

}  // namespace rastrel::host
