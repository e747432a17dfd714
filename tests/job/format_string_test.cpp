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

TEST(FormatString, replaces_the_existing_text) {
  EXPECT_EQ(Formatted(L""), L"");
  EXPECT_EQ(Formatted(L"plain \u20ac\ttext\n"), L"plain \u20ac\ttext\n");
}

TEST(FormatString, may_be_given_itself) {
  formatstringT<wchar_t> text(L"a");
  text.Format(L"[%s|%s]", text, text.c_str());
  EXPECT_EQ(text, L"[a|a]");
}

TEST(FormatString, two_percent_signs_give_one) {
  EXPECT_EQ(Formatted(L"100%%"), L"100%");
  EXPECT_EQ(Formatted(L"%%%d", 5), L"%5");
  EXPECT_EQ(Formatted(L"\n%%%%Title: %s\n", L"x"), L"\n%%Title: x\n");
}

TEST(FormatString, flags_choose_fill_and_side) {
  EXPECT_EQ(Formatted(L"%5d", 5), L"    5");
  EXPECT_EQ(Formatted(L"% 5d", 5), L"    5");
  EXPECT_EQ(Formatted(L"%05d", 5), L"00005");
  EXPECT_EQ(Formatted(L"%0 5d", 5), L"    5");
  EXPECT_EQ(Formatted(L"% 05d", 5), L"00005");
  EXPECT_EQ(Formatted(L"%-5d", 5), L"5    ");
  EXPECT_EQ(Formatted(L"%-+5d", 5), L"    5");
  EXPECT_EQ(Formatted(L"%+-5d", 5), L"5    ");
  EXPECT_EQ(Formatted(L"%-05d", 5), L"50000");
  EXPECT_EQ(Formatted(L"%#+d", 5), L"5");
  EXPECT_EQ(Formatted(L"%#5x", 15), L"    f");
  EXPECT_EQ(Formatted(L"% 5u", 512), L"  512");
}

TEST(FormatString, the_fill_stands_in_front_of_a_sign) {
  EXPECT_EQ(Formatted(L"%04d", -5), L"00-5");
  EXPECT_EQ(Formatted(L"%07.2f", -1.5), L"00-1.50");
}

TEST(FormatString, a_precision_makes_the_fill_a_zero_unless_aligned_left) {
  EXPECT_EQ(Formatted(L"%5.3d", 5), L"00005");
  EXPECT_EQ(Formatted(L"%-5.3d", 5), L"5    ");
  EXPECT_EQ(Formatted(L"%6.1f", 1.5), L"0001.5");
  EXPECT_EQ(Formatted(L"%-6.1f", 1.5), L"1.5   ");
  EXPECT_EQ(Formatted(L"%5.2s", L"abc"), L"000ab");
  EXPECT_EQ(Formatted(L"% 5.d", 5), L"00005");
}

TEST(FormatString, a_precision_of_a_whole_number_changes_only_the_fill) {
  EXPECT_EQ(Formatted(L"%.3d", 5), L"5");
  EXPECT_EQ(Formatted(L"%.3d", 12345), L"12345");
  EXPECT_EQ(Formatted(L"%.3u", 5), L"5");
  EXPECT_EQ(Formatted(L"%.3o", 7), L"7");
}

