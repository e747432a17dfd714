#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "rastrel/platform/os/expected.h"

namespace rastrel::cutting {

/// Reads a JSON text (RFC 8259) value by value, for a format whose next value is known: nothing is
/// kept but the value that is asked for, and nothing is passed over. After the first fault every
/// call returns false or nothing, and `Result` says the fault with its line and column. The text
/// belongs to the caller and outlives the reader. Not for several threads.
class JsonReader {
 public:
  /// `name` is the name of the text in failures.
  JsonReader(std::string_view text, std::string name);

  /// An object or an array begins.
  [[nodiscard]] bool BeginObject() { return Begin('{'); }
  [[nodiscard]] bool BeginArray() { return Begin('['); }
  /// Whether the open object has one more member; then its key is read. False at its end. `key` is
  /// valid until the next call.
  [[nodiscard]] bool NextKey(std::string& key);
  /// Whether the open array has one more item, which the caller reads next. False at its end.
  [[nodiscard]] bool NextItem();

  /// A number that is finite.
  [[nodiscard]] double Number();
  /// A whole number between the two.
  [[nodiscard]] int Whole(int least, int greatest);
  [[nodiscard]] bool Flag();
  /// UTF-8 text without control characters, of so many bytes at most.
  [[nodiscard]] std::string Text(std::size_t maximum);

  /// The text ends: nothing but whitespace is left.
  void End();
  /// A fault of the format's own, at the value or key that was read last.
  void Fail(std::string why);
  [[nodiscard]] bool Failed() const { return m_Failed; }
  [[nodiscard]] Expected<void> Result() const;

 private:
  [[nodiscard]] bool Begin(char open);
  [[nodiscard]] bool Next(char close);
  void Skip();
  [[nodiscard]] bool Take(char character);
  [[nodiscard]] char Here() const { return m_At < m_Text.size() ? m_Text[m_At] : '\0'; }
  void FailHere(std::string why);
  void ReadEscape(std::string& text);
  [[nodiscard]] unsigned ReadHex();

  std::string_view m_Text;
  std::string m_Name;
  std::size_t m_At = 0;
  std::size_t m_Value = 0;  // where the value or key begins that was read last
  bool m_First = true;      // the open object or array has no member yet
  bool m_Failed = false;
  Failure m_Failure;
};

}  // namespace rastrel::cutting
