#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "spreadsheet/open_document.h"
#include "spreadsheet/parts.h"
#include "spreadsheet/workbook.h"

/// The way in: opens a spreadsheet of any supported format and reads its sheets.
///
/// A failure whose `error` is 0 is the spreadsheet's fault, or a missing library (ZipSupport). Any
/// other one is a failed call of the system, as when the disk is full. One thread at a time may use
/// a source.
namespace rastrel::spreadsheet {

/// An opened spreadsheet.
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

/// Whether a file that begins so is a package, or a container that is refused as such. Four bytes
/// are enough. Any other spreadsheet is an XML document.
[[nodiscard]] bool IsContainer(std::string_view head);

/// Success if packages in zip files can be read, else why libzip can't be used.
[[nodiscard]] Expected<void> ZipSupport();

/// Opens a file or folder, whose kind is found by its content, and unpacks the parts that describe
/// its sheets. `folder` is the native path of an empty directory for unpacked parts, which must
/// live as long as the source; a flat document doesn't use it.
[[nodiscard]] Expected<Source> OpenSource(const std::string& path, const std::string& folder,
                                          const UnpackProgress& progress);

/// The sheets in order.
[[nodiscard]] Expected<std::vector<SheetInfo>> SheetsOf(const Source& source);

/// Place from 0 of the sheet that a name or a number from 1 means; a name counts first. The failure
/// lists the names that there are.
[[nodiscard]] Expected<int> PlaceOfSheet(const std::vector<SheetInfo>& sheets,
                                         const std::string& wanted);

/// Hands over the rows as a person sees them; `only` as in ReadWorkbookRows. Fails with the sink's
/// failure, too.
[[nodiscard]] Expected<void> ReadRows(Source& source, int only, RowSink& sink);

}  // namespace rastrel::spreadsheet
