#include "cutting/panel/panel.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "cutting/panel/seam.h"

namespace rastrel::cutting {
namespace {

using panel::Seam;
using panel::SplitAt;

// Sides of a page that came through other units are not a hair's breadth too long.
constexpr double Rounding = 1e-6;
constexpr double MaximumSide = 1'000'000;

Failure Refused(std::string why) {
  Failure failure = FailureOf(std::move(why));
  failure.code = FailureCode::BadInput;
  return failure;
}

// Panels along one axis.
struct Axis {
  double start = 0;
  double end = 0;
  double side = 0;     // of a panel
  double overlap = 0;  // of two

  [[nodiscard]] double Count() const {
    return std::max(1.0, std::ceil((end - start - overlap - Rounding) / (side - overlap)));
  }
  [[nodiscard]] double StartOf(std::size_t index) const {
    return start + static_cast<double>(index) * (side - overlap);
  }
  [[nodiscard]] double EndOf(std::size_t index) const {
    return std::min(StartOf(index) + side, end);
  }
  // Between a panel and the next one.
  [[nodiscard]] double SeamAfter(std::size_t index) const {
    return StartOf(index + 1) + overlap / 2;
  }
};

Expected<void> Check(const PanelOptions& options) {
  const auto isSide = [](double side) { return side >= 1 && side <= MaximumSide; };
  if (!isSide(options.width) || !isSide(options.height))
    return Refused("a panel's sides are from 1 to 1000000 mm");
  const double least = std::min(options.width, options.height);
  if (!(options.overlap >= 0 && options.overlap <= least / 2))
    return Refused("an overlap is from 0 mm to half of a panel's shorter side");
  return {};
}

std::vector<Contour> MovedBy(std::vector<Contour> contours, double x, double y) {
  for (Contour& contour : contours) contour = Transformed(contour, {.e = x, .f = y});
  return contours;
}

// Parts a list of contours at the seams of an axis: one list for each panel along it.
std::vector<std::vector<Contour>> Parted(std::vector<Contour> contours, const Axis& axis, Seam seam,
                                         std::size_t count) {
  std::vector<std::vector<Contour>> lists(count);
  for (std::size_t i = 0; i + 1 < count; ++i) {
    std::vector<Contour> rest;
    for (const Contour& contour : contours) {
      panel::Parts parts = SplitAt(contour, seam, axis.SeamAfter(i));
      std::ranges::move(parts.before, std::back_inserter(lists[i]));
      std::ranges::move(parts.after, std::back_inserter(rest));
    }
    contours = std::move(rest);
  }
  lists.back() = std::move(contours);
  return lists;
}

struct Grid {
  Axis x;
  Axis y;
  std::size_t columns = 1;
  std::size_t rows = 1;
};

void AddMarks(const CutJob& job, Panel& target) {
  for (RegistrationMark mark : job.marks) {
    const double half = mark.size / 2;
    const Box& area = target.area;
    if (mark.center.x - half < area.left || mark.center.x + half > area.right ||
        mark.center.y - half < area.bottom || mark.center.y + half > area.top)
      continue;
    mark.center = {mark.center.x - area.left, mark.center.y - area.bottom};
    target.job.marks.push_back(mark);
  }
}

std::vector<Panel> EmptyPanels(const CutJob& job, const Grid& grid) {
  std::vector<Panel> panels;
  for (std::size_t row = 0; row < grid.rows; ++row)
    for (std::size_t column = 0; column < grid.columns; ++column) {
      Panel panel{.number = panels.size() + 1,
                  .column = column,
                  .row = row,
                  .area = {grid.x.StartOf(column), grid.y.StartOf(row), grid.x.EndOf(column),
                           grid.y.EndOf(row)},
                  .job = {}};
      panel.job.width = panel.area.Width();
      panel.job.height = panel.area.Height();
      AddMarks(job, panel);
      panels.push_back(std::move(panel));
    }
  return panels;
}

void AddPath(const CutPath& path, const Grid& grid, std::vector<Panel>& panels) {
  auto columns = Parted(path.contours, grid.x, Seam::Upright, grid.columns);
  for (std::size_t column = 0; column < grid.columns; ++column) {
    if (columns[column].empty()) continue;
    auto rows = Parted(std::move(columns[column]), grid.y, Seam::Level, grid.rows);
    for (std::size_t row = 0; row < grid.rows; ++row) {
      if (rows[row].empty()) continue;
      Panel& target = panels[row * grid.columns + column];
      CutPath part{
          .contours = MovedBy(std::move(rows[row]), -target.area.left, -target.area.bottom),
          .operation = path.operation,
          .settings = path.settings,
          .paint = path.paint,
          .rule = path.rule};
      target.job.paths.push_back(std::move(part));
    }
  }
}

}  // namespace

Expected<std::vector<Panel>> SplitIntoPanels(const CutJob& job, const PanelOptions& options) {
  if (const auto checked = Check(options); !checked) return checked.Error();
  Box whole{0, 0, job.width, job.height};
  whole.Add(ToolBoxOf(job));
  Grid grid{.x = {whole.left, whole.right, options.width, options.overlap},
            .y = {whole.bottom, whole.top, options.height, options.overlap}};
  if (!(grid.x.Count() * grid.y.Count() <= static_cast<double>(MaximumPanels)))
    return Refused("it takes more than 10000 panels");
  grid.columns = static_cast<std::size_t>(grid.x.Count());
  grid.rows = static_cast<std::size_t>(grid.y.Count());
  std::vector<Panel> panels = EmptyPanels(job, grid);
  for (const CutPath& path : job.paths) AddPath(path, grid, panels);
  return panels;
}

}  // namespace rastrel::cutting
