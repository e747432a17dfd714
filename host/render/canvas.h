#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/document/shapes.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/values/tm.h"

namespace rastrel::text {
class ArcLayout;
class TextLayout;
}  // namespace rastrel::text
namespace rastrel::graphics {
class Picture;
}

/// The surface of a page. Lengths are points (1/72 inch) from the page's upper left corner, y
/// downward, unless an operation says otherwise.
namespace rastrel::render {

struct Point {
  double x = 0;
  double y = 0;
};

/// Red, green and blue, 0 to 1 each.
struct Color {
  double red = 0;
  double green = 0;
  double blue = 0;
};

/// The pattern of a line.
enum class Dashes {
  None,
  Long,        ///< a dash, a gap
  LongAndDot,  ///< a dash, a gap, a dot, a gap
};

/// The lengths of a pattern's dashes and gaps in turn, in points; empty for a whole line.
[[nodiscard]] std::span<const double> LengthsOf(Dashes dashes);

/// How a line is drawn.
struct Pen {
  Color color;
  double width = 0;  ///< 0 for as thin as the canvas can and the eye still sees
  Dashes dashes = Dashes::None;
};

/// Lines and curves, as steps and the points that they take: one, three for a curve, none to close.
struct Outline {
  enum class Step : std::uint8_t { Move, Line, Curve, Close };
  std::vector<Step> steps;
  std::vector<Point> points;
  document::FillRule fillRule = document::FillRule::EvenOdd;

  /// Removes the steps; the rule becomes even-odd.
  void Clear() {
    fillRule = document::FillRule::EvenOdd;
    steps.clear();
    points.clear();
  }
  void MoveTo(Point point) { Add(Step::Move, point); }
  void LineTo(Point point) { Add(Step::Line, point); }
  void CurveTo(Point first, Point second, Point end) {
    Add(Step::Curve, first);
    points.push_back(second);
    points.push_back(end);
  }
  void Close() { steps.push_back(Step::Close); }

 private:
  void Add(Step step, Point point) {
    steps.push_back(step);
    points.push_back(point);
  }
};

/// The role of an object in the document, for a canvas that keeps it.
enum class Role {
  Blank,
  Pane,
  Text,
  Path,
  CutLine,
  CutThroughLine,
  DrillPoint,
  Graphic,
  Separation
};

/// An ink's plane as a canvas draws it.
struct SeparationPlane {
  std::wstring name;  ///< of the ink
  int page = 1;       ///< of the separated file
  Color ink;          ///< full ink on white
  int width = 1;      ///< pixels
  int height = 1;
  std::span<const std::uint8_t> pixels;  ///< 255 is no ink; rows from the top without padding
};

/// A surface to paint on; later painting covers earlier. Coordinates are finite and within
/// `Farthest`.
class Canvas {
 public:
  Canvas() = default;
  virtual ~Canvas() = default;
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;

  /// How far from 0 a coordinate may be.
  [[nodiscard]] virtual double Farthest() const = 0;

  /// Brackets the operations that paint one object of the document, or a group.
  virtual void Begin(Role /*role*/) {}
  virtual void End() {}
  virtual void BeginGroup() {}
  virtual void EndGroup() {}

  /// Fills an outline by its rule, open runs as if they were closed, and draws it with a pen;
  /// either may be missing.
  virtual void DrawOutline(const Outline& outline, const std::optional<Color>& inside,
                           const std::optional<Pen>& pen) = 0;
  virtual void DrawCircle(Point centre, double radius, const Pen& pen) = 0;
  /// Draws a run of letters. `place` maps the run's own coordinates (TextLayout::DrawRun) to the
  /// page's.
  virtual void DrawText(const text::TextLayout& layout, std::size_t run, const Color& color,
                        const TM& place) = 0;
  /// Draws text on a circle. `place` maps the circle's coordinates (ArcLayout) to the page's.
  virtual void DrawArcText(const text::ArcLayout& layout, const Color& color, const TM& place) = 0;
  /// Draws a placed file. `place` maps its own coordinates, points in its true size from its upper
  /// left corner, to the page's. Fails as Picture::Draw does.
  [[nodiscard]] virtual Expected<void> DrawPicture(const graphics::Picture& picture,
                                                   const TM& place) = 0;
  /// Prints a plane over the painting so far: its ink takes light from it. `place` maps the plane's
  /// own coordinates, pixels from its upper left corner, to the page's. Brackets itself. Fails if
  /// there is no memory for it.
  [[nodiscard]] virtual Expected<void> DrawPlane(const SeparationPlane& plane, const TM& place) = 0;
  /// Draws a bitmap. `place` maps its pixels, counted from its upper left corner, to the page. The
  /// bitmap must outlive the canvas. Fails with a sentence about it if it has more pixels than the
  /// canvas can take (graphics::MaximumGraphicPixels).
  [[nodiscard]] virtual Expected<void> DrawBitmap(const document::BitmapPixels& pixels,
                                                  const TM& place) = 0;
};

}  // namespace rastrel::render
