#include "cli/sheet/faithful_text.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <list>
#include <optional>
#include <utility>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/readers/ms_excel_xml_import.h"
#include "rastrel/readers/open_office_xml_import.h"
#include "rastrel/xml/failure.h"
#include "spreadsheet/part_name.h"
#include "spreadsheet/xml_reading.h"

namespace rastrel::cli::sheet {
namespace {

using namespace spreadsheet;

constexpr const char* TextName = "content.txt";
constexpr const char* AsShownHint = "; --as-shown reads it";
constexpr const char* NoText =
    "the library's import finds no text in it; --as-shown tells whether there is any";
// Where the import looks for sheets, whatever the workbook's own place is.
constexpr std::string_view WorkbookFolder = "xl/";

std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char letter : text) {
    if (letter == '&')
      escaped += "&amp;";
    else if (letter == '<')
      escaped += "&lt;";
    else if (letter == '"')
      escaped += "&quot;";
    else
      escaped += letter;
  }
  return escaped;
}

// A message for the user that says nothing of the system's error.
Failure OfTheSystem(std::string why, int error) {
  Failure failure = FailureOf(std::move(why));
  failure.error = error;
  return failure;
}

// A workbook that has one of the sheets only.
Expected<std::string> WriteWorkbookOf(const SheetInfo& sheet, const Workspace& workspace) {
  std::string path = workspace.Path("workbook.xml");
  const std::string text =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<workbook xmlns:r=\"urn:r\"><sheets><sheet "
      "name=\"" +
      Escaped(sheet.name) + "\" sheetId=\"1\" r:id=\"" + Escaped(sheet.id) +
      "\"/></sheets></workbook>\n";
  if (const auto written = os::ReplaceFile(os::FromNative(path), text); !written)
    return OfTheSystem("can't write '" + path + "'", written.Error().error);
  return path;
}

class FileList {
 public:
  Expected<void> Add(int type, const Expected<std::string>& path) {
    if (!path) return path.Error();
    const std::wstring wide = os::FromNative(*path);
    if (wide.size() >= tagEXCEL_XML_FILE::PathSize)
      return OfTheSystem("the path '" + *path + "' is too long", ENAMETOOLONG);
    tagEXCEL_XML_FILE& file = m_Files.emplace_back();
    file.type = type;
    std::copy(wide.begin(), wide.end(), file.path);
    return {};
  }
  [[nodiscard]] std::vector<tagEXCEL_XML_FILE*> Pointers() {
    std::vector<tagEXCEL_XML_FILE*> pointers;
    for (tagEXCEL_XML_FILE& file : m_Files) pointers.push_back(&file);
    return pointers;
  }

 private:
  std::list<tagEXCEL_XML_FILE> m_Files;
};

// Why the import finds no part for a sheet; empty if it does.
std::string WhyNotFound(const SheetInfo& sheet) {
  const std::string name = "sheet '" + PrintableName(sheet.name) + "'";
  const std::string target = "'" + PrintableName(sheet.target) + "'";
  if (sheet.target.empty()) return name + " has no relationship";
  const std::string begin = name + ": its target " + target + " ";
  const bool isAbsolute = sheet.target.starts_with('/');
  const std::string hint = sheet.part.empty() ? "" : AsShownHint;
  if (isAbsolute && sheet.part.empty()) return begin + "is absolute, and is not in the package";
  if (isAbsolute) return begin + "is absolute, and is looked for below xl" + hint;
  if (sheet.target.find("..") != sheet.target.npos) return begin + "leads out of its folder" + hint;
  const std::filesystem::path place = std::string(WorkbookFolder) + sheet.target;
  if (place.lexically_normal() == sheet.part) return {};
  if (sheet.part.empty()) return begin + "is not in the package";
  return begin + "is looked for below xl as it is written" + hint;
}

// The latest failure of the XML layer, with the part's name for a file below `folder`; empty if
// there was none.
std::string TakeXmlReason(const std::string& folder) {
  const auto state = xml::TakeXmlFailure();
  if (state) return {};
  Failure failure = state.Error();
  std::ranges::replace(failure.where, '\\', '/');
  if (failure.where.starts_with(folder + "/")) failure.where.erase(0, folder.size() + 1);
  return Describe(failure);
}

std::string WhyNothing(const std::vector<const SheetInfo*>& sheets, const std::string& folder) {
  const std::string reason = TakeXmlReason(folder);
  if (!sheets.empty()) {
    const SheetInfo& first = *sheets.front();
    if (std::string why = WhyNotFound(first); !why.empty()) return why;
    if (!reason.empty()) return reason;
    if (!first.hasCells) return "sheet '" + PrintableName(first.name) + "' is a chart";
  }
  return reason.empty() ? NoText : reason;
}

