// Tables as text out of any bytes: the rows that are read, written with every value in quotes, are
// read again as they were. The first byte is the separator, or chooses the table's own.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "rastrel/platform/os/text.h"
#include "spreadsheet/separated_text.h"

namespace {

using namespace rastrel::spreadsheet;
using Rows = std::vector<std::vector<std::string>>;

void Check(bool holds) {
  if (!holds) std::abort();
}

class Collector : public RowSink {
 public:
  rastrel::Expected<void> BeginSheet(const SheetInfo& /*sheet*/, std::size_t /*number*/) override {
    return {};
  }
  rastrel::Expected<void> Row(std::uint64_t row, std::vector<std::string>& cells) override {
    Check(row > m_Last && !cells.empty());
    m_Last = row;
    m_Rows.push_back(cells);
    return {};
  }
  [[nodiscard]] const Rows& All() const { return m_Rows; }

 private:
  std::uint64_t m_Last = 0;
  Rows m_Rows;
};

std::string Written(const Rows& rows, char separator) {
  std::string text;
  for (const auto& row : rows) {
    std::string line;
    for (const std::string& cell : row) {
      line += line.empty() ? "\"" : std::string(1, separator) + "\"";
      for (const char one : cell) line += one == '"' ? "\"\"" : std::string(1, one);
      line += '"';
    }
    text += line + "\r\n";
  }
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size == 0) return 0;
  const std::string text = TextOfTable({reinterpret_cast<const char*>(bytes) + 1, size - 1});
  Check(rastrel::os::Utf8FromUtf8OrAnsi(text) == text);
  constexpr std::string_view separators = ",;\t";
  const char separator =
      bytes[0] % 4 < separators.size() ? separators[bytes[0] % 4] : SeparatorOf(text);
  Check(separators.find(separator) != separators.npos);
  Collector rows;
  if (const auto read = ReadSeparatedText(text, separator, rows); !read) {
    Check(!read.Error().why.empty());
    return 0;
  }
  Collector again;
  Check(static_cast<bool>(ReadSeparatedText(Written(rows.All(), separator), separator, again)));
  Check(again.All() == rows.All());
  return 0;
}
