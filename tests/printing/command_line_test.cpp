#include "rastrel/printing/command_line.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using rastrel::printing::ArgumentsOfCommandLine;
using Words = std::vector<std::wstring>;

TEST(CommandLine, quotes_keep_blanks_together_and_stand_nowhere_themselves) {
  EXPECT_EQ((Words{L"a b", L"c"}), ArgumentsOfCommandLine(L"\"a b\" \"c\" "));
  EXPECT_EQ((Words{L"a b"}), ArgumentsOfCommandLine(L"a\" \"b"));
  EXPECT_EQ((Words{L""}), ArgumentsOfCommandLine(L"\"\" "));
  EXPECT_EQ((Words{L"a", L"", L"b"}), ArgumentsOfCommandLine(L"a \"\" b"));
}

TEST(CommandLine, blanks_and_tabs_separate_outside_quotes) {
  EXPECT_EQ((Words{}), ArgumentsOfCommandLine(L""));
  EXPECT_EQ((Words{}), ArgumentsOfCommandLine(L" \t "));
  EXPECT_EQ((Words{L"a", L"b\nc"}), ArgumentsOfCommandLine(L"  a \t b\nc"));
}

TEST(CommandLine, nothing_escapes_a_quote) {
  EXPECT_EQ((Words{L"C:\\dir\\", L"b"}), ArgumentsOfCommandLine(L"\"C:\\dir\\\" \"b\" "));
  EXPECT_EQ((Words{L"a", L"b"}), ArgumentsOfCommandLine(L"\"a\" \"b\" "));
}

TEST(CommandLine, a_quote_without_its_partner_reaches_to_the_end) {
  EXPECT_EQ((Words{L"a b "}), ArgumentsOfCommandLine(L"\"a b "));
}

}  // namespace
