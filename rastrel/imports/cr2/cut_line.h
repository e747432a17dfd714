#pragma once

#include "rastrel/imports/cr2/cr2_records.h"
#include "rastrel/imports/cr2/pane_place.h"
#include "rastrel/imports/cr2/template_import.h"

namespace rastrel::imports {

/// Loads a first generation's (cr2) cut line once, on the plate object's first pane, with the
/// stroke's width and color. Two objects and more become one group, whatever the cut line's group
/// says. Nothing happens without a pane.
void AddCutLineToPlate(TemplateImport& import, host::ObjectHandle plate,
                       const CR2_TEMPLATE& plateTemplate, const CR2_CUTLINE& cutLine);

/// Loads a second generation's (zml) cut line on a pane. Lines and insides that are visible get
/// the stroke's and the fill's color. The objects become one group if the cut line asks for it.
void AddCutLineToPane(TemplateImport& import, const PanePlace& pane,
                      const CR2_TEMPLATE& plateTemplate, const CR2_CUTLINE& cutLine);

}  // namespace rastrel::imports
