#include "cutting/clean/covering.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

namespace rastrel::cutting::clean {
namespace {

using ContourAndPath = std::pair<std::uint32_t, std::size_t>;

struct Turns {
  std::size_t path = 0;
  int winding = 0;
  int lines = 0;
};

bool IsFilled(const CutPath& path) {
  return path.paint.kind != Paint::Kind::Stroke && HasTool(path.operation);
}

class Search {
 public:
  explicit Search(const Survey& survey) : m_Survey(survey) {
    for (const CutPath& path : survey.job.paths) {
      const bool closed = std::ranges::all_of(path.contours, &Contour::closed);
      m_Covers.push_back(IsFilled(path) && closed);
    }
    for (std::size_t path = 0; path < m_Covers.size(); ++path) {
      if (m_Covers[path]) m_LastCover = path;
    }
    for (const FlatContour& contour : survey.flat.contours) {
      if (m_Covers[contour.place.path]) AddLines(contour);
    }
    m_Tree.emplace(m_Lines);
    for (const auto* runs : {&survey.crossings, &survey.overlaps}) {
      for (const ContactRun& run : *runs) {
        if (!run.crossings.empty()) m_Crossed.emplace_back(run.of, PathOf(run.on));
        const double end = survey.flat.contours[run.on].length;
        m_Touched.push_back({run.on, run.from, run.to >= run.from ? run.to : end});
      }
    }
    std::ranges::sort(m_Crossed);
    std::ranges::sort(m_Touched, {}, &Touched::contour);
  }

  Coverings Run() {
    Coverings coverings;
    const std::size_t limit = 200 * m_Survey.flat.lines.size() + 20'000'000;
    for (std::uint32_t i = 0; i < m_Survey.flat.contours.size(); ++i) {
      const FlatContour& contour = m_Survey.flat.contours[i];
      if (contour.lines == 0 || m_Survey.sameAs[i] || contour.place.path >= m_LastCover) continue;
      if (!IsFilled(m_Survey.job.paths[contour.place.path])) continue;
      if (const auto path = CoverOf(i)) coverings.found.push_back({i, *path});
      coverings.complete = m_Looked <= limit;
      if (!coverings.complete) break;
    }
    return coverings;
  }

 private:
  struct Touched {
    std::uint32_t contour = 0;
    double from = 0;
    double to = 0;
  };

  void AddLines(const FlatContour& contour) {
    const auto first = m_Survey.flat.lines.begin() + contour.firstLine;
    m_Lines.insert(m_Lines.end(), first, first + contour.lines);
  }

  [[nodiscard]] std::size_t PathOf(std::uint32_t contour) const {
    return m_Survey.flat.contours[contour].place.path;
  }

  // A place of the contour that lies on no other.
  [[nodiscard]] double FreePlace(std::uint32_t contour) const {
    const double length = m_Survey.flat.contours[contour].length;
    double at = length / 2;
    auto run = std::ranges::lower_bound(m_Touched, contour, {}, &Touched::contour);
    for (; run != m_Touched.end() && run->contour == contour; ++run) {
      if (at >= run->from && at <= run->to) at = run->to + (length - run->to) / 2;
    }
    return at;
  }

  std::optional<std::size_t> CoverOf(std::uint32_t number) {
    const FlatContour& contour = m_Survey.flat.contours[number];
    const GridPoint point = OnGrid(PointAlong(m_Survey.flat, contour, FreePlace(number)));
    const Point at = Millimeters(point);
    m_Turns.clear();
    const Box toTheLeft{-2 * Farthest, at.y, at.x, at.y};
    m_Looked += m_Tree->ForEachNear(
        toTheLeft, [&](std::uint32_t line) { Count(contour, point, m_Lines[line]); });
    m_Looked += m_Turns.size();
    std::ranges::sort(m_Turns, {}, &Turns::path);
    for (std::size_t i = 0; i < m_Turns.size();) {
      Turns sum{.path = m_Turns[i].path};
      for (; i < m_Turns.size() && m_Turns[i].path == sum.path; ++i) {
        sum.winding += m_Turns[i].winding;
        ++sum.lines;
      }
      const bool evenOdd = m_Survey.job.paths[sum.path].paint.kind == Paint::Kind::EvenOddFill;
      const bool inside = evenOdd ? sum.lines % 2 == 1 : sum.winding != 0;
      if (inside && !std::ranges::binary_search(m_Crossed, ContourAndPath{number, sum.path}))
        return sum.path;
    }
    return std::nullopt;
  }

  // A line of a later path that a ray from the point to the left meets.
  void Count(const FlatContour& contour, GridPoint point, const FlatLine& line) {
    const FlatContour& other = m_Survey.flat.contours[line.contour];
    if (other.place.path <= contour.place.path || other.operation != contour.operation) return;
    const bool upward = line.from.y <= point.y && line.to.y > point.y;
    const bool downward = line.to.y <= point.y && line.from.y > point.y;
    if (!upward && !downward) return;
    const int side = SideOf(line.from, line.to, point);
    if ((upward && side < 0) || (downward && side > 0))
      m_Turns.push_back({other.place.path, upward ? 1 : -1, 1});
  }

  const Survey& m_Survey;
  std::vector<bool> m_Covers;  ///< by path
  std::size_t m_LastCover = 0;
  std::vector<FlatLine> m_Lines;
  std::optional<LineTree> m_Tree;
  std::vector<ContourAndPath> m_Crossed;
  std::vector<Touched> m_Touched;
  std::vector<Turns> m_Turns;
  std::size_t m_Looked = 0;
};

}  // namespace

Coverings FindCoverings(const Survey& survey) {
  const auto filled = std::ranges::count_if(survey.job.paths, IsFilled);
  if (filled < 2) return {};
  return Search(survey).Run();
}

}  // namespace rastrel::cutting::clean
