#pragma once

#include <string>
#include <vector>

#include "spreadsheet/format_code.h"
#include "spreadsheet/parts.h"
#include "spreadsheet/spreadsheet.h"

namespace rastrel::spreadsheet {

/// The workbook of an OOXML package (ECMA-376 and ISO/IEC 29500, transitional and
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

/// Reads it. Throws an Error with the reason if the package is no workbook.
[[nodiscard]] Workbook ReadWorkbook(Parts& parts);

/// Hands over the rows of the workbook's sheets as a person sees them. `only` is the place of the
/// wanted sheet from 0, or -1 for all. Throws an Error, also with a failure of the sink.
void ReadWorkbookRows(Parts& parts, const Workbook& workbook, int only, RowSink& sink);

}  // namespace rastrel::spreadsheet
