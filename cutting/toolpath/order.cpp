#include "cutting/toolpath/order.h"

#include <algorithm>
#include <array>
#include <map>
#include <numeric>
#include <string>
#include <tuple>

#include "cutting/toolpath/nesting.h"
#include "cutting/toolpath/tour.h"

namespace rastrel::cutting {
namespace {

// Cutting through comes last, for afterwards a piece may move.
int RankOf(Operation operation) {
  switch (operation) {
    case Operation::Mark: return 0;
    case Operation::Drill: return 1;
    case Operation::Engrave: return 2;
    case Operation::Crease: return 3;
    case Operation::Perforate: return 4;
    case Operation::CutHalf: return 5;
    case Operation::Cut: return 6;
    case Operation::Print:
    case Operation::Ignore: break;
  }
  return 7;
}

std::pair<int, int> RankOf(const CutPath& path) {
  return {path.settings.order, RankOf(path.operation)};
}

using Indices = std::vector<std::size_t>;

// The lines of one order and operation, and how they lie in each other.
struct Group {
  Indices lines;  // those on a sheet
  Indices apart;  // the others
  Nesting nesting;
};

class Ordering {
 public:
  Ordering(const CutJob& job, const std::vector<ToolLine>& lines, Point start);
  // All lines in their order. The second is the order given where that is allowed, with the starts
  // chosen; else empty.
  [[nodiscard]] std::vector<TourStop> Found();
  [[nodiscard]] std::vector<TourStop> Given() const;
  [[nodiscard]] const std::vector<const Contour*>& Contours() const { return m_contours; }

 private:
  void FindGroups();
  [[nodiscard]] std::vector<Indices> ToolsOf(const Group& group) const;
  void AddGroup(const Group& group);
  void AddNested(const Group& group, const Indices& members);
  [[nodiscard]] std::vector<TourStop> TourOf(const Group& group, const Indices& members) const;

