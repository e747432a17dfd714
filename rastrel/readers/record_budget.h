#pragma once

#include <cstddef>
#include <string_view>

/// Records have fields of fixed size, and an empty element of six bytes is a record of thousands. A
/// file whose records would take too much is refused.
namespace rastrel::readers {

/// What the records of one file may take together: some 9,000 jobs, or 43,000 files of a car data
/// library.
inline constexpr std::size_t RecordBytesLimit = std::size_t{128} << 20;

/// Counts the records of one file.
class RecordBudget {
 public:
  /// The path is for the report, and outlives the object.
  explicit RecordBudget(std::wstring_view path) : m_Path(path) {}

  /// Counts a record. False if that is too much; it is reported (xml/failure.h) then.
  [[nodiscard]] bool Take(std::size_t bytes);

 private:
  std::wstring_view m_Path;
  std::size_t m_Left = RecordBytesLimit;
};

}  // namespace rastrel::readers
