#pragma once

#include <cstddef>
#include <optional>

#include "host/drawing/path_sink.h"
#include "rastrel/platform/values/tm.h"

namespace rastrel::drawing {

/// Builds the path of a drawing's entity from lines, arcs and curves in the drawing's own
/// coordinates, mapped to world units.
class PathBuilder {
 public:
  explicit PathBuilder(const TM& toWorld) : m_ToWorld(toWorld) {}

  void MoveTo(const CWorldPoint& point);
  void LineTo(const CWorldPoint& point);
  void CurveTo(const CWorldPoint& first, const CWorldPoint& second, const CWorldPoint& end);
  /// Goes along an ellipse, centre + u cos t + v sin t, from the present point, which is that of
  /// t = `start`, to t = `start` + `sweep` (radians). Its curves keep within 1e-5 cm of it.
  void ArcTo(const CWorldPoint& centre, const CWorldPoint& u, const CWorldPoint& v, double start,
             double sweep);
  /// Closes the run. One whose last point is its first already gets no further line.
  void Close();
  /// Closes the run if it has come back to its start.
  void CloseIfBack();

  [[nodiscard]] bool IsEmpty() const { return m_Path.shape.subPaths.empty(); }
  /// Lines and curves so far.
  [[nodiscard]] std::size_t Pieces() const { return m_Pieces; }
  /// The present point, in the drawing's coordinates.
  [[nodiscard]] const CWorldPoint& At() const { return m_At; }
  /// Gives the path to a sink, without runs that have no line, and begins another. False as the
  /// sink says.
  bool Finish(PathSink& sink, const std::optional<VectorPath::Rgb>& fill,
              const std::optional<VectorPath::Rgb>& line, double lineWidth);

 private:
  [[nodiscard]] CWorldPoint Mapped(const CWorldPoint& point) const;

  TM m_ToWorld;
  VectorPath m_Path;
  std::size_t m_Pieces = 0;
  CWorldPoint m_At;
};

/// The point centre + u cos t + v sin t.
[[nodiscard]] CWorldPoint PointOnEllipse(const CWorldPoint& centre, const CWorldPoint& u,
                                         const CWorldPoint& v, double t);
/// First `inner`, then `outer`.
[[nodiscard]] TM Combined(const TM& outer, const TM& inner);

}  // namespace rastrel::drawing
