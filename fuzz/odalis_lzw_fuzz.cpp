// The LZW encoder against any bytes, and against bytes with runs made of them: a literal reader of
// the format gets the same bytes back.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "children/coreodalis/lzw_encoder.h"
#include "tests/support/literal_lzw.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t MaximumBytes = 1 << 16;  // as a strip has

void Check(const Bytes& bytes) {
  static rastrel::odalis::LzwEncoder encoder;
  Bytes coded;
  encoder.Encode(bytes, coded);
  if (rastrel::test::DecodeLzw(coded) != bytes) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  Check(Bytes(bytes, bytes + size));
  // Pairs of a byte and the length of its run, zeros being the longest.
  Bytes runs;
  for (std::size_t i = 0; i + 1 < size && runs.size() < MaximumBytes; i += 2) {
    runs.insert(runs.end(), bytes[i + 1] * (bytes[i] == 0 ? 64u : 1u), bytes[i]);
  }
  Check(runs);
  return 0;
}
