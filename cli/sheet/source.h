#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cli/sheet/open_document.h"
#include "cli/sheet/parts.h"
#include "cli/sheet/workbook.h"
#include "cli/sheet/workspace.h"

namespace rastrel::cli::sheet {

/// A spreadsheet that a user named, with what is needed of it.
struct Source {
  enum class Kind {
    Workbook,      ///< an OOXML package
    OpenDocument,  ///< a package of OpenDocument
    Flat,          ///< one document of XML
  };
  Kind kind = Kind::Workbook;
  std::unique_ptr<Parts> parts;  ///< null for a flat one
  Workbook workbook;             ///< of a workbook
  XmlPlace document;             ///< of the others
};

/// The part of an OpenDocument package that has its sheets.
inline constexpr const char* ContentPart = "content.xml";

/// Opens a file or folder, whose kind is told by its content, and unpacks what tells of its sheets.
/// Throws CommandError.
[[nodiscard]] Source OpenSource(const std::string& path, Workspace& workspace,
                                const UnpackProgress& progress);

/// The sheets in order.
[[nodiscard]] std::vector<SheetInfo> SheetsOf(const Source& source);

/// Place of the sheet that a name or a number from 1 means; a name counts first. Throws
/// CommandError(WrongUse) with the names that there are.
[[nodiscard]] int PlaceOfSheet(const std::vector<SheetInfo>& sheets, const std::string& wanted,
                               const std::string& file);

/// Hands over the rows as a person sees them; `only` as in ReadWorkbookRows.
void ReadRows(Source& source, int only, RowSink& sink);

/// Makes the text that the library's own import makes, in a file of the workspace, and returns its
/// native path. `notes` takes what was passed over. Throws CommandError with the reason where the
/// import only fails.
[[nodiscard]] std::string MakeFaithfulText(Source& source, int only, Workspace& workspace,
                                           std::vector<std::string>& notes);

}  // namespace rastrel::cli::sheet
