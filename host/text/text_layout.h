#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "host/document/shapes.h"
#include "host/text/font_catalog.h"

// The drawing library's context, whose header only sources include.
typedef struct _cairo cairo_t;

namespace rastrel::text {

/// A line as it was placed. Points (1/72 inch), y upward, in the coordinates of the text's page.
struct PlacedLine {
  double left = 0;  ///< of the first letter's origin
  double baseline = 0;
  double width = 0;    ///< as it stands, squeezed
  double natural = 0;  ///< what the line would take unsqueezed, in its own font size
  double ascent = 0;   ///< above the base line, as it stands
  double descent = 0;  ///< below it
  double scaleX = 1;   ///< squeezing of widths
  double scaleY = 1;   ///< squeezing of heights
};

/// How a text stands in its frame, by Pango.
///
/// Lines stand below each other, one leading apart: the line's own where it has one, else the
/// height that its fonts ask for. Left and right margin, where lines are justified in the frame
/// less its margins, make the room narrower. A text that fits as it is stays as it is. Where the
/// fit is on (1 or 2), lines that are too wide are squeezed in width: each for itself, all by one
/// factor, or, for lines of equal height, all lines set in one size (the largest that a line asks
/// for) and then squeezed by one factor. A text that is too high is then made smaller as a whole.
/// Text stays inside the frame that way, whatever its size. A block of lines stands in the middle
/// between top and bottom; lines set one by one begin at the top.
class TextLayout {
 public:
  /// Lays a text out. The shape and the catalogue are not kept.
  TextLayout(const document::TextShape& shape, const FontCatalog& fonts);
  ~TextLayout();
  TextLayout(const TextLayout&) = delete;
  TextLayout& operator=(const TextLayout&) = delete;

  [[nodiscard]] const std::vector<PlacedLine>& Lines() const { return m_Lines; }
  /// True if lines were squeezed, or made smaller.
  [[nodiscard]] bool IsSqueezed() const;

  /// Draws into a context whose unit is a point and whose y grows downward, with the page's upper
  /// edge at 0. `pageHeight` is in points. Before each run `color` is called with the run, to set
  /// the source. As outlines, every letter is a filled path; else text.
  void Draw(cairo_t* context, double pageHeight, bool outlines,
            const std::function<void(const document::TextRun&)>& color) const;

 private:
  struct Run;
  struct Line;
  void Measure(const document::TextShape& shape, const FontCatalog& fonts);
  void Squeeze(const document::TextShape& shape, double width, double height);
  void Place(const document::TextShape& shape);

  std::vector<std::unique_ptr<Line>> m_Content;
  std::vector<PlacedLine> m_Lines;
};

}  // namespace rastrel::text
