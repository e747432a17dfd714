#pragma once

#include <optional>
#include <string_view>

#include "cutting/job/cut_job.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cutting {

/// Where a device counts from.
enum class Origin { LowerLeft, LowerRight, UpperLeft, UpperRight, Center, FirstMark };

/// "lower-left", "lower-right", "upper-left", "upper-right", "center", "first-mark".
[[nodiscard]] std::string_view NameOf(Origin origin);
[[nodiscard]] std::optional<Origin> OriginOf(std::string_view name);

/// How positions on the page become those of a device. They are counted from the origin, then
/// mirrored, then swapped:
///
///      page          origin upper-left,      and swapAxes
///                    mirrorY
///      y ^           +----> x                +----> y
///        |           |                       |
///        +----> x    v y                     v x
struct Placement {
  Origin origin = Origin::LowerLeft;
  bool mirrorX = false;   ///< the page's x counts to the left
  bool mirrorY = false;   ///< the page's y counts down
  bool swapAxes = false;  ///< the page's x is the device's y
  bool operator==(const Placement&) const = default;
};

/// Fails for an origin at a mark of a job that has none.
[[nodiscard]] Expected<Transform> TransformOf(const CutJob& job, const Placement& placement);

}  // namespace rastrel::cutting
