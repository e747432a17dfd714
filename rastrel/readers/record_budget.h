#pragma once

#include <cstddef>
#include <string_view>

/// Records have fields of fixed size, and an empty element of six bytes makes a record of thousands
/// of bytes. A file whose records would take too much memory is refused.
namespace rastrel::readers {

/// The maximum for all records of one file, in bytes: some 9,000 jobs, or 43,000 files of a car
/// data library.
inline constexpr std::size_t RecordBytesLimit = std::size_t{128} << 20;

/// Counts the records of one file.
class RecordBudget {
 public:
  /// The path is reported, and must outlive the object.
  explicit RecordBudget(std::wstring_view path) : m_Path(path) {}

  /// Counts a record of that size. False if it passes the maximum, which is reported
  /// (xml/failure.h).
  [[nodiscard]] bool Take(std::size_t bytes);

 private:
  std::wstring_view m_Path;
  std::size_t m_Left = RecordBytesLimit;
};

}  // namespace rastrel::readers
