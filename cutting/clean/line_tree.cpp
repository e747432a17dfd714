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

template <typename Any>
void Widen(Any& box, const Any& other) {
  box.left = std::min(box.left, other.left);
  box.bottom = std::min(box.bottom, other.bottom);
  box.right = std::max(box.right, other.right);
  box.top = std::max(box.top, other.top);
}

// Places of the boxes' middles along the curve through all quarters of quarters of the page, each
// with the number of its box.
std::vector<std::pair<std::uint64_t, std::uint32_t>> PlacesOf(const std::vector<Box>& boxes) {
  Box page = boxes.front();
  for (const Box& box : boxes) Widen(page, box);
  const double size = std::max({page.right - page.left, page.top - page.bottom, 1e-6});
  const double scale = 0xffffffff / size / 2;
  std::vector<std::pair<std::uint64_t, std::uint32_t>> places;
  places.reserve(boxes.size());
  for (const Box& box : boxes) {
    const double x = (box.left - page.left + box.right - page.left) * scale;
    const double y = (box.bottom - page.bottom + box.top - page.bottom) * scale;
    places.emplace_back(
        Spread(static_cast<std::uint64_t>(x)) | (Spread(static_cast<std::uint64_t>(y)) << 1U),
        static_cast<std::uint32_t>(places.size()));
  }
  return places;
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
  std::vector<Leaf> leaves;
  std::vector<Box> leafBoxes;
  m_Boxes.reserve(lines.size());
  leaves.reserve(lines.size() / 2);
  leafBoxes.reserve(lines.size() / 2);
  for (std::uint32_t line = 0; line < lines.size(); ++line) {
    const Box box = BoxOf(lines[line]);
    m_Boxes.emplace_back(box);
    const bool goesOn = !leaves.empty() && line - leaves.back().first < Fan &&
                        lines[line].contour == lines[line - 1].contour;
    if (goesOn) {
      ++leaves.back().end;
      Widen(leafBoxes.back(), box);
    } else {
      leaves.push_back({line, line + 1});
      leafBoxes.push_back(box);
    }
  }
  auto places = PlacesOf(leafBoxes);
  std::ranges::sort(places);
  m_Leaves.reserve(leaves.size());
  std::vector<SmallBox>& first = m_Levels.emplace_back();
  first.reserve(leaves.size());
  for (const auto& place : places) {
    m_Leaves.push_back(leaves[place.second]);
    first.emplace_back(leafBoxes[place.second]);
  }
  while (m_Levels.back().size() > 1) {
    const std::vector<SmallBox>& below = m_Levels.back();
    std::vector<SmallBox> level;
    level.reserve((below.size() + Fan - 1) / Fan);
    for (std::size_t i = 0; i < below.size(); ++i) {
      if (i % Fan == 0)
        level.push_back(below[i]);
      else
        Widen(level.back(), below[i]);
    }
    m_Levels.push_back(std::move(level));
  }
}

}  // namespace rastrel::cutting::clean
