#include "rastrel/conversion/cut/resolution_limit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

namespace rastrel::conversion {
namespace {

// The rule as it is worded, for sizes and resolutions that whole numbers hold: the product of three
// numbers of 32 bits, and a root.
int Worded(double width, double height, int resolution, int below) {
  const auto rows = static_cast<std::uint32_t>(static_cast<std::uint64_t>(resolution * height));
  const auto columns = static_cast<std::uint32_t>(static_cast<std::uint64_t>(resolution * width));
  const std::uint32_t bytes = rows * columns * 3;
  if (bytes <= 0xFFFFFFF) return resolution;
  return static_cast<int>(std::sqrt(268435455.0 / (height * width * 3.0))) - below;
}

// 30,000 by 30,000 pixels are 2,700,000,000 bytes; the root of 268,435,455 / 30,000 is 94.59.
TEST(LimitedResolution, one_hundred_inches_at_300_become_94_or_93) {
  EXPECT_EQ(LimitedResolution(100, 100, 300, 0), 94);
  EXPECT_EQ(LimitedResolution(100, 100, 300, 1), 93);
}

TEST(LimitedResolution, a_resolution_within_the_limit_stays_and_nothing_is_taken_off) {
  EXPECT_EQ(LimitedResolution(8.5, 11, 300, 0), 300);
  EXPECT_EQ(LimitedResolution(8.5, 11, 300, 1), 300);
}

// 268,435,455 bytes are 3 times 89,478,485 = 5 times 17,895,697 pixels.
TEST(LimitedResolution, the_limit_itself_and_one_pixel_more_or_less) {
  EXPECT_EQ(LimitedResolution(17895696, 5, 1, 7), 1);
  EXPECT_EQ(LimitedResolution(17895697, 5, 1, 7), 1);
  EXPECT_EQ(LimitedResolution(17895698, 5, 1, 7), 0 - 7) << "the root is just below 1";
  EXPECT_EQ(LimitedResolution(89478484, 1, 1, 7), 1);
  EXPECT_EQ(LimitedResolution(89478485, 1, 1, 7), 1);
  EXPECT_EQ(LimitedResolution(89478486, 1, 1, 7), 0 - 7);
}

// 4 GiB exactly would be no multiple of 3; 65,536 squared is, wrapped, 0.
TEST(LimitedResolution, bytes_wrap_at_32_bits) {
  EXPECT_EQ(LimitedResolution(65536, 65536, 1, 0), 1) << "wrapped to 0";
  EXPECT_EQ(LimitedResolution(65536, 65537, 1, 0), 1) << "to 3 times 65,536";
  // 4,294,967,296 / 3 is 1,431,655,765.33: one row of that many pixels is 4 GiB less 1 byte.
  EXPECT_EQ(LimitedResolution(1431655765, 1, 1, 0), 0);
  EXPECT_EQ(LimitedResolution(1431655766, 1, 1, 0), 1) << "wrapped to 2";
  // One of the two factors alone is beyond 32 bits.
  EXPECT_EQ(LimitedResolution(4294967296.0 + 10, 1, 1, 0), 1);
}

TEST(LimitedResolution, pixels_are_counted_in_whole_numbers) {
  EXPECT_EQ(LimitedResolution(17895697.9, 5, 1, 7), 1);
  EXPECT_EQ(LimitedResolution(17895697.9, 5.9, 1, 7), 1);
}

TEST(LimitedResolution, agrees_with_the_rule_as_it_is_worded) {
  std::mt19937_64 random(63);
  std::uniform_real_distribution<double> size(0, 400);
  std::uniform_int_distribution<int> resolution(1, 2400);
  int limited = 0;
  for (int round = 0; round < 100'000; ++round) {
    const double width = size(random);
    const double height = size(random);
    const int wanted = resolution(random);
    const int below = round % 2;
    const int got = LimitedResolution(width, height, wanted, below);
    ASSERT_EQ(got, Worded(width, height, wanted, below))
        << width << " x " << height << " at " << wanted;
    if (got != wanted) ++limited;
  }
  EXPECT_GT(limited, 10'000);
  EXPECT_LT(limited, 99'000);
}

TEST(LimitedResolution, no_number_is_undefined) {
  const double infinity = std::numeric_limits<double>::infinity();
  const double none = std::nan("");
  const double largest = std::numeric_limits<double>::max();
  for (const double width : {0.0, -0.0, 1.0, -1.0, 1e-300, -1e9, 1e9, 1e19, -1e19, largest,
                             -largest, infinity, -infinity, none}) {
    for (const double height : {0.0, 1.0, -1.0, 1e-300, 1e9, 1e19, -largest, infinity, none}) {
      for (const int resolution :
           {std::numeric_limits<int>::min(), -1, 0, 1, 300, std::numeric_limits<int>::max()}) {
        const int limited = LimitedResolution(width, height, resolution, 1);
        EXPECT_TRUE(limited == resolution || limited >= -1);
      }
    }
  }
}

TEST(LimitedResolution, a_size_without_a_root_gives_none) {
  // A negative side wraps to a number of pixels that is too large.
  EXPECT_EQ(LimitedResolution(-1, 1, 300, 0), 0);
  EXPECT_EQ(LimitedResolution(-1, 1, 300, 1), -1);
  EXPECT_EQ(LimitedResolution(0, 1, 300, 1), 300);
  EXPECT_EQ(LimitedResolution(1, 1, -300, 0), -300) << "90,000 pixels, as at 300";
}

}  // namespace
}  // namespace rastrel::conversion
