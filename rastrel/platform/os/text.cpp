#include "rastrel/platform/os/text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace rastrel::os {
namespace {

constexpr wchar_t Replacement = 0xFFFD;
constexpr std::uint32_t LastCodePoint = 0x10FFFF;
constexpr std::size_t MaximumSequence = 4;  // bytes of one character in UTF-8

constexpr bool IsHighSurrogate(std::uint32_t value) { return value >= 0xD800 && value <= 0xDBFF; }
constexpr bool IsLowSurrogate(std::uint32_t value) { return value >= 0xDC00 && value <= 0xDFFF; }
constexpr bool IsSurrogate(std::uint32_t value) { return value >= 0xD800 && value <= 0xDFFF; }

// Text goes through a block that stays in the processor's cache, so that the target is written once
// and never cleared first.
constexpr std::size_t BlockCharacters = 4096;
// Characters that are looked at together, to find the next ones beyond ASCII. A run of
// ASCII then costs a shift and a count, and no wait for memory.
constexpr std::size_t Stride = 64;
// Characters that one step of the vector code handles, whether they are needed or not.
constexpr std::size_t Step = 16;

// Makes room once for all that is still to come, in proportion to the first block's growth. A
// guess: a later append grows the text all the same.
template <typename Text>
void ReserveByFirstBlock(Text& target, std::size_t produced, std::size_t consumed,
                         std::size_t left) {
  if (left == 0 || consumed == 0) return;
  const std::size_t expected = left / consumed * produced + produced;
  target.reserve(target.size() + produced + expected + expected / 16);
}

#if defined(__SSE2__)

// Bit n is set if byte n is not ASCII.
inline std::uint64_t BeyondAscii(const unsigned char* bytes) {
  std::uint64_t mask = 0;
  for (unsigned part = 0; part < Stride / Step; ++part) {
    const auto* input = reinterpret_cast<const __m128i*>(bytes + part * Step);
    const auto bits = static_cast<unsigned>(_mm_movemask_epi8(_mm_loadu_si128(input)));
    mask |= std::uint64_t{bits} << (part * Step);
  }
  return mask;
}

// Widens 16 bytes as if they were ASCII.
inline void WidenStep(const unsigned char* bytes, wchar_t* wide) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i input = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
  const __m128i low = _mm_unpacklo_epi8(input, zero);
  const __m128i high = _mm_unpackhi_epi8(input, zero);
  auto* output = reinterpret_cast<__m128i*>(wide);
  _mm_storeu_si128(output, _mm_unpacklo_epi16(low, zero));
  _mm_storeu_si128(output + 1, _mm_unpackhi_epi16(low, zero));
  _mm_storeu_si128(output + 2, _mm_unpacklo_epi16(high, zero));
  _mm_storeu_si128(output + 3, _mm_unpackhi_epi16(high, zero));
}

// 16 characters as 16-bit numbers, saturated.
struct Halves {
  __m128i low;
  __m128i high;
};
inline Halves LoadStep(const wchar_t* wide) {
  const auto* input = reinterpret_cast<const __m128i*>(wide);
  return {_mm_packs_epi32(_mm_loadu_si128(input), _mm_loadu_si128(input + 1)),
          _mm_packs_epi32(_mm_loadu_si128(input + 2), _mm_loadu_si128(input + 3))};
}

// Bit n is set if character n is not ASCII.
inline std::uint64_t BeyondAscii(const wchar_t* wide) {
  std::uint64_t mask = 0;
  for (unsigned part = 0; part < Stride / Step; ++part) {
    const Halves halves = LoadStep(wide + part * Step);
    // The unsigned form has the top bit of 128 and more, the signed one that of negative numbers,
    // which a value with its highest bit set has become.
    const __m128i large = _mm_packus_epi16(halves.low, halves.high);
    const __m128i negative = _mm_packs_epi16(halves.low, halves.high);
    const auto bits = static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(large, negative)));
    mask |= std::uint64_t{bits} << (part * Step);
  }
  return mask;
}