  const CutJob& m_job;
  const std::vector<ToolLine>& m_lines;
  Point m_at;
  Point m_start;
  std::vector<const Contour*> m_contours;
  std::map<std::pair<int, int>, Group> m_groups;
  std::vector<TourStop> m_found;
};

Ordering::Ordering(const CutJob& job, const std::vector<ToolLine>& lines, Point start)
    : m_job(job), m_lines(lines), m_at(start), m_start(start) {
  for (const ToolLine& line : lines) m_contours.push_back(&line.contour);
  FindGroups();
}

void Ordering::FindGroups() {
  for (std::size_t i = 0; i < m_lines.size(); ++i) {
    Group& group = m_groups[RankOf(m_job.paths[m_lines[i].path])];
    (IsOnAnySheet(m_lines[i].contour) ? group.lines : group.apart).push_back(i);
  }
  for (auto& [rank, group] : m_groups) {
    std::vector<const Contour*> contours;
    for (std::size_t line : group.lines) contours.push_back(m_contours[line]);
    group.nesting = NestingOf(contours);
  }
}

// The group's members by their tools, the deeper ones first; all in one if a tool has lines both
// within and around those of another.
std::vector<Indices> Ordering::ToolsOf(const Group& group) const {
  std::map<std::string, Indices> byTool;
  for (std::size_t i = 0; i < group.lines.size(); ++i)
    byTool[m_job.paths[m_lines[group.lines[i]].path].settings.tool].push_back(i);
  std::vector<std::pair<double, const Indices*>> tools;
  for (const auto& [tool, members] : byTool) {
    double depths = 0;
    for (std::size_t member : members) depths += group.nesting.depth[member];
    tools.emplace_back(-depths / static_cast<double>(members.size()), &members);
  }
  std::ranges::stable_sort(tools, {}, &std::pair<double, const Indices*>::first);
  std::vector<std::size_t> turn(group.lines.size());
  std::vector<Indices> result;
  for (const auto& [depth, members] : tools) {
    for (std::size_t member : *members) turn[member] = result.size();
    result.push_back(*members);
  }
  for (std::size_t i = 0; i < group.lines.size(); ++i) {
    const std::size_t parent = group.nesting.parent[i];
    if (parent == Nesting::None || turn[parent] >= turn[i]) continue;
    Indices all(group.lines.size());
    std::iota(all.begin(), all.end(), std::size_t{0});
    return {all};
  }
  return result;
}

std::vector<TourStop> Ordering::TourOf(const Group& group, const Indices& members) const {
  std::vector<const Contour*> contours;
  for (std::size_t member : members) contours.push_back(m_contours[group.lines[member]]);
  std::vector<TourStop> tour = FindTour(contours, m_at);
  for (TourStop& stop : tour) stop.contour = members[stop.contour];
  return tour;
}

// Goes round the outer ones, and before each of them round those that it holds. A job may be
// nested as deep as it has lines, so the way down is a stack of its own.
void Ordering::AddNested(const Group& group, const Indices& members) {
  std::vector<bool> isMember(group.lines.size());
  for (std::size_t member : members) isMember[member] = true;
  std::vector<Indices> inner(group.lines.size());
  Indices outer;
  for (std::size_t member : members) {
    const std::size_t parent = group.nesting.parent[member];
    const bool isInner = parent != Nesting::None && isMember[parent];
    (isInner ? inner[parent] : outer).push_back(member);
  }
  struct Level {
    std::vector<TourStop> tour;
    std::size_t next = 0;
    bool innerAreDone = false;
  };
  std::vector<Level> levels;
  levels.push_back({.tour = TourOf(group, outer)});
  while (!levels.empty()) {
    Level& level = levels.back();
    if (level.next == level.tour.size()) {
      levels.pop_back();
      continue;
    }
    TourStop stop = level.tour[level.next];
    if (!level.innerAreDone && !inner[stop.contour].empty()) {
      level.innerAreDone = true;
      levels.push_back({.tour = TourOf(group, inner[stop.contour])});
      continue;
    }
    level.innerAreDone = false;
    ++level.next;
    stop.contour = group.lines[stop.contour];
    const Contour& contour = *m_contours[stop.contour];
    m_at = contour.closed  ? StartAt(contour, stop.start)
           : stop.reversed ? contour.start
                           : contour.End();
    m_found.push_back(stop);
  }
}

void Ordering::AddGroup(const Group& group) {
  for (const Indices& members : ToolsOf(group)) AddNested(group, members);
}

std::vector<TourStop> Ordering::Found() {
  for (const auto& [rank, group] : m_groups) AddGroup(group);
  ChooseStarts(m_contours, m_start, m_found);
  return m_found;
}

std::vector<TourStop> Ordering::Given() const {
  std::pair<int, int> rank{m_groups.empty() ? std::pair<int, int>{} : m_groups.begin()->first};
  std::vector<TourStop> tour;
  for (std::size_t i = 0; i < m_lines.size(); ++i) {
    const auto next = RankOf(m_job.paths[m_lines[i].path]);
    if (next < rank) return {};
    rank = next;
    if (IsOnAnySheet(m_lines[i].contour)) tour.push_back({.contour = i});
  }
  for (const auto& [key, group] : m_groups) {
    for (std::size_t i = 0; i < group.lines.size(); ++i) {
      const std::size_t parent = group.nesting.parent[i];
      if (parent != Nesting::None && parent < i) return {};
    }
    if (ToolsOf(group).size() > 1) return {};
  }
  ChooseStarts(m_contours, m_start, tour);
  return tour;
}

double TravelOf(const std::vector<ToolLine>& lines, const std::vector<TourStop>& tour,
                Point start) {
  double travel = 0;
  Point at = start;
  for (const TourStop& stop : tour) {
    const Contour& contour = lines[stop.contour].contour;
    const Point in = contour.closed  ? StartAt(contour, stop.start)
                     : stop.reversed ? contour.End()
                                     : contour.start;
    travel += Distance(at, in);
    at = contour.closed ? in : stop.reversed ? contour.start : contour.End();
  }
  return travel;
}

ToolLine Applied(ToolLine line, const TourStop& stop) {
  if (line.contour.closed) {
    if (stop.start != 0) line.contour = StartedAt(line.contour, stop.start);
  } else if (stop.reversed) {
    line.contour = Reversed(line.contour);
  }
  return line;
}

}  // namespace

Contour StartedAt(const Contour& contour, std::size_t index) {
  const std::size_t count = StartCount(contour);
  if (!contour.closed || index == 0 || index >= count) return contour;
  Contour turned{.start = StartAt(contour, index), .segments = {}, .closed = true};
  const auto middle = contour.segments.begin() + static_cast<std::ptrdiff_t>(index);
  turned.segments.assign(middle, contour.segments.end());
  if (contour.segments.back().end != contour.start)
    turned.segments.push_back(LineTo(contour.start));
  turned.segments.insert(turned.segments.end(), contour.segments.begin(), middle);
  return turned;
}

double TravelOf(const std::vector<ToolLine>& lines, Point start) {
  double travel = 0;
  Point at = start;
  for (const ToolLine& line : lines) {
    if (!IsOnAnySheet(line.contour)) continue;
    travel += Distance(at, line.contour.start);
    at = line.contour.End();
  }
  return travel;
}

OrderResult OrderLines(const CutJob& job, std::vector<ToolLine> lines, Point start) {
  OrderResult result;
  result.travelBefore = TravelOf(lines, start);
  Ordering ordering(job, lines, start);
  std::vector<TourStop> tour = ordering.Found();
  std::vector<TourStop> given = ordering.Given();
  if (!given.empty() && TravelOf(lines, given, start) <= TravelOf(lines, tour, start))
    tour = std::move(given);
  // Lines that are on no sheet come after the last one of their rank.
  std::vector<TourStop> all;
  std::vector<std::size_t> apart;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (!IsOnAnySheet(lines[i].contour)) apart.push_back(i);
  }
  for (const TourStop& stop : tour) all.push_back(stop);
  for (std::size_t line : apart) all.push_back({.contour = line});
  std::ranges::stable_sort(all, [&](const TourStop& a, const TourStop& b) {
    return RankOf(job.paths[lines[a.contour].path]) < RankOf(job.paths[lines[b.contour].path]);
  });
  for (const TourStop& stop : all)
    result.lines.push_back(Applied(std::move(lines[stop.contour]), stop));
  result.travelAfter = TravelOf(result.lines, start);
  return result;
}

}  // namespace rastrel::cutting
