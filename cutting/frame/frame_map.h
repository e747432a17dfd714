#pragma once

#include <array>

#include "cutting/job/cut_job.h"
#include "rastrel/platform/os/expected.h"

/// A map of the plane that keeps lines straight: from the page's frame to that of a cutter, or to a
/// scan.
namespace rastrel::cutting {

/// x' = (m0 x + m1 y + m2) / w, y' = (m3 x + m4 y + m5) / w, w = m6 x + m7 y + m8. Leaves all as it
/// is, at first. Millimetres.
struct FrameMap {
  std::array<double, 9> m{1, 0, 0, 0, 1, 0, 0, 0, 1};

  /// Whether w is the same everywhere: parallel lines stay parallel.
  [[nodiscard]] bool IsAffine() const { return m[6] == 0 && m[7] == 0; }
  /// w at a point. The map has no image of points where it is 0, and turns all beyond them inside
  /// out.
  [[nodiscard]] double Weight(Point point) const { return m[6] * point.x + m[7] * point.y + m[8]; }
  [[nodiscard]] Point Apply(Point point) const;
  /// The map's own affine form at a point: how a small piece there is turned and scaled.
  [[nodiscard]] Transform At(Point point) const;

  bool operator==(const FrameMap&) const = default;
};

/// First `first`, then `second`.
[[nodiscard]] FrameMap Chained(const FrameMap& first, const FrameMap& second);

/// How far a cubic curve may lie from the true image of a curve, millimetres.
inline constexpr double CurveTolerance = 0.005;

/// The image of a contour. Lines stay lines. Curves stay as many curves as they are under an affine
/// map; under another they are split into halves until a cubic curve lies within `tolerance` of the
/// image everywhere, at most 1,024 times each.
///
/// REQUIRES: Weight is above 0 at each point and control point.
[[nodiscard]] Contour Mapped(const Contour& contour, const FrameMap& map,
                             double tolerance = CurveTolerance);

/// The job in the map's frame: paths and marks. Marks keep their form, and are turned and sized as
/// the map does at their place. The width and height are those of the upright rectangle around the
/// page's image as far as it lies right of and above the origin. Settings, line widths and colors
/// stay.
///
/// Fails if a point lies where the map has no sound image: where Weight is less than a tenth or
/// more than ten times of its value at the page's middle.
[[nodiscard]] Expected<CutJob> Mapped(const CutJob& job, const FrameMap& map);

}  // namespace rastrel::cutting