// Begins to unpack the sheets. One that has gone from the package since it was opened is fetched at
// once, which fails with its name.
Expected<void> FetchSheets(Parts& parts, const std::vector<const SheetInfo*>& sheets) {
  std::vector<std::string> ahead;
  for (const SheetInfo* sheet : sheets) {
    if (sheet->part.empty()) continue;
    if (!parts.Has(sheet->part)) {
      if (auto fetched = parts.Fetch(sheet->part); !fetched) return fetched.Error();
    }
    ahead.push_back(sheet->part);
  }
  return parts.FetchAhead(ahead);
}

// Why the import finds no sheet of the workbook at all; empty if it looks in the right place.
std::string WhyMisplaced(const Workbook& workbook) {
  const std::string part = PrintableName(workbook.part);
  if (part.find('/') == WorkbookFolder.size() - 1 && workbook.part.starts_with(WorkbookFolder))
    return {};
  return "its workbook is '" + part + "', and sheets are looked for below xl" + AsShownHint;
}

std::vector<const SheetInfo*> WantedSheets(const Workbook& workbook, int only) {
  std::vector<const SheetInfo*> sheets;
  for (std::size_t index = 0; index < workbook.sheets.size(); ++index)
    if (only < 0 || index == static_cast<std::size_t>(only))
      sheets.push_back(&workbook.sheets[index]);
  return sheets;
}

// Unpacks the parts that the import takes besides the sheets.
Expected<FileList> FetchFiles(Source& source, const SheetInfo* only, const Workspace& workspace) {
  Parts& parts = *source.parts;
  const Workbook& workbook = source.workbook;
  FileList files;
  const auto main =
      only == nullptr ? parts.Fetch(workbook.part) : WriteWorkbookOf(*only, workspace);
  if (auto added = files.Add(1, main); !added) return added.Error();
  if (!workbook.relationships.empty()) {
    if (auto added = files.Add(2, parts.Fetch(workbook.relationships)); !added)
      return added.Error();
  }
  if (!workbook.strings.empty()) {
    if (auto added = files.Add(3, parts.Fetch(workbook.strings)); !added) return added.Error();
  }
  return files;
}

Expected<std::string> ImportWorkbook(Source& source, int only, const Workspace& workspace,
                                     std::vector<std::string>& notes) {
  Parts& parts = *source.parts;
  if (const std::string why = WhyMisplaced(source.workbook); !why.empty())
    return FailureOf(parts.Name() + ": " + why);
  const std::vector<const SheetInfo*> sheets = WantedSheets(source.workbook, only);
  auto files = FetchFiles(source, only < 0 ? nullptr : sheets.front(), workspace);
  if (!files) return files.Error();
  if (auto fetched = FetchSheets(parts, sheets); !fetched) return fetched.Error();

  static_cast<void>(xml::TakeXmlFailure());
  CMSExcelXMLImport import(os::FromNative(parts.Folder()).c_str());
  const bool isWritten = import.ParseXmlFiles(files->Pointers());
  if (auto stopped = parts.Stop(); !stopped) return stopped.Error();
  if (!isWritten) return FailureOf(parts.Name() + ": " + WhyNothing(sheets, parts.Folder()));
  for (const SheetInfo* sheet : sheets)
    if (const std::string why = WhyNotFound(*sheet); !why.empty()) notes.push_back(why);
  if (const std::string reason = TakeXmlReason(parts.Folder()); !reason.empty())
    notes.push_back(reason);
  return parts.PathOf(TextName);
}

Expected<std::string> ImportOpenDocument(const Source& source, int only,
                                         const Workspace& workspace) {
  std::string content = source.document.path;
  if (source.kind == Source::Kind::Flat || only >= 0) {
    content = workspace.Path("content.xml");
    if (auto written = WriteSpreadsheetContent(source.document, only, content); !written)
      return written.Error();
  }
  std::string text = workspace.Path(TextName);
  static_cast<void>(xml::TakeXmlFailure());
  COpenOfficeXMLImport import(os::FromNative(content).c_str());
  import.SetDataSaveFileName(os::FromNative(text).c_str());
  if (source.parts) {
    if (auto discarded = source.parts->Discard(ContentPart); !discarded) return discarded.Error();
  }
  if (import.ImportXMLFile() == 1) return text;
  // The import refuses the document, whatever it was that failed there.
  return FailureOf(Describe(TakeXmlFailureAt(source.document.name, NoText)));
}

}  // namespace

Expected<std::string> MakeFaithfulText(spreadsheet::Source& source, int only, Workspace& workspace,
                                       std::vector<std::string>& notes) {
  auto text = source.kind == Source::Kind::Workbook ? ImportWorkbook(source, only, workspace, notes)
                                                    : ImportOpenDocument(source, only, workspace);
  if (text || !source.parts) return text;
  // A part that could not be unpacked has the better reason than the import.
  if (auto stopped = source.parts->Stop(); !stopped) return stopped.Error();
  return text;
}

}  // namespace rastrel::cli::sheet
