#include "cli/document/template_format.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <utility>

#include "cli/input/xml_input.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/xml/failure.h"
#include "rastrel/xml/layer.h"

namespace rastrel::cli {
namespace {

struct FormatName {
  TemplateFormat format;
  std::string_view name;
};

constexpr std::array FormatNames{FormatName{TemplateFormat::Document, "document"},
                                 FormatName{TemplateFormat::Abb, "abb"}};

// The first byte of a file after whitespace and a byte order mark; 0 for none.
char FirstByteOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::array<char, 64> start{};
  file.read(start.data(), start.size());
  const std::string_view bytes(start.data(), static_cast<std::size_t>(file.gcount()));
  const std::size_t at = bytes.find_first_not_of(" \t\r\n\xEF\xBB\xBF");
  return at == std::string_view::npos ? '\0' : bytes[at];
}

bool HasPlates(const XmlNode& root) {
  for (const XmlNode& part : ChildrenNamed(root, L"ENGRAVINGTEMPLATE")) {
    if (FirstChildNamed(part, L"PLATE") || FirstChildNamed(part, L"PLATES")) return true;
  }
  return false;
}

}  // namespace

std::string_view NameOf(TemplateFormat format) {
  return std::ranges::find(FormatNames, format, &FormatName::format)->name;
}

Expected<TemplateFormat> FormatNamed(const std::string& name) {
  const auto found = std::ranges::find(FormatNames, name, &FormatName::name);
  if (found != FormatNames.end()) return found->format;
  std::string known;
  for (const FormatName& row : FormatNames)
    known += (known.empty() ? "" : ", ") + std::string(row.name);
  return FailureOf("there is no format '" + name + "'; there are " + known);
}

Expected<TemplateFormat> FormatOfFile(const std::string& path) {
  if (FirstByteOf(path) == '{') return TemplateFormat::Document;
  if (auto parser = CheckXmlParser(); !parser) return parser.Error();
  const std::wstring readerPath = ReaderPath(path);
  const XmlNode root = LoadXmlFile(readerPath);
  if (!root) {
    const auto state = xml::TakeXmlFailure();
    if (state) return FailureOf(path + ": can't be read", FailureCode::BadInput);
    Failure failure = FailureAt(os::Utf8FromWide(os::FromNative(path)), state.Error());
    failure.code = FailureCode::BadInput;
    return failure;
  }
  if (HasPlates(root)) return TemplateFormat::Abb;
  std::wstring rootName;
  NodeBaseName(root, rootName);
  return FailureOf(path + ":" + std::to_string(NodeLine(root)) + ": <" +
                       os::Utf8FromWide(rootName) +
                       "> holds no template that is known: no <ENGRAVINGTEMPLATE> with <PLATE> in "
                       "it. `--format` reads it all the same",
                   FailureCode::BadInput);
}

}  // namespace rastrel::cli
