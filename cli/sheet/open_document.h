#pragma once

#include <string>
#include <vector>

#include "cli/sheet/spreadsheet.h"

/// Spreadsheets of OpenDocument (ISO/IEC 26300): the part content.xml of a package, or a flat file
/// that holds all in one document.
namespace rastrel::cli::sheet {

/// A document of XML that is read.
struct XmlPlace {
  std::string path;   ///< native
  std::string words;  ///< what messages begin with, as "book.ods: content.xml"
};

/// The sheets in order. Throws CommandError(BadInput) if the document can't be read or is no
/// spreadsheet.
[[nodiscard]] std::vector<SheetInfo> ReadOpenDocumentSheets(const XmlPlace& document);

/// Hands over the rows as a person sees them. `only` is the place of the one sheet that is wanted,
/// or -1 for all. Throws CommandError(BadInput).
void ReadOpenDocumentRows(const XmlPlace& document, int only, RowSink& sink);

/// Writes what a reader of spreadsheet content sees of a document, or of one of its sheets, as a
/// document of its own: the tables with their rows, cells and texts, and nothing else. Throws
/// CommandError.
void WriteSpreadsheetContent(const XmlPlace& document, int only, const std::string& target);

}  // namespace rastrel::cli::sheet
