#pragma once

/// The measures of a document: points and rectangles in its two units.
///
/// World units are centimetres; x grows to the right, y upward, and the
/// origin is the lower left corner of the sign blank. Text units are thousandths of an inch in the
/// same directions from the same origin.

/// A point in world units.
struct CWorldPoint {
  double x = 0;
  double y = 0;
  bool operator==(const CWorldPoint&) const = default;
};

/// A rectangle in world units, top at or above bottom; or four margins, each a distance inward. The
/// operation that takes or returns one says which, and where it has text units.
struct CWorldRect {
  double left = 0;
  double top = 0;
  double right = 0;
  double bottom = 0;
  bool operator==(const CWorldRect&) const = default;
};

/// A point in text units, for the text engine and drill points.
struct NewWorldPt {
  double x = 0;
  double y = 0;
  bool operator==(const NewWorldPt&) const = default;
};

namespace rastrel::host {

inline constexpr double CentimetresPerInch = 2.54;  ///< world units of an inch
inline constexpr double TextUnitsPerInch = 1000.0;  ///< text units of an inch

/// A world length in text units. The division comes first: positions are compared to the last bit.
[[nodiscard]] constexpr double TextFromWorld(double centimetres) {
  return centimetres / CentimetresPerInch * TextUnitsPerInch;
}

}  // namespace rastrel::host
