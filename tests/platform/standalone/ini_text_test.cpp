#include "rastrel/platform/standalone/ini_text.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

using rastrel::standalone::FindIniValue;
using rastrel::standalone::WithIniValue;

namespace {

const std::string Sample =
    "; a comment\n"
    "stray = outside\n"
    "[Debug]\n"
    "# key = not this\n"
    "CmdlineQpath = /a/b c \n"
    "empty=\n"
    "equals = a=b\n"
    "\n"
    "[local queue]\r\n"
    "path = /queue\r\n"
    "[debug]\n"
    "later = 2\n"
    "CmdlineQpath = second\n";

}  // namespace

TEST(FindIniValue, names_are_compared_without_case_and_blanks_count_for_nothing) {
  EXPECT_EQ(FindIniValue(Sample, "DEBUG", "cmdlineqpath"), "/a/b c");
  EXPECT_EQ(FindIniValue(Sample, "Local Queue", "PATH"), "/queue");
  EXPECT_EQ(FindIniValue("[ a ]\n\t k \t=\t v\t\n", "a", "k"), "v");
}

TEST(FindIniValue, values_may_be_empty_and_hold_the_sign) {
  EXPECT_EQ(FindIniValue(Sample, "debug", "empty"), "");
  EXPECT_EQ(FindIniValue(Sample, "debug", "equals"), "a=b");
}

TEST(FindIniValue, a_section_may_appear_again_and_the_first_of_two_keys_counts) {
  EXPECT_EQ(FindIniValue(Sample, "Debug", "later"), "2");
}

TEST(FindIniValue, a_key_that_is_missing_commented_or_elsewhere_is_not_found) {
  EXPECT_FALSE(FindIniValue(Sample, "debug", "path"));
  EXPECT_FALSE(FindIniValue(Sample, "debug", "# key"));
  EXPECT_FALSE(FindIniValue(Sample, "debug", "stray"));
  EXPECT_FALSE(FindIniValue(Sample, "", "stray"));
  EXPECT_FALSE(FindIniValue(Sample, "none", "path"));
  EXPECT_FALSE(FindIniValue("", "a", "b"));
}

TEST(FindIniValue, a_byte_order_mark_and_a_missing_last_line_end_are_no_trouble) {
  EXPECT_EQ(FindIniValue("\xEF\xBB\xBF[a]\nk = v", "a", "k"), "v");
}

TEST(WithIniValue, a_value_is_replaced_in_its_line_and_the_rest_stays) {
  const auto text = WithIniValue(Sample, "debug", "CMDLINEQPATH", "new");
  ASSERT_TRUE(text);
  std::string expected = Sample;
  const std::string old = "CmdlineQpath = /a/b c ";
  expected.replace(expected.find(old), old.size(), "CMDLINEQPATH = new");
  EXPECT_EQ(*text, expected);
}

TEST(WithIniValue, a_new_key_joins_its_section) {
  EXPECT_EQ(WithIniValue("[a]\nk = 1\n\n[b]\nx = 2\n", "A", "new", "3"),
            "[a]\nk = 1\nnew = 3\n\n[b]\nx = 2\n");
  EXPECT_EQ(WithIniValue("[a]\nk = 1", "a", "new", "3"), "[a]\nk = 1\nnew = 3\n");
  EXPECT_EQ(WithIniValue("[a]", "a", "new", "3"), "[a]\nnew = 3\n");
  EXPECT_EQ(WithIniValue("[a]\n", "a", "new", "3"), "[a]\nnew = 3\n");
}

TEST(WithIniValue, a_new_section_comes_last) {
  EXPECT_EQ(WithIniValue("", "a", "k", "v"), "[a]\nk = v\n");
  EXPECT_EQ(WithIniValue("; only a comment", "a", "k", "v"), "; only a comment\n\n[a]\nk = v\n");
}

TEST(WithIniValue, a_value_that_would_not_be_found_again_is_refused) {
  for (const char* value : {" x", "x ", "\tx", "a\nb", "a\rb\n", "x\r", "\n"})
    EXPECT_FALSE(WithIniValue(Sample, "a", "k", value)) << value;
  EXPECT_FALSE(WithIniValue("", "a", "a=b", "v"));
  EXPECT_FALSE(WithIniValue("", "a", ";k", "v"));
  EXPECT_FALSE(WithIniValue("", "a]\n[b", "k", "v"));
  EXPECT_FALSE(WithIniValue("", " a", "k", "v"));
}

TEST(WithIniValue, many_random_writes_are_all_found_again) {
  std::mt19937 random(11);
  std::string text = Sample;
  std::string expected[6][6];
  for (int round = 0; round < 2000; ++round) {
    const std::size_t section = random() % 6;
    const std::size_t key = random() % 6;
    expected[section][key] = std::to_string(random()) + "=;[#]";
    const auto changed = WithIniValue(text, "s" + std::to_string(section),
                                      "k" + std::to_string(key), expected[section][key]);
    ASSERT_TRUE(changed);
    text = *changed;
  }
  for (std::size_t section = 0; section < 6; ++section)
    for (std::size_t key = 0; key < 6; ++key)
      EXPECT_EQ(FindIniValue(text, "S" + std::to_string(section), "K" + std::to_string(key)),
                expected[section][key]);
  EXPECT_TRUE(text.starts_with(Sample));
}
