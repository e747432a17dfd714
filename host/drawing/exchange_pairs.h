#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace rastrel::drawing {

/// The pairs of lines that a DXF file is made of: a group code, which says the meaning of the
/// value, and the value.
///
///     0         a new entity,
///     LINE      of that kind
///     8
///     Layer 1   its layer
///     10
///     2.5       x of its first point
class ExchangePairs {
 public:
  explicit ExchangePairs(std::string_view file) : m_File(file) {}

  /// Goes to the next pair. False at the end, also of a file whose code is no number.
  bool Next();
  [[nodiscard]] int Code() const { return m_Code; }
  /// Without whitespace at both ends.
  [[nodiscard]] std::string_view Value() const { return m_Value; }
  /// The value as a number; 0 for one that is none, or not finite.
  [[nodiscard]] double Number() const;
  [[nodiscard]] int Int() const;
  /// True for the pair that begins an entity, a section or another part of that name.
  [[nodiscard]] bool Begins(std::string_view name) const { return m_Code == 0 && m_Value == name; }

  /// The place of the present pair, and going back to one, so that `Next` reads that pair again.
  [[nodiscard]] std::size_t Place() const { return m_Begin; }
  void GoTo(std::size_t place) { m_Next = place; }

 private:
  [[nodiscard]] std::optional<std::string_view> Line();

  std::string_view m_File;
  std::size_t m_Begin = 0;
  std::size_t m_Next = 0;
  int m_Code = -1;
  std::string_view m_Value;
};

}  // namespace rastrel::drawing
