#pragma once

#include <polyclipping/clipper.hpp>
#include <vector>

#include "cutting/job/cut_job.h"
#include "cutting/nest/nest.h"

/// The room that a piece takes, in whole micrometres, which polygons are exact in.
namespace rastrel::cutting::nest {

inline constexpr double UnitsPerMillimetre = 1000;

/// A piece at one of its turns. Its reference point is the origin of its turned page.
struct TurnedShape {
  double turn = 0;  ///< degrees counterclockwise
  /// Outlines, counterclockwise, grown by half of the gap and a few micrometres, so that pieces
  /// whose outlines only touch keep the gap. The flattening of curves is within them.
  ClipperLib::Paths outlines;
  std::vector<bool> convex;  ///< of each outline
  // The box of all tool paths, rounded outward. Nothing is added to it.
  ClipperLib::cInt left = 0, bottom = 0, right = 0, top = 0;
};

struct PieceShape {
  std::vector<TurnedShape> turns{};
  double area = 0;       ///< within the outlines themselves, square millimetres
  double thinnedBy = 0;  ///< how far corners that were left out lie outside, millimetres; 0: none
  std::size_t corners = 0;  ///< of all flat tool paths; none are turned if these are too many
};

/// About the origin. Exact for multiples of 90 degrees, so that boxes stay boxes.
[[nodiscard]] Transform Turning(double degrees);

/// `turns` has a value at least. The job has a path for a tool.
[[nodiscard]] PieceShape ShapeOf(const CutJob& job, double gap, const std::vector<double>& turns);

}  // namespace rastrel::cutting::nest
