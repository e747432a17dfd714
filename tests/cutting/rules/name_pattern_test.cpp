#include "cutting/rules/name_pattern.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace rastrel::cutting {
namespace {

// Tries every length of each star.
bool Simple(std::string_view name, std::string_view pattern) {
  if (pattern.empty()) return name.empty();
  if (pattern.front() == '*')
    return Simple(name, pattern.substr(1)) || (!name.empty() && Simple(name.substr(1), pattern));
  return !name.empty() && name.front() == pattern.front() &&
         Simple(name.substr(1), pattern.substr(1));
}

TEST(FitsPattern, star_stands_for_any_bytes_and_none) {
  EXPECT_TRUE(FitsPattern("", "*"));
  EXPECT_TRUE(FitsPattern("", "**"));
  EXPECT_TRUE(FitsPattern("Cut", "Cut*"));
  EXPECT_TRUE(FitsPattern("Cut line", "*u*n*"));
  EXPECT_FALSE(FitsPattern("Cu", "Cut*"));
  EXPECT_FALSE(FitsPattern("x", ""));
}

TEST(FitsPattern, pieces_do_not_overlap) {
  EXPECT_FALSE(FitsPattern("aba", "ab*ba"));
  EXPECT_TRUE(FitsPattern("abba", "ab*ba"));
  EXPECT_FALSE(FitsPattern("aa", "a*a*a"));
}

TEST(FitsPattern, letters_fit_in_either_case_and_nothing_else_is_special) {
  EXPECT_TRUE(FitsPattern("THRU-cut", "thru-CUT"));
  EXPECT_FALSE(FitsPattern("Kuehl", "K?ehl"));
  EXPECT_FALSE(FitsPattern("a", "[a]"));
  EXPECT_TRUE(FitsPattern("a\xC3\xA4", "A\xC3\xA4"));
}

TEST(FitsPattern, agrees_with_the_simple_method) {
  std::mt19937 random(17);
  const auto text = [&](std::string_view letters) {
    std::string made(random() % 9, ' ');
    for (char& letter : made) letter = letters[random() % letters.size()];
    return made;
  };
  for (int i = 0; i < 20'000; ++i) {
    const std::string name = text("ab");
    const std::string pattern = text("ab*");
    EXPECT_EQ(FitsPattern(name, pattern), Simple(name, pattern)) << name << " " << pattern;
  }
}

// By trying every length this would take longer than the universe is old, and by the product of the
// lengths minutes.
TEST(FitsPattern, ends_for_hostile_patterns) {
  const std::string name(4'000'000, 'a');
  std::string pattern;
  for (int i = 0; i < 1000; ++i) pattern += "*" + std::string(1000, 'a') + "b";
  EXPECT_FALSE(FitsPattern(name, pattern));
  EXPECT_TRUE(FitsPattern(name, "*" + std::string(2'000'000, 'a') + "*"));
}

}  // namespace
}  // namespace rastrel::cutting
