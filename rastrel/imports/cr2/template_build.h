#pragma once

#include <string>

#include "rastrel/imports/cr2/cr2_document.h"
#include "rastrel/imports/cr2/template_import.h"

namespace rastrel::imports {

/// Builds a parsed first generation template (cr2) in the host's document: the sign blank, one
/// plate object with a pane for each plate, the cut line on the first pane, and the content of each
/// pane. Ends at the plate during which the import is cancelled, and shows the closing message.
/// Without plates, as after a refused file, the blank and the plate object are still asked for.
void BuildCr2(TemplateImport& import, Cr2Document& document);

/// Builds a parsed second generation template (zml), which replaces the host's document. Each pane
/// gets the cut line. `imageDirectory` is looked at for graphics.
void BuildZml(TemplateImport& import, const Cr2Document& document,
              const std::wstring& imageDirectory);

}  // namespace rastrel::imports
