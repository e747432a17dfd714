#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/readers/sheet_limits.h"

namespace rastrel::readers {

/// The shared-string table of an Excel package (ECMA-376 Part 1, 18.4): texts by their index, as
/// cells refer to them. All bytes are UTF-8.
///
/// The index counts the texts that are not empty, not the "si" elements: an "si" of rich-text runs
/// alone, or with an empty "t", takes no index, and one with two texts takes two. Jobs that were
/// set up on such tables name their cells by these indices.
class SharedStrings {
 public:
  explicit SharedStrings(const SheetLimits& limits) : m_Limits(limits) {}

  /// Reads a table, whose texts take the indices from 0 on; the later texts of a table read before
  /// stay. A file that can't be read, is no document or has another root than "sst" is
  /// passed over and changes nothing. False only if a limit is passed, which is reported
  /// (xml/failure.h).
  [[nodiscard]] bool Read(std::wstring_view path);

  /// The text of that index, as CleanedValue (cell_value.h) makes it; empty if there is none.
  [[nodiscard]] std::string_view Find(std::int32_t index) const;
  [[nodiscard]] std::size_t Count() const { return m_Places.size(); }
  void Clear();

 private:
  class Reader;
  [[nodiscard]] bool HasRoomFor(std::string_view value, std::size_t count) const;
  [[nodiscard]] std::uint32_t Store(std::string_view value);

  SheetLimits m_Limits;
  std::string m_Texts;                  // each with its length in four bytes in front
  std::vector<std::uint32_t> m_Places;  // in m_Texts
};

}  // namespace rastrel::readers
