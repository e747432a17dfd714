#include "rastrel/platform/os/text.h"

#include <gtest/gtest.h>
#include <iconv.h>

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/utf8_oracle.h"

namespace os = rastrel::os;
using rastrel::test::DecodeUtf8Literally;

namespace {

std::string WithIconv(const char* to, const char* from, std::string_view bytes) {
  const iconv_t converter = ::iconv_open(to, from);
  std::string input(bytes);
  std::string output(bytes.size() * 6 + 16, '\0');
  char* in = input.data();
  char* out = output.data();
  std::size_t inLeft = input.size();
  std::size_t outLeft = output.size();
  const std::size_t result = ::iconv(converter, &in, &inLeft, &out, &outLeft);
  ::iconv_close(converter);
  EXPECT_NE(result, static_cast<std::size_t>(-1));
  output.resize(output.size() - outLeft);
  return output;
}

std::string_view BytesOf(const std::wstring& text) {
  return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

// Characters of every length, in runs whose lengths cross the steps of a fast path.
std::wstring RandomText(std::mt19937& random, std::size_t length) {
  static const std::vector<std::pair<unsigned, unsigned>> kinds = {
      {0x20, 0x7E}, {0xA0, 0x7FF}, {0x800, 0xD7FF}, {0xE000, 0xFFFF}, {0x10000, 0x10FFFF}};
  std::wstring text;
  while (text.size() < length) {
    const auto [low, high] = kinds[random() % kinds.size()];
    for (std::size_t run = random() % 40; run > 0 && text.size() < length; --run)
      text += static_cast<wchar_t>(low + random() % (high - low + 1));
  }
  return text;
}

}  // namespace

TEST(WideFromUtf8, nothing_gives_nothing) {
  EXPECT_EQ(os::WideFromUtf8(""), L"");
  EXPECT_EQ(os::Utf8FromWide(L""), "");
}

TEST(WideFromUtf8, the_edges_of_every_length_decode) {
  EXPECT_EQ(os::WideFromUtf8("\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80"
                             "\xF4\x8F\xBF\xBF"),
            L"\x7F\x80\x7FF\x800\xFFFF\x10000\x10FFFF");
}

TEST(WideFromUtf8, a_null_character_is_a_character) {
  EXPECT_EQ(os::WideFromUtf8(std::string_view("a\0b", 3)), std::wstring(L"a\0b", 3));
}

// The examples of the Unicode Standard, chapter 3.9, tables 3-8 to 3-11.
TEST(WideFromUtf8, ill_formed_sequences_become_one_replacement_a_maximal_subpart) {
  EXPECT_EQ(os::WideFromUtf8("\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41"),
            L"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\x41");
  EXPECT_EQ(os::WideFromUtf8("\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41"),
            L"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\x41");
  EXPECT_EQ(os::WideFromUtf8("\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42"),
            L"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\x41\xFFFD\xFFFD\x42");
  EXPECT_EQ(os::WideFromUtf8("\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41"),
            L"\xFFFD\xFFFD\xFFFD\xFFFD\x41");
}

TEST(WideFromUtf8, agrees_with_the_table_on_every_sequence_of_two_bytes_wherever_it_stands) {
  for (unsigned first = 0; first < 256; ++first) {
    for (unsigned second = 0; second < 256; ++second) {
      const std::string pair = {static_cast<char>(first), static_cast<char>(second)};
      for (const std::string& bytes : {pair, "abc" + pair + "0123456789abcdef0123"})
        ASSERT_EQ(os::WideFromUtf8(bytes), DecodeUtf8Literally(bytes)) << first << " " << second;
    }
  }
}

TEST(WideFromUtf8, agrees_with_the_table_on_three_and_four_bytes_at_every_limit) {
  const std::vector<unsigned> interesting = {0x00, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0,
                                             0xBF, 0xC0, 0xC2, 0xDF, 0xE0, 0xE1, 0xEC, 0xED,
                                             0xEE, 0xEF, 0xF0, 0xF1, 0xF3, 0xF4, 0xF5, 0xFF};
  for (unsigned first : interesting)
    for (unsigned second : interesting)
      for (unsigned third : interesting)
        for (unsigned fourth : interesting) {
          const std::string bytes = {static_cast<char>(first), static_cast<char>(second),
                                     static_cast<char>(third), static_cast<char>(fourth)};
          ASSERT_EQ(os::WideFromUtf8(bytes), DecodeUtf8Literally(bytes));
        }
}

TEST(WideFromUtf8, agrees_with_the_table_on_random_and_damaged_text) {
  std::mt19937 random(20240611);
  for (int round = 0; round < 3000; ++round) {
    std::string bytes = os::Utf8FromWide(RandomText(random, random() % 300));
    for (std::size_t damage = random() % 8; damage > 0 && !bytes.empty(); --damage) {
      const std::size_t position = random() % bytes.size();
      if (random() % 2 == 0) bytes[position] = static_cast<char>(random());
      if (random() % 2 == 0) bytes.erase(position, random() % 3);
    }
    ASSERT_EQ(os::WideFromUtf8(bytes), DecodeUtf8Literally(bytes)) << "round " << round;
  }
}

TEST(WideFromUtf8, text_longer_than_any_block_decodes_whole_with_a_sequence_across_every_boundary) {
  for (std::size_t lead = 4090; lead < 4100; ++lead) {
    std::string bytes(lead, 'a');
    for (int round = 0; round < 3000; ++round) bytes += "\xF0\x9F\x96\xA8\xC3\xA9";
    ASSERT_EQ(os::WideFromUtf8(bytes), DecodeUtf8Literally(bytes)) << lead;
  }
}

TEST(AppendWideFromUtf8, keeps_the_existing_text) {
  std::wstring text = L"before ";
  os::AppendWideFromUtf8(text, "\xC3\xA9t\xC3\xA9");
  EXPECT_EQ(text, L"before \xE9t\xE9");
}

TEST(Utf8FromWide, agrees_with_iconv_on_every_character) {
  std::wstring text;
  for (unsigned value = 1; value <= 0x10FFFF; ++value)
    if (value < 0xD800 || value > 0xDFFF) text += static_cast<wchar_t>(value);
  const std::string bytes = os::Utf8FromWide(text);
  EXPECT_TRUE(bytes == WithIconv("UTF-8", "WCHAR_T", BytesOf(text)));
  EXPECT_TRUE(BytesOf(os::WideFromUtf8(bytes)) == WithIconv("WCHAR_T", "UTF-8", bytes));
}

TEST(Utf8FromWide, round_trips_random_text) {
  std::mt19937 random(7);
  for (int round = 0; round < 500; ++round) {
    const std::wstring text = RandomText(random, random() % 10000);
    ASSERT_EQ(os::WideFromUtf8(os::Utf8FromWide(text)), text);
  }
}

TEST(Utf8FromWide, a_value_that_is_no_character_becomes_the_replacement) {
  const std::wstring bad = {static_cast<wchar_t>(0xD800), static_cast<wchar_t>(0xDFFF),
                            static_cast<wchar_t>(0x110000), static_cast<wchar_t>(-1)};
  EXPECT_EQ(os::Utf8FromWide(bad), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
  // Among plain characters too, where a fast path might let its sign bit through.
  std::wstring among(40, L'x');
  among[17] = static_cast<wchar_t>(0x80000041);
  EXPECT_EQ(os::Utf8FromWide(among), std::string(17, 'x') + "\xEF\xBF\xBD" + std::string(22, 'x'));
}

TEST(AppendUtf8FromWide, keeps_the_existing_text) {
  std::string bytes = "a";
  os::AppendUtf8FromWide(bytes, L"\x20AC");
  EXPECT_EQ(bytes, "a\xE2\x82\xAC");
}

TEST(Utf16FromWide, characters_beyond_the_first_plane_become_pairs) {
  EXPECT_EQ(os::Utf16FromWide(L"a\xFFFF\x10000\x10FFFF"),
            (std::vector<std::uint16_t>{0x61, 0xFFFF, 0xD800, 0xDC00, 0xDBFF, 0xDFFF}));
}

TEST(Utf16FromWide, a_value_beyond_every_plane_becomes_the_replacement) {
  EXPECT_EQ(os::Utf16FromWide(std::wstring(1, static_cast<wchar_t>(0x110000))),
            (std::vector<std::uint16_t>{0xFFFD}));
}

TEST(WideFromUtf16, pairs_join_and_lone_surrogates_stay) {
  EXPECT_EQ(os::WideFromUtf16({0xD83D, 0xDDA8, 0x41}), L"\x1F5A8\x41");
  const std::vector<std::uint16_t> lone = {0xDC00, 0xD800, 0xD800, 0xDC01, 0x41, 0xDBFF};
  const std::wstring text = os::WideFromUtf16(lone);
  EXPECT_EQ(text.size(), 5U);
  EXPECT_EQ(os::Utf16FromWide(text), lone);
}

TEST(WideFromAnsi, agrees_with_iconv_where_the_code_page_is_defined) {
  for (unsigned value = 1; value < 256; ++value) {
    const std::string byte(1, static_cast<char>(value));
    const std::wstring wide = os::WideFromAnsi(byte);
    const bool undefined =
        value == 0x81 || value == 0x8D || value == 0x8F || value == 0x90 || value == 0x9D;
    if (undefined) {
      EXPECT_EQ(wide, std::wstring(1, static_cast<wchar_t>(value)));
    } else {
      EXPECT_EQ(BytesOf(wide), WithIconv("WCHAR_T", "CP1252", byte)) << value;
    }
    EXPECT_EQ(os::AnsiFromWide(wide), byte);
  }
}

TEST(Utf8FromUtf8OrAnsi, keeps_utf8_and_takes_all_else_for_the_code_page) {
  EXPECT_EQ(os::Utf8FromUtf8OrAnsi("plain"), "plain");
  EXPECT_EQ(os::Utf8FromUtf8OrAnsi("Schnitt\xC3\xA4"), "Schnitt\xC3\xA4");
  EXPECT_EQ(os::Utf8FromUtf8OrAnsi("Schnitt\xE4"), "Schnitt\xC3\xA4");
  EXPECT_EQ(os::Utf8FromUtf8OrAnsi("\x80"), "\xE2\x82\xAC");
  EXPECT_EQ(os::Utf8FromUtf8OrAnsi("\xC3\xA4\xE4"), "\xC3\x83\xC2\xA4\xC3\xA4")
      << "a text is of one encoding";
  EXPECT_EQ(os::Utf8FromUtf8OrAnsi("\xEF\xBF\xBD"), "\xEF\xBF\xBD") << "U+FFFD itself";
}

TEST(AnsiFromWide, a_character_that_the_code_page_lacks_becomes_a_question_mark) {
  EXPECT_EQ(os::AnsiFromWide(L"a\x80\x100\x1F5A8\xFFFD"), "a????");
}

TEST(LowerAscii, changes_the_26_letters_only) {
  EXPECT_EQ(os::LowerAscii(L"@AZ[az\xC4\x130"), L"@az[az\xC4\x130");
}
