#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "rastrel/readers/sheet_text.h"
#include "rastrel/readers/text_file.h"

namespace rastrel::readers {

/// A text file (text_file.h) that takes a text piece by piece and holds it without the whitespace
/// at both of its ends. The file is made when the first other byte arrives, and whitespace is held
/// back until more follows. One thread.
class TrimmedText {
 public:
  /// Names the file. Under an empty name nothing can be written.
  explicit TrimmedText(std::wstring_view name) : m_Name(name) {}

  /// Appends bytes of UTF-8.
  void Append(std::string_view bytes);
  /// Appends the same byte of whitespace `count` times.
  void AppendWhitespace(std::size_t count, char byte);
  /// Ends the text. True if there was one and its file holds all of it.
  [[nodiscard]] bool Close();

 private:
  void Write(std::string_view bytes);

  std::wstring m_Name;
  std::optional<TextFile> m_File;  // once there is something to write
  SheetText m_HeldBack{SIZE_MAX};  // whitespace after the bytes written
};

}  // namespace rastrel::readers
