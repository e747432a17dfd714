#include "cutting/clean/ends.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <tuple>

namespace rastrel::cutting::clean {
namespace {

constexpr std::size_t MaximumInSquare = 64;
constexpr std::size_t Candidates = 6;

struct Place {
  std::size_t group = 0;
  std::int64_t column = 0;
  std::int64_t row = 0;
  std::size_t end = 0;
  auto operator<=>(const Place&) const = default;
};

class Squares {
 public:
  Squares(std::span<const OpenEnd> ends, double tolerance) : m_Ends(ends), m_Tolerance(tolerance) {
    for (std::size_t i = 0; i < ends.size(); ++i) m_Places.push_back(PlaceOf(i));
    std::ranges::sort(m_Places);
  }

  // Adds the nearest ends, if they are near.
  void AddPairs(std::size_t end, std::vector<EndPair>& pairs) const {
    const Place here = PlaceOf(end);
    std::vector<EndPair> near;
    for (std::int64_t column = here.column - 1; column <= here.column + 1; ++column) {
      for (std::int64_t row = here.row - 1; row <= here.row + 1; ++row)
        AddFrom({here.group, column, row, 0}, end, near);
    }
    const std::size_t kept = std::min(near.size(), Candidates);
    std::ranges::partial_sort(near, near.begin() + static_cast<std::ptrdiff_t>(kept), {},
                              &EndPair::gap);
    pairs.insert(pairs.end(), near.begin(), near.begin() + static_cast<std::ptrdiff_t>(kept));
  }

 private:
  [[nodiscard]] Place PlaceOf(std::size_t end) const {
    const OpenEnd& open = m_Ends[end];
    return {open.group, std::llround(std::floor(open.point.x / m_Tolerance)),
            std::llround(std::floor(open.point.y / m_Tolerance)), end};
  }

  void AddFrom(const Place& square, std::size_t end, std::vector<EndPair>& near) const {
    auto place = std::ranges::lower_bound(m_Places, square);
    for (std::size_t i = 0; i < MaximumInSquare && place != m_Places.end(); ++i, ++place) {
      if (place->group != square.group || place->column != square.column ||
          place->row != square.row)
        return;
      const double gap = Distance(m_Ends[end].point, m_Ends[place->end].point);
      if (place->end != end && gap <= m_Tolerance) near.push_back({end, place->end, gap});
    }
  }

  std::span<const OpenEnd> m_Ends;
  double m_Tolerance;
  std::vector<Place> m_Places;
};

}  // namespace

std::vector<EndPair> PairEnds(std::span<const OpenEnd> ends, double tolerance) {
  const Squares squares(ends, tolerance);
  std::vector<EndPair> candidates;
  for (std::size_t i = 0; i < ends.size(); ++i) squares.AddPairs(i, candidates);
  // A contour that closes comes before one that joins another at the same distance.
  std::ranges::sort(candidates, {}, [&](const EndPair& pair) {
    const bool joins = ends[pair.first].contour != ends[pair.second].contour;
    return std::tuple(pair.gap, joins, pair.first, pair.second);
  });
  std::vector<bool> used(ends.size());
  std::vector<EndPair> pairs;
  for (const EndPair& pair : candidates) {
    if (used[pair.first] || used[pair.second]) continue;
    used[pair.first] = used[pair.second] = true;
    pairs.push_back(
        {std::min(pair.first, pair.second), std::max(pair.first, pair.second), pair.gap});
  }
  return pairs;
}

}  // namespace rastrel::cutting::clean
