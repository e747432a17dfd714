#pragma once

#include <optional>

#include "rastrel/imports/cr2/cr2_records.h"
#include "rastrel/imports/cr2/template_import.h"
#include "rastrel/platform/values/document_values.h"

namespace rastrel::imports {

/// Sizes the sign blank to a first generation's (cr2) table and sets its origin. An origin other
/// than 1 and 7 becomes 1, in the record too.
void SetupSignBlank(TemplateImport& import, CR2_TABLE_SIZE& table);
/// The same of the second generation (zml), with any origin.
void SetupSignBlankAsGiven(TemplateImport& import, const CR2_TABLE_SIZE& table);

/// Creates the plate object of a first generation template (cr2), with one pane, in the template's
/// stroke color or black. Nothing if the host refuses it, as one of no size.
[[nodiscard]] std::optional<host::ObjectHandle> CreatePlate(TemplateImport& import,
                                                            const CR2_TABLE_SIZE& table,
                                                            const CR2_TEMPLATE& plateTemplate);
/// The same of the second generation (zml): without a stroke color the plate is invisible, or the
/// palette's first color by the setting "Invisible Plate" of "ZML IMPORT". A plate that can be seen
/// takes the template's fill color.
[[nodiscard]] std::optional<host::ObjectHandle> CreateZmlPlate(TemplateImport& import,
                                                               const CR2_TABLE_SIZE& table,
                                                               const CR2_TEMPLATE& plateTemplate);

}  // namespace rastrel::imports
