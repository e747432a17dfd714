#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "host/document/shapes.h"
#include "host/text/font_catalog.h"
#include "host/text/text_layout.h"
#include "rastrel/platform/values/tm.h"

namespace rastrel::text {

/// A letter on a circle, with the marks that belong to it.
struct ArcLetter {
  std::wstring text;
  double angle = 0;  ///< of the middle of its width: radians, clockwise from the circle's top
  double width = 0;  ///< points, unsqueezed
};

/// Lays a text out on its circle, by Pango.
///
/// The letters' advance widths follow each other on the circle. Each is turned as a whole, so that
/// its base line touches the circle in the middle of its width; SVG sets text on a path in the same
/// way. There are no ligatures. A text that is longer than the circle is squeezed in width, letters
/// and the room between them, until it ends where it begins. Line ends and tabs become spaces.
///
/// Lengths are points. Coordinates of the circle are points from its center, y downward; those of a
/// letter are points from the left end of its base line, y downward, before it is squeezed. One
/// thread at a time may lay text out or draw it.
class ArcLayout {
 public:
  /// Lays a text out: its first MaximumArcText characters. The shape and the catalogue are not
  /// kept. A radius that is not above 0 counts as the smallest one.
  ArcLayout(const document::ArcTextShape& shape, const FontCatalog& fonts);
  ~ArcLayout();
  ArcLayout(const ArcLayout&) = delete;
  ArcLayout& operator=(const ArcLayout&) = delete;

  /// The text as a whole, whose `width` is its unsqueezed length and whose `scaleX` squeezes it.
  /// It has no place of its own: `left` and `baseline` are 0.
  [[nodiscard]] const PlacedRun& Run() const { return m_Run; }
  [[nodiscard]] double Radius() const { return m_Radius; }
  /// The angles of the text's two ends: radians, clockwise from the circle's top.
  [[nodiscard]] double Begin() const { return m_Begin; }
  [[nodiscard]] double End() const;
  /// True if the text was longer than the circle.
  [[nodiscard]] bool IsSqueezed() const { return m_Run.scaleX < 1; }

  /// The letters in the order in which they are on the circle, clockwise.
  [[nodiscard]] const std::vector<ArcLetter>& Letters() const { return m_Letters; }
  /// From a letter's own coordinates to those of the circle.
  [[nodiscard]] TM PlaceOf(std::size_t letter) const;
  /// Draws a letter in the context's color, as a letter of its font, in its own coordinates.
  void DrawLetter(cairo_t* context, std::size_t letter) const;
  /// Adds the outline of a letter to the context's path, in its own coordinates.
  void AddOutline(cairo_t* context, std::size_t letter) const;

 private:
  struct Glyphs;
  void Measure(const document::ArcTextShape& shape, const FontCatalog& fonts);
  void Place(const document::ArcTextShape& shape);

  PlacedRun m_Run;
  double m_Radius = 0;
  double m_Begin = 0;
  std::vector<ArcLetter> m_Letters;
  std::unique_ptr<Glyphs> m_Glyphs;
};

}  // namespace rastrel::text
