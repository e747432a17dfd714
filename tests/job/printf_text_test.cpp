#include "rastrel/job/printf_text.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

#include "rastrel/job/format_string.h"

// The expected texts are worked out by hand from the rules of the framework's FormatV, and those of
// the other formatter beside them from its own.
namespace {

using rastrel::job::FormatArgument;

std::wstring Formatted(const wchar_t* format, ...) {
  std::va_list list;
  va_start(list, format);
  std::wstring text = rastrel::job::FormatVariableList(format, list);
  va_end(list);
  return text;
}

// By the typed form, as CAppLog::Printf has it.
template <typename... Arguments>
std::wstring Typed(const wchar_t* format, const Arguments&... arguments) {
  const std::array<FormatArgument, sizeof...(Arguments)> list{FormatArgument(arguments)...};
  return rastrel::job::PrintfText(format, list);
}

// By the other formatter.
template <typename... Arguments>
std::wstring OfFiles(const wchar_t* format, const Arguments&... arguments) {
  formatstringT<wchar_t> text;
  text.Format(format, arguments...);
  return text;
}

TEST(TwoFormatters, differ_in_where_zeros_go) {
  EXPECT_EQ(Typed(L"%05d", -42), L"-0042");
  EXPECT_EQ(OfFiles(L"%05d", -42), L"00-42");
}

TEST(TwoFormatters, differ_in_the_precision_of_an_integer) {
  EXPECT_EQ(Typed(L"%.3d|%6.3d|%-6.3d|", 5, 5, 5), L"005|   005|005   |");
  EXPECT_EQ(OfFiles(L"%.3d|%6.3d|%-6.3d|", 5, 5, 5), L"5|000005|5     |");
  EXPECT_EQ(Typed(L"%.0d|%.0d", 0, 7), L"|7");
  EXPECT_EQ(OfFiles(L"%.0d", 0), L"0");
}

TEST(TwoFormatters, differ_in_signs) {
  EXPECT_EQ(Typed(L"%+d|% d|%+d|%+05d|%+.1f", 5, 5, -5, 5, 1.5), L"+5| 5|-5|+0005|+1.5");
  EXPECT_EQ(OfFiles(L"%+d|% d|%+d", 5, 5, -5), L"5|5|-5");
}

TEST(TwoFormatters, differ_in_the_alternate_form) {
  EXPECT_EQ(Typed(L"%#x|%#X|%#o|%#x|%#06x|%#.0f", 255U, 255U, 8U, 0U, 255U, 3.0),
            L"0xff|0XFF|010|0|0x00ff|3.");
  EXPECT_EQ(OfFiles(L"%#x|%#X|%#o", 255U, 255U, 8U), L"ff|FF|10");
  EXPECT_EQ(Typed(L"%#g|%#.3g|%#g", 1.5, 100.0, 1e10), L"1.50000|100.|1.00000e+10");
}

TEST(TwoFormatters, differ_in_widths_from_arguments) {
  EXPECT_EQ(Typed(L"%*d|%-*d|%*d|%.*s|%.*d", 4, 7, 4, 7, -4, 7, 2, L"wide", -1, 7),
            L"   7|7   |7   |wi|7");
  EXPECT_EQ(OfFiles(L"%*d", 4), L"4d");
}

TEST(TwoFormatters, differ_in_letters_that_are_no_conversion) {
  EXPECT_EQ(Typed(L"%y %d", 5), L"y 5");
  EXPECT_EQ(OfFiles(L"%y %d", 5, 6), L"5 6");
}

TEST(TwoFormatters, differ_in_addresses) {
  const auto* address = reinterpret_cast<void*>(std::uintptr_t{0xBEEF});
  EXPECT_EQ(Typed(L"%p", address), L"000000000000BEEF");
  EXPECT_EQ(OfFiles(L"%p", address), L"0xbeef");
}

TEST(TwoFormatters, differ_in_the_fill_of_a_precision) {
  EXPECT_EQ(Typed(L"%8.3f|%6.2s", 1.5, L"wide"), L"   1.500|    wi");
  EXPECT_EQ(OfFiles(L"%8.3f|%6.2s", 1.5, L"wide"), L"0001.500|0000wi");
}

TEST(TwoFormatters, agree_in_the_precision_of_hexadecimal_numbers) {
  EXPECT_EQ(Typed(L"%06.2x|%2.2x", 10U, 0x1234U), L"    0a|1234");
  EXPECT_EQ(OfFiles(L"%06.2x|%2.2x", 10U, 0x1234U), L"    0a|1234");
}

TEST(TwoFormatters, agree_in_plain_conversions) {
  const auto* format = L"100%% %d %5d %-5d| %u %x %o %s %.2s %8.3f %e %g %c";
  const auto* expected = L"100% -5     7 7    | 8 ff 10 wide wi    1.500 1.500000e+00 2.5 a";
  EXPECT_EQ(Typed(format, -5, 7, 7, 8U, 255U, 8U, L"wide", L"wide", 1.5, 1.5, 2.5, L'a'), expected);
  EXPECT_EQ(OfFiles(L"%d %5d %-5d| %u %x %o %s %.2s", -5, 7, 7, 8U, 255U, 8U, L"wide", L"wide"),
            L"-5     7 7    | 8 ff 10 wide wi");
}

TEST(PrintfText, fills_texts_with_zeros_too_if_it_is_told_to) {
  EXPECT_EQ(Typed(L"%05s|%5s|%-5s|%-05d|", L"ab", L"ab", L"ab", 5), L"000ab|   ab|ab   |5    |");
}

// The standard's rule: an exponent below -4, or of the precision and more, has an exponent's form.
TEST(PrintfText, keeps_the_zeros_of_a_general_number_in_both_its_forms) {
  EXPECT_EQ(Typed(L"%#g|%#g|%#g", 1.0, 0.0001, 0.00001), L"1.00000|0.000100000|1.00000e-05");
  EXPECT_EQ(Typed(L"%#g|%#g|%#.1g", 123456.0, 1234567.0, 0.5), L"123456.|1.23457e+06|0.5");
  EXPECT_EQ(Typed(L"%#g", std::numeric_limits<double>::infinity()), L"inf");
}

TEST(PrintfText, prints_what_is_no_number) {
  const double infinite = std::numeric_limits<double>::infinity();
  EXPECT_EQ(Typed(L"%f|%F|%05.1f|%e", infinite, infinite, -infinite, -infinite),
            L"inf|INF| -inf|-inf");
}

TEST(PrintfText, prints_an_argument_of_another_type_plainly) {
  EXPECT_EQ(Typed(L"%d|%s|%f|%5x|", L"text", 5, 5, L"x"), L"text|5|5|    x|");
  EXPECT_EQ(Typed(L"%s", std::wstring(L"a string")), L"a string");
}

TEST(PrintfText, ends_with_its_arguments) {
  EXPECT_EQ(Typed(L"%d %d|%s", 5), L"5 |");
  EXPECT_EQ(Typed(L"%*d|"), L"|");
}

TEST(PrintfText, writes_no_count_of_its_characters) {
  int count = 7;
  EXPECT_EQ(Typed(L"ab%n%d", &count, 5), L"ab5");
  EXPECT_EQ(count, 7);
}

TEST(FormatVariableList, takes_numbers_by_the_sizes_that_the_modifiers_name) {
  EXPECT_EQ(Formatted(L"%d|%u|%i|%u", -5, 6U, -7, 8U), L"-5|6|-7|8");
  EXPECT_EQ(Formatted(L"%ld|%lu|%d", -5'000'000'000L, 5'000'000'000UL, 1),
            L"-5000000000|5000000000|1");
  EXPECT_EQ(Formatted(L"%lld|%llu|%d", -5'000'000'000LL, 5'000'000'000ULL, 1),
            L"-5000000000|5000000000|1");
  EXPECT_EQ(
      Formatted(L"%I64d|%I64x|%d", std::int64_t{-5'000'000'000}, std::uint64_t{5'000'000'000}, 1),
      L"-5000000000|12a05f200|1");
  EXPECT_EQ(Formatted(L"%zu|%Iu|%d", std::size_t{5'000'000'000}, std::size_t{6'000'000'000}, 1),
            L"5000000000|6000000000|1");
  EXPECT_EQ(Formatted(L"%I32d|%jd|%td|%d", 5, std::intmax_t{6}, std::ptrdiff_t{7}, 1), L"5|6|7|1");
}

TEST(FormatVariableList, h_keeps_16_bits_and_hh_keeps_8) {
  EXPECT_EQ(Formatted(L"%hd|%hu|%hd", 70'000, 65535, 65535), L"4464|65535|-1");
  EXPECT_EQ(Formatted(L"%hhd|%hhu", 300, 255), L"44|255");
}

TEST(FormatVariableList, texts_wide_and_narrow) {
  EXPECT_EQ(Formatted(L"%s|%S|%hs", L"wide", "narrow", "narrow too"), L"wide|narrow|narrow too");
  EXPECT_EQ(Formatted(L"%S|%ls|%ws|%lS", "\xC3\xA9", L"wide", L"wide", L"wide"),
            L"\u00e9|wide|wide|wide");
  EXPECT_EQ(
      Formatted(L"%s|%S", static_cast<const wchar_t*>(nullptr), static_cast<const char*>(nullptr)),
      L"(null)|(null)");
  EXPECT_EQ(Formatted(L"%.2s|%.2S", L"wide", "narrow"), L"wi|na");
}

TEST(FormatVariableList, characters_and_pointers) {
  EXPECT_EQ(Formatted(L"%c|%c|%3c|%d", 'a', L'\u20ac', 'b', 5), L"a|\u20ac|  b|5");
  EXPECT_EQ(Formatted(L"%p|%d", reinterpret_cast<void*>(std::uintptr_t{0xBEEF}), 5),
            L"000000000000BEEF|5");
}

TEST(FormatVariableList, floating_numbers) {
  EXPECT_EQ(Formatted(L"%.3f|%lg|%Lf|%d", 1.5, 2.5, 0.5, 5), L"1.500|2.5|0.500000|5");
  EXPECT_EQ(Formatted(L"%.1a|%A", 1.0, 1.5), L"0x1.0p+0|0X1.8000000000000P+0");
}

TEST(FormatVariableList, negative_numbers_under_u_and_x_have_the_bits_of_their_size) {
  EXPECT_EQ(Formatted(L"%u|%x|%llx", -1, -1, -1LL), L"4294967295|ffffffff|ffffffffffffffff");
  EXPECT_EQ(Typed(L"%u|%x|%llx", -1, -1, -1LL), L"4294967295|ffffffff|ffffffffffffffff");
}

TEST(FormatVariableList, takes_widths_from_the_list) {
  EXPECT_EQ(Formatted(L"%*d|%.*f|%d", 4, 7, 2, 1.0, 5), L"   7|1.00|5");
}

TEST(FormatVariableList, a_format_that_ends_in_a_conversion_prints_nothing_for_it) {
  EXPECT_EQ(Formatted(L"x%"), L"x");
  EXPECT_EQ(Formatted(L"x%-5.2l"), L"x");
  EXPECT_EQ(Formatted(L""), L"");
}

TEST(FormatVariableList, leaves_the_callers_list_as_it_was) {
  const auto twice = [](const wchar_t* format, ...) {
    std::va_list list;
    va_start(list, format);
    const std::wstring first = rastrel::job::FormatVariableList(format, list);
    const std::wstring second = rastrel::job::FormatVariableList(format, list);
    va_end(list);
    return first + second;
  };
  EXPECT_EQ(twice(L"%d %s", 5, L"a"), L"5 a5 a");
}

}  // namespace
