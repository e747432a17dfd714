#include "cutting/frame/mark_raster.h"

#include <algorithm>
#include <cmath>

#include "cutting/frame/mark_shape.h"

namespace rastrel::cutting {
namespace {

constexpr int Lines = 16;  // of a pixel's height
constexpr double InchMillimetres = 25.4;

// Adds how far [from, to) reaches over each pixel.
void AddSpan(std::vector<double>& sums, double from, double to) {
  const auto width = static_cast<double>(sums.size());
  from = std::clamp(from, 0.0, width);
  to = std::clamp(to, 0.0, width);
  if (!(from < to)) return;
  const auto first = static_cast<std::size_t>(from);
  const auto last = std::min(static_cast<std::size_t>(to), sums.size() - 1);
  if (first == last) {
    sums[first] += to - from;
    return;
  }
  sums[first] += static_cast<double>(first + 1) - from;
  for (std::size_t x = first + 1; x < last; ++x) sums[x] += 1;
  sums[last] += to - static_cast<double>(last);
}

}  // namespace

MarkRaster::MarkRaster(const std::vector<RegistrationMark>& marks, const PixelGrid& grid)
    : m_Width(grid.width) {
  // A curve's line may lie a thousandth of a pixel beside it.
  const double tolerance =
      InchMillimetres / std::max({grid.xResolution, grid.yResolution, 1.0}) / 1000;
  for (const RegistrationMark& mark : marks)
    for (const Contour& contour : InkOf(mark)) AddSides(Flatten(contour, tolerance), grid);
  std::sort(m_Sides.begin(), m_Sides.end(),
            [](const Side& one, const Side& other) { return one.top < other.top; });
}

void MarkRaster::AddSides(const std::vector<Point>& outline, const PixelGrid& grid) {
  const auto pixel = [&](Point point) {
    return Point{point.x * grid.xResolution / InchMillimetres,
                 static_cast<double>(grid.height) - point.y * grid.yResolution / InchMillimetres};
  };
  for (std::size_t i = 0; i < outline.size(); ++i) {
    Point from = pixel(outline[i]);
    Point to = pixel(outline[(i + 1) % outline.size()]);
    if (from.y > to.y) std::swap(from, to);
    if (!(from.y < to.y)) continue;
    m_Sides.push_back({from.y, to.y, from.x, (to.x - from.x) / (to.y - from.y)});
  }
}

bool MarkRaster::CoverageOf(std::size_t fromTop, std::span<std::uint8_t> row) {
  const auto top = static_cast<double>(fromTop);
  const auto end = std::partition_point(m_Sides.begin(), m_Sides.end(),
                                        [&](const Side& side) { return side.top < top + 1; });
  std::vector<Side> near;
  std::copy_if(m_Sides.begin(), end, std::back_inserter(near),
               [&](const Side& side) { return side.bottom > top; });
  std::fill(row.begin(), row.end(), std::uint8_t{0});
  if (near.empty() || m_Width == 0) return false;
  m_Sums.assign(m_Width, 0);
  std::vector<double> crossings;
  for (int line = 0; line < Lines; ++line) {
    const double y = top + (line + 0.5) / Lines;
    crossings.clear();
    for (const Side& side : near)
      if (side.top <= y && y < side.bottom)
        crossings.push_back(side.x + (y - side.top) * side.slope);
    std::sort(crossings.begin(), crossings.end());
    for (std::size_t i = 1; i < crossings.size(); i += 2)
      AddSpan(m_Sums, crossings[i - 1], crossings[i]);
  }
  bool hasInk = false;
  for (std::size_t x = 0; x < std::min(m_Width, row.size()); ++x) {
    row[x] = static_cast<std::uint8_t>(std::lround(std::min(m_Sums[x] / Lines, 1.0) * 255));
    hasInk = hasInk || row[x] > 0;
  }
  return hasInk;
}

}  // namespace rastrel::cutting
