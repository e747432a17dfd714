#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "cutting/clean/flat_lines.h"

namespace rastrel::cutting::clean {

/// For each contour of `flat`, the first one of its operation with exactly its segments on the
/// grid, in either direction and from any corner; none of the first. A contour without lines has
/// none.
[[nodiscard]] std::vector<std::optional<std::uint32_t>> FindSameContours(const CutJob& job,
                                                                         const FlatJob& flat);

}  // namespace rastrel::cutting::clean
