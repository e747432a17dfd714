#include "rastrel/platform/os/decimal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <random>
#include <string>

using rastrel::os::AppendShortDecimal;
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
  EXPECT_EQ(ShortDecimal(-0.49, 0), "0");
  EXPECT_EQ(ShortDecimal(-0.49999999999999983, 0), "0");
}

TEST(ShortDecimal, the_largest_number_has_all_its_digits) {
  EXPECT_EQ(ShortDecimal(std::numeric_limits<double>::max(), 4).size(), 309u);
  EXPECT_EQ(ShortDecimal(std::numeric_limits<double>::infinity(), 4), "inf");
}

// The standard library's correctly rounded digits, without the zeros at their end.
std::string LiteralDecimal(double value, int places) {
  std::array<char, 400> digits;
  const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                     std::chars_format::fixed, places);
  std::string text(digits.data(), written.ptr);
  if (text.find('.') == text.npos) return text == "-0" ? "0" : text;
  while (text.back() == '0') text.pop_back();
  if (text.back() == '.') text.pop_back();
  return text == "-0" ? "0" : text;
}

TEST(ShortDecimal, is_the_correctly_rounded_one_of_any_number) {
  std::mt19937_64 random(7);
  std::uniform_real_distribution<double> exponents(-12, 14);
  for (int i = 0; i < 200000; ++i) {
    const int places = static_cast<int>(random() % 10);
    double value = std::pow(10.0, exponents(random)) * (random() % 2 == 0 ? 1 : -1);
    // As many are near the middle between two roundings, or at it as far as a double can be.
    if (i % 2 == 0) {
      const double power = std::pow(10.0, places);
      value = (std::floor(std::fmod(value * power, 1e9)) + 0.5) / power;
      for (auto steps = random() % 4; steps > 0; --steps) value = std::nextafter(value, 0);
    }
    ASSERT_EQ(ShortDecimal(value, places), LiteralDecimal(value, places)) << value << " " << places;
  }
}

TEST(ShortDecimal, is_right_on_both_sides_of_the_largest_that_is_written_quickly) {
  for (const double value : {214748.3646, 214748.3647, 214748.36475, 214748.3648, 214748.3649,
                             2147483647.0, 2147483648.0, 2147483649.0}) {
    for (int places = 0; places < 8; ++places) {
      EXPECT_EQ(ShortDecimal(value, places), LiteralDecimal(value, places)) << places;
      EXPECT_EQ(ShortDecimal(-value, places), LiteralDecimal(-value, places)) << places;
    }
  }
}

TEST(ShortDecimal, is_appended_to_what_stands) {
  std::string text = "x ";
  AppendShortDecimal(text, -0.25, 4);
  AppendShortDecimal(text, std::numeric_limits<double>::quiet_NaN(), 4);
  EXPECT_EQ(text, "x -0.25nan");
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
