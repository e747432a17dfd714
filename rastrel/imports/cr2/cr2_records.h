#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "rastrel/platform/values/color.h"
#include "rastrel/platform/values/document_values.h"

/// The records of a Crown Trophy template of either generation. The first (cr2) holds the file's
/// values in inches; the second (zml) converts lengths while it parses, so that its records hold
/// world units (centimetres). A value that the file does not have is 0 or empty.

/// Where and how large something is. The offset counts from the corner that `origin` names.
struct CR2_PLACEMENT {
  std::int32_t origin = 0;  ///< 0 none yet; 1 to 9, rows from the top, each from the left
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
  bool constrained = false;  ///< keep the proportions
};

/// Distances inward from the edges.
struct CR2_MARGINS {
  double left = 0;
  double top = 0;
  double right = 0;
  double bottom = 0;
};

/// The sign blank.
struct CR2_TABLE_SIZE {
  CR2_PLACEMENT placement;
  CR2_MARGINS margins;
};

/// The colors that a template gives something; null where it gives none.
struct CR2_COLORS {
  std::unique_ptr<CVKColor> stroke;
  std::unique_ptr<CVKColor> fill;

  CR2_COLORS() = default;
  CR2_COLORS(const CR2_COLORS& other) { *this = other; }
  CR2_COLORS(CR2_COLORS&&) = default;
  CR2_COLORS& operator=(const CR2_COLORS& other) {
    if (this == &other) return *this;
    stroke = other.stroke ? std::make_unique<CVKColor>(*other.stroke) : nullptr;
    fill = other.fill ? std::make_unique<CVKColor>(*other.fill) : nullptr;
    return *this;
  }
  CR2_COLORS& operator=(CR2_COLORS&&) = default;
  ~CR2_COLORS() = default;
};

/// The plate that all plates are made like. A stroke width may be LineStyleHairline.
struct CR2_TEMPLATE {
  CR2_PLACEMENT placement;
  CR2_MARGINS margins;
  double spacing = 0;   ///< between plates; in a zml the number as the file has it
  double xSpacing = 0;  ///< zml alone
  double ySpacing = 0;  ///< zml alone
  double strokeWidth = 0;
  CR2_COLORS colors;
};

/// The line that plates are cut along.
struct CR2_CUTLINE {
  double strokeWidth = 0;  ///< may be LineStyleHairline
  bool group = false;
  std::wstring file;  ///< the graphic that is the line
  CR2_PLACEMENT placement;
  CR2_COLORS colors;
  double present = 0;  ///< 1.0 once the cut line was parsed: plates get one
};

/// An entry of the graphics directory.
struct CR2_GRAPHIC {
  std::wstring name;
  std::wstring file;
};

/// A graphic on a plate.
struct CR2_GRAPHIC_FRAME {
  std::wstring graphic;  ///< the name of a CR2_GRAPHIC
  CR2_PLACEMENT placement;
  CR2_COLORS colors;
  std::vector<std::wstring> variables;  ///< zml alone: values of variables by number
  std::vector<bool> isVariablePresent;  ///< zml alone: of the same length
};

/// How text looks.
struct CR2_FONT_SPEC {
  std::wstring face;
  std::wstring style;
  double size = 0;
  double lineHeight = 0;           ///< cr2: a factor of the size; zml: a length
  std::int32_t justification = 0;  ///< 0 left, 1 right, 2 center
  CR2_COLORS colors;
};

/// Text in one style.
struct CR2_SPAN {
  CR2_FONT_SPEC font;
  std::wstring text;
};

/// A line of text.
struct CR2_TEXT_LINE {
  std::vector<CR2_SPAN> spans;
};

/// A block of lines.
struct CR2_TEXT {
  CR2_FONT_SPEC font;
  std::vector<CR2_TEXT_LINE> lines;
};

/// A frame with blocks of text.
struct CR2_TEXT_FRAME {
  CR2_PLACEMENT placement;
  std::vector<CR2_TEXT> texts;
};

/// One plate with its content.
struct CR2_PLATE {
  std::vector<CR2_GRAPHIC_FRAME> graphicFrames;
  std::vector<CR2_TEXT_FRAME> textFrames;
};