TEST(FormatString, modifiers_are_ignored) {
  EXPECT_EQ(Formatted(L"%hd %ld %Nd %hlNd", 70000, -1, 9, 5), L"70000 -1 9 5");
  EXPECT_EQ(Formatted(L"%.3lf", 1.5), L"1.500");
  EXPECT_EQ(Formatted(L"%hd", std::int64_t{5'000'000'000}), L"5000000000");
}

TEST(FormatString, whole_numbers) {
  EXPECT_EQ(Formatted(L"%d", std::numeric_limits<std::int32_t>::min()), L"-2147483648");
  EXPECT_EQ(Formatted(L"%i", std::numeric_limits<std::int64_t>::min()), L"-9223372036854775808");
  EXPECT_EQ(Formatted(L"%u", std::numeric_limits<std::uint64_t>::max()), L"18446744073709551615");
  EXPECT_EQ(Formatted(L"%o %o", 15, 511U), L"17 777");
  EXPECT_EQ(Formatted(L"%d %d", true, false), L"1 0");
}

TEST(FormatString, negative_numbers_under_u_x_and_o_are_32_bits) {
  EXPECT_EQ(Formatted(L"%u", -1), L"4294967295");
  EXPECT_EQ(Formatted(L"%x %X", -1, -2), L"ffffffff FFFFFFFE");
  EXPECT_EQ(Formatted(L"%o", -1), L"37777777777");
  EXPECT_EQ(Formatted(L"%x", std::int64_t{-1}), L"ffffffff");
}

TEST(FormatString, hexadecimal_has_zeros_to_the_precision_and_blanks_to_the_width) {
  EXPECT_EQ(Formatted(L"%2.2x", 15), L"0f");
  EXPECT_EQ(Formatted(L"%6.4x", 15), L"  000f");
  EXPECT_EQ(Formatted(L"%-6.4x", 15), L"000f  ");
  EXPECT_EQ(Formatted(L"%7X", 0xBEEF), L"   BEEF");
  EXPECT_EQ(Formatted(L"%08x", 255), L"      ff");
  EXPECT_EQ(Formatted(L"%.0x", 0), L"0");
}

TEST(FormatString, hexadecimal_is_never_cut) {
  EXPECT_EQ(Formatted(L"%2.2x", 256), L"100");
  EXPECT_EQ(Formatted(L"%2.2x", 65280), L"ff00");
  EXPECT_EQ(Formatted(L"%2.2x", std::uint64_t{0x123456789ABCDEF0}), L"123456789abcdef0");
}

TEST(FormatString, floating_numbers) {
  EXPECT_EQ(Formatted(L"%f", 1.5), L"1.500000");
  EXPECT_EQ(Formatted(L"%.0f", 1.5), L"2");
  EXPECT_EQ(Formatted(L"%e %.1E", 1.5, 1.5e10), L"1.500000e+00 1.5E+10");
  EXPECT_EQ(Formatted(L"%g %g %G", 1.5, 1e10, 1e-5), L"1.5 1e+10 1E-05");
  EXPECT_EQ(Formatted(L"%.3lf %.4f", 1.0 / 3, 1.0 / 3), L"0.333 0.3333");
  EXPECT_EQ(
      Formatted(L"%f %F %g", std::numeric_limits<double>::infinity(),
                -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()),
      L"inf -INF nan");
  EXPECT_EQ(Formatted(L"%.4f", 0.0f), L"0.0000");
}

TEST(FormatString, the_largest_number_prints_all_its_digits) {
  const std::wstring text = Formatted(L"%.2f", std::numeric_limits<double>::max());
  EXPECT_EQ(text.size(), 312U);
  EXPECT_EQ(text.find(L"17976931348623157"), 0U);
}

TEST(FormatString, text_is_cut_by_a_precision_and_not_by_a_width) {
  EXPECT_EQ(Formatted(L"%.3s", L"abcdef"), L"abc");
  EXPECT_EQ(Formatted(L"%3s", L"abcdef"), L"abcdef");
  EXPECT_EQ(Formatted(L"%6s", L"abc"), L"   abc");
  EXPECT_EQ(Formatted(L"%-6s|", L"abc"), L"abc   |");
  EXPECT_EQ(Formatted(L"%.0s", L"abc"), L"");
  EXPECT_EQ(Formatted(L"%.s", L"abc"), L"");
  EXPECT_EQ(Formatted(L"%.9s", L"abc"), L"abc");
}

TEST(FormatString, text_is_taken_in_every_form) {
  EXPECT_EQ(Formatted(L"%s %s %s %s %s", L"a", std::wstring(L"b"), std::wstring_view(L"c"),
                      std::string("d"), "\xC3\xA9"),
            L"a b c d \u00e9");
  const wchar_t* const missing = nullptr;
  EXPECT_EQ(Formatted(L"%s", missing), L"(null)");
  EXPECT_EQ(Formatted(L"%s", L"100%s"), L"100%s");
}

TEST(FormatString, a_pointer_is_a_hexadecimal_number) {
  const void* const pointer = reinterpret_cast<const void*>(std::uintptr_t{0xBEEF});
  EXPECT_EQ(Formatted(L"%p", pointer), L"0xbeef");
}

TEST(FormatString, any_other_letter_prints_the_argument_plainly) {
  EXPECT_EQ(Formatted(L"%k %y %* %c", 5, L"x", -7, L'a'), L"5 x -7 a");
  EXPECT_EQ(Formatted(L"%5k", 5), L"    5");
  EXPECT_EQ(Formatted(L"%*d", 5), L"5d");
  EXPECT_EQ(Formatted(L"%k", 1.5), L"1.5");
}

TEST(FormatString, a_format_that_ends_inside_a_conversion_gives_nothing_and_takes_nothing) {
  for (const wchar_t* const format :
       {L"%", L"%-", L"%05", L"%5.", L"%.3", L"%l", L"%hlN", L"% #+-0"})
    EXPECT_EQ(Formatted((std::wstring(L"x") + format).c_str(), 5), L"x") << std::wstring(format);
  EXPECT_EQ(Formatted(L"%d %", 5, 6), L"5 ");
}

TEST(FormatString, a_missing_argument_gives_nothing) {
  EXPECT_EQ(Formatted(L"%d|%d|%s", 5), L"5||");
}

TEST(FormatString, an_argument_too_many_is_not_looked_at) {
  EXPECT_EQ(Formatted(L"%d", 5, L"x"), L"5");
}

TEST(FormatString, an_argument_of_another_kind_is_printed_plainly) {
  EXPECT_EQ(Formatted(L"%d", L"text"), L"text");
  EXPECT_EQ(Formatted(L"%s", 5), L"5");
  EXPECT_EQ(Formatted(L"%6x", L"text"), L"  text");
  EXPECT_EQ(Formatted(L"%f", 5), L"5");
}

TEST(FormatString, an_absurd_width_or_precision_is_limited) {
  EXPECT_EQ(Formatted(L"%99999999999999999999d", 5).size(), 1'000'000U);
  EXPECT_EQ(Formatted(L"%.99999999999999999999f", 1.0).size(), 1'000'002U);
  EXPECT_EQ(Formatted(L"%.99999999999999999999s", L"abc"), L"abc");
}

TEST(FormatString, numbers_of_enumerations_print_as_numbers) {
  enum class Scoped { Five = 5 };
  EXPECT_EQ(Formatted(L"%d", Scoped::Five), L"5");
}

}  // namespace
