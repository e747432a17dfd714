#include "cfplane/channels.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace rastrel::planes {
namespace {

using SwapFunction = void (*)(const std::byte*, std::byte*, std::size_t);

void SwapOneByOne(const std::byte* from, std::byte* to, std::size_t pixels) {
  for (; pixels > 0; --pixels, from += 3, to += 3) {
    to[0] = from[2];
    to[1] = from[1];
    to[2] = from[0];
  }
}

#if defined(__x86_64__)
// A shuffle turns five pixels of a block of 16 bytes. The byte after them is stored as well, and
// then again by the next block, so that the last pixels are left to the plain loop.
__attribute__((target("ssse3"))) void SwapByShuffle(const std::byte* from, std::byte* to,
                                                    std::size_t pixels) {
  const __m128i order = _mm_setr_epi8(2, 1, 0, 5, 4, 3, 8, 7, 6, 11, 10, 9, 14, 13, 12, 15);
  for (; pixels >= 6; pixels -= 5, from += 15, to += 15) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_shuffle_epi8(block, order));
  }
  SwapOneByOne(from, to, pixels);
}
#endif

SwapFunction ChooseSwap() {
#if defined(__x86_64__)
  if (__builtin_cpu_supports("ssse3")) return SwapByShuffle;
#endif
  return SwapOneByOne;
}

}  // namespace

void SwapRedAndBlue(const std::byte* from, std::byte* to, std::size_t pixels) {
  static const SwapFunction swap = ChooseSwap();
  swap(from, to, pixels);
}

void TakeChannel(const std::byte* from, std::size_t step, std::byte* to, std::size_t pixels) {
  for (; pixels > 0; --pixels, from += step) *to++ = *from;
}

}  // namespace rastrel::planes
