#pragma once

#include <vector>

#include "rastrel/imports/cr2/cr2_records.h"
#include "rastrel/imports/cr2/output_filter.h"
#include "rastrel/imports/cr2/pane_place.h"
#include "rastrel/imports/cr2/template_import.h"

namespace rastrel::imports {

/// Makes a text object on a pane of each text frame of a first generation template (cr2). A frame
/// for which the host opens no text is passed over. Returns at once, with the text still open, when
/// the import is cancelled.
void AddTextToPane(TemplateImport& import, const PanePlace& pane, const CR2_TEMPLATE& plateTemplate,
                   const OutputFilter& filter, const std::vector<CR2_TEXT_FRAME>& frames);

/// The same of the second generation (zml): the objects get the pages and the sheet layer of the
/// pane's plate object.
void AddTextToPane(TemplateImport& import, const PanePlace& pane, const CR2_TEMPLATE& plateTemplate,
                   const std::vector<CR2_TEXT_FRAME>& frames);

}  // namespace rastrel::imports