// Narrows 16 characters as if they were ASCII.
inline void NarrowStep(const wchar_t* wide, char* bytes) {
  const Halves halves = LoadStep(wide);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), _mm_packus_epi16(halves.low, halves.high));
}

#else

template <typename Character>
inline std::uint64_t BeyondAscii(const Character* text) {
  std::uint64_t mask = 0;
  for (std::size_t index = 0; index < Stride; ++index)
    mask |= std::uint64_t{static_cast<std::uint32_t>(text[index]) >= 0x80} << index;
  return mask;
}

inline void WidenStep(const unsigned char* bytes, wchar_t* wide) {
  for (std::size_t index = 0; index < Step; ++index) wide[index] = bytes[index];
}

inline void NarrowStep(const wchar_t* wide, char* bytes) {
  for (std::size_t index = 0; index < Step; ++index) bytes[index] = static_cast<char>(wide[index]);
}

#endif

// Characters of ASCII from `position` on, in a stride where `mask` marks all others.
inline std::size_t RunLength(std::uint64_t mask, std::size_t position) {
  const std::uint64_t rest = mask >> position;
  return rest != 0 ? static_cast<std::size_t>(std::countr_zero(rest)) : Stride - position;
}

constexpr bool IsContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

// Length of the ill-formed sequence at `bytes`: the longest start of a well-formed one, at least 1.
std::size_t IllFormedLength(const unsigned char* bytes, const unsigned char* end) {
  const unsigned char lead = *bytes;
  if (lead < 0xC2 || lead > 0xF4 || end - bytes < 2) return 1;
  unsigned char lowest = 0x80;
  unsigned char highest = 0xBF;
  if (lead == 0xE0) lowest = 0xA0;
  if (lead == 0xED) highest = 0x9F;
  if (lead == 0xF0) lowest = 0x90;
  if (lead == 0xF4) highest = 0x8F;
  if (bytes[1] < lowest || bytes[1] > highest || lead < 0xE0) return 1;
  if (lead < 0xF0 || end - bytes < 3 || !IsContinuation(bytes[2])) return 2;
  return 3;
}

enum class End { Near, Far };

// Decodes the one sequence at `bytes`, which does not begin with ASCII. The end of the text is far
// if any sequence ends before it.
template <End Distance>
inline const unsigned char* DecodeOne(const unsigned char* bytes, const unsigned char* end,
                                      wchar_t& character) {
  const auto holds = [&](std::ptrdiff_t count) {
    return Distance == End::Far || end - bytes >= count;
  };
  const std::uint32_t lead = bytes[0];
  if (lead >= 0xC2 && lead < 0xE0 && holds(2) && IsContinuation(bytes[1])) {
    character = static_cast<wchar_t>((lead & 0x1F) << 6 | (bytes[1] & 0x3FU));
    return bytes + 2;
  }
  if (lead >= 0xE0 && lead < 0xF0 && holds(3) && IsContinuation(bytes[1]) &&
      IsContinuation(bytes[2])) {
    const std::uint32_t value = (lead & 0x0F) << 12 | (bytes[1] & 0x3FU) << 6 | (bytes[2] & 0x3FU);
    character = static_cast<wchar_t>(value);
    if (value >= 0x800 && !IsSurrogate(value)) return bytes + 3;
  }
  if (lead >= 0xF0 && lead < 0xF5 && holds(4) && IsContinuation(bytes[1]) &&
      IsContinuation(bytes[2]) && IsContinuation(bytes[3])) {
    const std::uint32_t value = (lead & 0x07) << 18 | (bytes[1] & 0x3FU) << 12 |
                                (bytes[2] & 0x3FU) << 6 | (bytes[3] & 0x3FU);
    character = static_cast<wchar_t>(value);
    if (value >= 0x10000 && value <= LastCodePoint) return bytes + 4;
  }
  character = Replacement;
  return bytes + IllFormedLength(bytes, end);
}

