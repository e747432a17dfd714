#include "rastrel/platform/os/code_page.h"

#include <gtest/gtest.h>

#include "rastrel/platform/os/text.h"

// Expected characters are those of the code pages' published tables.

namespace {

namespace os = rastrel::os;

TEST(CodePage, of_central_europe_has_its_letters) {
  EXPECT_EQ(os::WideFromCodePage(1250, "\xA3\xF3\xDF\x9F"), L"\u0141\u00F3\u00DF\u017A");
}

// The first syllable or ideograph of each, as the pages' own tables have it.
TEST(CodePage, of_two_bytes_is_its_own) {
  EXPECT_EQ(os::WideFromCodePage(949, "\xB0\xA1"), L"\uAC00");
  EXPECT_EQ(os::WideFromCodePage(950, "\xA4\x40"), L"\u4E00");
  EXPECT_EQ(os::WideFromCodePage(936, "\xB0\xA1"), L"\u554A");
  EXPECT_EQ(os::WideFromCodePage(932, "\x88\x9F"), L"\u4E9C");
}

TEST(CodePage, keeps_bytes_that_it_lacks) {
  EXPECT_EQ(os::WideFromCodePage(1250, "a\x81\x83\x88\x90\x98z"),
            L"a\u0081\u0083\u0088\u0090\u0098z");
}

TEST(CodePage, unknown_counts_as_1252) {
  EXPECT_EQ(os::WideFromCodePage(0, "\x80\x99"), L"\u20AC\u2122");
  EXPECT_EQ(os::WideFromCodePage(-7, "\x80\x99"), L"\u20AC\u2122");
  EXPECT_EQ(os::WideFromCodePage(28602, "\x80\x99"), L"\u20AC\u2122");
}

TEST(CodePage, utf8_keeps_its_mark_and_replaces_ill_formed_bytes) {
  EXPECT_EQ(os::WideFromCodePage(65001, "\xEF\xBB\xBF\xC3\xA9\xFF"), L"\uFEFF\u00E9\uFFFD");
}

TEST(CodePage, a_single_byte_page_takes_the_mark_of_utf8_for_three_characters) {
  EXPECT_EQ(os::WideFromCodePage(1250, "\xEF\xBB\xBF"), L"\u010F\u00BB\u017C");
}

TEST(CodePage, utf16_joins_pairs_and_replaces_what_is_none) {
  using namespace std::string_view_literals;
  EXPECT_EQ(os::WideFromCodePage(1200, "\xFF\xFE\x3D\xD8\x00\xDE"sv), L"\uFEFF\U0001F600");
  EXPECT_EQ(os::WideFromCodePage(1200, "a\0\x3D\xD8z"sv), L"a\uFFFD\uFFFD");
}

TEST(CodePage, of_two_byte_letters_joins_them_across_any_length) {
  // Hiragana A, 82 A0; an odd prefix puts pairs on every boundary inside the converter.
  std::string bytes = "x";
  std::wstring expected = L"x";
  for (int count = 0; count < 20000; ++count) {
    bytes += "\x82\xA0";
    expected += L'\u3042';
  }
  EXPECT_EQ(os::WideFromCodePage(932, bytes), expected);
  EXPECT_EQ(os::WideFromCodePage(932, "a\x82"), L"a\u0082");
}

}  // namespace
