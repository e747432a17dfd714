#include "cutting/view/cut_scene.h"

#include <algorithm>
#include <cmath>
#include <unordered_set>
#include <utility>

namespace rastrel::cutting {
namespace {

constexpr double Farthest = 1e6;    // millimetres
constexpr double NumberWidth = 64;  // six digits
constexpr double NumberHeight = 32;
constexpr double ArrowLength = 24;
constexpr double ArrowPlace = 0.45;  // the middle of a rectangle's way is a corner

bool IsNear(Point point) { return std::abs(point.x) <= Farthest && std::abs(point.y) <= Farthest; }

bool IsNear(const Contour& contour) {
  return IsNear(contour.start) && std::ranges::all_of(contour.segments, [](const Segment& one) {
           return IsNear(one.end) && (!one.isCurve || (IsNear(one.first) && IsNear(one.second)));
         });
}

bool Touches(const Box& a, const Box& b) {
  return a.left <= b.right && a.right >= b.left && a.bottom <= b.top && a.top >= b.bottom;
}

Box Grown(const Box& box, double by) {
  return {box.left - by, box.bottom - by, box.right + by, box.top + by};
}

// A cell of a grid, as one number. Cells that are farther off than 2^30 don't occur on a screen.
std::uint64_t CellOf(Point at, double width, double height) {
  const auto x = static_cast<std::uint64_t>(std::llround(std::floor(at.x / width)));
  const auto y = static_cast<std::uint64_t>(std::llround(std::floor(at.y / height)));
  return (x & 0xFFFFFFFF) << 32 | (y & 0xFFFFFFFF);
}

Point NearestOn(Point from, Point to, Point at) {
  const double x = to.x - from.x;
  const double y = to.y - from.y;
  const double square = x * x + y * y;
  if (square <= 0) return from;
  const double part = std::clamp(((at.x - from.x) * x + (at.y - from.y) * y) / square, 0.0, 1.0);
  return {from.x + part * x, from.y + part * y};
}

}  // namespace

Expected<CutScene> CutScene::Of(const CutJob& job) {
  const Failure outside = FailureOf(
      "the job has a path farther than a kilometre from its page's corner", FailureCode::BadInput);
  if (!(job.width >= 0 && job.height >= 0) || !IsNear(Point{job.width, job.height})) return outside;
  CutScene scene;
  scene.m_Width = job.width;
  scene.m_Height = job.height;
  scene.m_Extent = scene.Page();
  for (std::size_t i = 0; i < job.paths.size(); ++i) {
    if (!HasTool(job.paths[i].operation)) continue;
    if (!std::ranges::all_of(job.paths[i].contours, [](const Contour& one) { return IsNear(one); }))
      return outside;
    if (auto taken = scene.Take(job.paths[i], i); !taken) return taken.Error();
  }
  for (const RegistrationMark& mark : job.marks) {
    if (!IsNear(mark.center) || !(std::abs(mark.size) <= Farthest)) return outside;
    const double half = mark.size / 2;
    scene.m_Extent.Add(Point{mark.center.x - half, mark.center.y - half});
    scene.m_Extent.Add(Point{mark.center.x + half, mark.center.y + half});
  }
  scene.m_Marks = job.marks;
  return scene;
}

std::size_t CutScene::GroupOf(const CutPath& path) {
  const auto found = std::ranges::find_if(m_Groups, [&path](const CutGroup& group) {
    return group.operation == path.operation && group.tool == path.settings.tool;
  });
  if (found != m_Groups.end()) return static_cast<std::size_t>(found - m_Groups.begin());
  m_Groups.push_back({.operation = path.operation, .tool = path.settings.tool});
  return m_Groups.size() - 1;
}

Expected<void> CutScene::Take(const CutPath& path, std::size_t index) {
  if (path.contours.empty()) return {};
  const std::size_t group = GroupOf(path);
  for (const Contour& contour : path.contours) {
    std::vector<Point> points = Flatten(contour, Tolerance);
    if (points.empty()) points.push_back(contour.start);
    if (contour.closed && points.size() > 1) points.push_back(points.front());
    if (points.size() > MaximumPoints - m_Points.size())
      return FailureOf("the job has too many points to be shown", FailureCode::BadInput);
    CutStroke stroke{.firstPoint = m_Points.size(),
                     .points = points.size(),
                     .group = group,
                     .path = index,
                     .passes = std::max(path.settings.passes, 1),
                     .length = 0,
                     .box = {}};
    for (std::size_t i = 0; i < points.size(); ++i) {
      if (i > 0) stroke.length += Distance(points[i - 1], points[i]);
      stroke.box.Add(points[i]);
    }
    for (const Point& point : points)
      m_Points.push_back({static_cast<float>(point.x - stroke.box.left),
                          static_cast<float>(point.y - stroke.box.bottom)});
    m_Extent.Add(stroke.box);
    ++m_Groups[group].strokes;
    m_Groups[group].length += stroke.length * stroke.passes;
    m_Strokes.push_back(stroke);
  }
  return {};
}

Point CutScene::Start(std::size_t stroke) const {
  const CutStroke& one = m_Strokes[stroke];
  const ShortPoint& point = m_Points[one.firstPoint];
  return {one.box.left + double{point.x}, one.box.bottom + double{point.y}};
}

Point CutScene::End(std::size_t stroke) const {
  const CutStroke& one = m_Strokes[stroke];
  const ShortPoint& point = m_Points[one.firstPoint + one.points - 1];
  return {one.box.left + double{point.x}, one.box.bottom + double{point.y}};
}

std::vector<std::size_t> CutScene::InSight(const Box& box, double mmPerPixel) const {
  std::vector<std::size_t> found;
  // One set for all groups: a group is a part of the cell's number.
  std::unordered_set<std::uint64_t> taken;
  for (std::size_t i = 0; i < m_Strokes.size(); ++i) {
    const CutStroke& stroke = m_Strokes[i];
    if (!m_Groups[stroke.group].isShown || !Touches(stroke.box, box)) continue;
    if (stroke.box.Width() < mmPerPixel && stroke.box.Height() < mmPerPixel) {
      const Point corner{stroke.box.left - box.left, stroke.box.bottom - box.bottom};
      const std::uint64_t cell = CellOf(corner, mmPerPixel, mmPerPixel);
      if (!taken.insert(cell * 1021 + stroke.group).second) continue;
    }
    found.push_back(i);
  }
  return found;
}

std::vector<Point> CutScene::Outline(std::size_t stroke, double mmPerPixel) const {
  const CutStroke& one = m_Strokes[stroke];
  const double least = mmPerPixel * mmPerPixel / 4;
  std::vector<Point> points;
  for (std::size_t i = 0; i < one.points; ++i) {
    const ShortPoint& source = m_Points[one.firstPoint + i];
    const Point point{one.box.left + double{source.x}, one.box.bottom + double{source.y}};
    if (i > 0 && i + 1 < one.points) {
      const double x = point.x - points.back().x;
      const double y = point.y - points.back().y;
      if (x * x + y * y < least) continue;
    }
    points.push_back(point);
  }
  return points;
}

std::optional<StrokeHit> CutScene::Nearest(Point at, double radius) const {
  std::optional<StrokeHit> best;
  const Box around = Grown({at.x, at.y, at.x, at.y}, radius);
  for (std::size_t i = 0; i < m_Strokes.size(); ++i) {
    const CutStroke& stroke = m_Strokes[i];
    if (!m_Groups[stroke.group].isShown || !Touches(stroke.box, around)) continue;
    Point from = Start(i);
    for (std::size_t k = 0; k < stroke.points; ++k) {
      const ShortPoint& source = m_Points[stroke.firstPoint + k];
      const Point to{stroke.box.left + double{source.x}, stroke.box.bottom + double{source.y}};
      const Point place = NearestOn(from, to, at);
      const double distance = Distance(place, at);
      if (distance <= (best ? best->distance : radius)) best = StrokeHit{i, place, distance};
      from = to;
    }
  }
  return best;
}

std::vector<StrokeNumber> CutScene::Numbers(const Box& box, double mmPerPixel,
                                            std::size_t maximum) const {
  std::vector<StrokeNumber> numbers;
  std::unordered_set<std::uint64_t> taken;
  for (std::size_t i = 0; i < m_Strokes.size() && numbers.size() < maximum; ++i) {
    if (!IsShown(i) || !Touches(m_Strokes[i].box, box)) continue;
    const Point at = Start(i);
    if (!Touches({at.x, at.y, at.x, at.y}, box)) continue;
    if (taken.insert(CellOf(at, NumberWidth * mmPerPixel, NumberHeight * mmPerPixel)).second)
      numbers.push_back({i, at});
  }
  return numbers;
}

std::vector<StrokeArrow> CutScene::Arrows(const Box& box, double mmPerPixel,
                                          std::size_t maximum) const {
  std::vector<StrokeArrow> arrows;
  for (std::size_t i = 0; i < m_Strokes.size() && arrows.size() < maximum; ++i) {
    const CutStroke& stroke = m_Strokes[i];
    if (stroke.length < ArrowLength * mmPerPixel || !IsShown(i) || !Touches(stroke.box, box))
      continue;
    const StrokeArrow arrow = Along(i, stroke.length * ArrowPlace);
    if (Touches({arrow.at.x, arrow.at.y, arrow.at.x, arrow.at.y}, box)) arrows.push_back(arrow);
  }
  return arrows;
}

StrokeArrow CutScene::Along(std::size_t stroke, double length) const {
  const CutStroke& one = m_Strokes[stroke];
  StrokeArrow place{stroke, Start(stroke), {1, 0}};
  double rest = std::max(length, 0.0);
  Point from = place.at;
  for (std::size_t i = 1; i < one.points; ++i) {
    const ShortPoint& source = m_Points[one.firstPoint + i];
    const Point to{one.box.left + double{source.x}, one.box.bottom + double{source.y}};
    const double step = Distance(from, to);
    if (step > 0) {
      place.direction = {(to.x - from.x) / step, (to.y - from.y) / step};
      const double part = std::min(rest / step, 1.0);
      place.at = {from.x + (to.x - from.x) * part, from.y + (to.y - from.y) * part};
      if (rest <= step) return place;
      rest -= step;
    }
    from = to;
  }
  return place;
}

}  // namespace rastrel::cutting
