#include "rastrel/psscan/tokens.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "tests/psscan/scan_fixture.h"

using rastrel::psscan::NumberOf;

namespace {

// "consumed value"; the value is 77 if it was left alone.
std::string Integer(std::string text) {
  int value = 77;
  const int consumed = rastrel::test::OpenPsParser(L"").GetEPSint(text.data(), value);
  return std::to_string(consumed) + " " + std::to_string(value);
}

// "consumed token", each character beyond ASCII as <hexadecimal>.
std::string Text(std::string text) {
  CString token = L"left over";
  const std::string before = text;
  const int consumed = rastrel::test::OpenPsParser(L"").GetEPStext(text.data(), token);
  EXPECT_EQ(text, before);
  std::string shown = std::to_string(consumed) + " ";
  for (const wchar_t character : token) {
    char code[16];
    std::snprintf(code, sizeof code, "<%x>", static_cast<unsigned>(character));
    shown += character > 0 && character < 128 ? std::string(1, static_cast<char>(character)) : code;
  }
  return shown;
}

}  // namespace

TEST(GetEPSint, blanks_tabs_and_braces_are_skipped_and_counted) {
  EXPECT_EQ(Integer("12 34"), "2 12");
  EXPECT_EQ(Integer(" \t{{ 12"), "7 12");
}

TEST(GetEPSint, fractions_are_cut_off) {
  EXPECT_EQ(Integer("12.75"), "5 12");
  EXPECT_EQ(Integer("-2.5"), "4 -2");
  EXPECT_EQ(Integer("0.9"), "3 0");
  EXPECT_EQ(Integer(".9"), "2 0");
  EXPECT_EQ(Integer("1.2.3x"), "5 1");
}

TEST(GetEPSint, a_sign_alone_is_a_token_of_0) {
  EXPECT_EQ(Integer("-"), "1 0");
  EXPECT_EQ(Integer("+ 5"), "1 0");
  EXPECT_EQ(Integer("-+5"), "1 0");
  EXPECT_EQ(Integer("+5"), "2 5");
}

TEST(GetEPSint, no_token_leaves_the_value_alone) {
  EXPECT_EQ(Integer(""), "0 77");
  EXPECT_EQ(Integer("  {"), "0 77");
  EXPECT_EQ(Integer("  x1"), "0 77");
  EXPECT_EQ(Integer("\n1"), "0 77");
}

TEST(GetEPSint, numbers_beyond_32_bits_saturate) {
  EXPECT_EQ(Integer("2147483647"), "10 2147483647");
  EXPECT_EQ(Integer("2147483648"), "10 2147483647");
  EXPECT_EQ(Integer("-2147483648"), "11 -2147483648");
  EXPECT_EQ(Integer("-99999999999999999999999999"), "27 -2147483648");
}

TEST(GetEPStext, a_word_ends_before_the_next_blank) {
  EXPECT_EQ(Text("  word next"), "6 word");
  EXPECT_EQ(Text("\ta(b)\tc"), "5 a(b)");
  EXPECT_EQ(Text("a\\065"), "5 a\\065");
}

TEST(GetEPStext, at_the_end_only_the_skipped_bytes_are_consumed) {
  EXPECT_EQ(Text(""), "0 ");
  EXPECT_EQ(Text(" \t "), "3 ");
}

TEST(GetEPStext, a_line_end_ends_the_text_and_is_put_back) {
  EXPECT_EQ(Text(" ab\rcd"), "3 ab");
  EXPECT_EQ(Text("(ab\n)"), "3 ab");
}

TEST(GetEPStext, a_string_ends_at_the_parenthesis_that_balances_it) {
  EXPECT_EQ(Text("(A B) x"), "5 A B");
  EXPECT_EQ(Text("(A(B)C)D"), "7 A(B)C");
}

TEST(GetEPStext, the_first_byte_of_a_string_is_never_examined) {
  EXPECT_EQ(Text("()"), "2 )");
  EXPECT_EQ(Text("() foo) bar"), "7 ) foo");
  EXPECT_EQ(Text("((A)B"), "4 (A");
}