// Decodes a stride, and what of a sequence hangs over its end.
inline const unsigned char* DecodeStride(const unsigned char* bytes, const unsigned char* end,
                                         wchar_t*& output) {
  const std::uint64_t mask = BeyondAscii(bytes);
  std::size_t position = 0;
  while (position < Stride) {
    const std::size_t run = RunLength(mask, position);
    for (std::size_t done = 0; done < run; done += Step)
      WidenStep(bytes + position + done, output + done);
    output += run;
    position += run;
    while (position < Stride && (mask >> position & 1) != 0)
      position =
          static_cast<std::size_t>(DecodeOne<End::Far>(bytes + position, end, *output++) - bytes);
  }
  return bytes + position;
}

// Decodes from `bytes` until the block is full or the text is through.
const unsigned char* DecodeBlock(const unsigned char* bytes, const unsigned char* end,
                                 wchar_t* block, std::size_t& count) {
  wchar_t* output = block;
  const wchar_t* full = block + BlockCharacters;
  // The last step of a stride looks beyond it.
  while (end - bytes >= static_cast<std::ptrdiff_t>(Stride + Step) &&
         full - output >= static_cast<std::ptrdiff_t>(Stride + Step))
    bytes = DecodeStride(bytes, end, output);
  // A long rest is left to the next block's strides.
  if (end - bytes >= static_cast<std::ptrdiff_t>(Stride + Step)) full = output;
  while (bytes < end && output < full) {
    if (*bytes < 0x80) {
      *output++ = *bytes++;
    } else {
      bytes = DecodeOne<End::Near>(bytes, end, *output++);
    }
  }
  count = static_cast<std::size_t>(output - block);
  return bytes;
}

inline char* EncodeOne(std::uint32_t value, char* output) {
  const auto put = [output](int index, std::uint32_t byte) {
    output[index] = static_cast<char>(byte);
  };
  if (value < 0x80) {
    put(0, value);
    return output + 1;
  }
  if (value < 0x800) {
    put(0, 0xC0 | value >> 6);
    put(1, 0x80 | (value & 0x3F));
    return output + 2;
  }
  if (value > LastCodePoint || IsSurrogate(value)) value = Replacement;
  if (value < 0x10000) {
    put(0, 0xE0 | value >> 12);
    put(1, 0x80 | (value >> 6 & 0x3F));
    put(2, 0x80 | (value & 0x3F));
    return output + 3;
  }
  put(0, 0xF0 | value >> 18);
  put(1, 0x80 | (value >> 12 & 0x3F));
  put(2, 0x80 | (value >> 6 & 0x3F));
  put(3, 0x80 | (value & 0x3F));
  return output + 4;
}

inline void EncodeStride(const wchar_t* text, char*& output) {
  const std::uint64_t mask = BeyondAscii(text);
  std::size_t position = 0;
  while (position < Stride) {
    const std::size_t run = RunLength(mask, position);
    for (std::size_t done = 0; done < run; done += Step)
      NarrowStep(text + position + done, output + done);
    output += run;
    position += run;
    for (; position < Stride && (mask >> position & 1) != 0; ++position)
      output = EncodeOne(static_cast<std::uint32_t>(text[position]), output);
  }
}

const wchar_t* EncodeBlock(const wchar_t* text, const wchar_t* end, char* block,
                           std::size_t& count) {
  char* output = block;
  const char* const full = block + BlockCharacters;
  while (end - text >= static_cast<std::ptrdiff_t>(Stride + Step) &&
         full - output >= static_cast<std::ptrdiff_t>(MaximumSequence * Stride + Step)) {
    EncodeStride(text, output);
    text += Stride;
  }
  while (text < end && full - output >= static_cast<std::ptrdiff_t>(MaximumSequence))
    output = EncodeOne(static_cast<std::uint32_t>(*text++), output);
  count = static_cast<std::size_t>(output - block);
  return text;
}

// Windows-1252 from 0x80 to 0x9F; all its other bytes are the code points of the same number.
constexpr std::array<wchar_t, 32> AnsiSpecials = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

