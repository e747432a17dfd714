#include "rastrel/platform/os/whitespace.h"

#include <gtest/gtest.h>

using rastrel::os::Trim;

TEST(Trim, takes_spaces_and_tabs_from_both_ends_only) {
  EXPECT_EQ(Trim(" \t one  two\t"), "one  two");
  EXPECT_EQ(Trim("one"), "one");
}

TEST(Trim, of_nothing_else_is_empty) {
  EXPECT_EQ(Trim(" \t "), "");
  EXPECT_EQ(Trim(""), "");
}

TEST(Trim, takes_the_characters_of_its_set) {
  EXPECT_EQ(Trim("one\r\n"), "one\r\n");
  EXPECT_EQ(Trim("\n one \r\n", " \r\n"), "one");
  EXPECT_EQ(Trim(" one", "\t"), " one");
}
