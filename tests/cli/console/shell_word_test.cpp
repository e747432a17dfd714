#include "cli/console/shell_word.h"

#include <gtest/gtest.h>

namespace rastrel::cli {
namespace {

TEST(ShellWord, is_one_word_whatever_the_text) {
  EXPECT_EQ(ShellWord("/srv/a b"), "'/srv/a b'");
  EXPECT_EQ(ShellWord(""), "''");
  EXPECT_EQ(ShellWord("$HOME `a` \\ \"b\""), "'$HOME `a` \\ \"b\"'");
}

TEST(ShellWord, closes_its_quotes_for_a_quote_of_the_text) {
  EXPECT_EQ(ShellWord("it's"), R"('it'\''s')");
  EXPECT_EQ(ShellWord("'"), R"(''\''')");
}

}  // namespace
}  // namespace rastrel::cli
