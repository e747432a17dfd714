#include "rastrel/platform/os/byte_search.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace rastrel::os {
namespace {

namespace portable {

const char* LineEnd(const char* begin, const char* end) {
  return std::find_if(begin, end, IsLineEnd);
}

const char* LastLineEnd(const char* begin, const char* end) {
  for (const char* place = end; place > begin;)
    if (IsLineEnd(*--place)) return place;
  return end;
}

const char* Unlike(const char* begin, const char* end, char byte) {
  return std::find_if(begin, end, [byte](char one) { return one != byte; });
}

const char* Pair(const char* begin, const char* end, char lead, char first, char second) {
  while (end - begin >= 2) {
    const void* const found = std::memchr(begin, lead, static_cast<std::size_t>(end - begin - 1));
    if (found == nullptr) return end;
    begin = static_cast<const char*>(found);
    if (begin[1] == first || begin[1] == second) return begin;
    ++begin;
  }
  return end;
}

constexpr bool IsReturn(char byte) { return byte == '\n' || byte == '\r'; }

bool IsStop(const char* at, char mark, const bool (&letters)[256]) {
  if (*at == mark && at[1] == mark && letters[static_cast<unsigned char>(at[2])]) return true;
  if (!IsLineEnd(*at) || at[1] == mark) return false;
  return !IsReturn(at[1]) || IsReturn(at[2]);
}

const char* UnlikeMarkedLines(const char* begin, const char* end, char mark,
                              const bool (&letters)[256]) {
  const char* lastEnd = begin;
  for (const char* place = begin; end - place > 2; ++place) {
    if (IsStop(place, mark, letters)) return place;
    if (IsLineEnd(*place)) lastEnd = place;
    if (place - lastEnd >= PlainStretch) return lastEnd;
  }
  return std::max(begin, end - 2);
}

}  // namespace portable

#if defined(__x86_64__)

namespace sse2 {
#define RASTREL_TARGET
using Block = __m128i;
constexpr std::ptrdiff_t Width = 16;
inline Block Load(const char* place) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(place));
}
inline Block Fill(char byte) { return _mm_set1_epi8(byte); }
inline Block Equal(Block one, Block other) { return _mm_cmpeq_epi8(one, other); }
inline Block Or(Block one, Block other) { return _mm_or_si128(one, other); }
inline Block And(Block one, Block other) { return _mm_and_si128(one, other); }
inline Block AndNot(Block one, Block other) { return _mm_andnot_si128(one, other); }
inline std::uint32_t Bits(Block block) {
  return static_cast<std::uint32_t>(_mm_movemask_epi8(block));
}
inline Block LineEnds(Block block) {
  return Or(Equal(block, Fill('\0')), Or(Equal(block, Fill('\r')), Equal(block, Fill('\n'))));
}
#include "rastrel/platform/os/byte_search_kernel.inc"
#undef RASTREL_TARGET
}  // namespace sse2

namespace avx2 {
#define RASTREL_TARGET __attribute__((target("avx2")))
using Block = __m256i;
constexpr std::ptrdiff_t Width = 32;
RASTREL_TARGET inline Block Load(const char* place) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(place));
}
RASTREL_TARGET inline Block Fill(char byte) { return _mm256_set1_epi8(byte); }
RASTREL_TARGET inline Block Equal(Block one, Block other) { return _mm256_cmpeq_epi8(one, other); }
RASTREL_TARGET inline Block Or(Block one, Block other) { return _mm256_or_si256(one, other); }
RASTREL_TARGET inline Block And(Block one, Block other) { return _mm256_and_si256(one, other); }
RASTREL_TARGET inline Block AndNot(Block one, Block other) {
  return _mm256_andnot_si256(one, other);
}
RASTREL_TARGET inline std::uint32_t Bits(Block block) {
  return static_cast<std::uint32_t>(_mm256_movemask_epi8(block));
}
RASTREL_TARGET inline Block LineEnds(Block block) {
  // A shuffle looks each byte up by its low four bits: only CR, LF and zero find themselves. Bytes
  // from 0x80 on find zero.
  const Block table = _mm256_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, '\n', 0, 0, '\r', 0, 0,  //
                                       0, 0, 0, 0, 0, 0, 0, 0, 0, 0, '\n', 0, 0, '\r', 0, 0);
  return Equal(_mm256_shuffle_epi8(table, block), block);
}
#include "rastrel/platform/os/byte_search_kernel.inc"
#undef RASTREL_TARGET
}  // namespace avx2

#endif

constexpr ByteSearch Sets[] = {
    {"portable", portable::LineEnd, portable::LastLineEnd, portable::Unlike, portable::Pair,
     portable::UnlikeMarkedLines},
#if defined(__x86_64__)
    {"sse2", sse2::LineEnd, sse2::LastLineEnd, sse2::Unlike, sse2::Pair, sse2::UnlikeMarkedLines},
    {"avx2", avx2::LineEnd, avx2::LastLineEnd, avx2::Unlike, avx2::Pair, avx2::UnlikeMarkedLines},
#endif
};

std::size_t UsableSets() {
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx2") == 0) return std::size(Sets) - 1;
#endif
  return std::size(Sets);
}

}  // namespace

std::span<const ByteSearch> AllSearches() {
  static const std::size_t usable = UsableSets();
  return {Sets, usable};
}

const ByteSearch& Search() { return AllSearches().back(); }

}  // namespace rastrel::os
