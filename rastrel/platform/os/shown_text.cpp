#include "rastrel/platform/os/shown_text.h"

#include <algorithm>
#include <array>

#include "rastrel/platform/os/hex.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::os {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};

// In order.
constexpr std::array UnsafeRanges{
    Range{0x0000, 0x001F},    // C0
    Range{0x007F, 0x009F},    // DEL and C1
    Range{0x00AD, 0x00AD},    // soft hyphen
    Range{0x034F, 0x034F},    // combining grapheme joiner
    Range{0x061C, 0x061C},    // Arabic letter mark
    Range{0x115F, 0x1160},    // Hangul fillers, which are empty letters
    Range{0x180E, 0x180E},    // Mongolian vowel separator
    Range{0x200B, 0x200B},    // zero width space
    Range{0x200E, 0x200F},    // marks of direction
    Range{0x2028, 0x202E},    // separators; embeddings and overrides of direction
    Range{0x2060, 0x206F},    // word joiner, invisible operators, isolates
    Range{0x3164, 0x3164},    // Hangul filler
    Range{0xFEFF, 0xFEFF},    // byte order mark
    Range{0xFFA0, 0xFFA0},    // halfwidth Hangul filler
    Range{0xFFF9, 0xFFFB},    // interlinear annotation
    Range{0xE0000, 0xE007F},  // tags
};

constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";

void AppendNumber(std::string& target, char32_t character) {
  target += character < 0x80 ? "\\x" : character <= 0xFFFF ? "\\u" : "\\U";
  if (character > 0xFFFF) {
    AppendHex(target, 0);
    AppendHex(target, static_cast<unsigned char>(character >> 16));
  }
  if (character >= 0x80) AppendHex(target, static_cast<unsigned char>(character >> 8));
  AppendHex(target, static_cast<unsigned char>(character));
}

// A line or a text is cleaned once for every message, so plain ASCII is not decoded.
bool IsPlain(std::string_view text) {
  return std::ranges::all_of(text, [](char byte) { return byte >= ' ' && byte < '\x7F'; });
}

bool IsOfLines(std::wstring_view text) {
  return text.starts_with(L'\n') || text.starts_with(L'\t') || text.starts_with(L"\r\n");
}

std::string Cleaned(std::string_view text, bool keepsLines) {
  if (IsPlain(text)) return std::string(text);
  std::string clean;
  clean.reserve(text.size());
  const std::wstring wide = WideFromUtf8(text);
  for (std::wstring_view rest = wide; !rest.empty(); rest.remove_prefix(1)) {
    const auto code = static_cast<char32_t>(rest.front());
    if (IsSafeToShow(code) || (keepsLines && IsOfLines(rest))) {
      AppendUtf8FromWide(clean, rest.substr(0, 1));
    } else {
      AppendNumber(clean, code);
    }
  }
  return clean;
}

// Bytes of the character that a byte begins; 1 for every other byte.
std::size_t LengthOfCharacter(unsigned char first) {
  if (first >= 0xF0 && first <= 0xF4) return 4;
  if (first >= 0xE0) return first <= 0xEF ? 3 : 1;
  return first >= 0xC2 ? 2 : 1;
}

}  // namespace

bool IsSafeToShow(char32_t character) {
  const auto range = std::ranges::lower_bound(UnsafeRanges, character, {}, &Range::last);
  return range == UnsafeRanges.end() || character < range->first;
}

std::string CleanLine(std::string_view text) { return Cleaned(text, false); }

std::string CleanLines(std::string_view text) {
  if (text.starts_with(ByteOrderMark)) text.remove_prefix(ByteOrderMark.size());
  return Cleaned(text, true);
}

std::size_t WholeCharacters(std::string_view text) {
  if (text.ends_with('\r')) return text.size() - 1;
  for (std::size_t back = 1; back <= std::min<std::size_t>(3, text.size()); ++back) {
    const auto byte = static_cast<unsigned char>(text[text.size() - back]);
    if (LengthOfCharacter(byte) > back) return text.size() - back;
    if (byte < 0x80 || byte >= 0xC0) break;
  }
  return text.size();
}

}  // namespace rastrel::os
