#include "rastrel/job/format_string.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>

namespace {

template <typename... Arguments>
std::wstring Formatted(const wchar_t* format, const Arguments&... arguments) {
  formatstringT<wchar_t> text(L"replaced");
  text.Format(format, arguments...);
  return text;
}

TEST(FormatString, is_a_wide_string_with_a_virtual_destructor) {
  EXPECT_TRUE((std::is_base_of_v<std::wstring, formatstringT<wchar_t>>));
  EXPECT_TRUE(std::has_virtual_destructor_v<formatstringT<wchar_t>>);
  // A table of operations and the string, and no other state.
  EXPECT_EQ(sizeof(void*) + sizeof(std::wstring), sizeof(formatstringT<wchar_t>));
}

TEST(FormatString, replaces_what_was_there) {
  EXPECT_EQ(L"", Formatted(L""));
  EXPECT_EQ(L"plain \u20ac\ttext\n", Formatted(L"plain \u20ac\ttext\n"));
}

TEST(FormatString, may_be_given_itself) {
  formatstringT<wchar_t> text(L"a");
  text.Format(L"[%s|%s]", text, text.c_str());
  EXPECT_EQ(L"[a|a]", text);
}

TEST(FormatString, two_percent_signs_give_one) {
  EXPECT_EQ(L"100%", Formatted(L"100%%"));
  EXPECT_EQ(L"%5", Formatted(L"%%%d", 5));
  EXPECT_EQ(L"\n%%Title: x\n", Formatted(L"\n%%%%Title: %s\n", L"x"));
}

TEST(FormatString, flags_choose_fill_and_side) {
  EXPECT_EQ(L"    5", Formatted(L"%5d", 5));
  EXPECT_EQ(L"    5", Formatted(L"% 5d", 5));
  EXPECT_EQ(L"00005", Formatted(L"%05d", 5));
  EXPECT_EQ(L"    5", Formatted(L"%0 5d", 5));
  EXPECT_EQ(L"00005", Formatted(L"% 05d", 5));
  EXPECT_EQ(L"5    ", Formatted(L"%-5d", 5));
  EXPECT_EQ(L"    5", Formatted(L"%-+5d", 5));
  EXPECT_EQ(L"5    ", Formatted(L"%+-5d", 5));
  EXPECT_EQ(L"50000", Formatted(L"%-05d", 5));
  EXPECT_EQ(L"5", Formatted(L"%#+d", 5));
  EXPECT_EQ(L"    f", Formatted(L"%#5x", 15));
  EXPECT_EQ(L"  512", Formatted(L"% 5u", 512));
}

TEST(FormatString, the_fill_stands_in_front_of_a_sign) {
  EXPECT_EQ(L"00-5", Formatted(L"%04d", -5));
  EXPECT_EQ(L"00-1.50", Formatted(L"%07.2f", -1.5));
}

TEST(FormatString, a_precision_makes_the_fill_a_zero_unless_aligned_left) {
  EXPECT_EQ(L"00005", Formatted(L"%5.3d", 5));
  EXPECT_EQ(L"5    ", Formatted(L"%-5.3d", 5));
  EXPECT_EQ(L"0001.5", Formatted(L"%6.1f", 1.5));
  EXPECT_EQ(L"1.5   ", Formatted(L"%-6.1f", 1.5));
  EXPECT_EQ(L"000ab", Formatted(L"%5.2s", L"abc"));
  EXPECT_EQ(L"00005", Formatted(L"% 5.d", 5));
}

TEST(FormatString, a_precision_of_a_whole_number_changes_only_the_fill) {
  EXPECT_EQ(L"5", Formatted(L"%.3d", 5));
  EXPECT_EQ(L"12345", Formatted(L"%.3d", 12345));
  EXPECT_EQ(L"5", Formatted(L"%.3u", 5));
  EXPECT_EQ(L"7", Formatted(L"%.3o", 7));
}

TEST(FormatString, modifiers_are_ignored) {
  EXPECT_EQ(L"70000 -1 9 5", Formatted(L"%hd %ld %Nd %hlNd", 70000, -1, 9, 5));
  EXPECT_EQ(L"1.500", Formatted(L"%.3lf", 1.5));
  EXPECT_EQ(L"5000000000", Formatted(L"%hd", std::int64_t{5'000'000'000}));
}

TEST(FormatString, whole_numbers) {
  EXPECT_EQ(L"-2147483648", Formatted(L"%d", std::numeric_limits<std::int32_t>::min()));
  EXPECT_EQ(L"-9223372036854775808", Formatted(L"%i", std::numeric_limits<std::int64_t>::min()));
  EXPECT_EQ(L"18446744073709551615", Formatted(L"%u", std::numeric_limits<std::uint64_t>::max()));
  EXPECT_EQ(L"17 777", Formatted(L"%o %o", 15, 511U));
  EXPECT_EQ(L"1 0", Formatted(L"%d %d", true, false));
}

TEST(FormatString, negative_numbers_under_u_x_and_o_are_32_bits) {
  EXPECT_EQ(L"4294967295", Formatted(L"%u", -1));
  EXPECT_EQ(L"ffffffff FFFFFFFE", Formatted(L"%x %X", -1, -2));
  EXPECT_EQ(L"37777777777", Formatted(L"%o", -1));
  EXPECT_EQ(L"ffffffff", Formatted(L"%x", std::int64_t{-1}));
}

TEST(FormatString, hexadecimal_has_zeros_to_the_precision_and_blanks_to_the_width) {
  EXPECT_EQ(L"0f", Formatted(L"%2.2x", 15));
  EXPECT_EQ(L"  000f", Formatted(L"%6.4x", 15));
  EXPECT_EQ(L"000f  ", Formatted(L"%-6.4x", 15));
  EXPECT_EQ(L"   BEEF", Formatted(L"%7X", 0xBEEF));
  EXPECT_EQ(L"      ff", Formatted(L"%08x", 255));
  EXPECT_EQ(L"0", Formatted(L"%.0x", 0));
}

TEST(FormatString, hexadecimal_is_never_cut) {
  EXPECT_EQ(L"100", Formatted(L"%2.2x", 256));
  EXPECT_EQ(L"ff00", Formatted(L"%2.2x", 65280));
  EXPECT_EQ(L"123456789abcdef0", Formatted(L"%2.2x", std::uint64_t{0x123456789ABCDEF0}));
}

TEST(FormatString, floating_numbers) {
  EXPECT_EQ(L"1.500000", Formatted(L"%f", 1.5));
  EXPECT_EQ(L"2", Formatted(L"%.0f", 1.5));
  EXPECT_EQ(L"1.500000e+00 1.5E+10", Formatted(L"%e %.1E", 1.5, 1.5e10));
  EXPECT_EQ(L"1.5 1e+10 1E-05", Formatted(L"%g %g %G", 1.5, 1e10, 1e-5));
  EXPECT_EQ(L"0.333 0.3333", Formatted(L"%.3lf %.4f", 1.0 / 3, 1.0 / 3));
  EXPECT_EQ(L"inf -INF nan", Formatted(L"%f %F %g", std::numeric_limits<double>::infinity(),
                                       -std::numeric_limits<double>::infinity(),
                                       std::numeric_limits<double>::quiet_NaN()));
  EXPECT_EQ(L"0.0000", Formatted(L"%.4f", 0.0f));
}

TEST(FormatString, the_largest_number_prints_all_its_digits) {
  const std::wstring text = Formatted(L"%.2f", std::numeric_limits<double>::max());
  EXPECT_EQ(312U, text.size());
  EXPECT_EQ(0U, text.find(L"17976931348623157"));
}

TEST(FormatString, text_is_cut_by_a_precision_and_not_by_a_width) {
  EXPECT_EQ(L"abc", Formatted(L"%.3s", L"abcdef"));
  EXPECT_EQ(L"abcdef", Formatted(L"%3s", L"abcdef"));
  EXPECT_EQ(L"   abc", Formatted(L"%6s", L"abc"));
  EXPECT_EQ(L"abc   |", Formatted(L"%-6s|", L"abc"));
  EXPECT_EQ(L"", Formatted(L"%.0s", L"abc"));
  EXPECT_EQ(L"", Formatted(L"%.s", L"abc"));
  EXPECT_EQ(L"abc", Formatted(L"%.9s", L"abc"));
}

TEST(FormatString, text_is_taken_in_every_form) {
  EXPECT_EQ(L"a b c d \u00e9", Formatted(L"%s %s %s %s %s", L"a", std::wstring(L"b"),
                                         std::wstring_view(L"c"), std::string("d"), "\xC3\xA9"));
  const wchar_t* const missing = nullptr;
  EXPECT_EQ(L"(null)", Formatted(L"%s", missing));
  EXPECT_EQ(L"100%s", Formatted(L"%s", L"100%s"));
}

TEST(FormatString, a_pointer_is_a_hexadecimal_number) {
  const void* const pointer = reinterpret_cast<const void*>(std::uintptr_t{0xBEEF});
  EXPECT_EQ(L"0xbeef", Formatted(L"%p", pointer));
}

TEST(FormatString, any_other_letter_prints_the_argument_plainly) {
  EXPECT_EQ(L"5 x -7 a", Formatted(L"%k %y %* %c", 5, L"x", -7, L'a'));
  EXPECT_EQ(L"    5", Formatted(L"%5k", 5));
  EXPECT_EQ(L"5d", Formatted(L"%*d", 5));
  EXPECT_EQ(L"1.5", Formatted(L"%k", 1.5));
}

TEST(FormatString, a_format_that_ends_inside_a_conversion_gives_nothing_and_takes_nothing) {
  for (const wchar_t* const format :
       {L"%", L"%-", L"%05", L"%5.", L"%.3", L"%l", L"%hlN", L"% #+-0"})
    EXPECT_EQ(L"x", Formatted((std::wstring(L"x") + format).c_str(), 5)) << std::wstring(format);
  EXPECT_EQ(L"5 ", Formatted(L"%d %", 5, 6));
}

TEST(FormatString, a_missing_argument_gives_nothing) {
  EXPECT_EQ(L"5||", Formatted(L"%d|%d|%s", 5));
}

TEST(FormatString, an_argument_too_many_is_not_looked_at) {
  EXPECT_EQ(L"5", Formatted(L"%d", 5, L"x"));
}

TEST(FormatString, an_argument_of_another_kind_is_printed_plainly) {
  EXPECT_EQ(L"text", Formatted(L"%d", L"text"));
  EXPECT_EQ(L"5", Formatted(L"%s", 5));
  EXPECT_EQ(L"  text", Formatted(L"%6x", L"text"));
  EXPECT_EQ(L"5", Formatted(L"%f", 5));
}

TEST(FormatString, an_absurd_width_or_precision_is_limited) {
  EXPECT_EQ(1'000'000U, Formatted(L"%99999999999999999999d", 5).size());
  EXPECT_EQ(1'000'002U, Formatted(L"%.99999999999999999999f", 1.0).size());
  EXPECT_EQ(L"abc", Formatted(L"%.99999999999999999999s", L"abc"));
}

TEST(FormatString, numbers_of_enumerations_print_as_numbers) {
  enum class Scoped { Five = 5 };
  EXPECT_EQ(L"5", Formatted(L"%d", Scoped::Five));
}

}  // namespace
