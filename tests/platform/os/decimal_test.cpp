#include "rastrel/platform/os/decimal.h"

#include <gtest/gtest.h>

#include <limits>

using rastrel::os::ShortDecimal;
using rastrel::os::ShortestDecimal;

TEST(ShortDecimal, drops_zeros_at_the_end_and_the_point_with_them) {
  EXPECT_EQ(ShortDecimal(12.5, 4), "12.5");
  EXPECT_EQ(ShortDecimal(3, 4), "3");
  EXPECT_EQ(ShortDecimal(1200, 4), "1200");
  EXPECT_EQ(ShortDecimal(1200, 0), "1200");
}

TEST(ShortDecimal, rounds_to_its_places) {
  EXPECT_EQ(ShortDecimal(0.00014, 4), "0.0001");
  EXPECT_EQ(ShortDecimal(-0.00016, 4), "-0.0002");
  EXPECT_EQ(ShortDecimal(2.0 / 3, 2), "0.67");
}

TEST(ShortDecimal, a_number_that_rounds_to_0_has_no_sign) {
  EXPECT_EQ(ShortDecimal(-0.00001, 4), "0");
  EXPECT_EQ(ShortDecimal(-0.0, 4), "0");
}

TEST(ShortDecimal, the_largest_number_has_all_its_digits) {
  EXPECT_EQ(ShortDecimal(std::numeric_limits<double>::max(), 4).size(), 309u);
  EXPECT_EQ(ShortDecimal(std::numeric_limits<double>::infinity(), 4), "inf");
}

TEST(ShortestDecimal, has_no_digit_that_is_not_needed_to_read_the_number_back) {
  EXPECT_EQ(ShortestDecimal(0.1), "0.1");
  EXPECT_EQ(ShortestDecimal(0.1 + 0.2), "0.30000000000000004");  // not the double that 0.3 is
  EXPECT_EQ(ShortestDecimal(3), "3");
  EXPECT_EQ(ShortestDecimal(-0.0), "-0");
}

TEST(ShortestDecimal, takes_an_exponent_where_that_is_shorter) {
  EXPECT_EQ(ShortestDecimal(1e22), "1e+22");
  EXPECT_EQ(ShortestDecimal(12000), "12000");
  // Both ends of the range: sign, 17 digits, point and an exponent of three digits.
  EXPECT_EQ(ShortestDecimal(-std::numeric_limits<double>::max()), "-1.7976931348623157e+308");
  EXPECT_EQ(ShortestDecimal(-std::numeric_limits<double>::denorm_min()), "-5e-324");
}
