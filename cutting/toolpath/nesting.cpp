#include "cutting/toolpath/nesting.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <numeric>
#include <set>

namespace rastrel::cutting {
namespace {

constexpr double FlatteningTolerance = 0.02;
// Points are taken to a grid of 0.1 µm, so that ends that rounding has parted meet again.
constexpr double GridUnits = 10'000;
// A point on another contour's line is off it by half a unit of the grid, from its own rounding.
constexpr double SamePlace = 1;
constexpr std::size_t MaximumOwnChains = 64;

double Snapped(double value) { return std::round(value * GridUnits); }

struct Ring {
  std::vector<Point> points;
  bool closed = false;
  double area = 0;       // counterclockwise is positive
  std::size_t size = 0;  // position among all by their area, the largest first
  std::size_t duplicateOf = Nesting::None;
};

// A part of a ring from left to right, without vertical lines at its ends. A sweep from left to
// right keeps those that it crosses in their order from below. Its place in the chain only moves
// on, so all looks at one chain take as many steps as it has points.
struct Chain {
  std::size_t ring = 0;
  std::vector<Point> points;
  bool insideIsAbove = false;
  mutable std::size_t at = 0;

  // Moves to the line that leaves the sweep's place to the right.
  void MoveTo(double x) const {
    while (at + 2 < points.size() && points[at + 1].x <= x) ++at;
  }
  [[nodiscard]] double HeightAt(double x) const {
    const Point& a = points[at];
    const Point& b = points[at + 1];
    if (x >= b.x) return b.y;
    return a.y + (b.y - a.y) * ((x - a.x) / (b.x - a.x));
  }
  [[nodiscard]] double LineEnd() const { return points[at + 1].x; }
};

struct Event {
  double x = 0;
  bool begins = false;
  double y = 0;
  std::size_t size = 0;
  std::size_t chain = 0;
};

Ring RingOf(const Contour& contour) {
  Ring ring;
  ring.closed = contour.closed;
  if (!IsOnAnySheet(contour)) return ring;
  for (Point point : Flatten(contour, FlatteningTolerance)) {
    const Point snapped{Snapped(point.x), Snapped(point.y)};
    if (ring.points.empty() || ring.points.back() != snapped) ring.points.push_back(snapped);
  }
  for (std::size_t i = 0; i < ring.points.size(); ++i) {
    const Point& a = ring.points[i];
    const Point& b = ring.points[(i + 1) % ring.points.size()];
    ring.area += (a.x * b.y - a.y * b.x) / 2;
  }
  return ring;
}

bool LiesBefore(Point a, Point b) { return a.x != b.x ? a.x < b.x : a.y < b.y; }

// Rings of the same points are one ring to the sweep, wherever they start and however they run.
void FindDuplicates(std::vector<Ring>& rings) {
  using Points = std::vector<Point>;
  const auto less = [](const Points& a, const Points& b) {
    return std::ranges::lexicographical_compare(a, b, LiesBefore);
  };
  // Only rings that agree in their number of points and in the leftmost one can be the same: others
  // are never sorted.
  std::map<std::pair<std::size_t, double>, std::vector<std::size_t>> alike;
  for (std::size_t i = 0; i < rings.size(); ++i) {
    if (rings[i].closed && !rings[i].points.empty()) {
      const auto lowest = std::ranges::min_element(rings[i].points, LiesBefore);
      alike[{rings[i].points.size(), lowest->x * 3 + lowest->y}].push_back(i);
    }
  }
  for (const auto& [unused, indices] : alike) {
    if (indices.size() < 2) continue;
    std::map<Points, std::size_t, decltype(less)> first(less);
    for (std::size_t index : indices) {
      Points sorted = rings[index].points;
      std::ranges::sort(sorted, LiesBefore);
      const auto [found, isNew] = first.emplace(std::move(sorted), index);
      if (!isNew) rings[index].duplicateOf = found->second;
    }
  }
}

void SortBySize(std::vector<Ring>& rings) {
  std::vector<std::size_t> order(rings.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::stable_sort(order, [&](std::size_t a, std::size_t b) {
    return std::abs(rings[a].area) > std::abs(rings[b].area);
  });
  for (std::size_t i = 0; i < order.size(); ++i) rings[order[i]].size = i;
}

// Adds points[first..last] of the ring, whose x does not turn, as a chain from left to right.
void AddChain(std::vector<Chain>& chains, std::size_t index, const Ring& ring, std::size_t first,
              std::size_t last) {
  std::vector<Point> points;
  for (std::size_t i = first; i <= last; ++i) points.push_back(ring.points[i % ring.points.size()]);
  const bool rightward = points.back().x > points.front().x;
  if (!rightward) std::ranges::reverse(points);
  std::size_t begin = 0;
  while (begin + 1 < points.size() && points[begin + 1].x == points[begin].x) ++begin;
  std::size_t end = points.size();
  while (end > begin + 1 && points[end - 2].x == points[end - 1].x) --end;
  if (end < begin + 2) return;
  Chain chain;
  chain.ring = index;
  chain.points.assign(points.begin() + static_cast<std::ptrdiff_t>(begin),
                      points.begin() + static_cast<std::ptrdiff_t>(end));
  // On the left of a line of a counterclockwise ring is its inside.
  chain.insideIsAbove = rightward == (ring.area > 0);
  chains.push_back(std::move(chain));
}

void SplitIntoChains(std::vector<Chain>& chains, std::size_t index, const Ring& ring) {
  const std::size_t count = ring.points.size();
  if (count == 0) return;
  const std::size_t before = chains.size();
  // A closed ring is gone round from its leftmost point, where a chain begins in any case.
  const std::size_t first =
      ring.closed ? static_cast<std::size_t>(std::ranges::min_element(ring.points, LiesBefore) -
                                             ring.points.begin())
                  : 0;
  const std::size_t lines = ring.closed ? count : count - 1;
  std::size_t begin = first;
  double direction = 0;
  for (std::size_t i = first; i < first + lines; ++i) {
    const double step = ring.points[(i + 1) % count].x - ring.points[i % count].x;
    if (step != 0 && direction != 0 && (step > 0) != (direction > 0)) {
      AddChain(chains, index, ring, begin, i);
      begin = i;
    }
    if (step != 0) direction = step;
  }
  if (direction != 0) AddChain(chains, index, ring, begin, first + lines);
  if (chains.size() > before) return;
  // A point or an upright line holds nothing, and is only looked for at its lower end.
  const Point lowest = *std::ranges::min_element(ring.points, LiesBefore);
  Chain probe;
  probe.ring = index;
  probe.points = {lowest, {lowest.x + 1, lowest.y}};
  chains.push_back(std::move(probe));
}

class Sweep {
 public:
  explicit Sweep(const std::vector<Ring>& rings);
  // Of each ring the innermost closed one that holds it.
  [[nodiscard]] std::vector<std::size_t> Parents();

 private:
  struct IsBelow {
    const Sweep* sweep;
    bool operator()(std::size_t a, std::size_t b) const { return sweep->Compare(a, b); }
  };
  struct Under {
    std::size_t ring = Nesting::None;
    bool isInside = false;  // whether the place above that ring's line is within it
  };

  [[nodiscard]] bool Compare(std::size_t a, std::size_t b) const;
  void Begin(std::size_t chain);
  void Look(std::size_t ring, std::size_t chain);
  [[nodiscard]] std::vector<std::size_t> Resolved() const;

  const std::vector<Ring>& m_rings;
  std::vector<Chain> m_chains;
  std::vector<Event> m_events;
  double m_x = 0;
  std::set<std::size_t, IsBelow> m_crossed{IsBelow{this}};
  std::vector<std::set<std::size_t, IsBelow>::iterator> m_places;
  std::vector<Under> m_under;
  std::vector<bool> m_isSeen;
};

Sweep::Sweep(const std::vector<Ring>& rings)
    : m_rings(rings), m_under(rings.size()), m_isSeen(rings.size()) {
  for (std::size_t i = 0; i < rings.size(); ++i) {
    if (rings[i].duplicateOf == Nesting::None) SplitIntoChains(m_chains, i, rings[i]);
  }
  for (std::size_t i = 0; i < m_chains.size(); ++i) {
    const Chain& chain = m_chains[i];
    const std::size_t size = rings[chain.ring].size;
    m_events.push_back({chain.points.front().x, true, chain.points.front().y, size, i});
    m_events.push_back({chain.points.back().x, false, chain.points.back().y, size, i});
  }
  std::ranges::sort(m_events, [](const Event& a, const Event& b) {
    if (a.x != b.x) return a.x < b.x;
    if (a.begins != b.begins) return b.begins;
    if (a.y != b.y) return a.y < b.y;
    if (a.size != b.size) return a.size < b.size;
    return a.chain < b.chain;
  });
  m_places.assign(m_chains.size(), m_crossed.end());
}

// Which is below at the sweep's place. Where both are at one height, where the first line ends; a
// run that both have in common belongs to the larger ring first, which may hold the other.
bool Sweep::Compare(std::size_t a, std::size_t b) const {
  const Chain& first = m_chains[a];
  const Chain& second = m_chains[b];
  first.MoveTo(m_x);
  second.MoveTo(m_x);
  double gap = first.HeightAt(m_x) - second.HeightAt(m_x);
  if (std::abs(gap) > SamePlace) return gap < 0;
  const double end = std::min(first.LineEnd(), second.LineEnd());
  gap = first.HeightAt(end) - second.HeightAt(end);
  if (std::abs(gap) > SamePlace) return gap < 0;
  const std::size_t firstSize = m_rings[first.ring].size;
  const std::size_t secondSize = m_rings[second.ring].size;
  return firstSize != secondSize ? firstSize < secondSize : a < b;
}

void Sweep::Look(std::size_t ring, std::size_t chain) {
  auto place = m_crossed.upper_bound(chain);
  for (std::size_t i = 0; i < MaximumOwnChains && place != m_crossed.begin(); ++i) {
    --place;
    const Chain& below = m_chains[*place];
    if (below.ring == ring) continue;
    m_under[ring] = {below.ring, below.insideIsAbove};
    return;
  }
}

void Sweep::Begin(std::size_t chain) {
  const std::size_t ring = m_chains[chain].ring;
  // The first chain of a ring begins at its leftmost place, the lowest there: below it is nothing
  // of the ring itself.
  if (!m_isSeen[ring]) {
    m_isSeen[ring] = true;
    Look(ring, chain);
  }
  if (m_rings[ring].closed && m_rings[ring].area != 0)
    m_places[chain] = m_crossed.insert(chain).first;
}

std::vector<std::size_t> Sweep::Parents() {
  for (const Event& event : m_events) {
    m_x = event.x;
    if (event.begins) {
      Begin(event.chain);
    } else if (m_places[event.chain] != m_crossed.end()) {
      m_crossed.erase(m_places[event.chain]);
    }
  }
  return Resolved();
}

// A ring above another's upper line lies where that one lies. Rings that cross may point at each
// other, so a way that comes back to itself ends there.
std::vector<std::size_t> Sweep::Resolved() const {
  enum class State : std::uint8_t { Open, OnTheWay, Done };
  std::vector<std::size_t> parents(m_rings.size(), Nesting::None);
  std::vector<State> states(m_rings.size(), State::Open);
  std::vector<std::size_t> way;
  for (std::size_t start = 0; start < m_rings.size(); ++start) {
    std::size_t ring = start;
    while (ring != Nesting::None && states[ring] == State::Open) {
      states[ring] = State::OnTheWay;
      way.push_back(ring);
      ring = m_under[ring].isInside ? Nesting::None : m_under[ring].ring;
    }
    for (; !way.empty(); way.pop_back()) {
      const Under& under = m_under[way.back()];
      if (under.ring != Nesting::None) {
        parents[way.back()] = under.isInside ? under.ring : parents[under.ring];
      }
      states[way.back()] = State::Done;
    }
  }
  return parents;
}

// The number of rings around each. Parents of rings that cross may form a circle, which is opened.
void FindDepths(Nesting& nesting) {
  constexpr int Unknown = -1;
  constexpr int OnTheWay = -2;
  nesting.depth.assign(nesting.parent.size(), Unknown);
  std::vector<std::size_t> way;
  for (std::size_t start = 0; start < nesting.parent.size(); ++start) {
    std::size_t ring = start;
    while (ring != Nesting::None && nesting.depth[ring] == Unknown) {
      nesting.depth[ring] = OnTheWay;
      way.push_back(ring);
      ring = nesting.parent[ring];
    }
    if (ring != Nesting::None && nesting.depth[ring] == OnTheWay)
      nesting.parent[way.back()] = Nesting::None;
    for (; !way.empty(); way.pop_back()) {
      const std::size_t parent = nesting.parent[way.back()];
      nesting.depth[way.back()] = parent == Nesting::None ? 0 : nesting.depth[parent] + 1;
    }
  }
}

bool IsOnAnySheet(Point point) {
  return std::abs(point.x) <= MaximumCoordinate && std::abs(point.y) <= MaximumCoordinate;
}

}  // namespace

bool IsOnAnySheet(const Contour& contour) {
  return IsOnAnySheet(contour.start) &&
         std::ranges::all_of(contour.segments, [](const Segment& segment) {
           return IsOnAnySheet(segment.end) && (!segment.isCurve || (IsOnAnySheet(segment.first) &&
                                                                     IsOnAnySheet(segment.second)));
         });
}

Nesting NestingOf(std::span<const Contour* const> contours) {
  std::vector<Ring> rings;
  rings.reserve(contours.size());
  for (const Contour* contour : contours) rings.push_back(RingOf(*contour));
  FindDuplicates(rings);
  SortBySize(rings);
  Nesting nesting;
  nesting.parent = Sweep(rings).Parents();
  for (std::size_t i = 0; i < rings.size(); ++i) {
    if (rings[i].duplicateOf != Nesting::None)
      nesting.parent[i] = nesting.parent[rings[i].duplicateOf];
  }
  FindDepths(nesting);
  return nesting;
}

}  // namespace rastrel::cutting
