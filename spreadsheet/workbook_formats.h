#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "spreadsheet/format_code.h"
#include "spreadsheet/parts.h"

namespace rastrel::spreadsheet {

/// The number formats of a workbook's cells, by the index that cells have.
class WorkbookFormats {
 public:
  /// Reads the part of the styles; without one every cell is "General". Throws an Error.
  [[nodiscard]] static WorkbookFormats Read(Parts& parts, const std::string& part);

  /// "General" for an index beyond the last one.
  [[nodiscard]] const FormatCode& CodeOf(std::uint64_t index) const;

 private:
  void Build(const std::map<std::uint64_t, std::string>& codes,
             const std::vector<std::uint64_t>& numbers);

  FormatCode m_General;
  std::vector<FormatCode> m_Codes;     // of the different numbers
  std::vector<std::size_t> m_Indices;  // for each format of cells its place in them
};

}  // namespace rastrel::spreadsheet
