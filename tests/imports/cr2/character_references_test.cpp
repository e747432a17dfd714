#include "rastrel/imports/cr2/character_references.h"

#include <gtest/gtest.h>

#include <random>

#include "rastrel/imports/cr2/character_names.h"
#include "rastrel/platform/os/text.h"
#include "tests/imports/cr2/literal_references.h"

namespace {

using namespace rastrel::imports;
using namespace rastrel::test;

std::wstring Cr2(std::wstring_view text) {
  const ReplacedText replaced = ReplaceCharacterReferences(text, ReferenceKind::Cr2);
  EXPECT_FALSE(replaced.unicodeLost) << "a cr2 loses nothing";
  return replaced.text;
}

std::wstring Zml(std::wstring_view text) {
  return ReplaceCharacterReferences(text, ReferenceKind::Zml).text;
}

bool ZmlLoses(std::wstring_view text) {
  return ReplaceCharacterReferences(text, ReferenceKind::Zml).unicodeLost;
}

TEST(CharacterNamed, knows_253_names) {
  EXPECT_EQ(LiteralCharacterNames().size(), 253U);
  for (const auto& [name, character] : LiteralCharacterNames())
    EXPECT_EQ(CharacterNamed(name), static_cast<wchar_t>(character))
        << rastrel::os::Utf8FromWide(name);
}

TEST(CharacterNamed, knows_no_other_name_and_no_other_case) {
  for (const wchar_t* name : {L"", L"AMP", L"Nbsp", L"amp;", L"alefsyms", L"sigmab"})
    EXPECT_EQ(CharacterNamed(name), std::nullopt);
}

TEST(ReplaceCharacterReferences, a_decimal_reference_becomes_its_character) {
  EXPECT_EQ(Cr2(L"&#65;"), L"A");
  EXPECT_EQ(Cr2(L"a&#32;b&#8482;c"), L"a b\u2122c");
}

TEST(ReplaceCharacterReferences, a_decimal_value_below_32_stops_all_further_replacement) {
  EXPECT_EQ(Cr2(L"&#65;&#31;&#66;"), L"A&#31;&#66;");
  EXPECT_EQ(Cr2(L"&#32;&#66;"), L" B");
  EXPECT_EQ(Cr2(L"&#33;&#66;"), L"!B");
  EXPECT_EQ(Cr2(L"&#0;&#66;"), L"&#0;&#66;");
}

TEST(ReplaceCharacterReferences, decimal_digits_end_at_the_first_other_character) {
  EXPECT_EQ(Cr2(L"&#65x;&#66;"), L"AB");
  EXPECT_EQ(Cr2(L"&#6 5;&#66;"), L"&#6 5;&#66;");  // 6 is below 32
}

TEST(ReplaceCharacterReferences, hexadecimal_references_have_2_or_4_digits) {
  EXPECT_EQ(Cr2(L"&#x41;&#X0042;"), L"AB");
  for (const wchar_t* stops : {L"&#x;", L"&#x4;", L"&#x414;", L"&#x00041;", L"&#x000041;"})
    EXPECT_EQ(Cr2(std::wstring(stops) + L"&#66;"), std::wstring(stops) + L"&#66;");
}

TEST(ReplaceCharacterReferences, a_bad_hexadecimal_digit_counts_as_0) {
  EXPECT_EQ(Cr2(L"&#x4g;&#xZ1;&#xAb;"), L"@\u0001\u00AB");
}

TEST(ReplaceCharacterReferences, anything_else_after_the_number_sign_stops_all_replacement) {
  for (const wchar_t* stops : {L"&#;", L"&#-65;", L"&# 65;", L"&#a;"})
    EXPECT_EQ(Cr2(std::wstring(L"&#65;") + stops + L"&#66;"),
              std::wstring(L"A") + stops + L"&#66;");
}

TEST(ReplaceCharacterReferences, named_references_are_replaced_by_case) {
  EXPECT_EQ(Cr2(L"&amp;&Eacute;&eacute;&apos;"), L"&\u00C9\u00E9'");
  EXPECT_EQ(Cr2(L"&AMP;&amp;"), L"&AMP;&");
}

TEST(ReplaceCharacterReferences, omicron_is_a_semicolon) {
  EXPECT_EQ(Cr2(L"&omicron;"), L";");
  EXPECT_EQ(Cr2(L"&Omicron;"), L"\u039F");
}

TEST(ReplaceCharacterReferences, an_unknown_name_stays_and_the_search_goes_on_in_it) {
  EXPECT_EQ(Cr2(L"&;&none;&a&amp;"), L"&;&none;&a&");
  EXPECT_EQ(Cr2(L"A & B&#65;"), L"A & BA");
}

TEST(ReplaceCharacterReferences, an_ampersand_without_a_semicolon_stays) {
  EXPECT_EQ(Cr2(L"&amp"), L"&amp");
  EXPECT_EQ(Cr2(L"&#65;&#66"), L"A&#66");
  EXPECT_EQ(Cr2(L"&"), L"&");
  EXPECT_EQ(Cr2(L""), L"");
}

TEST(ReplaceCharacterReferences, a_semicolon_further_than_9_characters_away_is_no_end) {
  EXPECT_EQ(Cr2(L"&12345678;&#65;"), L"&12345678;A");
  EXPECT_EQ(Cr2(L"&123456789;&#65;"), L"&123456789;A");
  EXPECT_EQ(Cr2(L"&1234567890;&#65;"), L"&1234567890;A");
  EXPECT_EQ(Cr2(L"&#00000065;&#66;"), L"AB");
  EXPECT_EQ(Cr2(L"&#000000065;&#66;"), L"AB");
  EXPECT_EQ(Cr2(L"&#0000000065;&#66;"), L"&#0000000065;B");
  EXPECT_EQ(Cr2(L"&#2147483647;&#66;"), L"&#2147483647;B");
}

TEST(ReplaceCharacterReferences, the_search_goes_on_after_the_replaced_character) {
  EXPECT_EQ(Cr2(L"&amp;#65;"), L"&#65;");
  EXPECT_EQ(Cr2(L"&#38;amp;"), L"&amp;");
}

TEST(ReplaceCharacterReferences, a_value_beyond_16_bits_keeps_its_low_ones) {
  EXPECT_EQ(Cr2(L"&#65535;"), L"\uFFFF");
  EXPECT_EQ(Cr2(L"&#65537;&#65601;"), std::wstring(L"\u0001") + L"A");
  EXPECT_EQ(Cr2(L"&#999999999;"), std::wstring(1, static_cast<wchar_t>(999999999 % 65536)));
}

TEST(ReplaceCharacterReferences, a_character_of_value_0_ends_the_text) {
  EXPECT_EQ(Cr2(L"a&#x00;b&#65;"), L"a");
  EXPECT_EQ(Cr2(L"a&#65536;b"), L"a");
  EXPECT_EQ(Zml(L"a&#x0000;b"), L"a");
}

TEST(ReplaceCharacterReferences, of_a_zml_a_name_is_stored_as_a_widened_byte) {
  EXPECT_EQ(Zml(L"&amp;&lt;"), L"&<");
  EXPECT_EQ(Zml(L"&eacute;"), std::wstring(1, L'\uFFE9'));  // the byte E9
  EXPECT_EQ(Zml(L"&euro;"), std::wstring(1, L'\uFF80'));    // the byte 80
  EXPECT_EQ(Zml(L"&Omega;"), L"?");
}

TEST(ReplaceCharacterReferences, of_a_zml_a_hexadecimal_value_is_stored_itself) {
  EXPECT_EQ(Zml(L"&#xE9;&#x2122;&#x03A9;"), L"\u00E9\u2122\u03A9");
  EXPECT_EQ(Zml(L"&#xE9;&#x414;&#65;"), L"\u00E9&#x414;&#65;");
}

TEST(ReplaceCharacterReferences, of_a_zml_a_decimal_value_above_255_repeats_the_last_one_below) {
  EXPECT_EQ(Zml(L"&#65;&#8482;&#255;&#256;"), L"AA\u00FF\u00FF");
}

TEST(ReplaceCharacterReferences, of_a_zml_the_first_decimal_value_above_255_is_its_own_character) {
  EXPECT_EQ(Zml(L"&#8482;&#169;&#8482;"), L"\u2122\u00A9\u00A9");
  EXPECT_EQ(Zml(L"&#xA9;&#8482;"), L"\u00A9\u2122") << "only decimal values are kept";
}

TEST(ReplaceCharacterReferences, of_a_zml_characters_outside_code_page_1252_are_lost) {
  EXPECT_TRUE(ZmlLoses(L"&Omega;"));
  EXPECT_TRUE(ZmlLoses(L"&#x03A9;"));
  EXPECT_TRUE(ZmlLoses(L"&#937;"));
  EXPECT_TRUE(ZmlLoses(L"&#65;&#937;")) << "tested by its own value, not by the stored one";
  EXPECT_TRUE(ZmlLoses(L"&#x80;")) << "a control character without a byte";
  EXPECT_FALSE(ZmlLoses(L"&euro;&#8482;&#x2122;&#63;&quot;"));
  EXPECT_FALSE(ZmlLoses(L"&#x81;&#x8D;&#x8F;&#x90;&#x9D;")) << "they map to themselves";
  EXPECT_FALSE(ZmlLoses(L"\u03A9")) << "no reference";
  EXPECT_FALSE(ZmlLoses(L"&#128;")) << "decimal values up to 255 are not tested";
}

TEST(ReplaceCharacterReferences, takes_time_in_proportion_to_a_text_of_ampersands) {
  // A search for the end of each of them would take minutes.
  const std::wstring ampersands(2'000'000, L'&');
  EXPECT_EQ(Cr2(ampersands), ampersands);
  EXPECT_EQ(Cr2(ampersands + L";"), ampersands + L";");
}

TEST(WithJoinedSurrogates, joins_pairs_and_shows_lone_ones_as_lost) {
  EXPECT_EQ(WithJoinedSurrogates(std::wstring{L'a', 0xD83D, 0xDE00, L'b'}), L"a\U0001F600b");
  EXPECT_EQ(WithJoinedSurrogates(std::wstring{0xD83D, L'x', 0xDE00}), L"\uFFFDx\uFFFD");
  EXPECT_EQ(WithJoinedSurrogates(Cr2(L"&#55357;&#56832;")), L"\U0001F600");
  EXPECT_EQ(WithJoinedSurrogates(L"\U0001F600"), L"\U0001F600");
}

/// Texts of references of all kinds, right ones and spoiled ones, with pieces of text between.
class RandomReferences : public ::testing::Test {
 protected:
  unsigned Below(unsigned count) { return static_cast<unsigned>(m_Random()) % count; }
  std::wstring Digits(unsigned count, std::wstring_view from) {
    std::wstring digits;
    for (; count > 0; --count) digits += from[Below(static_cast<unsigned>(from.size()))];
    return digits;
  }
  std::wstring Decimal() {
    switch (Below(4)) {
      case 0: return std::to_wstring(Below(256) + 32);
      case 1: return std::to_wstring(Below(70000) + 32);
      case 2: return std::to_wstring(Below(1'200'000'000));
      default: return Digits(Below(12), L"0123456789 x");
    }
  }
  std::wstring Name() {
    if (Below(6) == 0) return Digits(Below(12), L"abAmpltg1");
    const auto& names = LiteralCharacterNames();
    return std::next(names.begin(), Below(static_cast<unsigned>(names.size())))->first;
  }
  std::wstring Reference() {
    const std::wstring end = Below(40) == 0 ? L"" : L";";
    switch (Below(40)) {
      case 0: return L"&#" + Digits(Below(4), L"x#&-") + end;
      case 1: return L"&#x" + Digits(Below(7), L"0123456789abcdefABCDEFgz") + end;
      default: break;
    }
    switch (Below(3)) {
      case 0: return L"&" + Name() + end;
      case 1:
        return L"&#" + std::wstring(Below(2) == 0 ? L"x" : L"X") +
               Digits(Below(2) == 0 ? 2 : 4, L"0123456789abcdefABCDEFg") + end;
      default: return L"&#" + Decimal() + end;
    }
  }

  void CompareAMillion(ReferenceKind kind);

  std::mt19937 m_Random{14};
};

void RandomReferences::CompareAMillion(ReferenceKind kind) {
  for (int references = 0; references < 1'000'000;) {
    std::wstring text;
    for (unsigned count = Below(20); count > 0; --count, ++references)
      text += Reference() + Digits(Below(3), L"ab ;&\u00E9");
    const LiteralReplaced expected = LiteralReplacement(text, kind == ReferenceKind::Zml);
    const ReplacedText replaced = ReplaceCharacterReferences(text, kind);
    ASSERT_EQ(replaced.text, expected.text) << rastrel::os::Utf8FromWide(text);
    ASSERT_EQ(replaced.unicodeLost, expected.lost) << rastrel::os::Utf8FromWide(text);
  }
}

TEST_F(RandomReferences, of_a_cr2_are_replaced_as_step_by_step_in_a_buffer) {
  CompareAMillion(ReferenceKind::Cr2);
}

TEST_F(RandomReferences, of_a_zml_are_replaced_as_step_by_step_in_a_buffer) {
  CompareAMillion(ReferenceKind::Zml);
}

}  // namespace
