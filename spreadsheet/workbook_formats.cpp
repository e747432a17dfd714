#include "spreadsheet/workbook_formats.h"

#include "spreadsheet/error.h"
#include "spreadsheet/spreadsheet.h"
#include "spreadsheet/xml_reading.h"

namespace rastrel::spreadsheet {

WorkbookFormats WorkbookFormats::Read(Parts& parts, const std::string& part) {
  WorkbookFormats formats;
  if (part.empty()) return formats;
  std::map<std::uint64_t, std::string> codes;
  std::vector<std::uint64_t> numbers;
  PathReader reader;
  const auto check = [&reader](std::size_t count) {
    if (count > limits::Formats)
      reader.Refuse("there are more formats than the limit of " + std::to_string(limits::Formats));
  };
  reader.On({L"styleSheet", L"numFmts", L"numFmt"}, [&](const XmlNode& node) {
    const auto number = WholeNumber(xml::AttributeBytes(node, L"numFmtId"));
    if (number) codes[*number] = xml::AttributeBytes(node, L"formatCode");
    check(codes.size());
  });
  reader.On({L"styleSheet", L"cellXfs", L"xf"}, [&](const XmlNode& node) {
    numbers.push_back(WholeNumber(xml::AttributeBytes(node, L"numFmtId")).value_or(0));
    check(numbers.size());
  });
  const std::string path = OrThrow(parts.Fetch(part));
  if (!reader.ReadFrom(path)) parts.RefuseXml(part, "it can't be read");
  formats.Build(codes, numbers);
  return formats;
}

void WorkbookFormats::Build(const std::map<std::uint64_t, std::string>& codes,
                            const std::vector<std::uint64_t>& numbers) {
  std::map<std::uint64_t, std::size_t> places;
  for (const std::uint64_t number : numbers) {
    const auto [place, isNew] = places.emplace(number, m_Codes.size());
    m_Indices.push_back(place->second);
    if (!isNew) continue;
    const auto own = codes.find(number);
    constexpr std::uint64_t firstOwn = 164;  // no number below is for definitions of a file's own
    if (own != codes.end())
      m_Codes.emplace_back(own->second);
    else
      m_Codes.emplace_back(BuiltInFormat(number < firstOwn ? static_cast<int>(number) : 0));
  }
}

const FormatCode& WorkbookFormats::CodeOf(std::uint64_t index) const {
  return index < m_Indices.size() ? m_Codes[m_Indices[index]] : m_General;
}

}  // namespace rastrel::spreadsheet
