#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/document/shapes.h"
#include "host/layout/template_fonts.h"

namespace rastrel::layout {

/// A line of a plate as a template has it.
struct LineRequest {
  std::wstring text;  ///< may be empty: the line takes its room
  std::wstring font;  ///< empty for the default one
  double height = 0;  ///< of its letters, world units; 0 for a share of the plate's height
};

/// The height of a line in heights of its letters: it holds ascenders, descenders and the room
/// between lines.
inline constexpr double LineHeight = 1.2;
/// The part of it that is above the base line; the rest is below.
inline constexpr double AboveBaseLine = 0.95;

/// The least room at the left and the right of a plate's text, as a part of the frame's width: no
/// letter touches the plate's edge.
inline constexpr double SideMargin = 0.05;

/// Sets lines below each other in a frame, centered, as one text. Lines with a height of their own
/// take LineHeight of it; the others share the rest of the frame's height less a margin at its
/// top and bottom, in equal parts, and their letters are as high as that permits. With `spread`
/// lines that leave room, since all have heights, have it between and round them; otherwise they
/// are a block in the middle. The margin, or SideMargin if that is more, is kept at the sides, too:
/// a line that is wider than the room between them is squeezed. Lines that need more height than
/// there is are made smaller together. Lengths are world units.
class PlateText {
 public:
  PlateText(const CWorldRect& frame, double margin, bool spread);

  /// Sizes lines; those whose font is missing, and not replaced, are empty.
  [[nodiscard]] document::TextShape Set(const std::vector<LineRequest>& lines,
                                        TemplateFonts& fonts) const;

 private:
  [[nodiscard]] double ShareOf(const std::vector<LineRequest>& lines) const;

  CWorldRect m_Frame;
  double m_Margin;
  bool m_Spread;
};

/// The text's lines that don't fit as they are, a sentence each that begins with `title`: how long
/// a line is and how much room it has, or how high all are. Empty if all fit.
[[nodiscard]] std::vector<std::wstring> SqueezedLines(const document::TextShape& text,
                                                      const std::wstring& title,
                                                      const text::FontCatalog& fonts);

}  // namespace rastrel::layout
