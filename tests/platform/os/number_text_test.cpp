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
  EXPECT_EQ(Both("1"), 1.0);
  EXPECT_EQ(Both("1.5mm"), 1.5);
  EXPECT_EQ(Both("1."), 1.0);
  EXPECT_EQ(Both(".5"), 0.5);
  EXPECT_EQ(Both("1.2.3"), 1.2);
  EXPECT_EQ(Both("1,5"), 1.0);
  EXPECT_EQ(Both("4.5,6"), 4.5);
  EXPECT_EQ(Both("1 000"), 1.0);
  EXPECT_EQ(Both("0x10"), 0.0);
}

TEST(NumberText, an_exponent_counts_only_if_it_is_whole) {
  EXPECT_EQ(Both("1.5e3"), 1500.0);
  EXPECT_EQ(Both("1.5E+3"), 1500.0);
  EXPECT_EQ(Both("1.5e-3"), 0.0015);
  EXPECT_EQ(Both("1.5e"), 1.5);
  EXPECT_EQ(Both("1.5e+"), 1.5);
  EXPECT_EQ(Both("1.5e x"), 1.5);
  EXPECT_EQ(Both("e5"), 0.0);
}

TEST(NumberText, white_space_and_one_sign_may_stand_in_front) {
  EXPECT_EQ(Both(" \t\n\v\f\r-2.5"), -2.5);
  EXPECT_EQ(Both("+2.5"), 2.5);
  EXPECT_EQ(Both("--2.5"), 0.0);
  EXPECT_EQ(Both("+-2.5"), 0.0);
  EXPECT_EQ(Both("- 2.5"), 0.0);
  EXPECT_EQ(Whole(" \t\n\v\f\r-7"), -7);
  EXPECT_EQ(Whole("+7"), 7);
  EXPECT_EQ(Whole("--7"), 0);
  EXPECT_EQ(Whole("+-7"), 0);
  EXPECT_EQ(Whole("- 7"), 0);
}

TEST(NumberText, a_text_that_is_no_number_is_0) {
  for (const char* const text :
       {"", " ", "-", "+", ".", "-.", ".e5", "wide", "inf", "nan", "infinity", "NAN", "-inf"}) {
    EXPECT_EQ(Both(text), 0.0) << text;
    EXPECT_EQ(Whole(text), 0) << text;
  }
}

TEST(NumberText, a_double_out_of_range_is_infinite_or_0) {
  EXPECT_EQ(Infinity, Both("1e309"));
  EXPECT_EQ(-Infinity, Both("-1e309"));
  EXPECT_EQ(Infinity, Both("1e999999999999999999999"));
  EXPECT_EQ(Both("1e-400"), 0.0);
  EXPECT_EQ(Both("-1e-999999999999999999999"), 0.0);
  EXPECT_EQ(Infinity, Both("1" + std::string(400, '0')));
  EXPECT_EQ(Both("0." + std::string(400, '0') + "1"), 0.0);
  EXPECT_EQ(Infinity, Both("0." + std::string(400, '0') + "1e800"));
  EXPECT_EQ(Both("1" + std::string(400, '0') + "e-800"), 0.0);
  EXPECT_EQ(std::numeric_limits<double>::max(), Both("1.7976931348623157e308"));
  EXPECT_EQ(Both("5e-324"), 5e-324);
  EXPECT_EQ(Both("1" + std::string(400, '0') + "e-300"), 1e100);
}

TEST(NumberText, the_locale_has_no_say) {
  if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr) std::setlocale(LC_ALL, "C.UTF-8");
  EXPECT_EQ(Both("1.5"), 1.5);
  EXPECT_EQ(Both("1,5"), 1.0);
  std::setlocale(LC_ALL, "C");
}

TEST(NumberText, whole_numbers_stop_at_the_largest_and_smallest) {
  EXPECT_EQ(Whole("12.9"), 12);
  EXPECT_EQ(Whole("12e3"), 12);
  EXPECT_EQ(Whole("2147483646"), 2147483646);
  EXPECT_EQ(Whole("2147483647"), 2147483647);
  EXPECT_EQ(Whole("2147483648"), 2147483647);
  EXPECT_EQ(Whole("99999999999999999999999999"), 2147483647);
  EXPECT_EQ(Whole("-2147483647"), -2147483647);
  EXPECT_EQ(-2147483647 - 1, Whole("-2147483648"));
  EXPECT_EQ(-2147483647 - 1, Whole("-2147483649"));
  EXPECT_EQ(-2147483647 - 1, Whole("-99999999999999999999999999"));
}

TEST(NumberText, so_do_long_ones) {
  EXPECT_EQ(Int64FromText("9223372036854775806"), 9223372036854775806);
  EXPECT_EQ(Int64FromText(L"9223372036854775807"), 9223372036854775807);
  EXPECT_EQ(Int64FromText("9223372036854775808"), 9223372036854775807);
  EXPECT_EQ(-9223372036854775807 - 1, Int64FromText("-9223372036854775808"));
  EXPECT_EQ(-9223372036854775807 - 1, Int64FromText(L"-9223372036854775809"));
}

TEST(NumberText, digits_of_other_scripts_are_none) {
  EXPECT_EQ(Int32FromText(L"\u0661\u0662"), 0);
  EXPECT_EQ(DoubleFromText(L"\uFF11"), 0.0);
  EXPECT_EQ(DoubleFromText(L"1\uFF11"), 1.0);
}

}  // namespace
