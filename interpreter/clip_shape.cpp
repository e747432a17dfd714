#include "interpreter/clip_shape.h"

#include <algorithm>
#include <cmath>

#include "interpreter/segment_text.h"

namespace rastrel::interpreter {
namespace {

// Of a pixel: so far can the interpreter's rounding move a point and an edge apart.
constexpr double Rounding = 1.0 / 128;
// A shape of more corners than that is hardly a convex one, and each costs time for every point.
constexpr std::size_t CornerLimit = 64;

// Twice the area of the triangle, positive if the corners turn one way and negative if the other.
double Turn(const PixelPoint& a, const PixelPoint& b, const PixelPoint& c) {
  return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

}  // namespace

void PixelBox::Add(const PixelPoint& point) {
  left = std::min(left, point.x);
  right = std::max(right, point.x);
  top = std::min(top, point.y);
  bottom = std::max(bottom, point.y);
}

bool PixelBox::Meets(const PixelBox& other) const {
  return left <= other.right && other.left <= right && top <= other.bottom && other.top <= bottom;
}

ClipShape::ClipShape(std::string_view segments) {
  SegmentReader reader(segments);
  bool simple = true;
  unsigned parts = 0;
  while (const auto segment = reader.Next()) {
    for (const PixelPoint& point : segment->Points()) m_Box.Add(point);
    if (segment->letter == 'm') ++parts;
    if (segment->letter == 'c' || parts > 1) simple = false;
    if (!simple || segment->letter == 'h') continue;
    TakeCorner(segment->storage[0]);
    simple = m_Corners.size() <= CornerLimit;
  }
  if (simple && reader.AtEnd()) {
    KeepConvexOnly();
  } else {
    m_Corners.clear();
  }
}

void ClipShape::TakeCorner(const PixelPoint& corner) {
  const bool repeated =
      !m_Corners.empty() && m_Corners.back().x == corner.x && m_Corners.back().y == corner.y;
  if (!repeated) m_Corners.push_back(corner);
}

// Convex and once around: all turns go one way, and their directions change sides no more than
// those of one round do.
void ClipShape::KeepConvexOnly() {
  if (m_Corners.size() > 1 && m_Corners.front().x == m_Corners.back().x &&
      m_Corners.front().y == m_Corners.back().y) {
    m_Corners.pop_back();
  }
  const std::size_t count = m_Corners.size();
  unsigned left = 0;
  unsigned right = 0;
  unsigned turningsBack = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const PixelPoint& a = m_Corners[i];
    const PixelPoint& b = m_Corners[(i + 1) % count];
    const PixelPoint& c = m_Corners[(i + 2) % count];
    const double turn = Turn(a, b, c);
    if (turn > 0) ++left;
    if (turn < 0) ++right;
    if ((b.x > a.x) != (c.x > b.x)) ++turningsBack;
  }
  const bool convex = count >= 3 && (left == 0) != (right == 0) && turningsBack <= 2;
  if (!convex) m_Corners.clear();
  m_Turn = left > 0 ? 1 : -1;
  for (std::size_t i = 0; i < m_Corners.size(); ++i) {
    const PixelPoint& a = m_Corners[i];
    const PixelPoint& b = m_Corners[(i + 1) % m_Corners.size()];
    m_Margins.push_back(-Rounding * std::hypot(b.x - a.x, b.y - a.y));
  }
}

bool ClipShape::Holds(const PixelPoint& point) const {
  for (std::size_t i = 0; i < m_Corners.size(); ++i) {
    const PixelPoint& a = m_Corners[i];
    const PixelPoint& b = m_Corners[(i + 1) % m_Corners.size()];
    if (Turn(a, b, point) * m_Turn < m_Margins[i]) return false;
  }
  return !m_Corners.empty();
}

void ClipJudge::Add(const PixelPoint& point) {
  m_Box.Add(point);
  m_Inside = m_Inside && m_Shape.Holds(point);
}

ClipPosition ClipJudge::Position() const {
  if (m_Inside) return ClipPosition::Inside;
  return m_Shape.Box().Meets(m_Box) ? ClipPosition::Crosses : ClipPosition::Outside;
}

}  // namespace rastrel::interpreter
