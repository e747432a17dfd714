#pragma once

#include <span>
#include <vector>

#include "cutting/dxf/dxf_groups.h"
#include "cutting/job/contour.h"

namespace rastrel::cutting {

/// An object's contours in millimetres.
struct DxfShape {
  enum class Result {
    Read,     ///< perhaps as no contour at all
    Unknown,  ///< a type that is not read
    Unsound,  ///< its numbers make no such object
  };
  Result result = Result::Read;
  std::vector<Contour> contours{};
};

/// A point of a polyline, and how the line goes on from it: the tangent of a quarter of the arc's
/// angle, 0 for a straight line.
struct DxfVertex {
  Point point;
  double bulge = 0;
};

/// A polyline's contour. No contour without a vertex.
[[nodiscard]] std::vector<Contour> PolylineOf(std::span<const DxfVertex> vertices, bool isClosed,
                                              const Transform& map);

/// The shape of an object that is no polyline of several objects and no insertion. `map` goes from
/// the object's own frame to millimetres. A number that is none fails `groups`.
[[nodiscard]] DxfShape ShapeOf(std::string_view type, DxfGroups& groups, const Transform& map);

}  // namespace rastrel::cutting
