#include "rastrel/platform/values/compare.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

namespace {

// 0.5 and its multiples are exact, so that a step of 0.5 is the tolerance itself.
constexpr double Tolerance = 0.5;

TEST(DoubleComparisons, values_one_tolerance_apart_are_equal_and_neither_is_less) {
  for (const double other : {3.5, 4.0, 4.5}) {
    EXPECT_TRUE(IsDoubleEqual(4, other, Tolerance)) << other;
    EXPECT_FALSE(IsDoubleLessthan(4, other, Tolerance)) << other;
    EXPECT_FALSE(IsDoubleGreaterthan(4, other, Tolerance)) << other;
  }
}

TEST(DoubleComparisons, values_farther_apart_are_less_or_greater) {
  EXPECT_FALSE(IsDoubleEqual(4, 4.75, Tolerance));
  EXPECT_TRUE(IsDoubleLessthan(4, 4.75, Tolerance));
  EXPECT_FALSE(IsDoubleGreaterthan(4, 4.75, Tolerance));
  EXPECT_TRUE(IsDoubleGreaterthan(4.75, 4, Tolerance));
  EXPECT_FALSE(IsDoubleLessthan(4.75, 4, Tolerance));
}

TEST(DoubleComparisons, exactly_one_holds_of_any_two_finite_values_and_of_infinities) {
  const double infinite = std::numeric_limits<double>::infinity();
  const std::array values{0.0, -0.0, 5.0, 5.01, 4.99, 1e-300, 1e300, -1e300, infinite, -infinite};
  for (const double left : values)
    for (const double right : values)
      EXPECT_EQ(IsDoubleEqual(left, right, 0.01) + IsDoubleLessthan(left, right, 0.01) +
                    IsDoubleGreaterthan(left, right, 0.01),
                1)
          << left << " " << right;
}

TEST(DoubleComparisons, none_holds_of_a_value_that_is_no_number) {
  const double none = std::numeric_limits<double>::quiet_NaN();
  EXPECT_FALSE(IsDoubleEqual(none, none, 0.01));
  EXPECT_FALSE(IsDoubleLessthan(none, 1, 0.01));
  EXPECT_FALSE(IsDoubleGreaterthan(none, 1, 0.01));
}

}  // namespace
