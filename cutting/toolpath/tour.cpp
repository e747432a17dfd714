#include "cutting/toolpath/tour.h"

#include <algorithm>
#include <cmath>

#include "cutting/toolpath/point_index.h"

namespace rastrel::cutting {
namespace {

constexpr std::size_t Neighbors = 6;
constexpr std::size_t MaximumReversal = 1'000;  // turning longer parts round would cost more than n
constexpr std::size_t StepsPerStop = 40;        // times log2 of the stops
constexpr int StartSweeps = 2;
constexpr double LeastGain = 1e-9;  // millimetres: less is rounding, and could go on for ever

struct Ends {
  Point in;
  Point out;
};

// All places are on a sheet, so the squares can't overflow, against which Distance is careful.
double Way(Point a, Point b) {
  const double x = b.x - a.x;
  const double y = b.y - a.y;
  return std::sqrt(x * x + y * y);
}

Ends EndsOf(const Contour& contour, const TourStop& stop) {
  if (contour.closed) {
    const Point place = StartAt(contour, stop.start);
    return {place, place};
  }
  return stop.reversed ? Ends{contour.End(), contour.start} : Ends{contour.start, contour.End()};
}

std::vector<TourStop> NearestNext(std::span<const Contour* const> contours, Point from) {
  std::vector<PointIndex::Entry> entries;
  for (std::uint32_t i = 0; i < contours.size(); ++i) {
    const Contour& contour = *contours[i];
    const std::size_t count = contour.closed ? StartCount(contour) : 2;
    for (std::uint32_t tag = 0; tag < count; ++tag) {
      const Point place = contour.closed ? StartAt(contour, tag)
                          : tag == 0     ? contour.start
                                         : contour.End();
      entries.push_back({place, i, tag});
    }
  }
  PointIndex index(std::move(entries), contours.size());
  std::vector<TourStop> tour;
  tour.reserve(contours.size());
  Point at = from;
  while (const auto next = index.Nearest(at)) {
    const Contour& contour = *contours[next->owner];
    TourStop stop{.contour = next->owner};
    if (contour.closed) {
      stop.start = next->tag;
    } else {
      stop.reversed = next->tag == 1;
    }
    at = EndsOf(contour, stop).out;
    tour.push_back(stop);
    index.Remove(next->owner);
  }
  return tour;
}

// Turns parts of a tour round as long as that makes it shorter. The places where closed contours
// begin stay. The tour begins at a fixed point and may end anywhere.
class TwoOpt {
 public:
  TwoOpt(std::span<const Contour* const> contours, Point from, std::vector<TourStop> tour);
  [[nodiscard]] std::vector<TourStop> Run();

 private:
  [[nodiscard]] Point Before(std::size_t i) const { return i == 0 ? m_from : m_ends[i - 1].out; }
  // The way that turning the stops first..last round would save.
  [[nodiscard]] double Gain(std::size_t first, std::size_t last) const;
  void Reverse(std::size_t first, std::size_t last);
  bool TryAt(std::size_t i);
  bool TryReversal(std::size_t first, std::size_t last);
  void FindNeighbors();

