#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace rastrel::os {

/// Reads the bytes of a text in an encoding other than Unicode's, such as windows-1252 or
/// Shift_JIS, and finds the first that are no character of it, with their line and column. One
/// thread.
class CharacterCheck {
 public:
  /// For an encoding by its registered name, in any case. Null if this system does not know it, if
  /// it is one of Unicode's, or if the name holds anything but letters, digits, '.', '_', ':' and
  /// '-'.
  [[nodiscard]] static std::unique_ptr<CharacterCheck> Make(const std::string& encoding);
  ~CharacterCheck();
  CharacterCheck(const CharacterCheck&) = delete;
  CharacterCheck& operator=(const CharacterCheck&) = delete;

  /// Reads the next bytes. Returns how many of them come before the first that begins no character:
  /// all of them if there is none. A character that is not whole yet is held until the next call.
  /// REQUIRES: no call before found one.
  [[nodiscard]] std::size_t Read(std::string_view bytes);

  /// The byte that begins no character. REQUIRES: Read found it.
  [[nodiscard]] unsigned char BadByte() const { return m_BadByte; }
  /// Where the characters read so far end, from 1; columns are characters.
  [[nodiscard]] int Line() const { return m_Line; }
  [[nodiscard]] int Column() const { return m_Column; }

 private:
  struct Converter;
  explicit CharacterCheck(std::unique_ptr<Converter> converter);
  void Count(std::wstring_view characters);

  std::unique_ptr<Converter> m_Converter;
  std::string m_Held;  // the begin of a character
  unsigned char m_BadByte = 0;
  int m_Line = 1;
  int m_Column = 1;
};

}  // namespace rastrel::os
