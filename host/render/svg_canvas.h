#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

#include "host/render/canvas.h"

namespace rastrel::text {
struct PlacedRun;
}

namespace rastrel::render {

/// Writes a page as SVG 1.1 (https://www.w3.org/TR/SVG11/). A unit of its coordinates is a
/// millimetre. Text stays text: every run is a `text` element with the family of its font, and with
/// its length in this layout, so that a viewer with another font keeps to the frame. The class of
/// an element is its role in the document.
///
///     <svg width="600mm" height="400mm" viewBox="0 0 600 400">
///       <g class="blank"> <path/> </g>                      the blank and its edge
///       <g class="plate"> <path/> ... </g>                  a path for each pane
///       <g class="text"> <text/> ... </g>                   an element for each run, or a path
///       <g class="text">                                    text on a circle
///         <defs> <path id="circle-1"/> </defs>              the circle, from the text's beginning
///         <text> <textPath xlink:href="#circle-1"/> </text>
///       </g>
///       <g class="path"> <path/> </g>                       also class="cut-line",
///       "cut-through-line" <g class="drill-point"> <circle/> <path/> </g>      the hole and its
///       cross <g> ... </g>                                        a group and its objects <g
///       class="graphic">
///         <defs> <image id="picture-1"/> </defs>            a placed file, at its first use
///         <use xlink:href="#picture-1"/>
///       </g>                                                also for a bitmap, as PNG
///       <g class="separation" data-layer="Cyan" data-page="1" style="mix-blend-mode:multiply">
///         <image/>                                          the ink where it prints
///       </g>
///     </svg>
class SvgCanvas : public Canvas {
 public:
  /// A page of that size in points. With `outlines` every letter is a path.
  SvgCanvas(double width, double height, bool outlines);

  /// The whole file, once all is drawn.
  [[nodiscard]] std::string Finish();

  [[nodiscard]] double Farthest() const override;
  void Begin(Role role) override;
  void End() override;
  void BeginGroup() override;
  void EndGroup() override;
  void DrawOutline(const Outline& outline, const std::optional<Color>& inside,
                   const std::optional<Pen>& pen) override;
  void DrawCircle(Point centre, double radius, const Pen& pen) override;
  void DrawText(const text::TextLayout& layout, std::size_t run, const Color& color,
                const TM& place) override;
  void DrawArcText(const text::ArcLayout& layout, const Color& color, const TM& place) override;
  [[nodiscard]] Expected<void> DrawPicture(const graphics::Picture& picture,
                                           const TM& place) override;
  [[nodiscard]] Expected<void> DrawPlane(const SeparationPlane& plane, const TM& place) override;
  [[nodiscard]] Expected<void> DrawBitmap(const document::BitmapPixels& pixels,
                                          const TM& place) override;

 private:
  void AddStroke(const Pen& pen);
  void DrawLetters(const text::TextLayout& layout, std::size_t run, const Color& color,
                   const TM& place);
  void DrawLettersOnCircle(const text::ArcLayout& layout, const Color& color, const TM& place);
  void FillLetters(const Outline& letters, const Color& color);
  void AddLetterStyle(const text::PlacedRun& run, double length, const Color& color);
  [[nodiscard]] Expected<std::string> AddressOf(const graphics::Picture& picture);

  std::string m_Text;
  bool m_Outlines;
  std::map<const void*, std::string> m_Pictures;  // ids of placed files and bitmaps, by content
  std::size_t m_Circles = 0;                      // that text was set on so far
};

}  // namespace rastrel::render