TEST(GetEPStext, a_backslash_does_not_protect_a_parenthesis) {
  EXPECT_EQ(Text("(A\\)B)"), "4 A\\");
}

TEST(GetEPStext, a_string_that_is_never_closed_ends_with_the_text) {
  EXPECT_EQ(Text("(A B"), "4 A B");
  EXPECT_EQ(Text("(A(B"), "4 A(B");
  EXPECT_EQ(Text("("), "1 ");
}

TEST(GetEPStext, two_backslashes_are_one) { EXPECT_EQ(Text("(A\\\\B)"), "6 A\\B"); }

TEST(GetEPStext, an_escape_is_read_as_a_decimal_number) {
  EXPECT_EQ(Text("(A\\065B)"), "8 AAB");
  EXPECT_EQ(Text("(\\050)"), "6 2");
}

TEST(GetEPStext, a_byte_of_an_escape_is_extended_with_its_sign) {
  EXPECT_EQ(Text("(a\\200)"), "7 a<ffc8>");
  EXPECT_EQ(Text("(a\\-1)"), "6 a<ffff>");
  EXPECT_EQ(Text("(a\\321)"), "7 aA");  // 321 is 256 + 65
}

TEST(GetEPStext, an_escape_takes_all_that_its_number_consumed) {
  EXPECT_EQ(Text("(a\\ {65.9b)"), "11 aAb");
  EXPECT_EQ(Text("(a\\-b)"), "6 a<0>b");
}

TEST(GetEPStext, a_character_from_an_escape_is_not_looked_at_again) {
  EXPECT_EQ(Text("(a\\92\\065)"), "10 a\\A");
  EXPECT_EQ(Text("(a\\\\065)"), "8 a\\065");
}

TEST(GetEPStext, a_backslash_with_neither_stays) { EXPECT_EQ(Text("(a\\nb\\)"), "7 a\\nb\\"); }

TEST(GetEPStext, bytes_are_windows_1252) {
  EXPECT_EQ(Text("(\x80 \xE9 \x81)"), "7 <20ac> <e9> <81>");
  EXPECT_EQ(Text("\x80"), "1 <20ac>");
}

TEST(NumberOf, the_start_of_a_text_counts) {
  EXPECT_EQ(NumberOf(L"0.25"), 0.25);
  EXPECT_EQ(NumberOf(L" \t-1.5e1x"), -15);
  EXPECT_EQ(NumberOf(L"+.5"), 0.5);
  EXPECT_EQ(NumberOf(L"1,5"), 1);
  EXPECT_EQ(NumberOf(L"2e"), 2);
  EXPECT_EQ(NumberOf(L"2e+"), 2);
}

TEST(NumberOf, a_text_that_is_no_number_is_0) {
  for (const wchar_t* text :
       {L"", L" ", L"x", L"-", L"+-1", L"--1", L".", L"e5", L"inf", L"nan", L"\x0661", L"(1"})
    EXPECT_EQ(NumberOf(text), 0) << text;
  EXPECT_EQ(NumberOf(L"0x10"), 0);
  EXPECT_FALSE(std::signbit(NumberOf(L"-")));
  EXPECT_TRUE(std::signbit(NumberOf(L"-0")));
}

TEST(NumberOf, a_number_that_does_not_fit_is_infinite_or_0) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(NumberOf(L"1e999"), infinity);
  EXPECT_EQ(NumberOf(L"-1e999"), -infinity);
  EXPECT_EQ(NumberOf(std::wstring(400, L'9')), infinity);
  EXPECT_EQ(NumberOf(L"1e99999999999999999999"), infinity);
  EXPECT_EQ(NumberOf(L"1e-999"), 0);
  EXPECT_EQ(NumberOf(L"1e-99999999999999999999"), 0);
  EXPECT_EQ(NumberOf(L"0." + std::wstring(400, L'0') + L"1"), 0);
  EXPECT_EQ(NumberOf(L"0." + std::wstring(400, L'0') + L"1e401"), 1);
}
