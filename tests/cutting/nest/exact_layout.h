#pragma once

#include <cmath>
#include <cstddef>
#include <optional>
#include <polyclipping/clipper.hpp>
#include <string>
#include <vector>

#include "cutting/nest/nest.h"

/// Whether placed pieces lie apart and within their sheet, by polygons of their own in nanometres:
/// finer by a thousand than the units that layouts are made in. Curves are flat to a micrometre.
namespace rastrel::test {

inline constexpr double NanometresInMillimetre = 1e6;

/// All lines of the piece, filled, as it lies on its sheet.
inline ClipperLib::Paths PlacedOutline(const cutting::NestInput& input,
                                       const cutting::NestPlacement& placement) {
  ClipperLib::Paths lines;
  for (const cutting::CutPath& path : input.job->paths)
    for (const cutting::Contour& contour : path.contours) {
      ClipperLib::Path line;
      for (const cutting::Point& point : Flatten(Transformed(contour, placement.transform), 0.001))
        line.emplace_back(std::llround(point.x * NanometresInMillimetre),
                          std::llround(point.y * NanometresInMillimetre));
      if (!ClipperLib::Orientation(line)) ClipperLib::ReversePath(line);
      lines.push_back(std::move(line));
    }
  ClipperLib::SimplifyPolygons(lines, ClipperLib::pftNonZero);
  return lines;
}

/// Grown with round corners by the gap less a micrometre.
inline ClipperLib::Paths WithGap(const ClipperLib::Paths& outline, double gap) {
  if (gap <= 0) return outline;
  ClipperLib::ClipperOffset offset(2, 0.0002 * NanometresInMillimetre);
  offset.AddPaths(outline, ClipperLib::jtRound, ClipperLib::etClosedPolygon);
  ClipperLib::Paths grown;
  offset.Execute(grown, (gap - 0.001) * NanometresInMillimetre);
  return grown;
}

inline bool Overlap(const ClipperLib::Paths& a, const ClipperLib::Paths& b) {
  ClipperLib::Clipper clipper;
  clipper.AddPaths(a, ClipperLib::ptSubject, true);
  clipper.AddPaths(b, ClipperLib::ptClip, true);
  ClipperLib::Paths common;
  clipper.Execute(ClipperLib::ctIntersection, common, ClipperLib::pftNonZero,
                  ClipperLib::pftNonZero);
  return !common.empty();
}

/// The first fault of the layout, for people; nothing if it is right.
inline std::optional<std::string> FaultOf(const std::vector<cutting::NestInput>& inputs,
                                          const cutting::NestOptions& options,
                                          const cutting::NestResult& result) {
  std::vector<ClipperLib::Paths> plain;
  for (const cutting::NestPlacement& placement : result.placements) {
    plain.push_back(PlacedOutline(inputs[placement.input], placement));
    const double right = result.usedLengths[placement.sheet] * NanometresInMillimetre;
    const double top = options.height * NanometresInMillimetre;
    for (const ClipperLib::Path& path : plain.back())
      for (const ClipperLib::IntPoint& point : path)
        if (point.X < 0 || point.Y < 0 || static_cast<double>(point.X) > right + 1 ||
            static_cast<double>(point.Y) > top + 1)
          return "piece " + std::to_string(plain.size() - 1) + " lies beyond its sheet";
  }
  for (std::size_t i = 0; i < plain.size(); ++i) {
    const ClipperLib::Paths grown = WithGap(plain[i], options.gap);
    for (std::size_t j = i + 1; j < plain.size(); ++j)
      if (result.placements[i].sheet == result.placements[j].sheet && Overlap(grown, plain[j]))
        return "pieces " + std::to_string(i) + " and " + std::to_string(j) + " are too near";
  }
  return std::nullopt;
}

}  // namespace rastrel::test
