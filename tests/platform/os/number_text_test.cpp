// Numbers out of texts, by the rules of the platform's own functions.

#include "rastrel/platform/os/number_text.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <string>

namespace {

using namespace rastrel::os;

constexpr double Infinity = std::numeric_limits<double>::infinity();

double Both(const std::string& text) {
  const double narrow = DoubleFromText(text);
  const double wide = DoubleFromText(std::wstring(text.begin(), text.end()));
  EXPECT_EQ(narrow, wide) << text;
  EXPECT_EQ(std::signbit(narrow), std::signbit(wide)) << text;
  return narrow;
}

std::int32_t Whole(const std::string& text) {
  const std::int32_t narrow = Int32FromText(text);
  EXPECT_EQ(narrow, Int32FromText(std::wstring(text.begin(), text.end()))) << text;
  return narrow;
}

TEST(NumberText, a_double_is_the_longest_beginning_that_is_a_number) {
  EXPECT_EQ(1.0, Both("1"));
  EXPECT_EQ(1.5, Both("1.5mm"));
  EXPECT_EQ(1.0, Both("1."));
  EXPECT_EQ(0.5, Both(".5"));
  EXPECT_EQ(1.2, Both("1.2.3"));
  EXPECT_EQ(1.0, Both("1,5"));
  EXPECT_EQ(4.5, Both("4.5,6"));
  EXPECT_EQ(1.0, Both("1 000"));
  EXPECT_EQ(0.0, Both("0x10"));
}

TEST(NumberText, an_exponent_counts_only_if_it_is_whole) {
  EXPECT_EQ(1500.0, Both("1.5e3"));
  EXPECT_EQ(1500.0, Both("1.5E+3"));
  EXPECT_EQ(0.0015, Both("1.5e-3"));
  EXPECT_EQ(1.5, Both("1.5e"));
  EXPECT_EQ(1.5, Both("1.5e+"));
  EXPECT_EQ(1.5, Both("1.5e x"));
  EXPECT_EQ(0.0, Both("e5"));
}

TEST(NumberText, white_space_and_one_sign_may_stand_in_front) {
  EXPECT_EQ(-2.5, Both(" \t\n\v\f\r-2.5"));
  EXPECT_EQ(2.5, Both("+2.5"));
  EXPECT_EQ(0.0, Both("--2.5"));
  EXPECT_EQ(0.0, Both("+-2.5"));
  EXPECT_EQ(0.0, Both("- 2.5"));
  EXPECT_EQ(-7, Whole(" \t\n\v\f\r-7"));
  EXPECT_EQ(7, Whole("+7"));
  EXPECT_EQ(0, Whole("--7"));
  EXPECT_EQ(0, Whole("+-7"));
  EXPECT_EQ(0, Whole("- 7"));
}

TEST(NumberText, what_is_no_number_is_0) {
  for (const char* const text :
       {"", " ", "-", "+", ".", "-.", ".e5", "wide", "inf", "nan", "infinity", "NAN", "-inf"}) {
    EXPECT_EQ(0.0, Both(text)) << text;
    EXPECT_EQ(0, Whole(text)) << text;
  }
}

TEST(NumberText, a_double_out_of_range_is_infinite_or_0) {
  EXPECT_EQ(Infinity, Both("1e309"));
  EXPECT_EQ(-Infinity, Both("-1e309"));
  EXPECT_EQ(Infinity, Both("1e999999999999999999999"));
  EXPECT_EQ(0.0, Both("1e-400"));
  EXPECT_EQ(0.0, Both("-1e-999999999999999999999"));
  EXPECT_EQ(Infinity, Both("1" + std::string(400, '0')));
  EXPECT_EQ(0.0, Both("0." + std::string(400, '0') + "1"));
  EXPECT_EQ(Infinity, Both("0." + std::string(400, '0') + "1e800"));
  EXPECT_EQ(0.0, Both("1" + std::string(400, '0') + "e-800"));
  EXPECT_EQ(std::numeric_limits<double>::max(), Both("1.7976931348623157e308"));
  EXPECT_EQ(5e-324, Both("5e-324"));
  EXPECT_EQ(1e100, Both("1" + std::string(400, '0') + "e-300"));
}

TEST(NumberText, the_locale_has_no_say) {
  if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr) std::setlocale(LC_ALL, "C.UTF-8");
  EXPECT_EQ(1.5, Both("1.5"));
  EXPECT_EQ(1.0, Both("1,5"));
  std::setlocale(LC_ALL, "C");
}

TEST(NumberText, whole_numbers_stop_at_the_largest_and_smallest) {
  EXPECT_EQ(12, Whole("12.9"));
  EXPECT_EQ(12, Whole("12e3"));
  EXPECT_EQ(2147483646, Whole("2147483646"));
  EXPECT_EQ(2147483647, Whole("2147483647"));
  EXPECT_EQ(2147483647, Whole("2147483648"));
  EXPECT_EQ(2147483647, Whole("99999999999999999999999999"));
  EXPECT_EQ(-2147483647, Whole("-2147483647"));
  EXPECT_EQ(-2147483647 - 1, Whole("-2147483648"));
  EXPECT_EQ(-2147483647 - 1, Whole("-2147483649"));
  EXPECT_EQ(-2147483647 - 1, Whole("-99999999999999999999999999"));
}

TEST(NumberText, so_do_long_ones) {
  EXPECT_EQ(9223372036854775806, Int64FromText("9223372036854775806"));
  EXPECT_EQ(9223372036854775807, Int64FromText(L"9223372036854775807"));
  EXPECT_EQ(9223372036854775807, Int64FromText("9223372036854775808"));
  EXPECT_EQ(-9223372036854775807 - 1, Int64FromText("-9223372036854775808"));
  EXPECT_EQ(-9223372036854775807 - 1, Int64FromText(L"-9223372036854775809"));
}

TEST(NumberText, digits_of_other_scripts_are_none) {
  EXPECT_EQ(0, Int32FromText(L"\u0661\u0662"));
  EXPECT_EQ(0.0, DoubleFromText(L"\uFF11"));
  EXPECT_EQ(1.0, DoubleFromText(L"1\uFF11"));
}

}  // namespace
