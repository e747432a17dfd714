#include "cutting/clean/same_contours.h"

#include <algorithm>
#include <map>
#include <utility>

namespace rastrel::cutting::clean {
namespace {

// A corner with the way to the next: for a line its control points are its ends.
struct Corner {
  GridPoint from;
  GridPoint first;
  GridPoint second;
  auto operator<=>(const Corner&) const = default;
};

std::vector<Corner> CornersOf(const Contour& contour) {
  std::vector<Corner> corners;
  GridPoint from = OnGrid(contour.start);
  const auto add = [&](const Segment& segment) {
    const GridPoint end = OnGrid(segment.end);
    if (segment.isCurve)
      corners.push_back({from, OnGrid(segment.first), OnGrid(segment.second)});
    else if (from != end)
      corners.push_back({from, from, end});
    from = end;
  };
  for (const Segment& segment : contour.segments) add(segment);
  if (contour.closed)
    add(LineTo(contour.start));
  else
    corners.push_back({from, from, from});
  return corners;
}

// The number of the corner from which the ring reads smallest (Booth's algorithm in its form with
// two candidates), which is the same from whichever corner the ring began.
std::size_t SmallestStart(const std::vector<Corner>& ring) {
  const std::size_t size = ring.size();
  std::size_t first = 0;
  std::size_t second = 1;
  std::size_t same = 0;
  while (first < size && second < size && same < size) {
    const auto order = ring[(first + same) % size] <=> ring[(second + same) % size];
    if (order == 0) {
      ++same;
      continue;
    }
    (order > 0 ? first : second) += same + 1;
    if (first == second) ++second;
    same = 0;
  }
  return std::min(first, second);
}

std::vector<Corner> Canonical(const Contour& contour) {
  std::vector<Corner> corners = CornersOf(contour);
  if (contour.closed && !corners.empty())
    std::rotate(corners.begin(),
                corners.begin() + static_cast<std::ptrdiff_t>(SmallestStart(corners)),
                corners.end());
  return corners;
}

// The same of both directions.
std::vector<Corner> KeyOf(const Contour& contour) {
  return std::min(Canonical(contour), Canonical(Reversed(contour)));
}

std::uint64_t HashOf(const std::vector<Corner>& corners) {
  std::uint64_t hash = 1469598103934665603U;
  const auto mix = [&](std::int64_t value) {
    hash = (hash ^ static_cast<std::uint64_t>(value)) * 1099511628211U;
    hash ^= hash >> 29U;
  };
  for (const Corner& corner : corners) {
    for (const GridPoint point : {corner.from, corner.first, corner.second}) {
      mix(point.x);
      mix(point.y);
    }
  }
  return hash;
}

}  // namespace

std::vector<std::optional<std::uint32_t>> FindSameContours(const CutJob& job, const FlatJob& flat) {
  std::vector<std::optional<std::uint32_t>> same(flat.contours.size());
  // A key may be as long as the job: only its hash is kept, and equal ones are compared again.
  std::map<std::pair<Operation, std::uint64_t>, std::uint32_t> first;
  const auto keyOf = [&](std::uint32_t number) {
    const ContourPlace place = flat.contours[number].place;
    return KeyOf(job.paths[place.path].contours[place.contour]);
  };
  for (std::uint32_t number = 0; number < flat.contours.size(); ++number) {
    const FlatContour& contour = flat.contours[number];
    if (contour.lines == 0) continue;
    const std::vector<Corner> key = keyOf(number);
    const auto [found, isNew] = first.try_emplace({contour.operation, HashOf(key)}, number);
    if (!isNew && keyOf(found->second) == key) same[number] = found->second;
  }
  return same;
}

}  // namespace rastrel::cutting::clean
