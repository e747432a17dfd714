#include "rastrel/readers/open_office_tables.h"

#include <algorithm>

#include "rastrel/platform/os/number_text.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/xml/failure.h"
#include "rastrel/xml/stream.h"
#include "rastrel/xml/walk.h"

namespace rastrel::readers {
namespace {

using xml::StreamChoice;
using namespace std::string_view_literals;

constexpr std::wstring_view RepeatAttribute = L"table:number-columns-repeated";

// Levels of a document, from its root on.
enum Level { RootLevel, BodyLevel, SpreadsheetLevel, TableLevel };

// Seven bits a byte, the lowest first; the eighth says that more follow.
constexpr std::uint32_t NumberBits = 7;
constexpr std::uint32_t NumberMask = 0x7F;
constexpr std::uint32_t MoreFollows = 0x80;

}  // namespace

class OpenOfficeTables::Reader : public xml::XmlStreamHandler {
 public:
  Reader(OpenOfficeTables& tables, const SheetLimits& limits)
      : m_Tables(tables), m_Limits(limits) {}

  StreamChoice Begin(std::wstring_view baseName, const XmlNode&, int depth) override {
    switch (depth) {
      case RootLevel:
        if (baseName != L"document-content")
          Refuse("the document element is not \"document-content\"");
        return StreamChoice::Enter;
      case BodyLevel: {
        const bool isFirst = baseName == L"body" && !m_HasBody;
        m_HasBody = m_HasBody || isFirst;
        return EnterIf(isFirst);
      }
      case SpreadsheetLevel: return EnterIf(baseName == L"spreadsheet");
      case TableLevel:
        if (baseName == L"table") m_Tables.m_Begins.push_back(m_Tables.m_Bytes.size());
        return EnterIf(baseName == L"table");
      default: return baseName == L"table-row" ? StreamChoice::Node : StreamChoice::Skip;
    }
  }

  void Node(const XmlNode& row) override {
    BeginRow();
    for (XmlNode cell = xml::FirstChild(row); cell && !Refused(); cell = xml::NextSibling(cell))
      if (xml::IsNamed(cell, L"table-cell"sv)) AppendCell(cell);
  }

  void End(std::wstring_view, int) override {}

 private:
  void AppendCell(const XmlNode& cell) {
    const std::int32_t repeat = RepeatOf(cell);
    if (repeat <= 0) return;
    std::string_view text;
    for (XmlNode child = xml::FirstChild(cell); child; child = xml::NextSibling(child)) {
      if (!xml::IsNamed(child, L"p"sv)) continue;
      std::string& scratch = text.data() == m_Joined[0].data() ? m_Joined[1] : m_Joined[0];
      const std::string_view paragraph = xml::TextBytes(child, scratch);
      if (!paragraph.empty()) text = paragraph;
    }
    AppendCells(static_cast<std::uint32_t>(repeat), text);
  }

  static StreamChoice EnterIf(bool isWanted) {
    return isWanted ? StreamChoice::Enter : StreamChoice::Skip;
  }

  static std::int32_t RepeatOf(const XmlNode& cell) {
    const std::string_view repeat = xml::AttributeBytes(cell, RepeatAttribute);
    return repeat.empty() ? 1 : os::Int32FromText(repeat);
  }

  void BeginRow() {
    m_Tables.AppendNumber(0);
    ++m_Tables.m_ResultText;
    CheckSizes();
  }

  void AppendCells(std::uint32_t repeat, std::string_view text) {
    m_Tables.m_Cells += repeat;
    m_Tables.m_ResultText += std::uint64_t{repeat} * (text.size() + 1);
    if (!CheckSizes() || !CheckKept(text.size())) return;
    m_Tables.AppendNumber(repeat);
    m_Tables.AppendNumber(static_cast<std::uint32_t>(text.size()));
    m_Tables.m_Bytes.append(text);
  }

  bool CheckSizes() {
    if (m_Tables.m_Cells > m_Limits.cells)
      Refuse("more than " + std::to_string(m_Limits.cells) + " cells, repeated ones counted");
    else if (m_Tables.m_ResultText > m_Limits.resultText)
      Refuse("the tables become more than " + std::to_string(m_Limits.resultText) +
             " bytes of text");
    return !Refused() && CheckKept(0);
  }

  // Room for a text and two numbers, so that the store grows by doubling up to its limit at most.
  bool CheckKept(std::size_t size) {
    std::string& bytes = m_Tables.m_Bytes;
    const std::size_t wanted = bytes.size() + size + MaximumForNumbers;
    if (wanted > m_Limits.cellText)
      Refuse("the cells hold more than " + std::to_string(m_Limits.cellText) + " bytes");
    else if (wanted > bytes.capacity())
      bytes.reserve(std::max(wanted, std::min(bytes.capacity() * 2, m_Limits.cellText)));
    return !Refused();
  }

  static constexpr std::size_t MaximumForNumbers = 15;

  OpenOfficeTables& m_Tables;
  const SheetLimits& m_Limits;
  std::string m_Joined[2];  // one holds the present text, the other may take the next
  bool m_HasBody = false;
};

bool OpenOfficeTables::Read(std::wstring_view path, const SheetLimits& limits) {
  const std::size_t bytes = m_Bytes.size();
  const std::size_t tables = m_Begins.size();
  const std::uint64_t cells = m_Cells;
  const std::uint64_t resultText = m_ResultText;
  Reader reader(*this, limits);
  const bool isDocument = xml::StreamXmlFile(path, reader);
  if (isDocument && m_Begins.size() > tables) return true;
  if (isDocument)
    xml::ReportXmlFailure({.where = os::Utf8FromWide(path), .why = "there is no table"});
  m_Bytes.resize(bytes);
  m_Begins.resize(tables);
  m_Cells = cells;
  m_ResultText = resultText;
  return false;
}

OpenOfficeTables::Walk OpenOfficeTables::Table(std::size_t index) const {
  const std::size_t end = index + 1 < m_Begins.size() ? m_Begins[index + 1] : m_Bytes.size();
  return Walk(std::string_view(m_Bytes).substr(m_Begins[index], end - m_Begins[index]));
}

void OpenOfficeTables::Clear() { *this = OpenOfficeTables(); }

void OpenOfficeTables::AppendNumber(std::uint32_t number) {
  for (; number > NumberMask; number >>= NumberBits)
    m_Bytes += static_cast<char>((number & NumberMask) | MoreFollows);
  m_Bytes += static_cast<char>(number);
}

bool OpenOfficeTables::Walk::Next(Item& item) {
  if (m_Bytes.empty()) return false;
  item.repeat = TakeNumber();
  const std::uint32_t length = item.repeat > 0 ? TakeNumber() : 0;
  item.text = m_Bytes.substr(0, length);
  m_Bytes.remove_prefix(length);
  return true;
}

std::uint32_t OpenOfficeTables::Walk::TakeNumber() {
  std::uint32_t number = 0;
  std::uint32_t shift = 0;
  std::uint32_t byte = MoreFollows;
  while (byte >= MoreFollows) {
    byte = static_cast<unsigned char>(m_Bytes.front());
    m_Bytes.remove_prefix(1);
    number |= (byte & NumberMask) << shift;
    shift += NumberBits;
  }
  return number;
}

}  // namespace rastrel::readers
