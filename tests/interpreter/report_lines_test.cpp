#include "interpreter/report_lines.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace rastrel::interpreter {
namespace {

const std::string Word = "0123abcd";

std::string Read(const std::string& line) {
  const auto report = ReadReport(line, Word);
  return report ? report->key + "=" + report->value : "(text)";
}

TEST(ReportLine, is_one_that_begins_with_the_secret_word) {
  EXPECT_EQ(Read("0123abcd PRINTER 4b5649"), "PRINTER=KVI");
  EXPECT_EQ(Read("0123abcd PAGE "), "PAGE=");
  EXPECT_EQ(Read("0123abcd X 00ff0a"), "X=" + std::string("\0\xff\n", 3));
}

TEST(ReportLine, has_its_text_as_it_is_after_an_equals_sign) {
  EXPECT_EQ(Read("0123abcd CUT =S 0 1 m 12 3A "), "CUT=S 0 1 m 12 3A ");
  EXPECT_EQ(Read("0123abcd CUT ="), "CUT=");
  EXPECT_EQ(Read("0123abcd CUT ==4b"), "CUT==4b");
  EXPECT_EQ(Read("0123abcd CUT 4b=4b"), "(text)");
}

TEST(ReportLine, is_nothing_else) {
  for (const char* const line :
       {"", "PAGE ", " 0123abcd PAGE ", "0123abce PAGE ", "0123abcdPAGE ", "0123abcd", "0123abcd ",
        "0123abcd PAGE", "0123abcd  4b", "0123abcd PAGE 4", "0123abcd PAGE 4B", "0123abcd PAGE 4b ",
        "ERROR: 0123abcd PAGE "}) {
    EXPECT_EQ(Read(line), "(text)") << line;
  }
  EXPECT_FALSE(ReadReport(" PAGE ", ""));
}

std::vector<std::string> Cut(const std::string& text, std::size_t piece) {
  LineCutter cutter;
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < text.size(); at += piece) {
    cutter.Add(std::string_view(text).substr(at, piece));
    while (auto line = cutter.Next()) lines.push_back(*line);
  }
  lines.push_back("rest " + cutter.Last());
  return lines;
}

TEST(LineCutter, gives_whole_lines_whatever_the_pieces) {
  const std::vector<std::string> expected{"one", "two", "three", "rest fo"};
  for (std::size_t piece = 1; piece < 24; ++piece) {
    EXPECT_EQ(Cut("one\ntwo\r\n\n\nthree\rfo", piece), expected) << piece;
  }
}

TEST(LineCutter, gives_a_line_without_end_in_pieces) {
  const auto lines = Cut(std::string(3 * LineCutter::Limit + 5, 'x'), 1000);
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_EQ(lines[0].size(), LineCutter::Limit);
  EXPECT_EQ(lines[3], "rest xxxxx");
}

}  // namespace
}  // namespace rastrel::interpreter
