#pragma once

#include <cstdint>

/// The text engine's records for the paragraph that is open. They belong to the engine and live in
/// it until the paragraph is closed; the library writes their fields directly, and the engine takes
/// notice of a change at the next operation that is given the record, or at the next pasted text.

/// How the lines of a paragraph fit its frame.
enum LineFit : int {
  LINEFIT_EACH_LINE = 0,    ///< each line is squeezed for itself until it fits
  LINEFIT_ALL_LINES = 1,    ///< all lines are squeezed by the same factor
  LINEFIT_EQUAL_HEIGHT = 2  ///< all lines get one height
};

/// Where the lines of a paragraph stand in its frame.
enum LineJustification : int { JUSTIFY_LEFT = 0, JUSTIFY_RIGHT = 1, JUSTIFY_CENTER = 2 };

/// A paragraph in a frame. Lengths are text units; percents are per mille of the frame's width or
/// height. The percent is what the document keeps, the absolute margin what counts at once.
struct paragraphStruct {
  int lineFit = LINEFIT_ALL_LINES;  ///< how lines are squeezed: see LineFit
  int fit = 0;                      ///< 0 never, 1 while pasting, 2 whenever the frame changes
  int frameMode = 0;                ///< 0 no frame, 3 a frame that text stays inside
  std::uint32_t flags = 0;          ///< 256: the text is part of a layout that the library makes
  double leftMargin = 0;            ///< absolute
  double topMargin = 0;             ///< absolute
  double rightMargin = 0;           ///< absolute
  double bottomMargin = 0;          ///< absolute
  int leftPercent = 0;              ///< per mille
  int rightPercent = 0;             ///< per mille
};

/// The lines of a paragraph as a whole.
struct list_s {
  int mode = 0;  ///< 1 lines set one by one, 4 lines set as one block
};

/// The line that the next text goes into. Lengths are text units.
struct lineStruct {
  double size = 0;      ///< height of its letters
  int spacingKind = 0;  ///< 0: the leading is a length
  double leading = 0;   ///< from base line to base line
};

/// A font that the text engine has. The engine owns it and keeps it until the host ends. A host may
/// derive its own record from this one.
struct FontRecord {
  std::uint16_t id = 0;  ///< what characters are marked with
};

/// The style that the next text is pasted in.
struct CharacterStyle {
  const FontRecord* font = nullptr;  ///< first: null until a font is set
  std::uint16_t fontId = 0;          ///< the id of `font`, where a paragraph is built by hand
  double size = 0;                   ///< text units
};

/// What `GetCurParagraph` gives: the open paragraph's records. All null when none is open.
struct CurrentParagraph {
  paragraphStruct* paragraph = nullptr;
  list_s* lines = nullptr;
  lineStruct* line = nullptr;
  CharacterStyle* style = nullptr;
};

/// What `SetOpenParagraphInfo` fills and `OpenParagraph` and `CloseParagraph` take: which paragraph
/// is meant. Its values have a meaning to the host alone.
struct ParagraphInfo {
  std::uint32_t first = 0;
  std::uint32_t second = 0;
  bool operator==(const ParagraphInfo&) const = default;
};

/// The element of a text object: the two values of the paragraph's info.
struct ParagraphEle {
  std::uint32_t first = 0;
  std::uint32_t second = 0;
  bool operator==(const ParagraphEle&) const = default;
};

/// The attributes that a new object starts with. `GetDefaultAttributes` makes one, and
/// `DBInsertElement` takes it; the number has a meaning to the host alone.
struct ELEMENT_ATTRIBUTES {
  std::uint64_t value = 0;
  bool operator==(const ELEMENT_ATTRIBUTES&) const = default;
};
