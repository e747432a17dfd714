#include "spreadsheet/source.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <utility>

#include "rastrel/platform/os/text.h"
#include "rastrel/xml/failure.h"
#include "spreadsheet/error.h"
#include "spreadsheet/part_name.h"
#include "spreadsheet/xml_reading.h"
#include "spreadsheet/zip_library.h"

namespace rastrel::spreadsheet {
namespace {

namespace fs = std::filesystem;
using namespace std::string_view_literals;

constexpr std::size_t MarkSize = 4;
constexpr std::string_view OldBinaryMark = "\xD0\xCF\x11\xE0";
constexpr const char* TypePart = "mimetype";
constexpr const char* ManifestPart = "META-INF/manifest.xml";
constexpr std::string_view SpreadsheetType = "application/vnd.oasis.opendocument.spreadsheet";

[[noreturn]] void Refuse(const std::string& path, const std::string& why) {
  Failure failure = FailureOf(why);
  failure.where = path;
  throw Error(std::move(failure));
}

// Looks at the root alone.
class RootReader : public GuardedHandler {
 public:
  [[nodiscard]] const std::wstring& Root() const { return m_Root; }
  xml::StreamChoice Begin(std::wstring_view baseName, const XmlNode&, int) override {
    m_Root = baseName;
    GuardedHandler::Refuse("enough is known");
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
  return reader.ReadFrom(OrThrow(parts.Fetch(ManifestPart))) && found;
}

Source OpenDocumentSource(std::unique_ptr<Parts> parts) {
  const std::string name = parts->Name();
  if (parts->Has(TypePart)) {
    std::ifstream file(OrThrow(parts->Fetch(TypePart)), std::ios::binary);
    std::string type;
    std::getline(file, type);
    if (!type.starts_with(SpreadsheetType))
      Refuse(name, "it is no spreadsheet, but '" + PrintableName(type) + "'");
  }
  if (IsEncrypted(*parts)) Refuse(name, "it is encrypted; save it without a password");
  Source source;
  source.kind = Source::Kind::OpenDocument;
  OrThrow(parts->FetchAhead({ContentPart}));
  source.document = {OrThrow(parts->Fetch(ContentPart)), name + ": " + ContentPart};
  source.parts = std::move(parts);
  return source;
}

Source PackageSource(std::unique_ptr<Package> package, const std::string& folder,
                     const UnpackProgress& progress) {
  const bool isWorkbook = !package->Find("[Content_Types].xml").empty();
  const bool isOpenDocument = !package->Find(ContentPart).empty();
  auto parts = std::make_unique<Parts>(std::move(package), folder, progress);
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

Source FlatSource(const std::string& path) {
  static_cast<void>(xml::TakeXmlFailure());
  RootReader reader;
  static_cast<void>(reader.ReadFrom(path));
  Failure failure = TakeXmlFailureAt(path, "it can't be read");
  if (reader.Root().empty()) throw Error(std::move(failure));
  if (reader.Root() != L"document" && reader.Root() != L"document-content")
    Refuse(path, "it is no spreadsheet: its root element is '" +
                     PrintableName(os::Utf8FromWide(reader.Root())) + "'");
  Source source;
  source.kind = Source::Kind::Flat;
  source.document = {path, path};
  return source;
}

std::string MarkOf(const std::string& path) {
  std::string mark(MarkSize, '\0');
  std::ifstream file(path, std::ios::binary);
  file.read(mark.data(), static_cast<std::streamsize>(mark.size()));
  mark.resize(static_cast<std::size_t>(file.gcount()));
  return mark;
}

bool IsZip(std::string_view head) {
  return head.starts_with("PK\x03\x04"sv) || head.starts_with("PK\x05\x06"sv);
}

Source Open(const std::string& path, const std::string& folder, const UnpackProgress& progress) {
  std::error_code ignored;
  if (fs::is_directory(path, ignored))
    return PackageSource(OpenFolderPackage(path), folder, progress);
  const std::string mark = MarkOf(path);
  if (IsZip(mark)) return PackageSource(OpenZipPackage(path), folder, progress);
  if (mark == OldBinaryMark)
    Refuse(path, "it is encrypted, or of the old binary form (.xls); save it as .xlsx");
  return FlatSource(path);
}

// A part that could not be unpacked has the better reason than its reader, which only found that it
// can't be read.
template <typename T>
Expected<T> Settled(const Source& source, Expected<T> result) {
  if (result || !source.parts) return result;
  if (const auto stopped = source.parts->Stop(); !stopped) return stopped.Error();
  return result;
}

}  // namespace

bool IsContainer(std::string_view head) { return IsZip(head) || head.starts_with(OldBinaryMark); }

Expected<void> ZipSupport() {
  const auto& library = ZipLibrary::Instance();
  if (!library) return library.Error();
  return {};
}

Expected<Source> OpenSource(const std::string& path, const std::string& folder,
                            const UnpackProgress& progress) {
  return Caught([&] { return Open(path, folder, progress); });
}

Expected<std::vector<SheetInfo>> SheetsOf(const Source& source) {
  if (source.kind == Source::Kind::Workbook) return source.workbook.sheets;
  return Settled(source, Caught([&] { return ReadOpenDocumentSheets(source.document); }));
}

Expected<int> PlaceOfSheet(const std::vector<SheetInfo>& sheets, const std::string& wanted) {
  for (std::size_t index = 0; index < sheets.size(); ++index)
    if (sheets[index].name == wanted) return static_cast<int>(index);
  const auto number = WholeNumber(wanted);
  if (number && *number >= 1 && *number <= sheets.size()) return static_cast<int>(*number - 1);
  std::string names;
  constexpr std::size_t maximum = 20;
  for (std::size_t index = 0; index < std::min(sheets.size(), maximum); ++index)
    names += (index == 0 ? " '" : ", '") + sheets[index].name + "'";
  if (sheets.size() > maximum) names += ", ...";
  return FailureOf("there is no sheet '" + wanted + "'; there are" +
                   (names.empty() ? " none" : names));
}

Expected<void> ReadRows(Source& source, int only, RowSink& sink) {
  return Settled(source, Caught([&] {
                   if (source.kind == Source::Kind::Workbook)
                     ReadWorkbookRows(*source.parts, source.workbook, only, sink);
                   else
                     ReadOpenDocumentRows(source.document, only, sink);
                 }));
}

}  // namespace rastrel::spreadsheet
