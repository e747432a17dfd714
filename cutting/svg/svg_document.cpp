#include "cutting/svg/svg_document.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <utility>

#include "rastrel/xml/load.h"

namespace rastrel::cutting {
namespace {

class TextSource final : public xml::XmlSource {
 public:
  explicit TextSource(std::string_view text) : m_Rest(text) {}
  Expected<std::size_t> Read(std::span<char> bytes) override {
    const std::size_t count = std::min(bytes.size(), m_Rest.size());
    std::memcpy(bytes.data(), m_Rest.data(), count);
    m_Rest.remove_prefix(count);
    return count;
  }

 private:
  std::string_view m_Rest;
};

// Where the document type begins, which only comments and instructions come before.
std::size_t DocumentType(std::string_view text) {
  std::size_t at = 0;
  for (;;) {
    at = text.find('<', at);
    if (at == text.npos) return text.npos;
    const std::string_view rest = text.substr(at);
    if (rest.starts_with("<!DOCTYPE")) return at;
    std::string_view end;
    if (rest.starts_with("<?")) end = "?>";
    if (rest.starts_with("<!--")) end = "-->";
    if (end.empty()) return text.npos;
    at = text.find(end, at);
    if (at == text.npos) return text.npos;
  }
}

}  // namespace

Expected<XmlNode> LoadSvg(std::string_view text, const std::string& name) {
  std::string plain;
  if (const std::size_t begin = DocumentType(text); begin != text.npos) {
    const std::size_t end = text.find_first_of(">[", begin);
    if (end != text.npos && text[end] == '>') {
      plain = text;
      for (std::size_t at = begin; at <= end; ++at)
        if (plain[at] != '\n') plain[at] = ' ';
      text = plain;
    }
  }
  TextSource source(text);
  auto root = xml::LoadXml(source, xml::XmlEncoding::ByDocument);
  if (root) return root;
  Failure failure = FailureAt(name, root.Error());
  failure.code = FailureCode::BadInput;
  return failure;
}

}  // namespace rastrel::cutting
