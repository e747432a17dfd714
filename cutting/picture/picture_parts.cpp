#include "cutting/picture/picture_parts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <utility>

#include "cutting/output/operation_look.h"
#include "rastrel/platform/os/decimal.h"

namespace rastrel::cutting {
namespace {

constexpr double Farthest = 1e6;
constexpr double UnitsAcross = 100;  // of the longer edge
constexpr std::size_t NumberLimit = 5000;
constexpr std::size_t ArrowLimit = 20000;
constexpr const char* Gray = "#808080";
constexpr const char* Dark = "#202020";

bool IsNear(Point point) { return std::abs(point.x) <= Farthest && std::abs(point.y) <= Farthest; }

bool IsNear(const Contour& contour) {
  return IsNear(contour.start) && std::ranges::all_of(contour.segments, [](const Segment& one) {
           return IsNear(one.end) && IsNear(one.first) && IsNear(one.second);
         });
}

Contour Rectangle(const Box& box) {
  return {.start = {box.left, box.bottom},
          .segments = {LineTo({box.right, box.bottom}), LineTo({box.right, box.top}),
                       LineTo({box.left, box.top})},
          .closed = true};
}

Contour Line(Point from, Point to) { return {.start = from, .segments = {LineTo(to)}}; }

Contour Circle(Point center, double radius) {
  const double k = 0.5522847498 * radius;
  const auto [x, y] = center;
  return {.start = {x + radius, y},
          .segments = {CurveTo({x + radius, y + k}, {x + k, y + radius}, {x, y + radius}),
                       CurveTo({x - k, y + radius}, {x - radius, y + k}, {x - radius, y}),
                       CurveTo({x - radius, y - k}, {x - k, y - radius}, {x, y - radius}),
                       CurveTo({x + k, y - radius}, {x + radius, y - k}, {x + radius, y})},
          .closed = true};
}

class Maker {
 public:
  explicit Maker(const CutJob& job) : m_Job(job) {}

  Expected<PictureParts> Make() {
    if (auto fits = Measure(); !fits) return fits.Error();
    m_Parts.unit = std::max({m_Seen.Width(), m_Seen.Height(), 1.0}) / UnitsAcross;
    Add({Rectangle({0, 0, m_Job.width, m_Job.height})}, Gray, 0.15);
    AddMarks();
    AddTravel();
    AddPaths();
    AddLegend();
    const double rim = 2 * m_Parts.unit;
    m_Seen.Add(Point{m_Seen.left - rim, m_Seen.bottom - rim});
    m_Seen.Add(Point{m_Seen.right + rim, m_Seen.top + rim});
    m_Parts.box = m_Seen;
    return std::move(m_Parts);
  }

 private:
  Expected<void> Measure() {
    const Failure outside =
        FailureOf("the job has a path farther than a kilometre from its page's corner",
                  FailureCode::BadInput);
    if (!(m_Job.width >= 0 && m_Job.height >= 0) || !IsNear(Point{m_Job.width, m_Job.height})) {
      return outside;
    }
    m_Seen = Box{0, 0, m_Job.width, m_Job.height};
    for (const CutPath& path : m_Job.paths) {
      if (!HasTool(path.operation)) continue;
      for (const Contour& contour : path.contours) {
        if (!IsNear(contour)) return outside;
        m_Seen.Add(BoxOf(contour));
      }
    }
    for (const RegistrationMark& mark : m_Job.marks) {
      const double half = mark.size / 2;
      if (!IsNear(mark.center) || !(std::abs(half) <= Farthest)) return outside;
      m_Seen.Add(Point{mark.center.x - half, mark.center.y - half});
      m_Seen.Add(Point{mark.center.x + half, mark.center.y + half});
    }
    return {};
  }

  /// `width` and `dash` are units; a width of 0 fills.
  void Add(std::vector<Contour> contours, std::string_view color, double width, double dash = 0) {
    m_Parts.parts.push_back(PictureLine{.contours = std::move(contours),
                                        .color = std::string(color),
                                        .width = width * m_Parts.unit,
                                        .dash = dash * m_Parts.unit});
  }

  void AddText(Point at, std::string text, std::string_view color, double size) {
    m_Parts.parts.push_back(PictureText{.at = at,
                                        .text = std::move(text),
                                        .color = std::string(color),
                                        .size = size * m_Parts.unit});
  }

  void AddMarks() {
    for (const RegistrationMark& mark : m_Job.marks) {
      const auto [x, y] = mark.center;
      const double half = mark.size / 2;
      if (mark.shape == RegistrationMark::Shape::Circle) {
        Add({Circle(mark.center, half)}, Dark, 0);
        continue;
      }
      Add({Line({x - half, y}, {x + half, y}), Line({x, y - half}, {x, y + half})}, Dark, 0.2);
    }
  }

