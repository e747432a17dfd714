#pragma once

#include <vector>

/// Geometry of cut paths. All lengths are millimetres; x grows to the right and y upward. A value
/// may be used on any thread.
namespace rastrel::cutting {

struct Point {
  double x = 0;
  double y = 0;
  bool operator==(const Point&) const = default;
};

[[nodiscard]] double Distance(Point a, Point b);

/// An upright rectangle. Empty at first.
struct Box {
  double left = 1;
  double bottom = 1;
  double right = -1;
  double top = -1;

  [[nodiscard]] bool IsEmpty() const { return right < left || top < bottom; }
  [[nodiscard]] double Width() const { return IsEmpty() ? 0 : right - left; }
  [[nodiscard]] double Height() const { return IsEmpty() ? 0 : top - bottom; }
  void Add(Point point);
  void Add(const Box& other);
  bool operator==(const Box&) const = default;
};

/// A straight line or a cubic Bézier curve, from the end of the segment before it.
struct Segment {
  Point end;
  bool isCurve = false;
  Point first{};   ///< control point beside the start; of a curve only
  Point second{};  ///< control point beside the end; of a curve only
  bool operator==(const Segment&) const = default;
};

[[nodiscard]] Segment LineTo(Point end);
[[nodiscard]] Segment CurveTo(Point first, Point second, Point end);

/// Segments in a row. A closed contour goes from its last end straight back to its start, where
/// they differ.
struct Contour {
  Point start;
  std::vector<Segment> segments;
  bool closed = false;
  bool operator==(const Contour&) const = default;

  /// Where it ends: at its start if it is closed or has no segment.
  [[nodiscard]] Point End() const;
};

/// x' = a x + c y + e, y' = b x + d y + f.
struct Transform {
  double a = 1, b = 0, c = 0, d = 1, e = 0, f = 0;
  [[nodiscard]] Point Apply(Point point) const;
  bool operator==(const Transform&) const = default;
};

/// The tightest upright rectangle around it, which curves touch and need not reach with their
/// control points.
[[nodiscard]] Box BoxOf(const Contour& contour);

/// Points from the start to the end, with straight lines between them that lie at most `tolerance`
/// beside the curves. The first point of a closed contour is not repeated. No two in a row are
/// equal. `tolerance` is above 0; a curve becomes 4,096 lines at most, which is
/// enough for a quarter of a circle of 100 m within 0.0021 mm.
[[nodiscard]] std::vector<Point> Flatten(const Contour& contour, double tolerance);

/// The closed contour's own line back to its start counts. Curves are measured to 0.01 %.
[[nodiscard]] double LengthOf(const Contour& contour);

/// Area within a closed contour, positive if it runs counterclockwise; of an open one as if it were
/// closed. Exact for curves.
[[nodiscard]] double AreaOf(const Contour& contour);

/// The same line from its end to its start. A closed one keeps its start.
[[nodiscard]] Contour Reversed(const Contour& contour);

[[nodiscard]] Contour Transformed(const Contour& contour, const Transform& transform);

}  // namespace rastrel::cutting