  Point m_from;
  std::vector<TourStop> m_tour;
  std::vector<Ends> m_ends;             // of each stop
  std::vector<std::size_t> m_position;  // of each contour in the tour
  std::vector<bool> m_isClosed;         // each contour
  // Of each contour: Neighbors near its first end, and as many near its other one.
  std::vector<std::uint32_t> m_neighbors;
  std::size_t m_steps;
};

TwoOpt::TwoOpt(std::span<const Contour* const> contours, Point from, std::vector<TourStop> tour)
    : m_from(from), m_tour(std::move(tour)), m_position(contours.size()) {
  for (const Contour* contour : contours) m_isClosed.push_back(contour->closed);
  for (std::size_t i = 0; i < m_tour.size(); ++i) {
    m_ends.push_back(EndsOf(*contours[m_tour[i].contour], m_tour[i]));
    m_position[m_tour[i].contour] = i;
  }
  m_steps = static_cast<std::size_t>(static_cast<double>(StepsPerStop * m_tour.size()) *
                                     std::log2(static_cast<double>(m_tour.size()) + 2));
  FindNeighbors();
}

void TwoOpt::FindNeighbors() {
  std::vector<PointIndex::Entry> entries;
  for (std::size_t i = 0; i < m_tour.size(); ++i) {
    const auto contour = static_cast<std::uint32_t>(m_tour[i].contour);
    entries.push_back({m_ends[i].in, contour, 0});
    if (!m_isClosed[contour]) entries.push_back({m_ends[i].out, contour, 1});
  }
  const PointIndex index(std::move(entries), m_tour.size());
  m_neighbors.assign(m_tour.size() * 2 * Neighbors, static_cast<std::uint32_t>(-1));
  std::vector<PointIndex::Entry> found;
  for (std::size_t i = 0; i < m_tour.size(); ++i) {
    const auto contour = static_cast<std::uint32_t>(m_tour[i].contour);
    for (std::size_t end = 0; end < (m_isClosed[contour] ? 1 : 2); ++end) {
      index.FindNearest(end == 0 ? m_ends[i].in : m_ends[i].out, Neighbors, contour, found);
      for (std::size_t k = 0; k < found.size(); ++k)
        m_neighbors[(contour * 2 + end) * Neighbors + k] = found[k].owner;
    }
  }
}

double TwoOpt::Gain(std::size_t first, std::size_t last) const {
  double gain = Way(Before(first), m_ends[first].in) - Way(Before(first), m_ends[last].out);
  if (last + 1 < m_ends.size()) {
    gain += Way(m_ends[last].out, m_ends[last + 1].in) - Way(m_ends[first].in, m_ends[last + 1].in);
  }
  return gain;
}

void TwoOpt::Reverse(std::size_t first, std::size_t last) {
  const auto begin = static_cast<std::ptrdiff_t>(first);
  const auto end = static_cast<std::ptrdiff_t>(last) + 1;
  std::reverse(m_tour.begin() + begin, m_tour.begin() + end);
  std::reverse(m_ends.begin() + begin, m_ends.begin() + end);
  for (std::size_t i = first; i <= last; ++i) {
    if (!m_isClosed[m_tour[i].contour]) m_tour[i].reversed = !m_tour[i].reversed;
    std::swap(m_ends[i].in, m_ends[i].out);
    m_position[m_tour[i].contour] = i;
  }
}

bool TwoOpt::TryReversal(std::size_t first, std::size_t last) {
  --m_steps;
  if (first > last || last - first >= MaximumReversal || Gain(first, last) <= LeastGain)
    return false;
  m_steps -= std::min(m_steps, last - first + 1);
  Reverse(first, last);
  return true;
}

// Looks for a turn after which the stop lies beside one of its neighbors.
bool TwoOpt::TryAt(std::size_t i) {
  const std::size_t contour = m_tour[i].contour;
  for (std::size_t k = 0; k < 2 * Neighbors; ++k) {
    const std::uint32_t neighbor = m_neighbors[contour * 2 * Neighbors + k];
    if (neighbor == static_cast<std::uint32_t>(-1)) continue;
    const std::size_t j = m_position[neighbor];
    const std::size_t low = std::min(i, j);
    const std::size_t high = std::max(i, j);
    if (m_steps < 4) return false;
    if (TryReversal(low + 1, high)) return true;
    if (TryReversal(low, high - 1)) return true;
  }
  // The last one may be turned with all that follows.
  return m_steps >= 4 && TryReversal(i, m_tour.size() - 1);
}

std::vector<TourStop> TwoOpt::Run() {
  for (bool isBetter = true; isBetter && m_steps >= 4;) {
    isBetter = false;
    for (std::size_t i = 0; i < m_tour.size(); ++i) {
      while (TryAt(i)) isBetter = true;
    }
  }
  return std::move(m_tour);
}

}  // namespace

std::size_t StartCount(const Contour& contour) {
  const bool endsAtStart =
      !contour.segments.empty() && contour.segments.back().end == contour.start;
  return contour.segments.size() + (endsAtStart ? 0 : 1);
}

Point StartAt(const Contour& contour, std::size_t index) {
  return index == 0 ? contour.start : contour.segments[index - 1].end;
}

std::vector<TourStop> FindTour(std::span<const Contour* const> contours, Point from) {
  std::vector<TourStop> tour = NearestNext(contours, from);
  if (tour.size() < 2) return tour;
  return TwoOpt(contours, from, std::move(tour)).Run();
}

void ChooseStarts(std::span<const Contour* const> contours, Point from,
                  std::vector<TourStop>& tour) {
  for (int sweep = 0; sweep < StartSweeps; ++sweep) {
    Point before = from;
    for (std::size_t i = 0; i < tour.size(); ++i) {
      const Contour& contour = *contours[tour[i].contour];
      const bool isLast = i + 1 == tour.size();
      const Point next = isLast ? Point{} : EndsOf(*contours[tour[i + 1].contour], tour[i + 1]).in;
      const auto cost = [&](const TourStop& stop) {
        const Ends ends = EndsOf(contour, stop);
        return Way(before, ends.in) + (isLast ? 0 : Way(ends.out, next));
      };
      double least = cost(tour[i]);
      const std::size_t count = contour.closed ? StartCount(contour) : 2;
      for (std::size_t k = 0; k < count; ++k) {
        TourStop other{.contour = tour[i].contour};
        if (contour.closed) {
          other.start = k;
        } else {
          other.reversed = k == 1;
        }
        const double way = cost(other);
        if (way + LeastGain >= least) continue;
        least = way;
        tour[i] = other;
      }
      before = EndsOf(contour, tour[i]).out;
    }
  }
}

}  // namespace rastrel::cutting
