#pragma once

#include <cstdint>
#include <string>

/// The fields of a TIFF page (TIFF 6.0, section 2), in a file whose numbers have the least
/// significant byte first.
namespace rastrel::render {

/// The type of a field's values.
enum class TiffType : std::uint16_t { Ascii = 2, Short = 3, Long = 4, Rational = 5 };

/// Appends a number of so many bytes, up to 8.
void AppendTiffNumber(std::string& bytes, std::uint64_t value, int size);

/// Appends a rational number of 8 bytes, in ten-thousandths; as large a one as fits, if need be.
void AppendTiffRational(std::string& bytes, double value);

/// A page's directory, which is made field by field, in the order of their tags:
///
///     +---------+---------------------------------------+-----+-----------------+
///     | count   | tag     | type    | number  | value   | ... | place of the    |
///     | 2 bytes | 2 bytes | 2 bytes | 4 bytes | 4 bytes |     | next: 4 bytes   |
///     +---------+---------------------------------------+-----+-----------------+
///
/// The value is the place of the values if they take more than 4 bytes.
class TiffFields {
 public:
  void Short(std::uint16_t tag, std::uint16_t value) { Add(tag, TiffType::Short, 1, value); }
  void Long(std::uint16_t tag, std::uint32_t value) { Add(tag, TiffType::Long, 1, value); }
  /// `value` is as it lies in the field: several short values, or a place in the file.
  void Add(std::uint16_t tag, TiffType type, std::uint32_t number, std::uint32_t value);

  /// The directory. `next` is the place of the next page's; 0: it is the last.
  [[nodiscard]] std::string Bytes(std::uint32_t next) const;
  /// The bytes of a directory of so many fields.
  [[nodiscard]] static constexpr std::uint32_t Size(std::uint16_t count) {
    return 2 + std::uint32_t{count} * 12 + 4;
  }

 private:
  std::uint16_t m_Count = 0;
  std::string m_Fields;
};

}  // namespace rastrel::render
