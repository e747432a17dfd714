#include "cli/document/template_format.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <utility>

#include "cli/input/xml_input.h"
#include "cli/reading/template_records.h"
#include "rastrel/imports/file_extension.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/xml/failure.h"
#include "rastrel/xml/layer.h"

namespace rastrel::cli {
namespace {

// Names of extensions are separated by spaces.
struct FormatRow {
  TemplateFormat format;
  std::string_view name;
  std::string_view own;     // extensions that say the format whatever the content is
  std::string_view reader;  // extensions that the reader takes; empty for any
};

// A template that its reader would mend first is no XML for the command, so that its extension has
// to do.
constexpr std::array Formats{
    FormatRow{TemplateFormat::Document, "document", "rdoc", ""},
    FormatRow{TemplateFormat::Abb, "abb", "", "xml"},
    FormatRow{TemplateFormat::BrightStar, "bright-star", "", "xml"},
    FormatRow{TemplateFormat::Cro, "cro", "cro crx cml", "cro crx cml xml"},
    FormatRow{TemplateFormat::Llx, "llx", "llx", "llx"},
    FormatRow{TemplateFormat::Cr2, "cr2", "cr2", "cr2"},
    FormatRow{TemplateFormat::Zml, "zml", "zml", "zml"},
};

const FormatRow& RowOf(TemplateFormat format) {
  return *std::ranges::find(Formats, format, &FormatRow::format);
}

std::string ExtensionOf(const std::string& path) {
  return os::Utf8FromWide(imports::FileExtension(os::FromNative(path)));
}

bool IsAmong(std::string_view extension, std::string_view list) {
  if (extension.empty()) return false;
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(' '), list.size());
    if (list.substr(0, end) == extension) return true;
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return false;
}

// The first byte of a file after whitespace and a byte order mark; 0 for none.
char FirstByteOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::array<char, 64> start{};
  file.read(start.data(), start.size());
  const std::string_view bytes(start.data(), static_cast<std::size_t>(file.gcount()));
  const std::size_t at = bytes.find_first_not_of(" \t\r\n\xEF\xBB\xBF");
  return at == std::string_view::npos ? '\0' : bytes[at];
}

bool HasChild(const XmlNode& node, std::initializer_list<std::wstring_view> names) {
  return std::ranges::any_of(
      names, [&](std::wstring_view name) { return bool(FirstChildNamed(node, name)); });
}

// The elements of the templates below a root, of which abb, bright-star and llx have the same names
// down to here.
struct TemplateContents {
  bool plates = false;
  bool plate = false;
  bool textFrame = false;
  bool onePlate = false;  // a plate with elements that llx alone has

  explicit TemplateContents(const XmlNode& root) {
    for (const XmlNode& part : ChildrenNamed(root, L"ENGRAVINGTEMPLATE")) {
      plates = plates || HasChild(part, {L"PLATES"});
      textFrame = textFrame || HasChild(part, {L"TEXTFRAME"});
      const XmlNode first = FirstChildNamed(part, L"PLATE");
      plate = plate || first;
      onePlate = onePlate || HasChild(first, {L"GRAPHIC", L"ARCTEXT", L"ORIGIN"});
    }
  }
};

Expected<TemplateFormat> FormatBelow(const XmlNode& root, const std::wstring& rootName) {
  const TemplateContents contents(root);
  const std::string shown = "<" + os::Utf8FromWide(rootName) + "> holds ";
  if (contents.plates && contents.textFrame)
    return FailureOf(shown +
                     "<PLATES>, as plate XML has, and <TEXTFRAME>, as BrightStar has. `--format` "
                     "says which it is");
  if (contents.textFrame) return TemplateFormat::BrightStar;
  if (contents.plates) return TemplateFormat::Abb;
  if (contents.onePlate) return TemplateFormat::Llx;
  if (contents.plate) return TemplateFormat::Abb;
  return FailureOf(shown +
                   "no template that is known: no <ENGRAVINGTEMPLATE> with <PLATE> or <TEXTFRAME> "
                   "in it. `--format` reads it all the same");
}

Failure RefusedXml(const std::string& path) {
  const auto state = xml::TakeXmlFailure();
  if (state) return FailureOf(path + ": can't be read", FailureCode::BadInput);
  Failure failure = FailureAt(os::Utf8FromWide(os::FromNative(path)), state.Error());
  failure.code = FailureCode::BadInput;
  return failure;
}

}  // namespace

std::string_view NameOf(TemplateFormat format) { return RowOf(format).name; }

Expected<TemplateFormat> FormatNamed(const std::string& name) {
  const auto found = std::ranges::find(Formats, name, &FormatRow::name);
  if (found != Formats.end()) return found->format;
  std::string known;
  for (const FormatRow& row : Formats) known += (known.empty() ? "" : ", ") + std::string(row.name);
  return FailureOf("there is no format '" + name + "'; there are " + known);
}

std::string_view ReaderExtensions(TemplateFormat format) { return RowOf(format).reader; }

bool HasReaderExtension(TemplateFormat format, const std::string& path) {
  const std::string_view known = ReaderExtensions(format);
  return known.empty() || IsAmong(ExtensionOf(path), known);
}

Expected<TemplateFormat> FormatOfFile(const std::string& path) {
  const std::string extension = ExtensionOf(path);
  for (const FormatRow& row : Formats) {
    if (IsAmong(extension, row.own)) return row.format;
  }
  if (FirstByteOf(path) == '{') return TemplateFormat::Document;
  if (auto parser = CheckXmlParser(); !parser) return parser.Error();
  const XmlNode root = LoadXmlFile(ReaderPath(path));
  if (!root) return RefusedXml(path);
  const auto format = FormatOfRoot(root);
  if (format) return *format;
  return FailureOf(path + ":" + std::to_string(NodeLine(root)) + ": " + Describe(format.Error()),
                   FailureCode::BadInput);
}

Expected<TemplateFormat> FormatOfRoot(const XmlNode& root) {
  std::wstring name;
  NodeBaseName(root, name);
  if (name == L"engraving_template")
    return HasChild(root, {L"Units", L"Rotation", L"Driver"}) ? TemplateFormat::Zml
                                                              : TemplateFormat::Cr2;
  if (name == L"ENGRAVINGTEMPLATE")
    return IsCroRoot(root) ? TemplateFormat::Cro : TemplateFormat::Zml;
  return FormatBelow(root, name);
}

}  // namespace rastrel::cli
