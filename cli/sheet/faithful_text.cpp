#include "cli/sheet/faithful_text.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <list>
#include <optional>

#include "cli/console/exit_status.h"
#include "cli/sheet/failed_spreadsheet.h"
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

// A workbook that has one of the sheets only.
std::string WriteWorkbookOf(const SheetInfo& sheet, const Workspace& workspace) {
  std::string path = workspace.Path("workbook.xml");
  std::ofstream file(path, std::ios::binary);
  file << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<workbook xmlns:r=\"urn:r\"><sheets>"
       << "<sheet name=\"" << Escaped(sheet.name) << "\" sheetId=\"1\" r:id=\"" << Escaped(sheet.id)
       << "\"/></sheets></workbook>\n";
  file.close();
  if (!file) throw CommandError(ExitStatus::JobFailed, "can't write '" + path + "'");
  return path;
}

class FileList {
 public:
  void Add(int type, const std::string& path) {
    tagEXCEL_XML_FILE& file = m_Files.emplace_back();
    file.type = type;
    const std::wstring wide = os::FromNative(path);
    if (wide.size() >= tagEXCEL_XML_FILE::PathSize)
      throw CommandError(ExitStatus::JobFailed, "the path '" + path + "' is too long");
    std::copy(wide.begin(), wide.end(), file.path);
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
  auto failure = xml::TakeXmlFailure();
  if (!failure) return {};
  std::ranges::replace(failure->where, '\\', '/');
  if (failure->where.starts_with(folder + "/")) failure->where.erase(0, folder.size() + 1);
  return Describe(*failure);
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
void FetchSheets(Parts& parts, const std::vector<const SheetInfo*>& sheets) {
  std::vector<std::string> ahead;
  for (const SheetInfo* sheet : sheets) {
    if (sheet->part.empty()) continue;
    if (!parts.Has(sheet->part)) static_cast<void>(ValueOf(parts.Fetch(sheet->part)));
    ahead.push_back(sheet->part);
  }
  RequireSuccess(parts.FetchAhead(ahead));
}

std::string ImportWorkbook(Source& source, int only, const Workspace& workspace,
                           std::vector<std::string>& notes) {
  Parts& parts = *source.parts;
  const Workbook& workbook = source.workbook;
  if (PrintableName(workbook.part).find('/') != WorkbookFolder.size() - 1 ||
      !workbook.part.starts_with(WorkbookFolder))
    throw CommandError(ExitStatus::BadInput,
                       parts.Name() + ": its workbook is '" + PrintableName(workbook.part) +
                           "', and sheets are looked for below xl" + AsShownHint);
  std::vector<const SheetInfo*> sheets;
  for (std::size_t index = 0; index < workbook.sheets.size(); ++index)
    if (only < 0 || index == static_cast<std::size_t>(only))
      sheets.push_back(&workbook.sheets[index]);
  FileList files;
  const auto fetch = [&parts](const std::string& part) { return ValueOf(parts.Fetch(part)); };
  files.Add(1, only < 0 ? fetch(workbook.part) : WriteWorkbookOf(*sheets.front(), workspace));
  if (!workbook.relationships.empty()) files.Add(2, fetch(workbook.relationships));
  if (!workbook.strings.empty()) files.Add(3, fetch(workbook.strings));
  FetchSheets(parts, sheets);

  static_cast<void>(xml::TakeXmlFailure());
  CMSExcelXMLImport import(os::FromNative(parts.Folder()).c_str());
  const bool isWritten = import.ParseXmlFiles(files.Pointers());
  RequireSuccess(parts.Stop());
  if (!isWritten)
    throw CommandError(ExitStatus::BadInput,
                       parts.Name() + ": " + WhyNothing(sheets, parts.Folder()));
  for (const SheetInfo* sheet : sheets)
    if (const std::string why = WhyNotFound(*sheet); !why.empty()) notes.push_back(why);
  if (const std::string reason = TakeXmlReason(parts.Folder()); !reason.empty())
    notes.push_back(reason);
  return parts.PathOf(TextName);
}

std::string ImportOpenDocument(const Source& source, int only, const Workspace& workspace) {
  std::string content = source.document.path;
  if (source.kind == Source::Kind::Flat || only >= 0) {
    content = workspace.Path("content.xml");
    RequireSuccess(WriteSpreadsheetContent(source.document, only, content));
  }
  std::string text = workspace.Path(TextName);
  static_cast<void>(xml::TakeXmlFailure());
  COpenOfficeXMLImport import(os::FromNative(content).c_str());
  import.SetDataSaveFileName(os::FromNative(text).c_str());
  if (source.parts) RequireSuccess(source.parts->Discard(ContentPart));
  const bool isWritten = import.ImportXMLFile() == 1;
  if (isWritten) return text;
  throw CommandError(ExitStatus::BadInput,
                     Describe(TakeXmlFailureAt(source.document.name, NoText)));
}

}  // namespace

std::string MakeFaithfulText(spreadsheet::Source& source, int only, Workspace& workspace,
                             std::vector<std::string>& notes) {
  try {
    if (source.kind == Source::Kind::Workbook)
      return ImportWorkbook(source, only, workspace, notes);
    return ImportOpenDocument(source, only, workspace);
  } catch (const CommandError&) {
    // A part that could not be unpacked has the better reason than the import.
    if (source.parts) RequireSuccess(source.parts->Stop());
    throw;
  }
}

}  // namespace rastrel::cli::sheet
