#pragma once

#include <pango/pangocairo.h>

#include <memory>
#include <string>
#include <string_view>

#include "host/document/shapes.h"
#include "host/text/font_catalog.h"

/// Letters by Pango, for the layouts of this folder. One thread at a time.
namespace rastrel::text {

/// Letters are measured in this size, in points, and scaled to their own: Pango counts 1/1024
/// points in 32 bits, in which neither a tiny letter has a width nor a huge line an end.
inline constexpr double MeasuredSize = 100;
/// For the same reason a long run is cut after so many characters; so many of the widest letters
/// stay within the bits.
inline constexpr std::size_t MaximumPiece = 4096;

template <typename Kind>
struct ObjectEnd {
  void operator()(Kind* object) const { g_object_unref(object); }
};
template <typename Kind>
using Owned = std::unique_ptr<Kind, ObjectEnd<Kind>>;

struct DescriptionEnd {
  void operator()(PangoFontDescription* description) const {
    pango_font_description_free(description);
  }
};
using FontDescription = std::unique_ptr<PangoFontDescription, DescriptionEnd>;

/// Text units or world units as points. Finite for any number: 0 for none, and at most 1e9.
[[nodiscard]] double PointsFromText(double value);
[[nodiscard]] double PointsFromWorld(double value);
/// The size that a run is set in, in points: sizes too small or too large to be laid out become the
/// nearest that can be.
[[nodiscard]] double LetterSize(const document::TextRun& run);

/// A face in MeasuredSize.
[[nodiscard]] FontDescription DescriptionOf(const FontFace& face);

/// A text as one line of letters. With `separate` each letter stays one: there are no ligatures.
[[nodiscard]] Owned<PangoLayout> LettersOf(const PangoFontDescription* font, std::wstring_view text,
                                           bool separate = false);

/// The direction of the first letter that has one.
enum class Direction { None, LeftToRight, RightToLeft };
[[nodiscard]] Direction DirectionOf(std::wstring_view text);

/// Extents in MeasuredSize.
struct LetterExtents {
  double width, ascent, descent;
};
[[nodiscard]] LetterExtents ExtentsOf(PangoLayout* letters);

/// The faults of the letters of a line, and their direction.
struct LetterFaults {
  bool rightToLeft = false;
  bool isFontUnreadable = false;  ///< a font that they need can't be opened
  std::wstring missing;           ///< characters for which no font has a picture
};
[[nodiscard]] LetterFaults Examine(PangoLayout* letters);

}  // namespace rastrel::text
