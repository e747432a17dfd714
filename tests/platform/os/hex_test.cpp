#include "rastrel/platform/os/hex.h"

#include <gtest/gtest.h>

#include <string>

using namespace rastrel::os;

TEST(Hex, every_byte_has_two_digits_of_the_letters_that_were_asked_for) {
  EXPECT_EQ(HexFromBytes(std::string("\x00\x0f\xa5\xff", 4)), "000fa5ff");
  EXPECT_EQ(HexFromBytes(std::string("\x00\x0f\xa5\xff", 4), HexCase::Upper), "000FA5FF");
  EXPECT_EQ(HexFromBytes(""), "");
}

TEST(Hex, digits_of_either_case_have_a_value_and_their_neighbors_none) {
  EXPECT_EQ(HexDigitValue('0'), 0u);
  EXPECT_EQ(HexDigitValue('9'), 9u);
  EXPECT_EQ(HexDigitValue('a'), 10u);
  EXPECT_EQ(HexDigitValue('F'), 15u);
  for (const char letter : std::string("/:@G`g \0", 8)) EXPECT_FALSE(HexDigitValue(letter));
}

TEST(Hex, two_digits_are_a_byte_and_anything_else_is_none) {
  EXPECT_EQ(ByteFromHex('a', '5'), 0xa5);
  EXPECT_FALSE(ByteFromHex('a', 'x'));
  EXPECT_FALSE(ByteFromHex(' ', '5'));
}

TEST(Hex, a_format_with_letters_of_one_case_takes_no_others) {
  EXPECT_EQ(ByteFromHex('a', '5', HexCase::Lower), 0xa5);
  EXPECT_EQ(ByteFromHex('5', 'A', HexCase::Upper), 0x5a);
  EXPECT_FALSE(ByteFromHex('A', '5', HexCase::Lower));
  EXPECT_FALSE(ByteFromHex('5', 'a', HexCase::Upper));
  EXPECT_FALSE(ByteFromHex('g', '5', HexCase::Lower));
}
