#pragma once

#include <string_view>

#include "rastrel/readers/shared_strings.h"
#include "rastrel/readers/sheet_text.h"

namespace rastrel::readers {

/// The result of appending a worksheet file.
enum class ExcelSheetResult {
  Appended,
  Refused,    ///< can't be read, is no document in some part of it, or has no "sheetData"
  OverLimit,  ///< the text passed its limit
};

/// Appends the rows of a worksheet file (ECMA-376 Part 1, 18.3) to `text`: each cell and a tab,
/// each row and a line feed, but none after the last rows, so that the next sheet continues on the
/// last line. The file is read as a stream, a row at a time.
///
/// The cells are the "c" children of the "row" children of the first "sheetData", below a root
/// "worksheet" or below the root's first child of that name. A gap in front of a cell is found by
/// its reference: letter by letter of the alphabet, from the cell's place in the row on, a tab
/// is written for each that does not occur anywhere in the reference, up to Z. So there are 26
/// columns, and AA3 is in column A. docs/formats/spreadsheet-text.md has the values.
///
/// In every case but Appended the text is as it was, and the reason is reported
/// (xml/failure.h).
[[nodiscard]] ExcelSheetResult AppendExcelSheet(std::wstring_view path,
                                                const SharedStrings& strings, SheetText& text);

}  // namespace rastrel::readers
