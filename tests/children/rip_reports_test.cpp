#include <gtest/gtest.h>

#include <string>
#include <variant>
#include <vector>

#include "children/corerast/command_line.h"
#include "interpreter/report_lines.h"
#include "interpreter/reporter.h"

namespace rastrel::corerast {
namespace {

using interpreter::LineCutter;
using interpreter::Reporter;

const std::string Word = "0123abcd";

std::string Read(const std::string& line) {
  const auto report = interpreter::ReadReport(line, Word);
  return report ? report->key + "=" + report->value : "(text)";
}

TEST(ReportLine, is_one_that_begins_with_the_secret_word) {
  EXPECT_EQ(Read("0123abcd PRINTER 4b5649"), "PRINTER=KVI");
  EXPECT_EQ(Read("0123abcd PAGE "), "PAGE=");
  EXPECT_EQ(Read("0123abcd X 00ff0a"), "X=" + std::string("\0\xff\n", 3));
}

TEST(ReportLine, is_nothing_else) {
  for (const char* const line :
       {"", "PAGE ", " 0123abcd PAGE ", "0123abce PAGE ", "0123abcdPAGE ", "0123abcd", "0123abcd ",
        "0123abcd PAGE", "0123abcd  4b", "0123abcd PAGE 4", "0123abcd PAGE 4B", "0123abcd PAGE 4b ",
        "ERROR: 0123abcd PAGE "}) {
    EXPECT_EQ(Read(line), "(text)") << line;
  }
  EXPECT_FALSE(interpreter::ReadReport(" PAGE ", ""));
}

std::vector<std::string> Cut(const std::string& text, std::size_t piece) {
  interpreter::LineCutter cutter;
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
  const auto lines = Cut(std::string(3 * interpreter::LineCutter::Limit + 5, 'x'), 1000);
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_EQ(lines[0].size(), LineCutter::Limit);
  EXPECT_EQ(lines[3], "rest xxxxx");
}

// What the reporter writes to the error stream.
template <typename Action>
std::string Written(Action action) {
  ::testing::internal::CaptureStderr();
  interpreter::Reporter reporter;
  action(reporter);
  return ::testing::internal::GetCapturedStderr();
}

TEST(Reporter, writes_the_line_protocol) {
  EXPECT_EQ(Written([](Reporter& reporter) {
              reporter.Info("READY");
              reporter.Warning("w");
              reporter.Error("e");
              reporter.Page(3);
            }),
            "INFO: READY\nWARNING: w\nERROR: e\nPAGE: 3\n");
}

TEST(Reporter, reports_a_percentage_only_when_it_grows) {
  EXPECT_EQ(Written([](Reporter& reporter) {
              for (const unsigned percent : {0U, 5U, 5U, 3U, 100U, 101U})
                reporter.Progress(percent);
            }),
            "PROGRESS: 5 %\nPROGRESS: 100 %\n");
}

TEST(Reporter, makes_no_report_of_a_jobs_text) {
  EXPECT_EQ(Written([](Reporter& reporter) {
              reporter.Text("ERROR: forged");
              reporter.Text(std::string("a\rERROR: b\nINFO: READY\0c", 24));
            }),
            "gs: ERROR: forged\ngs: a?ERROR: b?INFO: READY?c\n");
}

TEST(Reporter, passes_only_so_much_of_a_jobs_text_on) {
  const std::string written = Written([](Reporter& reporter) {
    for (std::size_t i = 0; i < Reporter::TextLimit; ++i) reporter.Text("0123456789");
  });
  EXPECT_LT(written.size(), 2 * Reporter::TextLimit);
  EXPECT_TRUE(written.ends_with("gs: (What the job writes beyond this is not shown.)\n"));
}

std::string ReadLine(std::vector<const char*> arguments) {
  const auto line = ReadCommandLine(arguments);
  if (const auto* const failure = std::get_if<interpreter::RunFailure>(&line)) {
    return std::to_string(static_cast<int>(failure->status)) + " " + failure->sentence;
  }
  const auto& read = std::get<CommandLine>(line);
  return std::string(read.install ? "install " : "") + read.prefix + "|" + read.job;
}

TEST(RipCommandLine, takes_what_the_library_writes) {
  EXPECT_EQ(ReadLine({"-M", "-Q", "-m128", "/nowhere/a.psp", "/nowhere/a.ps"}),
            "/nowhere/a.psp|/nowhere/a.ps");
  EXPECT_EQ(ReadLine({"-M", "-Q", "-m128", "-s", "/nowhere/a.ps"}), "install |/nowhere/a.ps");
  EXPECT_EQ(ReadLine({"\\nowhere\\a b.ps"}), "|/nowhere/a b.ps");
}

TEST(RipCommandLine, refuses_the_rest_as_bad_input) {
  EXPECT_EQ(ReadLine({}), "2 No job was given.");
  EXPECT_EQ(ReadLine({"-s"}), "2 No job was given.");
  EXPECT_EQ(ReadLine({"-m12x", "a"}), "2 Unknown option -m12x.");
  EXPECT_EQ(ReadLine({"a", "b", "c"}), "2 More than a prefix and a job were given.");
}

}  // namespace
}  // namespace rastrel::corerast
