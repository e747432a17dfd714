#include "cutting/toolpath/weeding.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "cutting/toolpath/clipper_path.h"
#include "cutting/toolpath/nesting.h"
#include "cutting/toolpath/tangle.h"

namespace rastrel::cutting {
namespace {

constexpr double FlatteningTolerance = 0.02;
constexpr std::size_t MaximumCrossings = 4'000'000;  // of all lines with borders: 32 MB

bool IsCut(Operation operation) {
  return operation == Operation::Cut || operation == Operation::CutHalf;
}

Box BoxOfCuts(const CutJob& job) {
  Box box;
  for (const CutPath& path : job.paths) {
    if (!IsCut(path.operation)) continue;
    for (const Contour& contour : path.contours)
      if (IsOnAnySheet(contour)) box.Add(BoxOf(contour));
  }
  return box;
}

// Where no weeding line may be, as polygons that do not overlap: the pieces, and everything nearer
// to a line of a tool than the clearance.
std::vector<std::vector<Point>> BlockedArea(const CutJob& job, double clearance) {
  ClipperLib::Paths outlines;
  // However far the clearance is, a corner becomes some seventy lines at most.
  const double arcs = std::max(FlatteningTolerance, clearance / 1000);
  ClipperLib::ClipperOffset lines(2, arcs * ClipperUnits);
  for (const CutPath& path : job.paths) {
    if (!HasTool(path.operation)) continue;
    for (const Contour& contour : path.contours) {
      if (!IsOnAnySheet(contour)) continue;
      ClipperLib::Path points = ClipperPathOf(Flatten(contour, FlatteningTolerance));
      lines.AddPath(points, ClipperLib::jtRound,
                    contour.closed ? ClipperLib::etClosedLine : ClipperLib::etOpenRound);
      if (contour.closed && IsCut(path.operation)) outlines.push_back(std::move(points));
    }
  }
  // Curves and arcs as lines may both be that much too near.
  ClipperLib::Paths near;
  lines.Execute(near, (clearance + FlatteningTolerance + arcs) * ClipperUnits);
  ClipperLib::Paths pieces;
  ClipperLib::SimplifyPolygons(outlines, pieces, ClipperLib::pftEvenOdd);
  ClipperLib::Clipper clipper;
  clipper.AddPaths(near, ClipperLib::ptSubject, true);
  clipper.AddPaths(pieces, ClipperLib::ptSubject, true);
  ClipperLib::Paths blocked;
  clipper.Execute(ClipperLib::ctUnion, blocked, ClipperLib::pftNonZero, ClipperLib::pftNonZero);
  std::vector<std::vector<Point>> result;
  for (const ClipperLib::Path& path : blocked) {
    std::vector<Point> points;
    for (const ClipperLib::IntPoint& point : path) points.push_back(PointOf(point));
    result.push_back(std::move(points));
  }
  return result;
}

bool IsTangledJob(const CutJob& job, double clearance) {
  std::vector<Box> boxes;
  for (const CutPath& path : job.paths) {
    if (!HasTool(path.operation)) continue;
    for (const Contour& contour : path.contours) {
      if (!IsOnAnySheet(contour)) continue;
      for (const Box& box : BoxesOfLines(Flatten(contour, FlatteningTolerance), contour.closed))
        boxes.push_back(box);
    }
  }
  return IsTangled(std::move(boxes), clearance);
}

// A straight line across the page: at a height, or upright at a distance from the left.
struct Ruler {
  bool isUpright = false;
  double at = 0;
  double from = 0;
  double to = 0;
};

// The free parts of all rulers of one direction, which are sorted by their place.
class Clearing {
 public:
  Clearing(const std::vector<std::vector<Point>>& blocked, std::vector<Ruler> rulers);
  void AddTo(std::vector<Contour>& contours) const;
  [[nodiscard]] bool IsTooMuch() const { return m_count > MaximumCrossings; }

 private:
  void Cross(Point a, Point b);

