// The texts for origins, each format's by a switch of its own written out case by case.

#include "rastrel/imports/origin_keywords.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>

namespace {

using namespace rastrel::imports;

constexpr std::int32_t Before = 42;

std::int32_t Read(std::wstring_view text, const OriginRules& rules) {
  std::int32_t origin = Before;
  ReadOrigin(text, rules, origin);
  return origin;
}

/// The nine texts of all formats; 0 for any other.
std::int32_t LiteralCode(const std::wstring& text) {
  if (text == L"top left") return 1;
  if (text == L"top center") return 2;
  if (text == L"top right") return 3;
  if (text == L"mid left") return 4;
  if (text == L"mid center") return 5;
  if (text == L"mid right") return 6;
  if (text == L"bottom left") return 7;
  if (text == L"bottom center") return 8;
  if (text == L"bottom right") return 9;
  return 0;
}

std::int32_t LiteralCro(const std::wstring& text) {
  return LiteralCode(text) != 0 ? LiteralCode(text) : Before;
}

std::int32_t LiteralOther(const std::wstring& text, std::int32_t otherwise) {
  if (text == L"center") return 5;
  return LiteralCode(text) != 0 ? LiteralCode(text) : otherwise;
}

void ExpectLiteral(const std::wstring& text) {
  EXPECT_EQ(Read(text, CroOrigins), LiteralCro(text));
  EXPECT_EQ(Read(text, LlxPlateOrigins), LiteralOther(text, 7));
  EXPECT_EQ(Read(text, LlxGraphicOrigins), LiteralOther(text, 5));
  EXPECT_EQ(Read(text, Cr2Origins), LiteralOther(text, 1));
}

TEST(OriginKeywords, the_codes_go_in_rows_from_the_top_left) {
  EXPECT_EQ(Read(L"top left", CroOrigins), 1);
  EXPECT_EQ(Read(L"top right", LlxPlateOrigins), 3);
  EXPECT_EQ(Read(L"mid center", Cr2Origins), 5);
  EXPECT_EQ(Read(L"bottom left", LlxGraphicOrigins), 7);
  EXPECT_EQ(Read(L"bottom right", CroOrigins), 9);
}

TEST(OriginKeywords, center_alone_is_no_text_of_a_cro_file_and_one_of_the_others) {
  EXPECT_EQ(Read(L"center", CroOrigins), Before);
  EXPECT_EQ(Read(L"center", LlxPlateOrigins), 5);
  EXPECT_EQ(Read(L"center", LlxGraphicOrigins), 5);
  EXPECT_EQ(Read(L"center", Cr2Origins), 5);
}

TEST(OriginKeywords, an_unknown_text_has_the_code_of_its_format_or_keeps_the_value) {
  for (const wchar_t* text : {L"", L"Top Left", L"top  left", L" top left", L"top left ", L"left",
                              L"TOP LEFT", L"top left\n", L"topleft", L"1", L"Center"}) {
    EXPECT_EQ(Read(text, CroOrigins), Before) << testing::PrintToString(text);
    EXPECT_EQ(Read(text, LlxPlateOrigins), 7);
    EXPECT_EQ(Read(text, LlxGraphicOrigins), 5);
    EXPECT_EQ(Read(text, Cr2Origins), 1);
  }
}

TEST(OriginKeywords, a_text_with_a_terminator_inside_is_another_text) {
  EXPECT_EQ(Read(std::wstring_view(L"top left\0", 9), CroOrigins), Before);
}

TEST(OriginKeywords, random_pairs_of_words_are_read_as_a_literal_table_reads_them) {
  const std::array<std::wstring, 8> words{L"top",   L"mid",    L"bottom", L"left",
                                          L"right", L"center", L"",       L"Top"};
  std::mt19937 random(7);
  for (int round = 0; round < 20000; ++round) {
    std::wstring text = words.at(random() % words.size());
    if (random() % 8 != 0) text += L" " + words.at(random() % words.size());
    if (random() % 16 == 0 && !text.empty()) text[random() % text.size()] = L'x';
    ExpectLiteral(text);
  }
}

}  // namespace
