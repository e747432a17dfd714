#include "rastrel/xml/load.h"

#include <algorithm>
#include <memory>

#include "rastrel/platform/os/text.h"
#include "rastrel/xml/failure.h"
#include "rastrel/xml/layer.h"
#include "rastrel/xml/limits.h"
#include "rastrel/xml/source.h"
#include "rastrel/xml/tree.h"

namespace rastrel::xml {
namespace {

// Keeps all of a document below its element.
class Loader : public XmlEvents {
 public:
  explicit Loader(XmlDocument& document)
      : m_Document(document), m_Builder(document.arena, /*keepsWhitespace=*/false) {}

  void Start(const XmlName* name, std::span<const XmlStartAttribute> attributes,
             std::uint32_t line) override {
    if (m_Builder.IsOpen()) return m_Builder.Start(name, attributes, line);
    m_Root = m_Builder.Make(name, attributes, line, nullptr);
    m_Builder.Open(m_Root);
  }
  void End() override { m_Builder.End(); }
  void Text(std::string_view bytes) override { m_Builder.Text(bytes); }
  void Cdata(std::string_view bytes) override { m_Builder.Cdata(bytes); }
  // Comments and instructions around the document element are no part of it.
  void Comment(std::string_view bytes) override {
    if (m_Builder.IsOpen()) m_Builder.Comment(bytes);
  }
  void Instruction(const XmlName* target, std::string_view data) override {
    if (m_Builder.IsOpen()) m_Builder.Instruction(target, data);
  }
  [[nodiscard]] Expected<void> State() const override {
    const std::size_t size =
        m_Document.arena.Size() + m_Document.names.Size() + m_Builder.Pending();
    if (size <= limits::DocumentBytes) return {};
    return FailureOf("the document takes more than " + std::to_string(limits::DocumentBytes) +
                     " bytes of memory");
  }

  [[nodiscard]] const XmlTreeNode* Root() const { return m_Root; }

 private:
  XmlDocument& m_Document;
  XmlTreeBuilder m_Builder;
  XmlTreeNode* m_Root = nullptr;
};

// Fails at the first place that holds no character of Unicode.
Expected<void> CheckCharacters(std::wstring_view text) {
  const auto bad = std::find_if(text.begin(), text.end(), [](wchar_t character) {
    const auto value = static_cast<std::uint32_t>(character);
    return value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF);
  });
  if (bad == text.end()) return {};
  const std::wstring_view before(text.begin(), bad);
  const std::size_t line = before.rfind(L'\n');
  const std::size_t column =
      line == std::wstring_view::npos ? before.size() : before.size() - line - 1;
  Failure failure = FailureOf("the text holds half of a surrogate pair");
  failure.line = 1 + static_cast<int>(std::count(before.begin(), before.end(), L'\n'));
  failure.column = 1 + static_cast<int>(column);
  return failure;
}

Expected<XmlNode> LoadFile(std::wstring_view path) {
  auto file = os::RandomAccessFile::Open(path);
  if (!file) return FailureOf(Describe(file.Error()));
  XmlFileSource source(std::move(*file), path);
  return LoadXml(source, XmlEncoding::ByDocument);
}

Expected<XmlNode> LoadText(std::wstring_view text) {
  if (auto checked = CheckCharacters(text); !checked) return checked.Error();
  const std::string bytes = os::Utf8FromWide(text);
  XmlMemorySource source(bytes);
  return LoadXml(source, XmlEncoding::Utf8);
}

// The document element; none if it could not be had, which is reported.
XmlNode NodeOrReport(Expected<XmlNode> root, std::wstring_view path) {
  if (root) return *std::move(root);
  Failure failure = root.Error();
  failure.where = os::Utf8FromWide(path);
  ReportXmlFailure(std::move(failure));
  return {};
}

}  // namespace

Expected<XmlNode> LoadXml(XmlSource& source, XmlEncoding encoding) {
  auto document = std::make_unique<XmlDocument>();
  Loader loader(*document);
  if (auto parsed = ParseXml(source, encoding, document->names, loader); !parsed)
    return parsed.Error();
  return XmlNode(loader.Root(), document.release());
}

}  // namespace rastrel::xml

namespace xml = rastrel::xml;

XmlNode LoadXmlFile(std::wstring_view path) { return xml::NodeOrReport(xml::LoadFile(path), path); }
XmlNode LoadXmlString(std::wstring_view text) { return xml::NodeOrReport(xml::LoadText(text), {}); }
