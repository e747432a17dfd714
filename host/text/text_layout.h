#pragma once

#include <cstddef>
#include <memory>
#include <string>
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
  double width = 0;    ///< squeezed
  double natural = 0;  ///< unsqueezed, in the line's own font size
  double ascent = 0;   ///< above the base line, squeezed
  double descent = 0;  ///< below it
  double scaleX = 1;   ///< squeezing of widths
  double scaleY = 1;   ///< squeezing of heights
};

/// A piece of a line in one style, as it was placed, in the same coordinates.
struct PlacedRun {
  std::wstring text;
  FontFace face;
  double size = 0;  ///< points, unsqueezed
  double left = 0;  ///< of the first letter's origin
  double baseline = 0;
  double width = 0;  ///< unsqueezed
  double scaleX = 1;
  double scaleY = 1;
  bool colored = false;  ///< it has a color of its own
  CVKColor color;
  bool rightToLeft = false;       ///< its letters are ordered from right to left
  bool isFontUnreadable = false;  ///< a font that it needs can't be opened: letters are missing
  std::wstring missing;  ///< its characters for which no font has a picture: boxes are drawn
};

/// Lays a text out in its frame, by Pango.
///
/// A line that has a leading is that far below the line before it, from base line to base line,
/// whatever the size of its letters; any other follows without a gap. The first line's letters
/// begin at the top of the room. An empty line is as high as the one before it. Pieces of a line
/// that run to the left are in the order in which they are read there, and a line that begins with
/// one runs to the left as a whole. Where lines are justified in the frame less its margins, left
/// and right margin make the room narrower. A text that fits stays as it is. If the fit is on (1 or
/// 2), lines that are too wide are squeezed in width: each by its own factor, all by one, or, for
/// lines of equal height, all lines set in one size (the largest that a line asks for) and then
/// squeezed by one factor. A text that is too high is then made smaller as a whole. Text stays
/// inside the frame that way, whatever its size. A block of lines is centered between top and
/// bottom; lines set one by one begin at the top.
///
/// One thread at a time may lay text out or draw it.
class TextLayout {
 public:
  /// Lays a text out. The shape and the catalogue are not kept.
  TextLayout(const document::TextShape& shape, const FontCatalog& fonts);
  ~TextLayout();
  TextLayout(const TextLayout&) = delete;
  TextLayout& operator=(const TextLayout&) = delete;

  [[nodiscard]] const std::vector<PlacedLine>& Lines() const { return m_Lines; }
  /// From the first line to the last, and in each in the order of reading.
  [[nodiscard]] const std::vector<PlacedRun>& Runs() const { return m_Runs; }
  /// True if lines were squeezed, or made smaller.
  [[nodiscard]] bool IsSqueezed() const;

  /// Draws a run in the context's color, as letters of a font. The context's unit is a point of
  /// the run before it is squeezed, its y grows downward, and its origin is that of the first
  /// letter.
  void DrawRun(cairo_t* context, std::size_t run) const;
  /// Adds the outlines of a run's letters to the context's path, in the same coordinates.
  void AddOutlines(cairo_t* context, std::size_t run) const;

 private:
  struct Letters;
  struct Line;
  void Measure(const document::TextShape& shape, const FontCatalog& fonts);
  void AddRun(const document::TextRun& run, double size, const FontCatalog& fonts, Line& line);
  void OrderRuns(Line& line);
  void FillEmptyLines();
  [[nodiscard]] double Height() const;
  void Squeeze(const document::TextShape& shape, double width, double height);
  void Place(const document::TextShape& shape);

  std::vector<std::unique_ptr<Line>> m_Content;
  std::vector<PlacedLine> m_Lines;
  std::vector<PlacedRun> m_Runs;
  std::vector<std::unique_ptr<Letters>> m_Letters;  // of the run at the same place
};

}  // namespace rastrel::text
