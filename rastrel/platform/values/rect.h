#pragma once

/// Rectangles: the framework's in whole numbers, and bounds in centimetres.

#include <cstdint>

/// A rectangle of the framework. The operation that fills it names the unit, and which way is up.
struct CRect {
  std::int32_t left = 0;
  std::int32_t top = 0;
  std::int32_t right = 0;
  std::int32_t bottom = 0;

  /// Sets all four to 0.
  void SetRectEmpty() { *this = CRect(); }
  /// True if it has no area: a width or a height of 0 or less.
  [[nodiscard]] bool IsRectEmpty() const { return right <= left || bottom <= top; }
  bool operator==(const CRect&) const = default;
};

/// Bounds in world units (centimetres), y upward. The order of the fields is the host's.
struct BOUNDS {
  double xmin = 0;
  double xmax = 0;
  double ymin = 0;
  double ymax = 0;
  bool operator==(const BOUNDS&) const = default;
};
