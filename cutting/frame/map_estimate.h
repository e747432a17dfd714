#pragma once

#include <optional>
#include <vector>

#include "cutting/frame/mark_fit.h"

/// Least-squares maps between two rows of points, without any judgement of them.
namespace rastrel::cutting {

/// The map of that kind from `from` to `to` for which the sum of the squares of the distances is
/// smallest. Nothing if the points don't fix one.
///
/// REQUIRES: as many points here as there, finite; 2 for Similar, 3 for Affine, 4 for Projective.
[[nodiscard]] std::optional<FrameMap> EstimatedMap(MapKind kind, const std::vector<Point>& from,
                                                   const std::vector<Point>& to);

/// Distance of each point's image from its counterpart.
[[nodiscard]] std::vector<double> ResidualsOf(const FrameMap& map, const std::vector<Point>& from,
                                              const std::vector<Point>& to);

}  // namespace rastrel::cutting
