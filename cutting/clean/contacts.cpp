#include "cutting/clean/contacts.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <span>
#include <tuple>

#include "cutting/clean/line_contact.h"

namespace rastrel::cutting::clean {
namespace {

// On the way around a corner two points are near each other and near along the contour, too. Those
// that are closer than so many tolerances along the contour do not count.
constexpr double CornerTolerances = 4;

struct Touch {
  std::uint32_t on = 0;
  std::uint32_t of = 0;
  LineContact contact;
};

struct Crossing {
  std::uint32_t on = 0;
  std::uint32_t of = 0;
  double at = 0;    ///< along `on`
  double atOf = 0;  ///< along `of`
  Point point;
};

class Finder {
 public:
  Finder(const FlatJob& job, double tolerance, const std::vector<bool>& left)
      : m_Job(job), m_Tolerance(tolerance), m_Left(left) {}

  // False if the work is at its limit.
  bool Search(const LineTree& tree) {
    const std::size_t lookLimit = 300 * m_Job.lines.size() + 10'000'000;
    const std::size_t touchLimit = 16 * m_Job.lines.size() + 200'000;
    return tree.ForEachPair(
        m_Tolerance,
        [&](std::uint32_t first, std::uint32_t second) {
          Compare(std::min(first, second), std::max(first, second));
        },
        [&](std::size_t looked) {
          return looked <= lookLimit && touches.size() <= touchLimit &&
                 crossings.size() <= touchLimit;
        });
  }

  std::vector<Touch> touches;
  std::vector<Crossing> crossings;

 private:
  void Compare(std::uint32_t first, std::uint32_t second) {
    const FlatLine& a = m_Job.lines[first];
    const FlatLine& b = m_Job.lines[second];
    if (m_Left[a.contour] || m_Left[b.contour]) return;
    if (a.contour == b.contour) return CompareOwn(first, second);
    if (m_Job.contours[a.contour].operation != m_Job.contours[b.contour].operation) return;
    constexpr double Infinity = std::numeric_limits<double>::infinity();
    if (!Add(b, a, -Infinity, Infinity)) return;
    Add(a, b, -Infinity, Infinity);
    AddCrossing(first, second);
  }

  void CompareOwn(std::uint32_t first, std::uint32_t second) {
    const FlatLine& a = m_Job.lines[first];
    const FlatLine& b = m_Job.lines[second];
    const FlatContour& contour = m_Job.contours[a.contour];
    const double corner = CornerTolerances * m_Tolerance;
    const double low = a.at + a.length + corner - b.at;
    const double high = contour.closed ? contour.length + a.at - corner - b.at : b.length;
    if (low < b.length && high > 0) Add(b, a, low, high);
    const bool neighbors =
        second == first + 1 || (contour.closed && second - first == contour.lines - 1);
    if (!neighbors) AddCrossing(first, second);
  }

  bool Add(const FlatLine& on, const FlatLine& of, double low, double high) {
    auto contact = ContactOf(on, of, m_Tolerance, low, high);
    if (!contact) return false;
    contact->from += on.at;
    contact->to += on.at;
    touches.push_back({on.contour, of.contour, *contact});
    return true;
  }

  [[nodiscard]] LineInContour InContour(std::uint32_t number) const {
    const FlatLine& line = m_Job.lines[number];
    const FlatContour& contour = m_Job.contours[line.contour];
    if (number > contour.firstLine) return {&m_Job.lines[number - 1], &line};
    if (!contour.closed) return {nullptr, &line};
    return {&m_Job.lines[contour.firstLine + contour.lines - 1], &line};
  }

  void AddCrossing(std::uint32_t first, std::uint32_t second) {
    const auto point = CrossingOf(InContour(first), InContour(second));
    if (!point) return;
    const FlatLine& a = m_Job.lines[first];
    const FlatLine& b = m_Job.lines[second];
    const double at = b.at + Distance(Millimeters(b.from), *point);
    const double atOf = a.at + Distance(Millimeters(a.from), *point);
    if (a.contour == b.contour) {
      // A loop of less than the tolerance is none.
      const double loop = at - atOf;
      const FlatContour& contour = m_Job.contours[a.contour];
      const double rest = contour.closed ? contour.length - loop : loop;
      if (std::min(loop, rest) < CornerTolerances * m_Tolerance) return;
    }
    crossings.push_back({b.contour, a.contour, at, atOf, *point});
  }

  const FlatJob& m_Job;
  const double m_Tolerance;
  const std::vector<bool>& m_Left;
};

struct Sums {
  double beside = 0;
  double distance = 0;
  double square = 0;
};

// The runs of one contour on another, from their touches in order.
class Runs {
 public:
  Runs(const FlatJob& job, double tolerance) : m_Job(job), m_Gap(tolerance / 100) {}

  void Add(const Touch& touch) {
    const LineContact& contact = touch.contact;
    if (!m_Runs.empty() && contact.from <= m_Runs.back().to + m_Gap) {
      m_Runs.back().to = std::max(m_Runs.back().to, contact.to);
    } else {
      m_Runs.push_back({.on = touch.on, .of = touch.of, .from = contact.from, .to = contact.to});
      m_Sums.emplace_back();
      m_Crossings.emplace_back();
    }
    m_Sums.back().beside += contact.beside;
    m_Sums.back().distance += contact.distance;
    m_Sums.back().square += contact.square;
  }

