#pragma once

#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "spreadsheet/spreadsheet.h"

/// Spreadsheets of OpenDocument (ISO/IEC 26300): the part content.xml of a package, or a flat file
/// that holds all in one document.
namespace rastrel::spreadsheet {

/// A document of XML that is read.
struct XmlPlace {
  std::string path;  ///< native
  std::string name;  ///< that messages begin with, as "book.ods: content.xml"
};

/// The sheets in order. Throws an Error if the document can't be read or is no spreadsheet.
[[nodiscard]] std::vector<SheetInfo> ReadOpenDocumentSheets(const XmlPlace& document);

/// Hands over the rows as a person sees them. `only` is the place of the wanted sheet from 0, or -1
/// for all. Throws an Error, also with a failure of the sink.
void ReadOpenDocumentRows(const XmlPlace& document, int only, RowSink& sink);

/// Writes a document, or one of its sheets, as a document of its own with only the parts that the
/// library's import reads: the tables with their rows, cells and texts. `target` is a native path;
/// its file is made new.
[[nodiscard]] Expected<void> WriteSpreadsheetContent(const XmlPlace& document, int only,
                                                     const std::string& target);

/// Throws an Error: the document can't be read, with the place and reason of the XML layer.
[[noreturn]] void RefuseDocument(const XmlPlace& document);
/// Throws an Error: the document is XML of another kind.
[[noreturn]] void RefuseOtherKind(const XmlPlace& document);

}  // namespace rastrel::spreadsheet
