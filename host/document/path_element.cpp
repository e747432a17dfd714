#include "host/document/path_element.h"

#include <cmath>
#include <utility>

namespace rastrel::document {

void PathElement::AddSubPath() {
  m_SubPaths.emplace_back();
  m_PointCounts.push_back(0);
}

void PathElement::AddPoint(int subPath, int number, const CWorldPoint& point) {
  if (m_SubPaths.empty() || std::cmp_not_equal(subPath, m_SubPaths.size() - 1) ||
      std::cmp_not_equal(number, m_PointCounts.back())) {
    return;
  }
  m_IsFinite = m_IsFinite && std::isfinite(point.x) && std::isfinite(point.y);
  SubPath& last = m_SubPaths.back();
  if (m_PointCounts.back()++ == 0) {
    last.start = point;
  } else {
    last.segments.push_back({false, {CWorldPoint(), CWorldPoint(), point}});
  }
}

void PathElement::Close(int subPath) {
  if (subPath >= 0 && std::cmp_less(subPath, m_SubPaths.size())) {
    m_SubPaths[static_cast<std::size_t>(subPath)].closed = true;
  }
}

std::optional<PathShape> PathElement::Shape() const {
  PathShape shape;
  if (!m_IsFinite) return std::nullopt;
  for (std::size_t i = 0; i < m_SubPaths.size(); ++i) {
    if (m_PointCounts[i] > 0) shape.subPaths.push_back(m_SubPaths[i]);
  }
  if (shape.subPaths.empty()) return std::nullopt;
  return shape;
}

}  // namespace rastrel::document
