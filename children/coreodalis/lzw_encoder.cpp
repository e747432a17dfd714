#include "children/coreodalis/lzw_encoder.h"

#include <algorithm>
#include <cstring>

namespace rastrel::odalis {
namespace {

constexpr std::uint32_t ClearCode = 256;
constexpr std::uint32_t EndCode = 257;
constexpr std::uint32_t FirstCode = 258;
/// Readers know a new string one code later than the writer, and their table ends at 4,095.
constexpr std::uint32_t LastCode = 4094;
constexpr unsigned LeastWidth = 9;
constexpr unsigned CodeBits = 12;
constexpr std::uint32_t CodeMask = (1u << CodeBits) - 1;

/// The number of zeros at the front, `limit` at most.
std::size_t CountZeros(const std::uint8_t* bytes, std::size_t limit) {
  std::size_t count = 0;
  for (std::uint64_t eight = 0; count + 8 <= limit; count += 8) {
    std::memcpy(&eight, bytes + count, 8);
    if (eight != 0) break;
  }
  while (count < limit && bytes[count] == 0) ++count;
  return count;
}

}  // namespace

/// Codes on their way into bytes.
struct LzwEncoder::Output {
  std::uint8_t* at;
  std::uint64_t bits = 0;  ///< the lowest `held` are not written yet
  unsigned held = 0;
  unsigned width = LeastWidth;

  void Put(std::uint32_t code) {
    bits = bits << width | code;
    held += width;
    while (held >= 8) {
      held -= 8;
      *at++ = static_cast<std::uint8_t>(bits >> held);
    }
  }
  void PutRest() {
    if (held > 0) *at++ = static_cast<std::uint8_t>(bits << (8 - held));
  }
};

void LzwEncoder::Clear(Output& output) {
  output.Put(ClearCode);
  output.width = LeastWidth;
  m_Strings.fill(0);
  m_Zeros[1] = 0;
  m_LongestZeros = 1;
  m_NextCode = FirstCode;
}

/// The place of a string, or the free one that it would have. Less than half of them are taken.
std::uint32_t* LzwEncoder::Find(std::uint32_t key) {
  std::uint32_t at = (key * 0x9E3779B1u) >> (32 - TableBits);
  while (m_Strings[at] != 0 && m_Strings[at] >> CodeBits != key) {
    at = (at + 1) & ((1u << TableBits) - 1);
  }
  return &m_Strings[at];
}

void LzwEncoder::Add(std::uint32_t prefix, std::uint8_t next, std::uint32_t* place,
                     Output& output) {
  *place = (prefix << 8 | next) << CodeBits | m_NextCode;
  if (next == 0 && prefix == m_Zeros[m_LongestZeros]) {
    m_Zeros[++m_LongestZeros] = static_cast<std::uint16_t>(m_NextCode);
  }
  CountString(output);
}

void LzwEncoder::CountString(Output& output) {
  ++m_NextCode;
  if (m_NextCode == LastCode) return Clear(output);
  if (m_NextCode >> output.width != 0) ++output.width;
}

void LzwEncoder::Encode(std::span<const std::uint8_t> bytes, std::vector<std::uint8_t>& to) {
  const std::size_t before = to.size();
  // At worst every byte has a code of 12 bits; a clear code comes with every few thousand.
  to.resize(before + bytes.size() + bytes.size() / 2 + bytes.size() / 1024 + 16);
  Output output{to.data() + before};
  Clear(output);
  const std::uint8_t* at = bytes.data();
  const std::uint8_t* const end = at + bytes.size();
  while (at != end) {
    std::uint32_t code = *at;
    std::size_t length = 1;
    if (code == 0) {
      length = CountZeros(at, std::min(m_LongestZeros, static_cast<std::size_t>(end - at)));
      code = m_Zeros[length];
    }
    at += length;
    std::uint32_t* place = nullptr;
    for (; at != end; ++at) {
      place = Find(code << 8 | *at);
      if (*place == 0) break;
      code = *place & CodeMask;
    }
    output.Put(code);
    if (at != end) Add(code, *at, place, output);
  }
  // The reader learns one more string before it reads the end code.
  if (!bytes.empty()) CountString(output);
  output.Put(EndCode);
  output.PutRest();
  to.resize(static_cast<std::size_t>(output.at - to.data()));
}

}  // namespace rastrel::odalis