  /// Calls `take` with each contour of a tool, in order.
  template <typename Take>
  void ForEach(Take take) const {
    for (const CutPath& path : m_Job.paths) {
      if (!HasTool(path.operation)) continue;
      for (const Contour& contour : path.contours) take(path, contour);
    }
  }

  void AddTravel() {
    Point at{0, 0};
    std::vector<Contour> ways;
    ForEach([&](const CutPath&, const Contour& contour) {
      m_Travel += Distance(at, contour.start);
      if (at != contour.start) ways.push_back(Line(at, contour.start));
      at = contour.End();
    });
    if (!ways.empty()) Add(std::move(ways), Gray, 0.08, 0.5);
  }

  void AddPaths() {
    for (const CutPath& path : m_Job.paths) {
      if (HasTool(path.operation) && !path.contours.empty()) {
        Add(path.contours, LookOf(path.operation).color, 0.25);
      }
    }
    std::size_t number = 0;
    ForEach([&](const CutPath& path, const Contour& contour) {
      auto& sum = m_Sums[static_cast<std::size_t>(path.operation)];
      const double length = LengthOf(contour);
      ++sum.first;
      sum.second += length;
      if (length >= 3 * m_Parts.unit && m_Arrows < ArrowLimit) AddArrow(path, contour, length);
      AddNumber(contour.start, ++number, LookOf(path.operation).color);
    });
  }

  /// In the middle of the contour's length, along its direction.
  void AddArrow(const CutPath& path, const Contour& contour, double length) {
    const std::vector<Point> points = Flatten(contour, m_Parts.unit / 20);
    double rest = length / 2;
    for (std::size_t i = 0; i < points.size(); ++i) {
      const Point from = points[i];
      const Point to = i + 1 < points.size() ? points[i + 1] : contour.End();
      const double step = Distance(from, to);
      if (step <= 0 || rest > step) {
        rest -= step;
        continue;
      }
      // Not at a corner, where a direction is no direction.
      if (step > 4 * m_Parts.unit) rest = step / 2;
      const double x = (to.x - from.x) / step * m_Parts.unit * 0.6;
      const double y = (to.y - from.y) / step * m_Parts.unit * 0.6;
      const Point at{from.x + (to.x - from.x) * rest / step,
                     from.y + (to.y - from.y) * rest / step};
      Add({{.start = {at.x + x, at.y + y},
            .segments = {LineTo({at.x - x - y * 0.7, at.y - y + x * 0.7}),
                         LineTo({at.x - x + y * 0.7, at.y - y - x * 0.7})},
            .closed = true}},
          LookOf(path.operation).color, 0);
      ++m_Arrows;
      return;
    }
  }

  void AddNumber(Point at, std::size_t number, std::string_view color) {
    if (m_Numbers.size() >= NumberLimit) return;
    const std::pair cell{std::llround(at.x / (3 * m_Parts.unit)),
                         std::llround(at.y / (2 * m_Parts.unit))};
    if (!m_Numbers.insert(cell).second) return;
    AddText({at.x + 0.3 * m_Parts.unit, at.y + 0.3 * m_Parts.unit}, std::to_string(number), color,
            1.6);
  }

  void AddLegend() {
    const double unit = m_Parts.unit;
    double y = m_Seen.bottom - 4 * unit;
    const double x = m_Seen.left;
    const auto row = [&](std::string text) {
      AddText({x + 6 * unit, y}, std::move(text), Dark, 2);
      m_Seen.Add(Point{x, y - unit});
      y -= 3 * unit;
    };
    for (std::size_t i = 0; i < m_Sums.size(); ++i) {
      const auto& [count, length] = m_Sums[i];
      if (count == 0) continue;
      const Operation operation = static_cast<Operation>(i);
      Add({Line({x, y + 0.6 * unit}, {x + 5 * unit, y + 0.6 * unit})}, LookOf(operation).color,
          0.25);
      row(std::string(NameOf(operation)) + ": " + std::to_string(count) +
          (count == 1 ? " contour, " : " contours, ") + os::ShortDecimal(length, 1) + " mm");
    }
    Add({Line({x, y + 0.6 * unit}, {x + 5 * unit, y + 0.6 * unit})}, Gray, 0.08, 0.5);
    row("travel: " + os::ShortDecimal(m_Travel, 1) + " mm");
    row("page: " + os::ShortDecimal(m_Job.width, 1) + " x " + os::ShortDecimal(m_Job.height, 1) +
        " mm");
    // The rows may be longer than a narrow page is wide.
    m_Seen.Add(Point{x + 50 * unit, y});
  }

  const CutJob& m_Job;
  PictureParts m_Parts;
  Box m_Seen;
  double m_Travel = 0;
  std::size_t m_Arrows = 0;
  std::set<std::pair<long long, long long>> m_Numbers;
  std::array<std::pair<std::size_t, double>, 9> m_Sums{};
};

}  // namespace

Expected<PictureParts> PartsOfPicture(const CutJob& job) { return Maker(job).Make(); }

}  // namespace rastrel::cutting
