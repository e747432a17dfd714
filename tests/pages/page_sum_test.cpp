#include "pages/page_sum.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <span>
#include <string>
#include <utility>

namespace rastrel::pages {
namespace {

std::string SumOf(const std::string& text, SumKind kind, std::size_t piece = 1'000'000) {
  PageSum sum(kind);
  for (std::size_t at = 0; at < text.size(); at += piece) {
    sum.Add(std::as_bytes(std::span(text)).subspan(at, std::min(piece, text.size() - at)));
  }
  return sum.Finish();
}

// As the command xxhsum -H2 prints them.
TEST(PageSum, of_a_new_page_is_that_of_another_program) {
  EXPECT_EQ(SumOf("", SumKind::Xxh3), "99aa06d3014798d86001c324468d497f");
  EXPECT_EQ(SumOf("abc", SumKind::Xxh3), "06b05ab6733a618578af5f94892f3950");
  EXPECT_EQ(SumOf(std::string(1'000'000, 'a'), SumKind::Xxh3), "a545df8e384a9579b1fd6fae5285c4eb");
}

TEST(PageSum, of_an_earlier_page_is_the_standards) {
  EXPECT_EQ(SumOf("abc", SumKind::Sha256),
            "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST(PageSum, does_not_depend_on_the_pieces) {
  std::string text;
  for (int i = 0; i < 3000; ++i) text += static_cast<char>(i * 7 % 251);
  for (const SumKind kind : {SumKind::Xxh3, SumKind::Sha256}) {
    const std::string whole = SumOf(text, kind);
    for (std::size_t piece = 1; piece < 600; piece += 13)
      EXPECT_EQ(SumOf(text, kind, piece), whole) << piece;
  }
}

TEST(PageSum, goes_on_after_it_was_moved) {
  PageSum first;
  const std::string text = "abc";
  first.Add(std::as_bytes(std::span(text)).first(1));
  PageSum second = std::move(first);
  second.Add(std::as_bytes(std::span(text)).subspan(1));
  EXPECT_EQ(second.Finish(), "06b05ab6733a618578af5f94892f3950");
}

TEST(PageSum, has_its_kind_by_its_digits) {
  EXPECT_EQ(SumKindOf(std::string(32, 'a')), SumKind::Xxh3);
  EXPECT_EQ(SumKindOf(std::string(64, '0')), SumKind::Sha256);
  for (const std::size_t length : {0, 31, 33, 63, 65, 128})
    EXPECT_EQ(SumKindOf(std::string(length, '0')), std::nullopt) << length;
  EXPECT_EQ(SumKindOf(std::string(31, 'a') + "A"), std::nullopt);
  EXPECT_EQ(SumKindOf(std::string(31, 'a') + "g"), std::nullopt);
}

}  // namespace
}  // namespace rastrel::pages
