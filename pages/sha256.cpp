#include "pages/sha256.h"

#include <algorithm>
#include <bit>
#include <cstring>

#if defined(__x86_64__)
#include <cpuid.h>
#include <immintrin.h>
#endif

namespace rastrel::pages {
namespace {

using State = std::array<std::uint32_t, 8>;

constexpr std::size_t BlockSize = 64;

alignas(16) constexpr std::array<std::uint32_t, 64> RoundConstants = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

std::uint32_t LoadBigEndian(const std::byte* bytes) {
  std::uint32_t value = 0;
  for (int i = 0; i < 4; ++i) value = (value << 8) | std::to_integer<std::uint32_t>(bytes[i]);
  return value;
}

void AddBlock(State& state, const std::byte* block) {
  std::array<std::uint32_t, 64> words;
  for (std::size_t i = 0; i < 16; ++i) words[i] = LoadBigEndian(block + 4 * i);
  for (std::size_t i = 16; i < 64; ++i) {
    const std::uint32_t early = words[i - 15];
    const std::uint32_t late = words[i - 2];
    words[i] = words[i - 16] + words[i - 7] +
               (std::rotr(early, 7) ^ std::rotr(early, 18) ^ (early >> 3)) +
               (std::rotr(late, 17) ^ std::rotr(late, 19) ^ (late >> 10));
  }
  auto [a, b, c, d, e, f, g, h] = state;
  for (std::size_t i = 0; i < 64; ++i) {
    const std::uint32_t first = h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) +
                                ((e & f) ^ (~e & g)) + RoundConstants[i] + words[i];
    const std::uint32_t second =
        (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
    h = g;
    g = f;
    f = e;
    e = d + first;
    d = c;
    c = b;
    b = a;
    a = first + second;
  }
  const State sums{a, b, c, d, e, f, g, h};
  for (std::size_t i = 0; i < state.size(); ++i) state[i] += sums[i];
}

void AddBlocks(State& state, const std::byte* blocks, std::size_t count) {
  for (; count > 0; --count, blocks += BlockSize) AddBlock(state, blocks);
}

#if defined(__x86_64__)
// The processor's own instructions hash about six times as fast, which keeps the check sum out of
// the way of a page at 300 dots per inch. They hold the state as two vectors, ABEF and CDGH.
__attribute__((target("sha,sse4.1,ssse3"))) void AddBlocksBySha(State& state,
                                                                const std::byte* blocks,
                                                                std::size_t count) {
  const __m128i bigEndian = _mm_set_epi64x(0x0c0d0e0f08090a0bLL, 0x0405060700010203LL);
  __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(state.data()));
  __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(state.data() + 4));
  low = _mm_shuffle_epi32(low, 0xB1);
  high = _mm_shuffle_epi32(high, 0x1B);
  __m128i abef = _mm_alignr_epi8(low, high, 8);
  __m128i cdgh = _mm_blend_epi16(high, low, 0xF0);
  for (; count > 0; --count, blocks += BlockSize) {
    const __m128i abefBefore = abef;
    const __m128i cdghBefore = cdgh;
    __m128i words[4];
    for (int i = 0; i < 4; ++i) {
      words[i] = _mm_shuffle_epi8(
          _mm_loadu_si128(reinterpret_cast<const __m128i*>(blocks + 16 * i)), bigEndian);
    }
#pragma GCC unroll 16
    for (int group = 0; group < 16; ++group) {
      const __m128i present = words[group & 3];
      __m128i sum = _mm_add_epi32(
          present,
          _mm_load_si128(reinterpret_cast<const __m128i*>(RoundConstants.data() + 4 * group)));
      cdgh = _mm_sha256rnds2_epu32(cdgh, abef, sum);
      sum = _mm_shuffle_epi32(sum, 0x0E);
      abef = _mm_sha256rnds2_epu32(abef, cdgh, sum);
      if (group < 12) {
        // The words of four groups on take the place of the present ones.
        const __m128i last = words[(group + 3) & 3];
        const __m128i middle = _mm_alignr_epi8(last, words[(group + 2) & 3], 4);
        const __m128i begun = _mm_sha256msg1_epu32(present, words[(group + 1) & 3]);
        words[group & 3] = _mm_sha256msg2_epu32(_mm_add_epi32(begun, middle), last);
      }
    }
    abef = _mm_add_epi32(abef, abefBefore);
    cdgh = _mm_add_epi32(cdgh, cdghBefore);
  }
  low = _mm_shuffle_epi32(abef, 0x1B);
  high = _mm_shuffle_epi32(cdgh, 0xB1);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(state.data()), _mm_blend_epi16(low, high, 0xF0));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(state.data() + 4), _mm_alignr_epi8(high, low, 8));
}

bool HasShaInstructions() {
  unsigned a = 0;
  unsigned b = 0;
  unsigned c = 0;
  unsigned d = 0;
  return __builtin_cpu_supports("sse4.1") && __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 &&
         (b & (1U << 29)) != 0;
}
#endif

using AddBlocksFunction = void (*)(State&, const std::byte*, std::size_t);

AddBlocksFunction ChooseAddBlocks() {
#if defined(__x86_64__)
  if (HasShaInstructions()) return AddBlocksBySha;
#endif
  return AddBlocks;
}

}  // namespace

Sha256::Sha256()
    : m_State{0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
              0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19} {}

void Sha256::Add(std::span<const std::byte> bytes) {
  static const AddBlocksFunction addBlocks = ChooseAddBlocks();
  m_Length += bytes.size();
  if (m_Filled > 0) {
    const std::size_t taken = std::min(bytes.size(), BlockSize - m_Filled);
    std::copy_n(bytes.begin(), taken, m_Block.begin() + static_cast<std::ptrdiff_t>(m_Filled));
    m_Filled += taken;
    bytes = bytes.subspan(taken);
    if (m_Filled < BlockSize) return;
    addBlocks(m_State, m_Block.data(), 1);
    m_Filled = 0;
  }
  const std::size_t whole = bytes.size() / BlockSize;
  if (whole > 0) addBlocks(m_State, bytes.data(), whole);
  bytes = bytes.subspan(whole * BlockSize);
  std::copy(bytes.begin(), bytes.end(), m_Block.begin());
  m_Filled = bytes.size();
}

std::string Sha256::Finish() {
  const std::uint64_t bits = m_Length * 8;
  std::array<std::byte, 2 * BlockSize> closing{};
  closing[0] = std::byte{0x80};
  const std::size_t padding = (m_Filled < 56 ? 56 : 120) - m_Filled;
  for (std::size_t i = 0; i < 8; ++i) {
    closing[padding + i] = static_cast<std::byte>(bits >> (56 - 8 * i));
  }
  Add(std::span(closing).first(padding + 8));
  std::string text;
  for (const std::uint32_t word : m_State) {
    for (int shift = 28; shift >= 0; shift -= 4) text += "0123456789abcdef"[(word >> shift) & 15];
  }
  return text;
}

}  // namespace rastrel::pages
