#pragma once

#include "rastrel/imports/cr2/character_references.h"
#include "rastrel/imports/cr2/cr2_records.h"
#include "rastrel/imports/cr2/output_filter.h"
#include "rastrel/imports/cr2/template_import.h"
#include "rastrel/imports/font_type.h"
#include "rastrel/platform/values/rect.h"

namespace rastrel::imports {

/// The differences between the generations in setting text.
struct TextRules {
  bool setsFontsUpFirst;  ///< all fonts of a frame are resolved before any of its text is placed
  double (*lineSize)(double size);  ///< text units of the size of a block's font, for its lines
  double (*spanSize)(double size);  ///< text units of a span's size
  bool addsColorsToPalette;         ///< else the palette has them from the parsing
  FontTable fonts;
  ReferenceKind references;
};

[[nodiscard]] const TextRules& Cr2TextRules();
[[nodiscard]] const TextRules& ZmlTextRules();

/// The results of setting a frame's text.
enum class FrameText {
  Set,        ///< the text is open and filled: the caller closes it
  NotOpened,  ///< the host opens no text in the frame
  Cancelled,  ///< a font was refused: the text is open, and nothing closes it
};

/// Opens new text in a frame, in world units, and pastes its blocks, lines and spans.
[[nodiscard]] FrameText SetFrameText(TemplateImport& import, const TextRules& rules,
                                     const OutputFilter& filter, const BOUNDS& frame,
                                     const std::vector<CR2_TEXT>& texts);

}  // namespace rastrel::imports
