#include "cutting/toolpath/bleed.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>

#include "cutting/toolpath/measured_contour.h"
#include "cutting/toolpath/nesting.h"
#include "cutting/toolpath/tool_line.h"

namespace rastrel::cutting {
namespace {

constexpr double RaySteps = 500;  // to each side

// Looks from a place of the cut along the way to the waste, and back into the piece.
class Ray {
 public:
  Ray(const Coverage& coverage, double bleed)
      : m_coverage(coverage),
        m_bleed(bleed),
        m_step(std::max(coverage.pixel / 2, bleed / RaySteps)) {}

  [[nodiscard]] double Bleed() const { return m_bleed; }

  // How far the print reaches beyond the cut if that is too little; nothing if it is enough, or if
  // the piece's edge is unprinted.
  [[nodiscard]] std::optional<double> Lacking(Point at, Point toWaste) const {
    double reach = Reach(at, toWaste);
    if (reach <= -m_bleed) return std::nullopt;
    // The nearest unprinted place may lie aslant, beside a corner of the print.
    if (reach > 0) {
      const double part = std::numbers::sqrt2 / 2;
      const Point left{part * (toWaste.x - toWaste.y), part * (toWaste.x + toWaste.y)};
      const Point right{part * (toWaste.x + toWaste.y), part * (toWaste.y - toWaste.x)};
      reach = std::min({reach, Reach(at, left), Reach(at, right)});
    }
    if (reach >= m_bleed - m_coverage.pixel) return std::nullopt;
    return reach;
  }

 private:
  // At least -bleed, where nothing is printed up to there.
  [[nodiscard]] double Reach(Point at, Point way) const {
    const auto isPrinted = [&](double distance) {
      return m_coverage.IsPrinted({at.x + way.x * distance, at.y + way.y * distance});
    };
    double reach = 0;
    if (isPrinted(0)) {
      while (reach < m_bleed && isPrinted(reach)) reach += m_step;
      return reach;
    }
    while (reach > -m_bleed && !isPrinted(reach)) reach -= m_step;
    return isPrinted(reach) ? reach : -m_bleed;
  }

  const Coverage& m_coverage;
  double m_bleed;
  double m_step;
};

class Walk {
 public:
  Walk(const ToolLine& line, std::size_t contour, const Ray& ray, double step)
      : m_line(line),
        m_contour(contour),
        m_ray(ray),
        m_measured(line.contour),
        m_wasteIsLeft((AreaOf(line.contour) > 0) == (line.depth % 2 == 1)),
        m_count(static_cast<std::size_t>(std::ceil(m_measured.Length() / step))) {}

  void AddTo(std::vector<BleedGap>& gaps);

 private:
  [[nodiscard]] std::optional<double> LackingAt(double length) const;

  const ToolLine& m_line;
  std::size_t m_contour;
  const Ray& m_ray;
  MeasuredContour m_measured;
  bool m_wasteIsLeft;
  std::size_t m_count;
};

std::optional<double> Walk::LackingAt(double length) const {
  const Point before = m_measured.DirectionBefore(length);
  const Point after = m_measured.DirectionAfter(length);
  const Point along{before.x + after.x, before.y + after.y};
  const double size = std::hypot(along.x, along.y);
  if (size < 1e-6) return std::nullopt;  // a spike has no side
  const double side = m_wasteIsLeft ? 1 : -1;
  return m_ray.Lacking(m_measured.At(length), {-along.y / size * side, along.x / size * side});
}

void Walk::AddTo(std::vector<BleedGap>& gaps) {
  const std::size_t first = gaps.size();
  const double step = m_measured.Length() / static_cast<double>(std::max<std::size_t>(m_count, 1));
  double begin = 0;  // of the first gap
  double last = 0;   // place that lacks print
  for (std::size_t i = 0; i < m_count; ++i) {
    const double length = static_cast<double>(i) * step;
    const auto reach = LackingAt(length);
    if (!reach) continue;
    const Point at = m_measured.At(length);
    if (gaps.size() == first) begin = length;
    if (gaps.size() == first || length - last > m_ray.Bleed() + step)
      gaps.push_back({m_line.path, m_contour, at, at, 0, *reach});
    else
      gaps.back().length += length - last;
    gaps.back().to = at;
    gaps.back().reach = std::min(gaps.back().reach, *reach);
    last = length;
  }
  // A run over the start is one.
  const double between = begin + m_measured.Length() - last;
  if (gaps.size() < first + 2 || between > m_ray.Bleed() + step) return;
  const BleedGap end = gaps.back();
  gaps.pop_back();
  BleedGap& start = gaps[first];
  start.from = end.from;
  start.length += end.length + between;
  start.reach = std::min(start.reach, end.reach);
}

}  // namespace

bool Coverage::IsPrinted(Point place) const {
  const double column = std::floor(place.x / pixel);
  const double row = static_cast<double>(height) - 1 - std::floor(place.y / pixel);
  if (!(column >= 0 && row >= 0 && column < static_cast<double>(width) &&
        row < static_cast<double>(height)))
    return false;
  return pixels[static_cast<std::size_t>(row) * width + static_cast<std::size_t>(column)] != 0;
}

std::vector<BleedGap> CheckBleed(const CutJob& job, const Coverage& coverage, double bleed) {
  std::vector<BleedGap> gaps;
  if (!(bleed > 0) || !(coverage.pixel > 0) || coverage.width == 0 || coverage.height == 0 ||
      coverage.pixels.size() / coverage.width < coverage.height)
    return gaps;
  std::vector<ToolLine> lines = ToolLinesOf(job);
  FindDepths(job, lines);
  const auto isCut = [&](const ToolLine& line) {
    return job.paths[line.path].operation == Operation::Cut && line.contour.closed &&
           IsOnAnySheet(line.contour);
  };
  double length = 0;
  for (const ToolLine& line : lines)
    if (isCut(line)) length += LengthOf(line.contour);
  const double step = std::max(coverage.pixel, length / MaximumBleedPlaces);
  const Ray ray(coverage, std::min(bleed, MaximumCoordinate));
  std::size_t contour = 0;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    contour = i > 0 && lines[i - 1].path == lines[i].path ? contour + 1 : 0;
    if (isCut(lines[i])) Walk(lines[i], contour, ray, step).AddTo(gaps);
  }
  return gaps;
}

}  // namespace rastrel::cutting
