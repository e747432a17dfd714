#include "rastrel/readers/excel_elements.h"

#include <iterator>

#include "rastrel/platform/os/text.h"
#include "rastrel/xml/layer.h"
#include "rastrel/xml/stream.h"

namespace rastrel::readers {
namespace {

using xml::StreamChoice;

// Characters of names and values that may be kept, all elements together. Far more than the part
// names of the largest workbook.
constexpr std::size_t CharacterLimit = std::size_t{4} << 20;

class ElementReader : public xml::XmlStreamHandler {
 public:
  ElementReader(const ExcelElementNames& names, std::size_t limit)
      : m_Names(names), m_Limit(limit) {}

  StreamChoice Begin(std::wstring_view baseName, const XmlNode& start, int depth) override {
    if (depth == 0 && baseName != m_Names.root) {
      Refuse("the document element is not \"" + os::Utf8FromWide(m_Names.root) + "\"");
      return StreamChoice::Skip;
    }
    if (depth == 0) return StreamChoice::Enter;
    if (depth == 1 && baseName != m_Names.parent) return StreamChoice::Skip;
    if (depth == 1 && !m_Names.child.empty()) return StreamChoice::Enter;
    if (depth == 1 || baseName == m_Names.child) Take(baseName, start);
    return StreamChoice::Skip;
  }

  void Node(const XmlNode&) override {}
  void End(std::wstring_view, int) override {}

  [[nodiscard]] std::vector<ExcelElement>& Elements() { return m_Elements; }

 private:
  void Take(std::wstring_view baseName, const XmlNode& start) {
    if (Refused()) return;
    ExcelElement element{std::wstring(baseName), AttributeList(start)};
    for (const auto& [name, value] : element.m_Attributes)
      m_Characters += name.size() + value.size();
    m_Elements.push_back(std::move(element));
    if (m_Elements.size() > m_Limit || m_Characters > CharacterLimit)
      Refuse("more than " + std::to_string(m_Limit) + " elements are to be kept, or more than " +
             std::to_string(CharacterLimit) + " characters of them");
  }

  ExcelElementNames m_Names;
  std::size_t m_Limit;
  std::vector<ExcelElement> m_Elements;
  std::size_t m_Characters = 0;
};

}  // namespace

std::wstring ExcelElement::Value(std::wstring_view localName) const {
  for (auto attribute = m_Attributes.rbegin(); attribute != m_Attributes.rend(); ++attribute)
    if (attribute->first == localName) return attribute->second;
  return {};
}

bool ReadExcelElements(std::wstring_view path, const ExcelElementNames& names,
                       const SheetLimits& limits, std::vector<ExcelElement>& elements) {
  ElementReader reader(names, limits.elements);
  if (!xml::StreamXmlFile(path, reader)) return false;
  elements.insert(elements.end(), std::make_move_iterator(reader.Elements().begin()),
                  std::make_move_iterator(reader.Elements().end()));
  return true;
}

}  // namespace rastrel::readers
