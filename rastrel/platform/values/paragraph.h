#pragma once

/// The text engine's records: the open paragraph, fonts, and the elements of text objects.

#include <cstdint>

// The records of the open paragraph belong to the engine and live in it until the paragraph is
// closed. The library writes their fields directly; the engine takes notice of a change at the next
// operation that is given the record, or at the next pasted text. Lengths are text units
// (thousandths of an inch, world.h). Only the user interface thread uses them.

namespace rastrel::host {

/// The kinds of font file, for `AddFont`.
enum FontType : int {
  FONTTYPE_WFN = 0,
  FONTTYPE_VEF = 1,
  FONTTYPE_TRUETYPE = 2,  ///< ttf, otf, and every name that is no file's
  FONTTYPE_TYPE1 = 3,     ///< pfb
  FONTTYPE_FNT = 5,
  FONTTYPE_CLF = 6,
  FONTTYPE_BE = 7,
  FONTTYPE_FON = 8,
  FONTTYPE_CFF = 9,
  FONTTYPE_FT9 = 10,
  FONTTYPE_SHX = 13,
  FONTTYPE_1C = 14,
  FONTTYPE_CHR = 15  ///< chr and f3s
};

}  // namespace rastrel::host

/// How the lines of a paragraph fit its frame.
enum LineFit : int {
  LINEFIT_EACH_LINE = 0,    ///< each line is squeezed by a factor of its own
  LINEFIT_ALL_LINES = 1,    ///< all lines are squeezed by the same factor
  LINEFIT_EQUAL_HEIGHT = 2  ///< all lines get one height
};

/// The side of the frame that the lines of a paragraph are at.
enum LineJustification : int { JUSTIFY_LEFT = 0, JUSTIFY_RIGHT = 1, JUSTIFY_CENTER = 2 };

/// A paragraph in a frame. Absolute margins are text units, distances inward from the frame; they
/// count at once. The document keeps the margins in per mille of the frame's width.
struct paragraphStruct {
  int lineFit = LINEFIT_ALL_LINES;  ///< how lines are squeezed: see LineFit
  int fit = 0;                      ///< when: 0 never, 1 while pasting, 2 when the frame changes
  int frameMode = 0;                ///< 0 no frame, 3 a frame that text stays inside
  std::uint32_t flags = 0;          ///< 256: the text is part of a layout that the library makes
  double leftMargin = 0;            ///< text units
  double topMargin = 0;             ///< text units
  double rightMargin = 0;           ///< text units
  double bottomMargin = 0;          ///< text units
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

/// A font of the text engine, which owns it and keeps it until the host ends. A host may derive its
/// own record from this one.
struct FontRecord {
  std::uint16_t id = 0;  ///< the mark of characters in this font
};

/// The style of the text that is pasted next.
struct CharacterStyle {
  const FontRecord* font = nullptr;  ///< first: null until a font is set
  std::uint16_t fontId = 0;          ///< the id of `font`, where a paragraph is built by hand
  double size = 0;                   ///< text units
};

/// The open paragraph's records, as `GetCurParagraph` reads them. All null if none is open.
struct CurrentParagraph {
  paragraphStruct* paragraph = nullptr;
  list_s* lines = nullptr;
  lineStruct* line = nullptr;
  CharacterStyle* style = nullptr;
};

/// Names a paragraph: filled by `SetOpenParagraphInfo`, and passed to `OpenParagraph` and
/// `CloseParagraph`. Only the host knows the meaning of the values.
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
/// `DBInsertElement` takes it; only the host knows the meaning of the number.
struct ELEMENT_ATTRIBUTES {
  std::uint64_t value = 0;
  bool operator==(const ELEMENT_ATTRIBUTES&) const = default;
};
