#include "rastrel/platform/os/shown_text.h"

#include <gtest/gtest.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <string>

#include "rastrel/platform/os/file.h"

namespace {

using rastrel::os::CleanLine;
using rastrel::os::CleanLines;
using rastrel::os::WholeCharacters;

TEST(CleanLine, shows_the_number_of_each_control_character) {
  EXPECT_EQ(CleanLine("a\x1b[2Jb\x07"), "a\\x1b[2Jb\\x07");
  EXPECT_EQ(CleanLine("a\r\nb\tc"), "a\\x0d\\x0ab\\x09c");
  EXPECT_EQ(CleanLine(std::string("a\0b\x7F", 4)), "a\\x00b\\x7f");
}

TEST(CleanLine, takes_the_controls_beyond_ascii_for_what_terminals_take_them_for) {
  // U+009B begins a control sequence as ESC [ does, and U+0085 is a line end.
  EXPECT_EQ(CleanLine("a\xC2\x9B"
                      "2Jb\xC2\x85"),
            "a\\u009b2Jb\\u0085");
  EXPECT_EQ(CleanLine("\xC2\x80\xC2\x9F\xC2\xA0"), "\\u0080\\u009f\xC2\xA0");
}

TEST(CleanLine, lets_no_text_break_the_line_or_turn_its_direction) {
  EXPECT_EQ(CleanLine("a\u2028b\u2029"), "a\\u2028b\\u2029");
  EXPECT_EQ(CleanLine("\u202Egpj.exe\u202C"), "\\u202egpj.exe\\u202c");
  EXPECT_EQ(CleanLine("\u2066a\u2069\u200F\u061C"), "\\u2066a\\u2069\\u200f\\u061c");
}

TEST(CleanLine, shows_characters_that_take_no_room) {
  EXPECT_EQ(CleanLine("Cut\u200B\uFEFF\u00AD\u2060"), "Cut\\u200b\\ufeff\\u00ad\\u2060");
  EXPECT_EQ(CleanLine("\U000E0041"), "\\U000e0041");
}

TEST(CleanLine, keeps_what_scripts_are_spelt_with) {
  for (const char* text :
       {"Müller & Söhne", "می\u200Cخواهم", "क्\u200Dष", "שלום", "字", "🪧", "a\\b"})
    EXPECT_EQ(CleanLine(text), text);
}

TEST(CleanLine, replaces_ill_formed_bytes) {
  EXPECT_EQ(CleanLine("a\xFF\x9B"
                      "b"),
            "a\uFFFD\uFFFDb");
  EXPECT_EQ(CleanLine("\xED\xA0\x80"), "\uFFFD\uFFFD\uFFFD");  // a surrogate
  EXPECT_EQ(CleanLine("\xC0\x9B"), "\uFFFD\uFFFD");            // ESC in an overlong form
}

TEST(CleanLine, leaves_clean_text_as_it_is) {
  const std::string once = CleanLine("a\x1b\u202E\xFF\\x1b");
  EXPECT_EQ(CleanLine(once), once);
}

TEST(CleanLines, keeps_line_ends_and_tabs_and_nothing_else) {
  EXPECT_EQ(CleanLines("a\tb\nc\r\x1b[A\xC2\x9B"), "a\tb\nc\\x0d\\x1b[A\\u009b");
  EXPECT_EQ(CleanLines("a\r\nb\r"), "a\r\nb\\x0d");
}

TEST(CleanLines, drops_a_byte_order_mark_at_the_start_alone) {
  EXPECT_EQ(CleanLines("\uFEFFa\uFEFF"), "a\\ufeff");
}

TEST(WholeCharacters, ends_before_a_character_that_is_not_whole) {
  EXPECT_EQ(WholeCharacters("ab"), 2U);
  EXPECT_EQ(WholeCharacters(""), 0U);
  EXPECT_EQ(WholeCharacters("a\r"), 1U);
  EXPECT_EQ(WholeCharacters("a\xC2"), 1U);
  EXPECT_EQ(WholeCharacters("a\xC2\x9B"), 3U);
  EXPECT_EQ(WholeCharacters("a\xE2\x80"), 1U);
  EXPECT_EQ(WholeCharacters("a\xF0\x9F\xAA"), 1U);
  EXPECT_EQ(WholeCharacters("a\xF0\x9F\xAA\xA7"), 5U);
}

TEST(WholeCharacters, waits_for_no_rest_of_a_byte_that_begins_nothing) {
  EXPECT_EQ(WholeCharacters("a\xFF"), 2U);
  EXPECT_EQ(WholeCharacters("a\xC0"), 2U);
  EXPECT_EQ(WholeCharacters("\x80\x80\x80\x80"), 4U);
}

// A terminal that passes bytes on as they come, in the place of the standard error stream.
class ErrorTerminal {
 public:
  ErrorTerminal() {
    termios raw{};
    ::cfmakeraw(&raw);
    EXPECT_EQ(::openpty(&m_Mine, &m_Its, nullptr, &raw, nullptr), 0);
    m_Kept = ::dup(STDERR_FILENO);
    ::dup2(m_Its, STDERR_FILENO);
  }
  // All that it was sent; the stream is the old one again.
  std::string Take() {
    ::dup2(m_Kept, STDERR_FILENO);
    ::close(m_Kept);
    ::close(m_Its);
    std::string all;
    std::array<char, 512> piece{};
    // At the end of a terminal without a program the call fails.
    for (ssize_t count = 0; (count = ::read(m_Mine, piece.data(), piece.size())) > 0;)
      all.append(piece.data(), static_cast<std::size_t>(count));
    ::close(m_Mine);
    return all;
  }

 private:
  int m_Mine = -1;
  int m_Its = -1;
  int m_Kept = -1;
};

TEST(WriteToStandardError, cleans_on_a_terminal_but_for_line_ends) {
  ErrorTerminal terminal;
  rastrel::os::WriteToStandardError("[Rip]a\x1b[2J\xC2\x9B\r\n\tb\n");
  EXPECT_EQ(terminal.Take(), "[Rip]a\\x1b[2J\\u009b\r\n\tb\n");
}

TEST(WriteToStandardError, leaves_bytes_as_they_are_elsewhere) {
  ::testing::internal::CaptureStderr();
  rastrel::os::WriteToStandardError("[Rip]a\x1b[2J\xFF\r\n");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "[Rip]a\x1b[2J\xFF\r\n");
}

}  // namespace