char AnsiFromCharacter(wchar_t character) {
  const auto value = static_cast<std::uint32_t>(character);
  if (value < 0x80 || (value >= 0xA0 && value <= 0xFF)) return static_cast<char>(value);
  const auto special = std::find(AnsiSpecials.begin(), AnsiSpecials.end(), character);
  if (special == AnsiSpecials.end()) return '?';
  return static_cast<char>(0x80 + (special - AnsiSpecials.begin()));
}

}  // namespace

void AppendWideFromUtf8(std::wstring& target, std::string_view bytes) {
  std::array<wchar_t, BlockCharacters> block;
  const auto* position = reinterpret_cast<const unsigned char*>(bytes.data());
  const auto* const end = position + bytes.size();
  for (bool first = true; position < end; first = false) {
    const auto* const begin = position;
    std::size_t count = 0;
    position = DecodeBlock(position, end, block.data(), count);
    if (first)
      ReserveByFirstBlock(target, count, static_cast<std::size_t>(position - begin),
                          static_cast<std::size_t>(end - position));
    target.append(block.data(), count);
  }
}

std::wstring WideFromUtf8(std::string_view bytes) {
  std::wstring text;
  AppendWideFromUtf8(text, bytes);
  return text;
}

void AppendUtf8FromWide(std::string& target, std::wstring_view text) {
  std::array<char, BlockCharacters> block;
  const wchar_t* position = text.data();
  const wchar_t* const end = position + text.size();
  for (bool first = true; position < end; first = false) {
    const wchar_t* const begin = position;
    std::size_t count = 0;
    position = EncodeBlock(position, end, block.data(), count);
    if (first)
      ReserveByFirstBlock(target, count, static_cast<std::size_t>(position - begin),
                          static_cast<std::size_t>(end - position));
    target.append(block.data(), count);
  }
}

std::string Utf8FromWide(std::wstring_view text) {
  std::string bytes;
  AppendUtf8FromWide(bytes, text);
  return bytes;
}

std::vector<std::uint16_t> Utf16FromWide(std::wstring_view text) {
  std::vector<std::uint16_t> units;
  units.reserve(text.size());
  for (const wchar_t character : text) {
    std::uint32_t value = static_cast<std::uint32_t>(character);
    if (value > LastCodePoint) value = Replacement;
    if (value < 0x10000) {
      units.push_back(static_cast<std::uint16_t>(value));
      continue;
    }
    value -= 0x10000;
    units.push_back(static_cast<std::uint16_t>(0xD800 + (value >> 10)));
    units.push_back(static_cast<std::uint16_t>(0xDC00 + (value & 0x3FF)));
  }
  return units;
}

std::wstring WideFromUtf16(const std::vector<std::uint16_t>& units) {
  std::wstring text;
  text.reserve(units.size());
  for (std::size_t index = 0; index < units.size(); ++index) {
    std::uint32_t value = units[index];
    if (IsHighSurrogate(value) && index + 1 < units.size() && IsLowSurrogate(units[index + 1]))
      value = 0x10000 + ((value - 0xD800) << 10) + (units[++index] - 0xDC00U);
    text.push_back(static_cast<wchar_t>(value));
  }
  return text;
}

std::wstring WideFromAnsi(std::string_view bytes) {
  std::wstring text;
  text.reserve(bytes.size());
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    text.push_back(value >= 0x80 && value < 0xA0 ? AnsiSpecials[value - 0x80U]
                                                 : static_cast<wchar_t>(value));
  }
  return text;
}

std::string Utf8FromUtf8OrAnsi(std::string_view bytes) {
  std::string text = Utf8FromWide(WideFromUtf8(bytes));
  return text == bytes ? text : Utf8FromWide(WideFromAnsi(bytes));
}

std::string AnsiFromWide(std::wstring_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (const wchar_t character : text) bytes.push_back(AnsiFromCharacter(character));
  return bytes;
}

std::wstring LowerAscii(std::wstring_view text) {
  std::wstring lower(text);
  for (wchar_t& character : lower)
    if (character >= L'A' && character <= L'Z') character += L'a' - L'A';
  return lower;
}

}  // namespace rastrel::os
