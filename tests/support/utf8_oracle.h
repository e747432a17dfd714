#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace rastrel::test {

/// Decodes UTF-8 straight from the Unicode Standard's table of well-formed byte sequences (table
/// 3-7) and its practice for ill-formed ones: each maximal start of a well-formed sequence, or else
/// one byte, becomes U+FFFD. Slow, and with nothing in common with the library's decoder.
inline std::wstring DecodeUtf8Literally(std::string_view bytes) {
  struct Range {
    unsigned low, high;
  };
  static const std::vector<std::vector<Range>> rows = {
      {{0x00, 0x7F}},
      {{0xC2, 0xDF}, {0x80, 0xBF}},
      {{0xE0, 0xE0}, {0xA0, 0xBF}, {0x80, 0xBF}},
      {{0xE1, 0xEC}, {0x80, 0xBF}, {0x80, 0xBF}},
      {{0xED, 0xED}, {0x80, 0x9F}, {0x80, 0xBF}},
      {{0xEE, 0xEF}, {0x80, 0xBF}, {0x80, 0xBF}},
      {{0xF0, 0xF0}, {0x90, 0xBF}, {0x80, 0xBF}, {0x80, 0xBF}},
      {{0xF1, 0xF3}, {0x80, 0xBF}, {0x80, 0xBF}, {0x80, 0xBF}},
      {{0xF4, 0xF4}, {0x80, 0x8F}, {0x80, 0xBF}, {0x80, 0xBF}},
  };
  std::wstring text;
  std::size_t position = 0;
  while (position < bytes.size()) {
    std::size_t longest = 0;
    const std::vector<Range>* whole = nullptr;
    for (const auto& row : rows) {
      std::size_t matched = 0;
      while (matched < row.size() && position + matched < bytes.size()) {
        const unsigned byte = static_cast<unsigned char>(bytes[position + matched]);
        if (byte < row[matched].low || byte > row[matched].high) break;
        ++matched;
      }
      if (matched > longest) longest = matched;
      if (matched == row.size()) whole = &row;
    }
    if (whole == nullptr) {
      text += static_cast<wchar_t>(0xFFFD);
      position += longest == 0 ? 1 : longest;
      continue;
    }
    static constexpr std::array<unsigned, 5> leadMasks = {0, 0x7F, 0x1F, 0x0F, 0x07};
    unsigned value = static_cast<unsigned char>(bytes[position]) & leadMasks[whole->size()];
    for (std::size_t index = 1; index < whole->size(); ++index)
      value = value * 64 + (static_cast<unsigned char>(bytes[position + index]) - 0x80);
    text += static_cast<wchar_t>(value);
    position += whole->size();
  }
  return text;
}

}  // namespace rastrel::test
