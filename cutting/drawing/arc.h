#pragma once

#include "cutting/job/contour.h"

namespace rastrel::cutting {

/// An ellipse as center + cos(t) u + sin(t) v; a circle if u and v are at right angles and equally
/// long.
struct Ellipse {
  Point center;
  Point u{1, 0};
  Point v{0, 1};
  [[nodiscard]] Point At(double angle) const;
};

/// Appends curves that follow the ellipse from the angle `from` to the angle `to`, in radians, in
/// the direction of the sign of their difference. The contour ends at `from` already. No place of a
/// curve lies more than 0.001 beside an ellipse of 10 m, and less beside a smaller one.
void AppendArc(Contour& contour, const Ellipse& ellipse, double from, double to);

/// The whole ellipse, closed, from the angle 0 counterclockwise, as the axes go.
[[nodiscard]] Contour WholeEllipse(const Ellipse& ellipse);

}  // namespace rastrel::cutting
