#include "cli/document/schema_check.h"

#include <string>
#include <utility>

#include "rastrel/platform/os/text.h"
#include "rastrel/xml/layer.h"

namespace rastrel::cli {
namespace {

std::string Shown(std::wstring_view text) { return os::Utf8FromWide(text); }

bool IsAmongBars(std::wstring_view text, std::wstring_view list) {
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(L'|'), list.size());
    if (list.substr(0, end) == text) return true;
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return false;
}

// The entry of a list with a name; one without a name if there is none.
SchemaEntry EntryOf(std::wstring_view list, std::wstring_view name) {
  while (!list.empty()) {
    const SchemaEntry entry = TakeEntry(list);
    if (entry.name == name) return entry;
  }
  return {};
}

class SchemaChecker {
 public:
  explicit SchemaChecker(const TemplateSchema& schema) : m_Schema(schema) {}

  Findings Check(const XmlNode& root) {
    Element(root, m_Schema.elements.front());
    return std::move(m_Findings);
  }

 private:
  void Add(const XmlNode& node, std::string text) {
    m_Findings.push_back({NodeLine(node), std::move(text)});
  }

  static std::string NameOf(const XmlNode& node) {
    std::wstring name;
    NodeBaseName(node, name);
    return "<" + Shown(name) + ">";
  }

  void Value(const XmlNode& node, const std::string& subject, std::wstring_view kind,
             const std::wstring& value) {
    if (kind.empty()) return;
    const ValueKind& known = KindOf(kind);
    if ((known.number && IsNumber(value)) || IsAmongBars(value, known.keywords)) return;
    if (known.keywords.empty())
      Add(node, subject + " is no number: \"" + Shown(value) + "\"");
    else
      Add(node, subject + " is \"" + Shown(value) + "\", which is not known");
  }

  void Attributes(const XmlNode& node, const SchemaElement& row) {
    for (const auto& [name, value] : AttributeList(node)) {
      const SchemaEntry entry = EntryOf(row.attributes, name);
      if (entry.name.empty())
        Add(node, NameOf(node) + " has an attribute \"" + Shown(name) + "\" that is not known");
      else
        Value(node, Shown(name) + " of " + NameOf(node), entry.kind, value);
    }
    for (std::wstring_view list = row.attributes; !list.empty();) {
      const SchemaEntry entry = TakeEntry(list);
      std::wstring ignored;
      if (entry.needed && !AttributeString(node, entry.name, ignored))
        Add(node, NameOf(node) + " has no " + Shown(entry.name));
    }
  }

  void Children(const XmlNode& node, const SchemaElement& row) {
    int count = 0;
    for (const XmlNode& child : NodeChildren(node, count)) {
      std::wstring name;
      if (!NodeBaseName(child, name) || NodeLine(child) == 0) continue;
      const SchemaEntry entry = EntryOf(row.children, name);
      if (entry.name.empty()) {
        Add(child, NameOf(child) + " is not known in " + NameOf(node));
        continue;
      }
      std::wstring text;
      if (!entry.kind.empty() && NodeText(child, text))
        Value(child, NameOf(child), entry.kind, text);
      const SchemaElement* known = m_Schema.Find(name, row.name);
      if (known != nullptr) Element(child, *known);
    }
    for (std::wstring_view list = row.children; !list.empty();) {
      const SchemaEntry entry = TakeEntry(list);
      if (entry.needed && !FirstChildNamed(node, entry.name))
        Add(node, NameOf(node) + " has no <" + Shown(entry.name) + ">");
    }
  }

  void Element(const XmlNode& node, const SchemaElement& row) {
    if (!row.name.empty()) Attributes(node, row);
    Children(node, row);
  }

  const TemplateSchema& m_Schema;
  Findings m_Findings;
};

}  // namespace

Findings CheckSchema(const TemplateSchema& schema, const XmlNode& root) {
  return SchemaChecker(schema).Check(root);
}

// Text after a number would be passed over in silence too.
bool IsNumber(std::wstring_view text) {
  const auto blank = [](wchar_t letter) { return letter == L' ' || letter == L'\t'; };
  while (!text.empty() && blank(text.back())) text.remove_suffix(1);
  while (!text.empty() && blank(text.front())) text.remove_prefix(1);
  if (!text.empty() && (text.front() == L'-' || text.front() == L'+')) text.remove_prefix(1);
  if (text.empty()) return false;
  bool digit = false;
  bool point = false;
  bool exponent = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const wchar_t letter = text[i];
    if (letter >= L'0' && letter <= L'9') {
      digit = true;
    } else if (letter == L'.' && !point && !exponent) {
      point = true;
    } else if ((letter == L'e' || letter == L'E') && digit && !exponent && i + 1 < text.size()) {
      exponent = true;
      digit = false;
      if (text[i + 1] == L'-' || text[i + 1] == L'+') ++i;
    } else {
      return false;
    }
  }
  return digit;
}

}  // namespace rastrel::cli
