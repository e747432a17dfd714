#include "cli/sheet/source.h"

#include <filesystem>
#include <fstream>

#include "cli/exit_status.h"
#include "cli/file_head.h"
#include "cli/sheet/part_name.h"
#include "cli/sheet/xml_reading.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli::sheet {
namespace {

namespace fs = std::filesystem;
using namespace std::string_view_literals;

constexpr std::size_t HeadSize = 512;
constexpr const char* TypePart = "mimetype";
constexpr const char* ManifestPart = "META-INF/manifest.xml";
constexpr std::string_view SpreadsheetType = "application/vnd.oasis.opendocument.spreadsheet";

[[noreturn]] void Refuse(const std::string& path, const std::string& why) {
  throw CommandError(ExitStatus::BadInput, path + ": " + why);
}

// Looks at the root alone.
class RootReader : public GuardedHandler {
 public:
  [[nodiscard]] const std::wstring& Root() const { return m_Root; }
  xml::StreamChoice Begin(std::wstring_view baseName, const XmlNode&, int) override {
    m_Root = baseName;
    GuardedHandler::Refuse(L"enough is known");
    return xml::StreamChoice::Skip;
  }
  void Node(const XmlNode&) override {}
  void End(std::wstring_view, int) override {}

 private:
  std::wstring m_Root;
};

bool IsEncrypted(Parts& parts) {
  if (!parts.Has(ManifestPart)) return false;
  bool found = false;
  PathReader reader;
  reader.On({L"manifest", L"file-entry", L"encryption-data"},
            [&found](const XmlNode&) { found = true; });
  return reader.ReadFrom(parts.Fetch(ManifestPart)) && found;
}

Source OpenDocumentSource(std::unique_ptr<Parts> parts) {
  const std::string name = parts->Name();
  if (parts->Has(TypePart)) {
    std::ifstream file(parts->Fetch(TypePart), std::ios::binary);
    std::string type;
    std::getline(file, type);
    if (!type.starts_with(SpreadsheetType))
      Refuse(name, "it is no spreadsheet, but '" + PrintableName(type) + "'");
  }
  if (IsEncrypted(*parts)) Refuse(name, "it is encrypted; save it without a password");
  Source source;
  source.kind = Source::Kind::OpenDocument;
  parts->FetchAhead({ContentPart});
  source.document = {parts->Fetch(ContentPart), name + ": " + ContentPart};
  source.parts = std::move(parts);
  return source;
}

Source PackageSource(std::unique_ptr<Package> package, const Workspace& workspace,
                     const UnpackProgress& progress) {
  const bool isWorkbook = !package->Find("[Content_Types].xml").empty();
  const bool isOpenDocument = !package->Find(ContentPart).empty();
  auto parts =
      std::make_unique<Parts>(std::move(package), workspace.MakeFolder("package"), progress);
  if (isOpenDocument && (parts->Has(TypePart) || !isWorkbook))
    return OpenDocumentSource(std::move(parts));
  if (!isWorkbook)
    Refuse(parts->Name(),
           "it is no spreadsheet: it has neither '[Content_Types].xml' nor 'content.xml'");
  Source source;
  source.workbook = ReadWorkbook(*parts);
  source.parts = std::move(parts);
  return source;
}

Source FlatSource(const std::string& path, std::string_view head) {
  if (!MayBeXml(head)) {
    const std::string kind(KnownKind(head));
    Refuse(path, "it is neither a package of a spreadsheet nor a document of XML" +
                     (kind.empty() ? "" : ", but " + kind));
  }
  static_cast<void>(TakeXmlWords());
  RootReader reader;
  static_cast<void>(reader.ReadFrom(path));
  const std::string words = TakeXmlWords();
  if (reader.Root().empty()) throw CommandError(ExitStatus::BadInput, path + ":" + words);
  if (reader.Root() != L"document" && reader.Root() != L"document-content")
    Refuse(path, "it is no spreadsheet: its root element is '" +
                     PrintableName(os::Utf8FromWide(reader.Root())) + "'");
  Source source;
  source.kind = Source::Kind::Flat;
  source.document = {path, path};
  return source;
}

}  // namespace

Source OpenSource(const std::string& path, Workspace& workspace, const UnpackProgress& progress) {
  std::error_code ignored;
  if (fs::is_directory(path, ignored))
    return PackageSource(OpenFolderPackage(path), workspace, progress);
  const auto [head, trouble] = ReadFileHead(path, HeadSize);
  if (!trouble.empty()) Refuse(path, trouble);
  if (head.starts_with("PK\x03\x04"sv) || head.starts_with("PK\x05\x06"sv))
    return PackageSource(OpenZipPackage(path), workspace, progress);
  if (head.starts_with("\xD0\xCF\x11\xE0"sv))
    Refuse(path, "it is encrypted, or of the old binary form (.xls); save it as .xlsx");
  return FlatSource(path, head);
}

std::vector<SheetInfo> SheetsOf(const Source& source) {
  if (source.kind == Source::Kind::Workbook) return source.workbook.sheets;
  return ReadOpenDocumentSheets(source.document);
}

int PlaceOfSheet(const std::vector<SheetInfo>& sheets, const std::string& wanted,
                 const std::string& file) {
  for (std::size_t index = 0; index < sheets.size(); ++index)
    if (sheets[index].name == wanted) return static_cast<int>(index);
  const auto number = WholeNumber(wanted);
  if (number && *number >= 1 && *number <= sheets.size()) return static_cast<int>(*number - 1);
  std::string names;
  constexpr std::size_t most = 20;
  for (std::size_t index = 0; index < std::min(sheets.size(), most); ++index)
    names += (index == 0 ? " '" : ", '") + sheets[index].name + "'";
  if (sheets.size() > most) names += ", ...";
  throw CommandError(ExitStatus::WrongUse, file + ": there is no sheet '" + wanted +
                                               "'; there are" + (names.empty() ? " none" : names));
}

void ReadRows(Source& source, int only, RowSink& sink) {
  if (source.kind == Source::Kind::Workbook)
    ReadWorkbookRows(*source.parts, source.workbook, only, sink);
  else
    ReadOpenDocumentRows(source.document, only, sink);
}

}  // namespace rastrel::cli::sheet
