#pragma once

#include <limits>
#include <string_view>
#include <vector>

namespace rastrel::interpreter {

/// A point in device pixels.
struct PixelPoint {
  double x = 0;
  double y = 0;
};

/// The smallest upright rectangle around points. Empty at first.
struct PixelBox {
  double left = std::numeric_limits<double>::infinity();
  double top = std::numeric_limits<double>::infinity();
  double right = -std::numeric_limits<double>::infinity();
  double bottom = -std::numeric_limits<double>::infinity();

  void Add(const PixelPoint& point);
  /// Whether they have a point in common; empty ones have none.
  [[nodiscard]] bool Meets(const PixelBox& other) const;
};

/// How a path lies to the clip that it was painted under.
enum class ClipPosition {
  Inside,   ///< the clip holds all of it
  Outside,  ///< the clip holds nothing of it
  Crosses   ///< neither is sure
};

/// A clip's shape, made of segments in the form of the prolog's reports: "m 1 2 l 3 4 h". It is
/// sure about paths inside only if it is convex and has straight sides, which the page's own
/// rectangle is and most others are.
class ClipShape {
 public:
  explicit ClipShape(std::string_view segments);

  /// Whether it holds that point for sure. The interpreter rounds to 1/256 pixel, which is no
  /// reason to say no.
  [[nodiscard]] bool Holds(const PixelPoint& point) const;
  /// Box around all of its points; a curve lies within that of its control points.
  [[nodiscard]] const PixelBox& Box() const { return m_Box; }

 private:
  void TakeCorner(const PixelPoint& corner);
  void KeepConvexOnly();

  PixelBox m_Box;
  std::vector<PixelPoint> m_Corners;  // in turn; empty: nothing is sure to be inside
  std::vector<double> m_Margins;      // of the edge from each corner: as far out still counts
  double m_Turn = 0;                  // 1 or -1: on which side of its edges the inside lies
};

/// Finds how a path lies, from its points, control points of curves among them. Borrows the shape.
class ClipJudge {
 public:
  explicit ClipJudge(const ClipShape& shape) : m_Shape(shape) {}
  void Add(const PixelPoint& point);
  [[nodiscard]] ClipPosition Position() const;

 private:
  const ClipShape& m_Shape;
  PixelBox m_Box;
  bool m_Inside = true;
};

}  // namespace rastrel::interpreter
