#include "rastrel/platform/os/decimal.h"

#include <gtest/gtest.h>

#include <limits>

using rastrel::os::ShortDecimal;

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
