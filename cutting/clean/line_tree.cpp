#include "cutting/clean/line_tree.h"

#include <algorithm>
#include <utility>

namespace rastrel::cutting::clean {
namespace {

// Spreads the bits of a number, with a zero after each.
std::uint64_t Spread(std::uint64_t value) {
  value &= 0xffffffffU;
  value = (value | (value << 16U)) & 0x0000ffff0000ffffU;
  value = (value | (value << 8U)) & 0x00ff00ff00ff00ffU;
  value = (value | (value << 4U)) & 0x0f0f0f0f0f0f0f0fU;
  value = (value | (value << 2U)) & 0x3333333333333333U;
  return (value | (value << 1U)) & 0x5555555555555555U;
}

// Place of the line's middle along the curve through all quarters of quarters of the page.
std::uint64_t PlaceOf(const FlatLine& line, GridPoint corner, unsigned shift) {
  const auto x = static_cast<std::uint64_t>((line.from.x - corner.x + line.to.x - corner.x) / 2);
  const auto y = static_cast<std::uint64_t>((line.from.y - corner.y + line.to.y - corner.y) / 2);
  return Spread(x >> shift) | (Spread(y >> shift) << 1U);
}

std::vector<std::uint32_t> OrderOf(std::span<const FlatLine> lines) {
  GridPoint low = lines.front().from;
  GridPoint high = low;
  for (const FlatLine& line : lines) {
    low = {std::min({low.x, line.from.x, line.to.x}), std::min({low.y, line.from.y, line.to.y})};
    high = {std::max({high.x, line.from.x, line.to.x}), std::max({high.y, line.from.y, line.to.y})};
  }
  unsigned shift = 0;
  const std::int64_t size = std::max(high.x - low.x, high.y - low.y);
  while ((size >> shift) > 0xffffffffLL) ++shift;
  std::vector<std::pair<std::uint64_t, std::uint32_t>> places;
  places.reserve(lines.size());
  for (const FlatLine& line : lines)
    places.emplace_back(PlaceOf(line, low, shift), static_cast<std::uint32_t>(places.size()));
  std::ranges::sort(places);
  std::vector<std::uint32_t> order;
  order.reserve(places.size());
  for (const auto& place : places) order.push_back(place.second);
  return order;
}

void Widen(Box& box, const Box& other) {
  if (box.IsEmpty()) {
    box = other;
    return;
  }
  box = {std::min(box.left, other.left), std::min(box.bottom, other.bottom),
         std::max(box.right, other.right), std::max(box.top, other.top)};
}

}  // namespace

Box BoxOf(const FlatLine& line) {
  const Point from = Millimeters(line.from);
  const Point to = Millimeters(line.to);
  return {std::min(from.x, to.x), std::min(from.y, to.y), std::max(from.x, to.x),
          std::max(from.y, to.y)};
}

LineTree::LineTree(std::span<const FlatLine> lines) {
  if (lines.empty()) return;
  m_Order = OrderOf(lines);
  m_Boxes.reserve(m_Order.size());
  for (const std::uint32_t number : m_Order) m_Boxes.push_back(BoxOf(lines[number]));
  std::size_t below = m_Order.size();
  do {
    std::vector<Box> level((below + Fan - 1) / Fan);
    for (std::size_t i = 0; i < below; ++i)
      Widen(level[i / Fan], m_Levels.empty() ? m_Boxes[i] : m_Levels.back()[i]);
    below = level.size();
    m_Levels.push_back(std::move(level));
  } while (below > 1);
}

}  // namespace rastrel::cutting::clean
