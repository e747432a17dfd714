#include "cli/sheet/row_text.h"

#include <algorithm>
#include <utility>

#include "cli/console/json_line.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/hex.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::cli::sheet {
namespace {

constexpr std::size_t PieceSize = 64 * 1024;

}  // namespace

void AppendEscaped(std::string& line, std::string_view text) {
  for (const char letter : text) {
    const auto byte = static_cast<unsigned char>(letter);
    if (letter == '\\') {
      line += "\\\\";
    } else if (letter == '\t') {
      line += "\\t";
    } else if (letter == '\n') {
      line += "\\n";
    } else if (letter == '\r') {
      line += "\\r";
    } else if (byte < 0x20 || byte == 0x7F) {
      line += "\\x";
      os::AppendHex(line, byte);
    } else {
      line += letter;
    }
  }
}

RowText::RowText(std::string path, Form form, bool marks, std::uint64_t maximumBytes)
    : m_Path(std::move(path)),
      m_Form(form),
      m_Marks(marks),
      m_MaximumBytes(maximumBytes),
      m_File(os::CreateForWriting(os::FromNative(m_Path))) {}

Expected<void> RowText::BeginSheet(const spreadsheet::SheetInfo& sheet, std::size_t number) {
  m_Row = 0;
  m_Sheet = sheet.name;
  if (!m_Marks) return {};
  if (m_Form == Form::Json) {
    JsonLine line("sheet");
    line.Add("text", std::string_view(sheet.name));
    line.Add("number", static_cast<std::int64_t>(number));
    m_Text += line.Add("visibility", WordOf(sheet.visibility)).Text();
    return {};
  }
  m_Text += "\\sheet\t";
  AppendEscaped(m_Text, sheet.name);
  m_Text += '\n';
  return {};
}

Expected<void> RowText::Row(std::uint64_t row, std::vector<std::string>& cells) {
  if (m_Form == Form::Json) {
    JsonLine line("row");
    line.Add("sheet", std::string_view(m_Sheet));
    m_Text += line.Add("row", static_cast<std::int64_t>(row)).Add("cells", cells).Text();
  } else {
    m_Text.append(row - m_Row - 1, '\n');
    for (std::size_t column = 0; column < cells.size(); ++column) {
      if (column > 0) m_Text += '\t';
      AppendEscaped(m_Text, cells[column]);
    }
    m_Text += '\n';
  }
  m_Row = row;
  return m_Text.size() > PieceSize ? Flush() : Expected<void>();
}

Expected<void> RowText::Finish() { return Flush(); }

Expected<void> RowText::Flush() {
  if (!m_File) return m_File.Error();
  m_Written += m_Text.size();
  if (m_Written > m_MaximumBytes)
    return FailureOf("the text has more than " + std::to_string(m_MaximumBytes) +
                     " bytes, which is the limit");
  auto written = os::WriteAll(m_File->Get(), m_Text);
  if (!written) return FailureAt(m_Path, written.Error());
  m_Text.clear();
  return written;
}

Expected<void> RowCounter::BeginSheet(const spreadsheet::SheetInfo& sheet, std::size_t number) {
  m_Sheets.push_back({sheet, number, {}});
  return {};
}

Expected<void> RowCounter::Row(std::uint64_t row, std::vector<std::string>& cells) {
  Size& size = m_Sheets.back().size;
  size.rows = row;
  size.columns = std::max<std::uint64_t>(size.columns, cells.size());
  size.cells += static_cast<std::uint64_t>(
      std::ranges::count_if(cells, [](const std::string& cell) { return !cell.empty(); }));
  return {};
}

}  // namespace rastrel::cli::sheet