  std::vector<Ruler> m_rulers;
  std::vector<std::vector<double>> m_crossings;  // of each ruler
  std::size_t m_count = 0;
};

Clearing::Clearing(const std::vector<std::vector<Point>>& blocked, std::vector<Ruler> rulers)
    : m_rulers(std::move(rulers)), m_crossings(m_rulers.size()) {
  for (const std::vector<Point>& ring : blocked) {
    for (std::size_t i = 0; i < ring.size(); ++i) Cross(ring[i], ring[(i + 1) % ring.size()]);
  }
  for (std::vector<double>& crossings : m_crossings) std::ranges::sort(crossings);
}

void Clearing::Cross(Point a, Point b) {
  if (m_rulers.empty()) return;
  if (m_rulers.front().isUpright) {
    std::swap(a.x, a.y);
    std::swap(b.x, b.y);
  }
  if (a.y > b.y) std::swap(a, b);
  auto ruler = std::ranges::lower_bound(m_rulers, a.y, {}, &Ruler::at);
  // A corner on the ruler counts once: lower ends are within the line, and upper ones beyond it.
  for (; ruler != m_rulers.end() && ruler->at < b.y && !IsTooMuch(); ++ruler, ++m_count) {
    const double x = a.x + (b.x - a.x) * (ruler->at - a.y) / (b.y - a.y);
    m_crossings[static_cast<std::size_t>(ruler - m_rulers.begin())].push_back(x);
  }
}

void Clearing::AddTo(std::vector<Contour>& contours) const {
  for (std::size_t i = 0; i < m_rulers.size(); ++i) {
    const Ruler& ruler = m_rulers[i];
    double from = ruler.from;
    const auto add = [&](double to) {
      const Point a = ruler.isUpright ? Point{ruler.at, from} : Point{from, ruler.at};
      const Point b = ruler.isUpright ? Point{ruler.at, to} : Point{to, ruler.at};
      if (to > from) contours.push_back({.start = a, .segments = {LineTo(b)}, .closed = false});
    };
    const std::vector<double>& crossings = m_crossings[i];
    for (std::size_t k = 0; k + 1 < crossings.size(); k += 2) {
      add(std::min(crossings[k], ruler.to));
      from = std::max(from, crossings[k + 1]);
    }
    add(ruler.to);
  }
}

Failure Unusable(const char* name) {
  return FailureOf(std::string(name) + " is no length that can be used", FailureCode::BadInput);
}

Expected<void> Check(const WeedingOptions& options) {
  const auto isLength = [](double value) { return value >= 0 && value <= MaximumCoordinate; };
  if (options.boxGap && !isLength(*options.boxGap)) return Unusable("the gap of the weeding box");
  if (options.step && (!isLength(*options.step) || *options.step == 0))
    return Unusable("the step of the weeding lines");
  if (!isLength(options.clearance)) return Unusable("the clearance of the weeding lines");
  return {};
}

// The frame within which lines run, and which is the box.
Box FrameOf(const CutJob& job, const Box& cuts, double gap) {
  Box frame{cuts.left - gap, cuts.bottom - gap, cuts.right + gap, cuts.top + gap};
  if (job.width > 0 && job.height > 0) {
    frame.left = std::max(frame.left, 0.0);
    frame.bottom = std::max(frame.bottom, 0.0);
    frame.right = std::min(frame.right, job.width);
    frame.top = std::min(frame.top, job.height);
  }
  return frame;
}

std::vector<Ruler> RulersIn(const Box& frame, bool upright, double step) {
  const double low = upright ? frame.left : frame.bottom;
  const double high = upright ? frame.right : frame.top;
  std::vector<Ruler> rulers;
  const auto count = static_cast<int>(std::ceil((high - low) / step - 1e-9));
  // They stand in the middle, so that both outer strips are equally wide.
  const double first = (low + high) / 2 - step * (count - 2) / 2.0;
  for (int i = 0; i + 1 < count; ++i) {
    rulers.push_back({upright, first + i * step, upright ? frame.bottom : frame.left,
                      upright ? frame.top : frame.right});
  }
  return rulers;
}

Contour Ring(const Box& box) {
  return {.start = {box.left, box.bottom},
          .segments = {LineTo({box.right, box.bottom}), LineTo({box.right, box.top}),
                       LineTo({box.left, box.top})},
          .closed = true};
}

CutPath WeedingPath(const CutJob& job) {
  const auto half = std::ranges::find(job.paths, Operation::CutHalf, &CutPath::operation);
  const auto cut = std::ranges::find(job.paths, Operation::Cut, &CutPath::operation);
  const CutPath& model = half != job.paths.end() ? *half : *cut;
  CutPath path{.contours = {}, .operation = model.operation};
  path.settings.tool = model.settings.tool;
  path.settings.speed = model.settings.speed;
  path.settings.force = model.settings.force;
  path.settings.order = model.settings.order;
  return path;
}

}  // namespace

Expected<CutJob> AddWeeding(CutJob job, const WeedingOptions& options) {
  if (!options.boxGap && !options.step) return job;
  if (const Expected<void> checked = Check(options); !checked) return checked.Error();
  const Box cuts = BoxOfCuts(job);
  if (cuts.IsEmpty()) return job;
  const Box frame = FrameOf(job, cuts, options.boxGap.value_or(options.clearance));
  if (frame.IsEmpty()) return job;
  if (options.step &&
      frame.Width() / *options.step + frame.Height() / *options.step > MaximumWeedLines)
    return FailureOf("the weeding lines would be more than " + std::to_string(MaximumWeedLines) +
                         "; give a larger step",
                     FailureCode::BadInput);
  if (IsTangledJob(job, options.clearance))
    return FailureOf("the paths cross each other too often for weeding", FailureCode::BadInput);
  const std::vector<std::vector<Point>> blocked = BlockedArea(job, options.clearance);
  CutPath path = WeedingPath(job);
  if (options.step) {
    for (const bool upright : {false, true}) {
      const Clearing clearing(blocked, RulersIn(frame, upright, *options.step));
      if (clearing.IsTooMuch())
        return FailureOf("the weeding lines would fall into millions of pieces; give a larger step",
                         FailureCode::BadInput);
      clearing.AddTo(path.contours);
    }
  }
  if (options.boxGap) {
    std::vector<Contour> sides;
    Clearing(blocked, {{false, frame.bottom, frame.left, frame.right},
                       {false, frame.top, frame.left, frame.right}})
        .AddTo(sides);
    Clearing(blocked, {{true, frame.left, frame.bottom, frame.top},
                       {true, frame.right, frame.bottom, frame.top}})
        .AddTo(sides);
    double length = 0;
    for (const Contour& side : sides) length += LengthOf(side);
    const bool isWhole = length >= 2 * (frame.Width() + frame.Height()) - 1e-6;
    if (isWhole) sides = {Ring(frame)};
    path.contours.insert(path.contours.end(), sides.begin(), sides.end());
  }
  if (!path.contours.empty()) job.paths.push_back(std::move(path));
  return job;
}

}  // namespace rastrel::cutting
