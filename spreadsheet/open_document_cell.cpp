#include "spreadsheet/open_document_cell.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "spreadsheet/decimal_digits.h"
#include "spreadsheet/spreadsheet.h"
#include "spreadsheet/xml_reading.h"

namespace rastrel::spreadsheet {
namespace {

class ParagraphText {
 public:
  explicit ParagraphText(std::string& text) : m_Text(text) {}

  void Add(const XmlNode& paragraph) {
    m_AfterSpace = true;
    const std::size_t begin = m_Text.size();
    AddChildren(paragraph);
    if (m_AfterSpace && m_Text.size() > begin) m_Text.pop_back();
  }

  [[nodiscard]] bool IsTooLong() const { return m_Text.size() > limits::CellBytes; }

 private:
  void AddChildren(const XmlNode& node) {
    for (XmlNode piece = xml::FirstPiece(node); piece && !IsTooLong();
         piece = xml::NextPiece(piece)) {
      if (xml::IsText(piece))
        AddCharacters(xml::RawTextBytes(piece, m_Scratch));
      else if (xml::IsElement(piece))
        AddElement(piece);
    }
  }

  void AddCharacters(std::string_view bytes) {
    for (const char byte : bytes) {
      const bool isWhitespace = byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r';
      if (!isWhitespace)
        m_Text += byte;
      else if (!m_AfterSpace)
        m_Text += ' ';
      m_AfterSpace = isWhitespace;
    }
  }

  void AddElement(const XmlNode& element) {
    const std::wstring_view name = xml::BaseName(element);
    if (name == L"annotation" || name == L"ruby-text") return;
    if (name == L"s") {
      const auto count = WholeNumber(xml::AttributeBytes(element, L"text:c")).value_or(1);
      m_Text.append(static_cast<std::size_t>(std::min<std::uint64_t>(count, limits::CellBytes + 1)),
                    ' ');
    } else if (name == L"tab") {
      m_Text += '\t';
    } else if (name == L"line-break") {
      m_Text += '\n';
    } else {
      return AddChildren(element);
    }
    m_AfterSpace = false;
  }

  std::string& m_Text;
  std::string m_Scratch;
  bool m_AfterSpace = true;
};

// For writers that leave the paragraphs out.
std::string ShowValue(const XmlNode& cell) {
  const auto attribute = [&cell](std::wstring_view name) {
    return xml::AttributeBytes(cell, name);
  };
  const std::string_view type = attribute(L"office:value-type");
  if (type == "string") return std::string(attribute(L"office:string-value"));
  if (type == "boolean") return IsYes(attribute(L"office:boolean-value")) ? "TRUE" : "FALSE";
  if (type == "date") return std::string(attribute(L"office:date-value"));
  if (type == "time") return std::string(attribute(L"office:time-value"));
  const std::string_view value = attribute(L"office:value");
  double number = 0;
  const auto [stop, error] = std::from_chars(value.data(), value.data() + value.size(), number);
  if (error != std::errc() || stop != value.data() + value.size()) return std::string(value);
  return type == "percentage" ? ShowGeneral(number * 100) + "%" : ShowGeneral(number);
}

}  // namespace

std::wstring ShowOpenDocumentCell(const XmlNode& cell, std::string& text) {
  text.clear();
  ParagraphText paragraph(text);
  bool first = true;
  for (XmlNode child = xml::FirstChild(cell); child; child = xml::NextSibling(child)) {
    if (xml::BaseName(child) != L"p" && xml::BaseName(child) != L"h") continue;
    if (!std::exchange(first, false)) text += '\n';
    paragraph.Add(child);
    if (paragraph.IsTooLong())
      return L"a cell has a text longer than the limit of " + std::to_wstring(limits::CellBytes) +
             L" bytes";
  }
  if (first) text = ShowValue(cell);
  return {};
}

std::uint64_t RepeatsOf(const XmlNode& node, std::wstring_view attribute) {
  const std::string_view value = xml::AttributeBytes(node, attribute);
  if (value.empty()) return 1;
  // A count too large for a number is too large for every limit, too.
  constexpr std::uint64_t maximum = 1ULL << 40;
  const bool isNumber = value.find_first_not_of("0123456789") == value.npos;
  const std::uint64_t count = WholeNumber(value).value_or(isNumber ? maximum : 1);
  return std::clamp<std::uint64_t>(count, 1, maximum);
}

}  // namespace rastrel::spreadsheet
