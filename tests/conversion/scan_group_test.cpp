#include "rastrel/conversion/scan_group.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <optional>
#include <random>
#include <string>

#include "tests/support/comma_locale.h"

using rastrel::conversion::ScanDecimalList;
using rastrel::conversion::ScanFloats;
using rastrel::conversion::ScanIntegerList;
using rastrel::conversion::ScanIntegers;

namespace {

std::optional<std::int32_t> Integer(std::wstring_view text) {
  std::int32_t number = 0;
  return ScanIntegers(text, {&number, 1}) ? std::optional(number) : std::nullopt;
}

std::optional<float> Float(std::wstring_view text) {
  float number = 0;
  return ScanFloats(text, {&number, 1}) ? std::optional(number) : std::nullopt;
}

TEST(ScanIntegers, takes_decimal_octal_and_hexadecimal_by_their_marks) {
  EXPECT_EQ(Integer(L"300"), 300);
  EXPECT_EQ(Integer(L"010"), 8);
  EXPECT_EQ(Integer(L"0x1F"), 31);
  EXPECT_EQ(Integer(L"0X1f"), 31);
  EXPECT_EQ(Integer(L"-0x10"), -16);
  EXPECT_EQ(Integer(L"+7"), 7);
  EXPECT_EQ(Integer(L"0"), 0);
  EXPECT_EQ(Integer(L"08"), 0) << "8 is no octal digit and ends the number";
}

TEST(ScanIntegers, passes_over_white_space_in_front_and_ignores_the_rest) {
  EXPECT_EQ(Integer(L" \t\v\f\r\n12abc"), 12);
}

TEST(ScanIntegers, needs_a_digit) {
  for (const wchar_t* text : {L"", L" ", L"abc", L"-", L"+", L"--1", L"+-1", L"- 1", L"0x", L"0xg",
                              L"\u0661", L"\u00a01"})
    EXPECT_EQ(Integer(text), std::nullopt) << text;
}

TEST(ScanIntegers, takes_values_of_32_bits_and_no_more) {
  EXPECT_EQ(Integer(L"2147483646"), 2147483646);
  EXPECT_EQ(Integer(L"2147483647"), 2147483647);
  EXPECT_EQ(Integer(L"2147483648"), std::nullopt);
  EXPECT_EQ(Integer(L"-2147483648"), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(Integer(L"-2147483649"), std::nullopt);
  EXPECT_EQ(Integer(L"99999999999999999999999"), std::nullopt);
}

TEST(ScanIntegers, stores_a_whole_group_or_nothing) {
  std::array<std::int32_t, 4> group{9, 9, 9, 9};
  EXPECT_FALSE(ScanIntegers(L"1 2 3", group));
  EXPECT_FALSE(ScanIntegers(L"1 2 x 4", group));
  EXPECT_EQ(group, (std::array<std::int32_t, 4>{9, 9, 9, 9}));
  EXPECT_TRUE(ScanIntegers(L"1 2\t3   4 5", group));
  EXPECT_EQ(group, (std::array<std::int32_t, 4>{1, 2, 3, 4}));
  EXPECT_TRUE(ScanIntegers(L"1-2+3-4", group)) << "a sign is space enough";
  EXPECT_EQ(group, (std::array<std::int32_t, 4>{1, -2, 3, -4}));
}

TEST(ScanFloats, takes_decimals_exponents_and_hexadecimal) {
  EXPECT_EQ(Float(L"8.5"), 8.5F);
  EXPECT_EQ(Float(L"-.5"), -.5F);
  EXPECT_EQ(Float(L"5."), 5.F);
  EXPECT_EQ(Float(L"1e3"), 1000.F);
  EXPECT_EQ(Float(L"+1E-2x"), 0.01F);
  EXPECT_EQ(Float(L"0x1.8p1"), 3.F);
  EXPECT_EQ(Float(L"1e"), 1.F);
}

TEST(ScanFloats, takes_infinity_and_nan_as_c_does) {
  EXPECT_EQ(Float(L"-inf"), -std::numeric_limits<float>::infinity());
  EXPECT_TRUE(std::isnan(Float(L"nan").value_or(0)));
  EXPECT_EQ(Float(L"0xinf"), std::nullopt);
}

TEST(ScanFloats, needs_a_number_that_a_float_holds) {
  for (const wchar_t* text : {L"", L".", L"e5", L"--1", L"-+1", L"abc", L"1e99", L"1e-99"})
    EXPECT_EQ(Float(text), std::nullopt) << text;
}

TEST(ScanFloats, knows_no_locale) {
  const rastrel::test::CommaLocale locale;
  EXPECT_EQ(Float(L"8.5"), 8.5F);
}

TEST(ScanGroups, agree_with_the_c_library_on_random_text) {
  std::mt19937 random(7);
  const std::string alphabet = "0123456789 -+.xXeEpaAfF\t";
  for (int round = 0; round < 20000; ++round) {
    std::string narrow;
    for (auto length = random() % 12; length > 0; --length)
      narrow += alphabet[random() % alphabet.size()];
    // A mark without a digit is no number by the standard, but is 0 to this C library.
    bool bareMark = false;
    for (std::size_t at = 0; at < narrow.size(); ++at)
      bareMark |= (narrow[at] | 0x20) == 'x' &&
                  (at + 1 == narrow.size() ||
                   std::string("0123456789aAeEfF").find(narrow[at + 1]) == std::string::npos);
    if (bareMark) continue;
    const std::wstring text(narrow.begin(), narrow.end());
    std::array<int, 2> ints{};
    const bool haveInts = std::sscanf(narrow.c_str(), "%i %i", &ints[0], &ints[1]) == 2;
    std::array<std::int32_t, 2> own{};
    // A number out of range is undefined in the C library; here it counts as none.
    std::array<long long, 2> wide{};
    const bool wideInts = std::sscanf(narrow.c_str(), "%lli %lli", &wide[0], &wide[1]) == 2;
    const bool fits = wideInts && wide[0] == ints[0] && wide[1] == ints[1];
    EXPECT_EQ(ScanIntegers(text, own), haveInts && fits) << narrow;
    if (haveInts && fits) {
      EXPECT_EQ(own, ints) << narrow;
    }
  }
}

TEST(ScanIntegerList, takes_decimals_with_a_comma_right_after_each_but_the_last) {
  std::array<std::int32_t, 2> numbers{};
  EXPECT_TRUE(ScanIntegerList(L"2,300", numbers));
  EXPECT_EQ(numbers, (std::array<std::int32_t, 2>{2, 300}));
  EXPECT_TRUE(ScanIntegerList(L" 010,\t-0x1", numbers));
  EXPECT_EQ(numbers, (std::array<std::int32_t, 2>{10, 0})) << "%d knows no other base";
  for (const wchar_t* text : {L"", L"2", L"2,", L"2 ,300", L"2;300", L"a,300", L"2,a", L",",
                              L"2,2147483648", L"2,,300"}) {
    EXPECT_FALSE(ScanIntegerList(text, numbers)) << text;
  }
  EXPECT_EQ(numbers, (std::array<std::int32_t, 2>{10, 0})) << "nothing is stored";
}

TEST(ScanDecimalList, takes_numbers_as_the_settings_have_them) {
  std::array<double, 4> numbers{};
  EXPECT_TRUE(ScanDecimalList(L"0.250000, 1.000000, 0.500000, 0.000000,", numbers));
  EXPECT_EQ(numbers, (std::array<double, 4>{0.25, 1.0, 0.5, 0.0}));
  EXPECT_TRUE(ScanDecimalList(L"1e-1,2,\n3,.5 and more", numbers));
  EXPECT_EQ(numbers, (std::array<double, 4>{0.1, 2.0, 3.0, 0.5}));
  for (const wchar_t* text : {L"", L"0.1", L"0.1, 0.2, 0.3", L"0.1, 0.2, 0.3,", L"0,1 0,2 0,3 0,4",
                              L"0.1 , 0.2, 0.3, 0.4", L"0.1, x, 0.3, 0.4", L"1, 2, 3, 1e999"}) {
    EXPECT_FALSE(ScanDecimalList(text, numbers)) << text;
  }
  EXPECT_EQ(numbers, (std::array<double, 4>{0.1, 2.0, 3.0, 0.5})) << "nothing is stored";
}

TEST(ScanLists, agree_with_the_c_library_on_random_text) {
  std::mt19937 random(11);
  const std::string alphabet = "01234 ,,,-+.e\t";
  for (int round = 0; round < 20000; ++round) {
    std::string narrow;
    for (auto length = random() % 14; length > 0; --length)
      narrow += alphabet[random() % alphabet.size()];
    const std::wstring text(narrow.begin(), narrow.end());
    std::array<int, 2> ints{};
    std::array<long long, 2> wide{};
    const bool fits = std::sscanf(narrow.c_str(), "%lld,%lld", &wide[0], &wide[1]) == 2 &&
                      std::sscanf(narrow.c_str(), "%d,%d", &ints[0], &ints[1]) == 2 &&
                      wide[0] == ints[0] && wide[1] == ints[1];
    std::array<std::int32_t, 2> own{};
    EXPECT_EQ(ScanIntegerList(text, own), fits) << narrow;
    if (fits) {
      EXPECT_EQ(own, ints) << narrow;
    }
    std::array<double, 2> doubles{};
    const bool haveDoubles = std::sscanf(narrow.c_str(), "%lf, %lf", &doubles[0], &doubles[1]) == 2;
    // An exponent without digits is undefined to the standard, and an overflow infinite to the C
    // library.
    if (narrow.find('e') != std::string::npos) continue;
    std::array<double, 2> ownDoubles{};
    EXPECT_EQ(ScanDecimalList(text, ownDoubles), haveDoubles) << narrow;
    if (haveDoubles) {
      EXPECT_EQ(ownDoubles, doubles) << narrow;
    }
  }
}

}  // namespace
