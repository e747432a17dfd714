#pragma once

#include <string>

#include "rastrel/imports/cr2/cr2_records.h"
#include "rastrel/imports/cr2/template_import.h"
#include "rastrel/imports/font_type.h"
#include "rastrel/platform/values/paragraph.h"

namespace rastrel::imports {

/// A font as the text engine is asked for it.
struct FontRequest {
  std::wstring name;
  int type = 0;  ///< a FontType
};

/// The request of a span: a face of 5 characters or more with a dot before its last three is a
/// file, which loses its extension; any other is a family, with the style after a space.
[[nodiscard]] FontRequest FontOf(const CR2_FONT_SPEC& font, FontTable table);

/// The engine's font of a span, or the one that the user has chosen, or now chooses, in its place.
/// Null if the user refuses: the import is then cancelled.
[[nodiscard]] const FontRecord* ResolveFont(TemplateImport& import, const CR2_FONT_SPEC& font,
                                            FontTable table);

}  // namespace rastrel::imports
