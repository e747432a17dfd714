#include "cutting/output/placement.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace rastrel::cutting {
namespace {

// In the order of Origin.
constexpr std::array<std::string_view, 6> Names{"lower-left",  "lower-right", "upper-left",
                                                "upper-right", "center",      "first-mark"};

Point PositionOf(Origin origin, const CutJob& job) {
  switch (origin) {
    case Origin::LowerLeft: break;
    case Origin::LowerRight: return {job.width, 0};
    case Origin::UpperLeft: return {0, job.height};
    case Origin::UpperRight: return {job.width, job.height};
    case Origin::Center: return {job.width / 2, job.height / 2};
    case Origin::FirstMark: return job.marks.front().center;
  }
  return {0, 0};
}

}  // namespace

std::string_view NameOf(Origin origin) { return Names[static_cast<std::size_t>(origin)]; }

std::optional<Origin> OriginOf(std::string_view name) {
  const auto found = std::ranges::find(Names, name);
  if (found == Names.end()) return std::nullopt;
  return static_cast<Origin>(found - Names.begin());
}

Expected<Transform> TransformOf(const CutJob& job, const Placement& placement) {
  if (placement.origin == Origin::FirstMark && job.marks.empty())
    return FailureOf("the origin is to be the first mark, but the job has no marks");
  const Point origin = PositionOf(placement.origin, job);
  const double x = placement.mirrorX ? -1 : 1;
  const double y = placement.mirrorY ? -1 : 1;
  if (placement.swapAxes)
    return Transform{.a = 0, .b = x, .c = y, .d = 0, .e = -y * origin.y, .f = -x * origin.x};
  return Transform{.a = x, .b = 0, .c = 0, .d = y, .e = -x * origin.x, .f = -y * origin.y};
}

}  // namespace rastrel::cutting
