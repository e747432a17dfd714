#include "cutting/toolpath/line_index.h"

#include <algorithm>

namespace rastrel::cutting {
namespace {

constexpr std::uint32_t LeafSize = 8;
constexpr double SamePlace = 0.001;

double Cross(Point o, Point a, Point b) {
  return (a.x - o.x) * (b.y - o.y) - (a.y - o.y) * (b.x - o.x);
}

bool Overlap(const Box& a, const Box& b) {
  return a.left <= b.right && b.left <= a.right && a.bottom <= b.top && b.bottom <= a.top;
}

bool Meet(Point a, Point b, const LineIndex::Line& line) {
  const double c = Cross(a, b, line.from);
  const double d = Cross(a, b, line.to);
  const double e = Cross(line.from, line.to, a);
  const double f = Cross(line.from, line.to, b);
  return ((c <= 0 && d >= 0) || (c >= 0 && d <= 0)) && ((e <= 0 && f >= 0) || (e >= 0 && f <= 0));
}

}  // namespace

LineIndex::LineIndex(std::vector<Line> lines) : m_lines(std::move(lines)) {
  if (!m_lines.empty()) Build(0, static_cast<std::uint32_t>(m_lines.size()));
}

std::uint32_t LineIndex::Build(std::uint32_t begin, std::uint32_t end) {
  const auto index = static_cast<std::uint32_t>(m_nodes.size());
  Node node{.box = {}, .begin = begin, .end = end, .left = 0, .right = 0};
  for (std::uint32_t i = begin; i < end; ++i) {
    node.box.Add(m_lines[i].from);
    node.box.Add(m_lines[i].to);
  }
  m_nodes.push_back(node);
  if (end - begin <= LeafSize) return index;
  const bool isWide = node.box.Width() >= node.box.Height();
  const std::uint32_t middle = begin + (end - begin) / 2;
  std::nth_element(m_lines.begin() + begin, m_lines.begin() + middle, m_lines.begin() + end,
                   [isWide](const Line& a, const Line& b) {
                     return isWide ? a.from.x + a.to.x < b.from.x + b.to.x
                                   : a.from.y + a.to.y < b.from.y + b.to.y;
                   });
  const std::uint32_t left = Build(begin, middle);
  const std::uint32_t right = Build(middle, end);
  m_nodes[index].left = left;
  m_nodes[index].right = right;
  return index;
}

bool LineIndex::IsCrossed(Point from, Point to) const {
  const double length = Distance(from, to);
  if (length <= SamePlace || m_nodes.empty()) return false;
  // The line itself begins on a contour, whose lines meet it there.
  const double t = SamePlace / length;
  const Point begin{from.x + (to.x - from.x) * t, from.y + (to.y - from.y) * t};
  Box box;
  box.Add(begin);
  box.Add(to);
  std::vector<std::uint32_t> open{0};
  for (std::size_t visits = 0; !open.empty(); ++visits) {
    if (visits == MaximumVisits) return true;
    const Node& node = m_nodes[open.back()];
    open.pop_back();
    if (!Overlap(node.box, box)) continue;
    if (node.left != 0) {
      open.push_back(node.left);
      open.push_back(node.right);
      continue;
    }
    for (std::uint32_t i = node.begin; i < node.end; ++i) {
      if (Meet(begin, to, m_lines[i])) return true;
    }
  }
  return false;
}

}  // namespace rastrel::cutting
