#include "children/coreodalis/lzw_encoder.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "tests/support/literal_lzw.h"

namespace rastrel::odalis {
namespace {

using Bytes = std::vector<std::uint8_t>;

void ExpectReadable(const Bytes& bytes, const char* name) {
  static LzwEncoder encoder;  // one for all, as the strips of a page have
  Bytes coded = {1, 2, 3};    // bytes before stay
  encoder.Encode(bytes, coded);
  ASSERT_EQ(Bytes(coded.begin(), coded.begin() + 3), (Bytes{1, 2, 3}));
  const auto decoded = test::DecodeLzw(Bytes(coded.begin() + 3, coded.end()));
  ASSERT_TRUE(decoded) << name << ", " << bytes.size() << " bytes";
  EXPECT_TRUE(*decoded == bytes) << name << ", " << bytes.size() << " bytes";
}

/// Runs of zeros between other bytes.
Bytes Runs(std::size_t size, unsigned seed, unsigned longest, unsigned values) {
  std::mt19937 random(seed);
  Bytes bytes;
  while (bytes.size() < size) {
    bytes.insert(bytes.end(), random() % longest, 0);
    bytes.push_back(static_cast<std::uint8_t>(random() % values));
  }
  bytes.resize(size);
  return bytes;
}

// Clear, 1, 258 (1 1), 1, end: nine bits each.
TEST(LzwEncoder, codes_are_the_formats) {
  LzwEncoder encoder;
  Bytes coded;
  encoder.Encode(Bytes{1, 1, 1, 1}, coded);
  // 100000000 000000001 100000010 000000001 100000001
  EXPECT_EQ(coded, (Bytes{0x80, 0x00, 0x60, 0x40, 0x18, 0x08}));
}

TEST(LzwEncoder, every_length_can_be_read) {
  for (std::size_t size = 0; size < 700; ++size) {
    ExpectReadable(Bytes(size, 0), "zeros");
    ExpectReadable(Bytes(size, 9), "nines");
    ExpectReadable(Runs(size, 1, 20, 256), "runs");
    ExpectReadable(Runs(size, 2, 1, 256), "noise");
  }
}

// A full table: of noise after 3,836 bytes, of runs later.
TEST(LzwEncoder, the_table_begins_anew_when_it_is_full) {
  for (std::size_t size = 3800; size < 3900; ++size) ExpectReadable(Runs(size, 3, 1, 256), "noise");
  for (const std::size_t size : {7600u, 7700u, 65'535u, 65'536u, 1'000'000u}) {
    ExpectReadable(Runs(size, 4, 1, 256), "noise");
    ExpectReadable(Runs(size, 5, 1, 2), "bits");
    ExpectReadable(Runs(size, 6, 50, 256), "short runs");
    ExpectReadable(Runs(size, 7, 3000, 3), "long runs");
  }
}

// A string of so many zeros for each of 3,836 codes is more than this.
TEST(LzwEncoder, zeros_without_an_end_take_few_codes) {
  const Bytes zeros(5'000'000, 0);
  ExpectReadable(zeros, "zeros");
  LzwEncoder encoder;
  Bytes coded;
  encoder.Encode(zeros, coded);
  EXPECT_LT(coded.size(), 5000u);  // 3,162 strings, one zero longer each, have five million
}

}  // namespace
}  // namespace rastrel::odalis
