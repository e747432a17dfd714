#include "cutting/frame/mark_layout.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "cutting/frame/mark_fit.h"
#include "cutting/frame/mark_shape.h"
#include "rastrel/platform/os/decimal.h"

namespace rastrel::cutting {
namespace {

using Shape = RegistrationMark::Shape;

// In the order of the rim, counterclockwise from the lower left.
enum Edge : std::size_t { Bottom, Right, Top, Left };

struct EdgeMarks {
  double length = 0;   // between the marks at its ends, or to the corner that has none
  bool isFree = true;  // whether it takes further marks
  int extra = 0;

  [[nodiscard]] double Step() const { return length / (extra + 1); }
};

Failure BadOptions(std::string why) { return FailureOf(std::move(why), FailureCode::BadInput); }

Expected<void> CheckRange(const char* name, double value, double least, double most) {
  // Written so that a number that is none fails as well.
  if (value >= least && value <= most) return {};
  return BadOptions(std::string("the ") + name + " of the marks is " + os::ShortDecimal(value, 3) +
                    " mm: from " + os::ShortDecimal(least, 3) + " to " + os::ShortDecimal(most, 3) +
                    " mm are possible");
}

Expected<void> CheckOptions(const MarkOptions& options) {
  if (auto checked = CheckRange("size", options.size, 1, 100); !checked) return checked;
  if (auto checked = CheckRange("gap", options.gap, 0, 1000); !checked) return checked;
  if (auto checked = CheckRange("edge", options.edge, 0, 1000); !checked) return checked;
  if (options.count < 3 || options.count > 8)
    return BadOptions("the count of marks is 3 to 8, and more by their spacing");
  if (options.spacing == 0) return {};
  return CheckRange("spacing", options.spacing, 2 * options.size, 100'000);
}

// The page with everything that is cut on it.
Expected<Box> PrintedBox(const CutJob& job) {
  constexpr double MaximumExtent = 1e6;
  if (!(job.width > 0) || !(job.height > 0) || !std::isfinite(job.width * job.height))
    return BadOptions("the page has no extent that marks could be around");
  Box box{0, 0, job.width, job.height};
  for (const CutPath& path : job.paths) box.Add(BoxOf(path));
  if (!(box.Width() <= MaximumExtent) || !(box.Height() <= MaximumExtent))
    return BadOptions("the page with its paths is more than a kilometre long");
  return box;
}

// Where the centers of the marks are, and which marks there are.
class Rim {
 public:
  Rim(const Box& box, const MarkOptions& options) : m_Options(options) {
    const RegistrationMark sample{.center = {}, .shape = options.shape, .size = options.size};
    const bool isCorner = options.shape == Shape::Corner;
    const double out = options.gap + (isCorner ? BarWidthOf(sample) : options.size / 2);
    m_Corners = {box.left - out, box.bottom - out, box.right + out, box.top + out};
    const double side = isCorner ? options.gap : out;
    m_Sides = {box.left - side, box.bottom - side, box.right + side, box.top + side};
    const bool hasUpperRight = options.count > 3;
    m_Edges[Bottom].length = m_Edges[Top].length = m_Corners.Width();
    m_Edges[Right].length = m_Corners.Height() - Shift();
    m_Edges[Left].length = m_Corners.Height();
    m_Edges[Right].isFree = m_Edges[Top].isFree = hasUpperRight;
  }

  // The edge whose marks are furthest apart; of several the first of the rim.
  [[nodiscard]] EdgeMarks& Longest() {
    EdgeMarks* longest = &m_Edges[Bottom];
    for (EdgeMarks& edge : m_Edges)
      if (edge.isFree && edge.Step() > longest->Step() + 1e-9) longest = &edge;
    return *longest;
  }

  [[nodiscard]] std::vector<RegistrationMark> Marks() const {
    std::vector<RegistrationMark> marks;
    marks.push_back(At({m_Corners.left, m_Corners.bottom}, 0));
    AddExtra(marks, Bottom, {m_Corners.left, m_Sides.bottom}, {1, 0}, 180);
    marks.push_back(At({m_Corners.right, m_Corners.bottom}, 90));
    AddExtra(marks, Right, {m_Sides.right, m_Corners.bottom}, {0, 1}, 0);
    if (m_Edges[Right].isFree) marks.push_back(At({m_Sides.right, m_Corners.top - Shift()}, 0));
    AddExtra(marks, Top, {m_Corners.right, m_Sides.top}, {-1, 0}, 0);
    marks.push_back(At({m_Corners.left, m_Corners.top}, 270));
    AddExtra(marks, Left, {m_Sides.left, m_Corners.top}, {0, -1}, 90);
    return marks;
  }

 private:
  // How far the mark at the upper right is below its corner.
  [[nodiscard]] double Shift() const { return 2 * m_Options.size; }

  [[nodiscard]] RegistrationMark At(Point center, double rotation) const {
    return {.center = center,
            .shape = m_Options.shape,
            .size = m_Options.size,
            .rotation = m_Options.shape == Shape::Corner ? rotation : 0};
  }

  void AddExtra(std::vector<RegistrationMark>& marks, Edge edge, Point from, Point way,
                double rotation) const {
    for (int i = 1; i <= m_Edges[edge].extra; ++i) {
      const double along = m_Edges[edge].Step() * i;
      marks.push_back(At({from.x + way.x * along, from.y + way.y * along}, rotation));
    }
  }

  MarkOptions m_Options;
  Box m_Corners;  // through the marks in the corners
  Box m_Sides;    // through the marks between them
  std::array<EdgeMarks, 4> m_Edges;
};

Expected<std::vector<RegistrationMark>> Placed(const Box& box, const MarkOptions& options) {
  Rim rim(box, options);
  std::size_t count = options.count == 3 ? 3 : 4;
  for (; count < static_cast<std::size_t>(options.count); ++count) ++rim.Longest().extra;
  while (options.spacing > 0 && rim.Longest().Step() > options.spacing + 1e-9) {
    if (count++ == MaximumFittedMarks)
      return BadOptions("marks that are at most " + os::ShortDecimal(options.spacing, 3) +
                        " mm apart are more than " + std::to_string(MaximumFittedMarks) + " here");
    ++rim.Longest().extra;
  }
  return rim.Marks();
}

bool Touch(const Box& one, const Box& other) {
  return one.left <= other.right && other.left <= one.right && one.bottom <= other.top &&
         other.bottom <= one.top;
}

Expected<void> CheckApart(const std::vector<RegistrationMark>& marks) {
  std::vector<Box> boxes;
  for (const RegistrationMark& mark : marks) boxes.push_back(BoxOf(mark));
  for (std::size_t i = 0; i < boxes.size(); ++i)
    for (std::size_t k = i + 1; k < boxes.size(); ++k)
      if (Touch(boxes[i], boxes[k]))
        return BadOptions("marks " + std::to_string(i + 1) + " and " + std::to_string(k + 1) +
                          " would touch: the page is too small for marks of this size and number");
  return {};
}

// Whole pixels that reach at least so far.
double Grown(double length, double pixel) {
  if (!(length > 0)) return 0;
  return pixel > 0 ? std::ceil(length / pixel - 1e-6) * pixel : length;
}

void Move(CutJob& job, Point by) {
  const Transform move{.e = by.x, .f = by.y};
  for (CutPath& path : job.paths)
    for (Contour& contour : path.contours) contour = Transformed(contour, move);
  for (RegistrationMark& mark : job.marks) mark.center = move.Apply(mark.center);
}

}  // namespace

Expected<MarkedJob> WithMarks(CutJob job, const MarkOptions& options) {
  if (auto checked = CheckOptions(options); !checked) return checked.Error();
  if (!job.marks.empty()) return BadOptions("the job has registration marks already");
  const auto box = PrintedBox(job);
  if (!box) return box.Error();
  auto marks = Placed(*box, options);
  if (!marks) return marks.Error();
  if (auto checked = CheckApart(*marks); !checked) return checked.Error();
  Box ink;
  for (const RegistrationMark& mark : *marks) ink.Add(BoxOf(mark));
  MarkedJob marked{.job = std::move(job), .growth = {}};
  marked.growth = {.left = Grown(options.edge - ink.left, options.pixelWidth),
                   .bottom = Grown(options.edge - ink.bottom, options.pixelHeight),
                   .right = Grown(ink.right + options.edge - marked.job.width, options.pixelWidth),
                   .top = Grown(ink.top + options.edge - marked.job.height, options.pixelHeight)};
  marked.job.marks = *std::move(marks);
  Move(marked.job, {marked.growth.left, marked.growth.bottom});
  marked.job.width += marked.growth.left + marked.growth.right;
  marked.job.height += marked.growth.bottom + marked.growth.top;
  return marked;
}

CutJob Rebased(CutJob job) {
  if (job.marks.empty()) return job;
  const Point origin = job.marks.front().center;
  Move(job, {-origin.x, -origin.y});
  job.width = std::max(job.width - origin.x, 0.0);
  job.height = std::max(job.height - origin.y, 0.0);
  return job;
}

}  // namespace rastrel::cutting
