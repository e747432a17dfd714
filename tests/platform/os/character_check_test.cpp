#include "rastrel/platform/os/character_check.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

using rastrel::os::CharacterCheck;

// "line:column 0xBYTE" of the first bad byte, read in pieces of a size; "" if there is none.
std::string Fault(const char* encoding, std::string_view bytes, std::size_t piece) {
  const auto check = CharacterCheck::Make(encoding);
  if (!check) return "unknown";
  for (std::size_t at = 0; at < bytes.size(); at += piece) {
    const std::string_view next = bytes.substr(at, piece);
    if (check->Read(next) == next.size()) continue;
    return std::to_string(check->Line()) + ":" + std::to_string(check->Column()) + " " +
           std::to_string(check->BadByte());
  }
  return {};
}

// By the tables of the Unicode Consortium: 81 has no character in windows-1252, A5 none in
// ISO-8859-3; FD begins none in Shift_JIS, and 93 FA is one.
TEST(CharacterCheck, names_the_first_byte_that_begins_no_character) {
  for (const std::size_t piece : {1U, 2U, 3U, 100U}) {
    EXPECT_EQ(Fault("US-ASCII", "ab\nc\xE9 d", piece), "2:2 233") << piece;
    EXPECT_EQ(Fault("windows-1252", "\xE9\xE9\n\n\x81", piece), "3:1 129") << piece;
    EXPECT_EQ(Fault("iso-8859-3", "\xA5", piece), "1:1 165") << piece;
    EXPECT_EQ(Fault("Shift_JIS", "\x93\xFA\x93\xFA\xFDx", piece), "1:3 253") << piece;
  }
}

TEST(CharacterCheck, finds_nothing_in_sound_text) {
  const std::string rows(100'000, '\xE9');
  EXPECT_EQ(Fault("ISO-8859-1", rows, 7000), "");
  EXPECT_EQ(Fault("Shift_JIS", "\x93\xFA\x96\x7B", 1), "");
}

// Bytes before it belong to the piece; a character that began in the piece before belongs to none.
TEST(CharacterCheck, says_how_many_bytes_of_a_piece_are_sound) {
  const auto check = CharacterCheck::Make("US-ASCII");
  ASSERT_NE(check, nullptr);
  EXPECT_EQ(check->Read("abc"), 3U);
  EXPECT_EQ(check->Read("de\xFF"), 2U);
  EXPECT_EQ(check->Column(), 6);
  const auto two = CharacterCheck::Make("Shift_JIS");
  ASSERT_NE(two, nullptr);
  EXPECT_EQ(two->Read("a\x93"), 2U);
  EXPECT_EQ(two->Read("\x0A z"), 0U);
  EXPECT_EQ(two->BadByte(), 0x93);
}

TEST(CharacterCheck, is_for_encodings_that_the_system_knows_by_a_plain_name) {
  for (const char* name : {"no-such", "", "UTF-8", "utf-16", "UCS-2", "US-ASCII//TRANSLIT", "a b"})
    EXPECT_EQ(CharacterCheck::Make(name), nullptr) << name;
}

}  // namespace