  // After all touches.
  void Add(const Crossing& crossing) {
    auto run = std::ranges::upper_bound(m_Runs, crossing.at + m_Gap, {}, &ContactRun::from);
    if (run == m_Runs.begin() || crossing.at > (run - 1)->to + m_Gap) {
      m_Alone.push_back({.on = crossing.on,
                         .of = crossing.of,
                         .from = crossing.at,
                         .to = crossing.at,
                         .spread = std::numeric_limits<double>::infinity(),
                         .crossings = {crossing.point}});
      return;
    }
    AddTo(static_cast<std::size_t>(run - 1 - m_Runs.begin()), crossing);
  }

  void MoveTo(std::vector<ContactRun>& runs) {
    if (!m_Runs.empty()) JoinThroughStart();
    for (std::size_t i = 0; i < m_Runs.size(); ++i) {
      ContactRun& run = m_Runs[i];
      const FlatContour& on = m_Job.contours[run.on];
      run.length = run.to >= run.from ? run.to - run.from : run.to + on.length - run.from;
      const Sums& sums = m_Sums[i];
      const double mean = sums.beside > 0 ? sums.distance / sums.beside : 0;
      run.spread = sums.beside > 0
                       ? std::sqrt(std::max(0.0, sums.square / sums.beside - mean * mean))
                       : std::numeric_limits<double>::infinity();
      for (const Crossing& crossing : m_Crossings[i]) run.crossings.push_back(crossing.point);
      runs.push_back(std::move(run));
    }
    runs.insert(runs.end(), m_Alone.begin(), m_Alone.end());
    m_Runs.clear();
    m_Sums.clear();
    m_Crossings.clear();
    m_Alone.clear();
  }

 private:
  // One that goes back where another came from takes it away: they are near each other along both
  // contours.
  void AddTo(std::size_t run, const Crossing& crossing) {
    std::vector<Crossing>& crossings = m_Crossings[run];
    const std::size_t looked = std::min<std::size_t>(crossings.size(), 8);
    for (std::size_t i = 1; i <= looked; ++i) {
      const auto other = crossings.end() - static_cast<std::ptrdiff_t>(i);
      const double way = Way(m_Job.contours[crossing.on], crossing.at, other->at);
      const double wayOf = Way(m_Job.contours[crossing.of], crossing.atOf, other->atOf);
      if (wayOf > 4 * way + 400 * m_Gap) continue;
      crossings.erase(other);
      return;
    }
    crossings.push_back(crossing);
  }

  static double Way(const FlatContour& contour, double a, double b) {
    const double way = std::abs(a - b);
    return contour.closed ? std::min(way, contour.length - way) : way;
  }

  void JoinThroughStart() {
    const FlatContour& on = m_Job.contours[m_Runs.front().on];
    if (!on.closed || m_Runs.size() < 2) return;
    ContactRun& first = m_Runs.front();
    ContactRun& last = m_Runs.back();
    if (first.from > m_Gap || last.to < on.length - m_Gap) return;
    last.to = first.to;
    m_Sums.back().beside += m_Sums.front().beside;
    m_Sums.back().distance += m_Sums.front().distance;
    m_Sums.back().square += m_Sums.front().square;
    for (const Crossing& crossing : m_Crossings.front()) AddTo(m_Runs.size() - 1, crossing);
    m_Runs.erase(m_Runs.begin());
    m_Sums.erase(m_Sums.begin());
    m_Crossings.erase(m_Crossings.begin());
  }

  const FlatJob& m_Job;
  const double m_Gap;
  std::vector<ContactRun> m_Runs;
  std::vector<Sums> m_Sums;
  std::vector<std::vector<Crossing>> m_Crossings;  ///< of each run
  std::vector<ContactRun> m_Alone;                 ///< crossings outside any run
};

std::vector<ContactRun> RunsOf(const FlatJob& job, double tolerance, std::vector<Touch>& touches,
                               std::vector<Crossing>& crossings) {
  std::ranges::sort(touches, {}, [](const Touch& touch) {
    return std::tuple(touch.on, touch.of, touch.contact.from);
  });
  std::ranges::sort(crossings, {}, [](const Crossing& crossing) {
    return std::tuple(crossing.on, crossing.of, crossing.at);
  });
  std::vector<ContactRun> all;
  Runs runs(job, tolerance);
  auto crossing = crossings.begin();
  auto touch = touches.begin();
  const auto pair = [](const auto& record) { return std::pair(record.on, record.of); };
  while (touch != touches.end() || crossing != crossings.end()) {
    auto key = touch != touches.end() ? pair(*touch) : pair(*crossing);
    if (crossing != crossings.end()) key = std::min(key, pair(*crossing));
    for (; touch != touches.end() && pair(*touch) == key; ++touch) runs.Add(*touch);
    for (; crossing != crossings.end() && pair(*crossing) == key; ++crossing) runs.Add(*crossing);
    runs.MoveTo(all);
  }
  return all;
}

}  // namespace

Contacts FindContacts(const FlatJob& job, const LineTree& tree, double tolerance,
                      const std::vector<bool>& left) {
  Finder finder(job, tolerance, left);
  Contacts contacts;
  contacts.complete = finder.Search(tree);
  contacts.runs = RunsOf(job, tolerance, finder.touches, finder.crossings);
  return contacts;
}

Point PointAlong(const FlatJob& job, const FlatContour& contour, double at) {
  const auto lines = std::span<const FlatLine>(job.lines).subspan(contour.firstLine, contour.lines);
  auto line = std::ranges::upper_bound(lines, at, {}, &FlatLine::at);
  if (line != lines.begin()) --line;
  const double share = std::clamp((at - line->at) / line->length, 0.0, 1.0);
  const Point from = Millimeters(line->from);
  const Point to = Millimeters(line->to);
  return {from.x + (to.x - from.x) * share, from.y + (to.y - from.y) * share};
}

}  // namespace rastrel::cutting::clean
