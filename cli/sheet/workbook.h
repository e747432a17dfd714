#pragma once

#include <string>
#include <vector>

#include "cli/sheet/format_code.h"
#include "cli/sheet/parts.h"
#include "cli/sheet/spreadsheet.h"

namespace rastrel::cli::sheet {

/// What the workbook of an OOXML package says (ECMA-376 and ISO/IEC 29500, transitional and
/// strict): its sheets in order, and where the parts lie. Parts are found by the relationships of
/// the package and of the workbook, never by fixed names.
struct Workbook {
  std::string part;           ///< of the workbook itself
  std::string relationships;  ///< part; empty if there is none
  std::string strings;        ///< part of the shared strings; empty if there is none
  std::string styles;         ///< part of the formats; empty if there is none
  DateSystem dates = DateSystem::From1900;
  std::vector<SheetInfo> sheets;
};

/// Reads it. Throws CommandError(BadInput) with the reason if the package is no workbook.
[[nodiscard]] Workbook ReadWorkbook(Parts& parts);

/// Hands over the rows of the workbook's sheets as a person sees them. `only` is the place of the
/// one sheet that is wanted, or -1 for all. Throws CommandError(BadInput).
void ReadWorkbookRows(Parts& parts, const Workbook& workbook, int only, RowSink& sink);

}  // namespace rastrel::cli::sheet
