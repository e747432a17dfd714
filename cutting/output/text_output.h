#pragma once

#include <array>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

namespace rastrel::cutting {

/// A long text that is made of small pieces. They are gathered in a buffer first, since a string
/// looks at its length and capacity for each.
class TextOutput {
 public:
  /// Makes room for a text of so many bytes.
  void Reserve(std::size_t bytes) { m_Text.reserve(bytes); }

  TextOutput& Add(char byte) {
    Room(1);
    m_Buffer[m_Used++] = byte;
    return *this;
  }

  TextOutput& Add(std::string_view text) {
    if (text.size() > MaximumPiece) {
      Flush();
      m_Text.append(text);
      return *this;
    }
    Room(text.size());
    std::memcpy(m_Buffer.data() + m_Used, text.data(), text.size());
    m_Used += text.size();
    return *this;
  }

  template <std::integral Integer>
  TextOutput& AddInteger(Integer value) {
    Room(MaximumPiece);
    char* const begin = m_Buffer.data() + m_Used;
    m_Used +=
        static_cast<std::size_t>(std::to_chars(begin, begin + MaximumPiece, value).ptr - begin);
    return *this;
  }

  /// Rounded to at most `places` decimals, 0 to 6, without zeros at the end: "12.5", "-3". `value`
  /// is less than 1e12 away from 0.
  TextOutput& AddDecimal(double value, int places);

  /// Bytes so far.
  [[nodiscard]] std::size_t Size() const { return m_Text.size() + m_Used; }

  /// The text. The object is empty then.
  [[nodiscard]] std::string Take() {
    Flush();
    return std::exchange(m_Text, {});
  }

 private:
  static constexpr std::size_t MaximumPiece = 64;

  void Room(std::size_t bytes) {
    if (m_Buffer.size() - m_Used < bytes) Flush();
  }
  void Flush() {
    m_Text.append(m_Buffer.data(), m_Used);
    m_Used = 0;
  }

  std::string m_Text;
  std::array<char, 8192> m_Buffer;
  std::size_t m_Used = 0;
};

}  // namespace rastrel::cutting
