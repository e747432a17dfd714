#pragma once

namespace rastrel::interpreter {

/// A part of a page in points, y upward.
struct PageArea {
  double left = 0;
  double bottom = 0;
  double right = 0;
  double top = 0;

  [[nodiscard]] double Width() const { return right - left; }
  [[nodiscard]] double Height() const { return top - bottom; }
  bool operator==(const PageArea&) const = default;
};

}  // namespace rastrel::interpreter
