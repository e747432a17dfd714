#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "rastrel/xml/node.h"
#include "spreadsheet/parts.h"
#include "spreadsheet/spreadsheet.h"

namespace rastrel::spreadsheet {

/// The shared strings of a workbook, by the index that cells have: one for each `si`, be it empty
/// or of several runs.
class StringTable {
 public:
  /// Reads the part; without one the table is empty. Throws an Error, also beyond
  /// limits::Strings or `maximumBytes`.
  [[nodiscard]] static StringTable Read(Parts& parts, const std::string& part,
                                        std::size_t maximumBytes = limits::StringBytes);

  [[nodiscard]] std::size_t Count() const { return m_Ends.size(); }
  /// REQUIRES: index < Count().
  [[nodiscard]] std::string At(std::size_t index) const {
    const std::size_t begin = index == 0 ? 0 : m_Ends[index - 1];
    return m_Text.substr(begin, m_Ends[index] - begin);
  }

  /// The text of a string element or of its runs, without phonetic hints.
  [[nodiscard]] static std::string TextOf(const XmlNode& element);
  /// With the escapes of characters that XML lacks ("_x000D_") read, and without the carriage
  /// return that some programs put in front of a line feed.
  [[nodiscard]] static std::string Unescaped(std::string_view text);

 private:
  std::string m_Text;
  std::vector<std::uint32_t> m_Ends;
};

}  // namespace rastrel::spreadsheet
