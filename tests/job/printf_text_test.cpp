#include <gtest/gtest.h>

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <string>

#include "rastrel/job/format_string.h"

namespace {

std::wstring Formatted(const wchar_t* format, ...) {
  std::va_list list;
  va_start(list, format);
  std::wstring text = rastrel::job::FormatVariableList(format, list);
  va_end(list);
  return text;
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
  EXPECT_EQ(Formatted(L"%zu|%d", std::size_t{5'000'000'000}, 1), L"5000000000|1");
}

TEST(FormatVariableList, h_keeps_16_bits) {
  EXPECT_EQ(Formatted(L"%hd|%hu|%hd", 70'000, 65535, 65535), L"4464|65535|-1");
}

TEST(FormatVariableList, texts_wide_and_narrow) {
  EXPECT_EQ(Formatted(L"%s|%S|%hs", L"wide", "narrow", "narrow too"), L"wide|narrow|narrow too");
  EXPECT_EQ(Formatted(L"%S|%ls", "\xC3\xA9", L"wide"), L"\u00e9|wide");
  EXPECT_EQ(
      Formatted(L"%s|%S", static_cast<const wchar_t*>(nullptr), static_cast<const char*>(nullptr)),
      L"(null)|(null)");
  EXPECT_EQ(Formatted(L"%.2s|%.2S", L"wide", "narrow").substr(0, 5), L"wi|na");
}

TEST(FormatVariableList, characters_and_pointers) {
  EXPECT_EQ(Formatted(L"%c|%c|%d", 'a', L'\u20ac', 5), L"a|\u20ac|5");
  EXPECT_EQ(Formatted(L"%p|%d", reinterpret_cast<void*>(std::uintptr_t{0xBEEF}), 5), L"0xbeef|5");
}

TEST(FormatVariableList, floating_numbers) {
  EXPECT_EQ(Formatted(L"%.3f|%lg|%d", 1.5, 2.5, 5), L"1.500|2.5|5");
}

TEST(FormatVariableList, negative_numbers_under_u_and_x_are_32_bits) {
  EXPECT_EQ(Formatted(L"%u|%x", -1, -1), L"4294967295|ffffffff");
}

TEST(FormatVariableList, follows_the_same_rules_of_flags_width_and_percent_signs) {
  EXPECT_EQ(Formatted(L"100%% %04d %#4x", 5, 15), L"100% 0005    f");
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
