#include "host/drawing/path_sink.h"

namespace rastrel::drawing {

using graphics::MaximumVectorPaths;
using graphics::MaximumVectorPoints;

bool PathSink::HasRoomFor(std::size_t points) {
  if (m_Taken && points > MaximumVectorPoints - m_Points) {
    m_Taken = FailureOf("it has more than " + std::to_string(MaximumVectorPoints) +
                        " points, which are the most");
  }
  return static_cast<bool>(m_Taken);
}

bool PathSink::Take(const VectorPath& path) {
  const std::size_t points = graphics::PointCount(path.shape);
  if (!HasRoomFor(points)) return false;
  if (m_Paths == MaximumVectorPaths) {
    m_Taken = FailureOf("it has more than " + std::to_string(MaximumVectorPaths) +
                        " paths, which are the most");
    return false;
  }
  ++m_Paths;
  m_Points += points;
  m_Take(path);
  return true;
}

}  // namespace rastrel::drawing
