#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cutting/job/cut_job.h"
#include "rastrel/platform/os/expected.h"

/// The contents of a window for a cut job, without any toolkit: which strokes are in sight, how
/// exactly they have to be drawn, which one is under the pointer, and where order numbers and
/// arrows fit. Millimetres on the page, y upward. `mmPerPixel` is the length that a pixel of the
/// screen shows.
namespace rastrel::cutting {

/// Strokes of one operation and one tool: a row of the window's list.
struct CutGroup {
  Operation operation = Operation::Cut;
  std::string tool;  ///< the device file's name of it; empty: that of the operation
  std::size_t strokes = 0;
  double length = 0;  ///< with every pass
  bool isShown = true;
};

/// One contour that a tool follows, in the order of the work.
struct CutStroke {
  std::size_t firstPoint = 0;
  std::size_t points = 0;  ///< at least 1; a closed one ends with its first point again
  std::size_t group = 0;
  std::size_t path = 0;  ///< in the job
  int passes = 1;
  double length = 0;  ///< of one pass
  Box box;
};

struct StrokeHit {
  std::size_t stroke = 0;
  Point at;             ///< the place on the stroke
  double distance = 0;  ///< from where was asked
};

/// A number at a stroke's start.
struct StrokeNumber {
  std::size_t stroke = 0;  ///< shown from 1 on
  Point at;
};

/// A place on a stroke, with the direction there.
struct StrokeArrow {
  std::size_t stroke = 0;
  Point at;
  Point direction;  ///< of length 1
};

/// Used on one thread. It keeps no reference to the job.
class CutScene {
 public:
  /// Fails for coordinates that are not finite or farther than a kilometre from the page's corner,
  /// and for a job of more points than fit MaximumPoints.
  [[nodiscard]] static Expected<CutScene> Of(const CutJob& job);

  static constexpr std::size_t MaximumPoints = 50'000'000;
  /// How far a drawn line may be from its curve at the largest scale that a window shows.
  static constexpr double Tolerance = 0.01;

  [[nodiscard]] const std::vector<CutGroup>& Groups() const { return m_Groups; }
  [[nodiscard]] const std::vector<CutStroke>& Strokes() const { return m_Strokes; }
  [[nodiscard]] const std::vector<RegistrationMark>& Marks() const { return m_Marks; }
  [[nodiscard]] Box Page() const { return {0, 0, m_Width, m_Height}; }
  /// The page, the strokes and the marks.
  [[nodiscard]] const Box& Extent() const { return m_Extent; }
  [[nodiscard]] Point Start(std::size_t stroke) const;
  [[nodiscard]] Point End(std::size_t stroke) const;

  void Show(std::size_t group, bool isShown) { m_Groups[group].isShown = isShown; }
  [[nodiscard]] bool IsShown(std::size_t stroke) const {
    return m_Groups[m_Strokes[stroke].group].isShown;
  }

  /// The shown strokes that touch a box, in their order. Of those that are smaller than a pixel
  /// only one of a group is there for each pixel, so that there are never many more than pixels.
  [[nodiscard]] std::vector<std::size_t> InSight(const Box& box, double mmPerPixel) const;
  /// The stroke's points for that scale: each left out is less than half a pixel from the one
  /// before it. The first and the last are always there.
  [[nodiscard]] std::vector<Point> Outline(std::size_t stroke, double mmPerPixel) const;
  /// The nearest shown stroke within `radius`. The later one where two are equally near, since it
  /// is drawn above.
  [[nodiscard]] std::optional<StrokeHit> Nearest(Point at, double radius) const;
  /// Numbers in sight that have room: of those in one cell of 64 x 32 pixels the first. `maximum`
  /// at most.
  [[nodiscard]] std::vector<StrokeNumber> Numbers(const Box& box, double mmPerPixel,
                                                  std::size_t maximum) const;
  /// Arrows of strokes in sight that are at least 24 pixels long.
  [[nodiscard]] std::vector<StrokeArrow> Arrows(const Box& box, double mmPerPixel,
                                                std::size_t maximum) const;
  /// The place after a length of the stroke's first pass, within it.
  [[nodiscard]] StrokeArrow Along(std::size_t stroke, double length) const;

 private:
  [[nodiscard]] Expected<void> Take(const CutPath& path, std::size_t index);
  std::size_t GroupOf(const CutPath& path);

  struct ShortPoint {
    float x, y;  // from the lower left of the stroke's box
  };
  std::vector<CutGroup> m_Groups;
  std::vector<CutStroke> m_Strokes;
  std::vector<ShortPoint> m_Points;
  std::vector<RegistrationMark> m_Marks;
  double m_Width = 0;
  double m_Height = 0;
  Box m_Extent;
};

}  // namespace rastrel::cutting
