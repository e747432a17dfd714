#include "interpreter/job_kind.h"

#include <gtest/gtest.h>

#include <string>

namespace rastrel::interpreter {
namespace {

const std::string Exit = "\x1b%-12345X";
const std::string PlainJob = "%!PS-Adobe-3.0\n%%Pages: 12\nshowpage\n";
const std::string EpsJob = "%!PS-Adobe-3.0 EPSF-3.0\r%%BoundingBox: 0 0 10 10\rshowpage\r";

JobLayout Layout(const std::string& text) { return FindJobLayout(text, text.size()); }

std::string LittleEndian(std::uint32_t value) {
  std::string bytes;
  for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(value >> shift);
  return bytes;
}

// The 30 bytes of a binary EPS header with a PostScript section and no preview.
std::string BinaryHeader(std::uint32_t offset, std::uint32_t length) {
  return "\xC5\xD0\xD3\xC6" + LittleEndian(offset) + LittleEndian(length) + std::string(16, '\0') +
         "\xFF\xFF";
}

TEST(JobKind, of_postscript_is_known_by_its_first_line) {
  const JobLayout layout = Layout(PlainJob);
  EXPECT_EQ(layout.kind, JobKind::PostScript);
  EXPECT_EQ(layout.offset, 0U);
  EXPECT_EQ(layout.length, PlainJob.size());
  EXPECT_EQ(layout.pages, 12U);
  EXPECT_FALSE(layout.wrapped);
}

TEST(JobKind, of_eps_is_known_by_its_first_line_with_any_line_end) {
  EXPECT_EQ(Layout(EpsJob).kind, JobKind::Eps);
  EXPECT_EQ(Layout("%!PS-Adobe-2.0 EPSF-1.2").kind, JobKind::Eps);
  EXPECT_EQ(Layout("%!PS-Adobe-3.0\n% EPSF\n").kind, JobKind::PostScript);
}

TEST(JobKind, of_eps_with_an_empty_box_is_postscript) {
  const std::string header = "%!PS-Adobe-3.0 EPSF-3.0\n";
  EXPECT_EQ(Layout(header + "%%BoundingBox: 0 0 0 0\n").kind, JobKind::PostScript);
  EXPECT_EQ(Layout(header + "%%BoundingBox: 10 10 5 20\n").kind, JobKind::PostScript);
  EXPECT_EQ(Layout(header + "%%BoundingBox: -5 -5 0.5 1\n").kind, JobKind::Eps);
  EXPECT_EQ(Layout(header + "%%BoundingBox: (atend)\n").kind, JobKind::Eps);
  EXPECT_EQ(Layout(header).kind, JobKind::Eps);
}

TEST(JobKind, leaves_out_the_bytes_before_the_header) {
  for (const std::string before :
       {"\xEF\xBB\xBF", "\x04", "\n\n  \t", "%%Title: from a host\n% more\r\n",
        "\x04\r\n%%Creator: x\n\n"}) {
    const JobLayout layout = Layout(before + EpsJob);
    EXPECT_EQ(layout.kind, JobKind::Eps) << before;
    EXPECT_EQ(layout.offset, before.size()) << before;
    EXPECT_EQ(layout.length, EpsJob.size()) << before;
    EXPECT_FALSE(layout.wrapped);
  }
}

TEST(JobKind, sees_through_a_printer_language_wrapper) {
  const std::string before = Exit + "@PJL JOB NAME=\"x\"\r\n@PJL ENTER LANGUAGE=POSTSCRIPT\r\n";
  const JobLayout layout = Layout(before + PlainJob);
  EXPECT_EQ(layout.kind, JobKind::PostScript);
  EXPECT_EQ(layout.offset, before.size());
  EXPECT_TRUE(layout.wrapped);
  EXPECT_TRUE(Layout(Exit + PlainJob).wrapped);
}

TEST(JobKind, of_pdf_may_have_its_header_later) {
  EXPECT_EQ(Layout("%PDF-1.4\n%\xE2\xE3\xCF\xD3\n1 0 obj\n").kind, JobKind::Pdf);
  EXPECT_EQ(Layout(std::string(1000, 'x') + "%PDF-1.4\n").kind, JobKind::Pdf);
  EXPECT_EQ(Layout(std::string(1024, 'x') + "%PDF-1.4\n").kind, JobKind::Unknown);
}

TEST(JobKind, of_anything_else_is_unknown) {
  for (const std::string text : {"", "%", "% only\n%% comments\n", "showpage",
                                 "\x7F"
                                 "ELF%!",
                                 "<html>%!PS", "@PJL\r\n", "\x1b%-12345X"}) {
    EXPECT_EQ(Layout(text).kind, JobKind::Unknown) << text;
  }
}

TEST(JobKind, of_binary_eps_takes_the_postscript_section) {
  const std::string file = BinaryHeader(30, 100) + std::string(200, 'x');
  const JobLayout layout = Layout(file);
  EXPECT_EQ(layout.kind, JobKind::Eps);
  EXPECT_EQ(layout.offset, 30U);
  EXPECT_EQ(layout.length, 100U);
  EXPECT_TRUE(layout.section);
}

TEST(JobKind, of_binary_eps_whose_section_lies_outside_is_unknown) {
  const std::string rest(70, 'x');
  EXPECT_EQ(Layout(BinaryHeader(30, 70) + rest).kind, JobKind::Eps);
  EXPECT_EQ(Layout(BinaryHeader(30, 71) + rest).kind, JobKind::Unknown);
  EXPECT_EQ(Layout(BinaryHeader(30, 0) + rest).kind, JobKind::Unknown);
  EXPECT_EQ(Layout(BinaryHeader(0, 50) + rest).kind, JobKind::Unknown);
  EXPECT_EQ(Layout(BinaryHeader(101, 1) + rest).kind, JobKind::Unknown);
  EXPECT_EQ(Layout(BinaryHeader(0xFFFFFFFF, 0xFFFFFFFF) + rest).kind, JobKind::Unknown);
}

TEST(JobKind, page_counts_that_say_nothing_are_zero) {
  EXPECT_EQ(Layout("%!PS\n%%Pages: (atend)\n").pages, 0U);
  EXPECT_EQ(Layout("%!PS\n%%Pages: -1\n").pages, 0U);
  EXPECT_EQ(Layout("%!PS\nx %%Pages: 3\n").pages, 0U);
  EXPECT_EQ(Layout("%!PS\r%%Pages: 3 1\r").pages, 3U);
}

TEST(JobWrapper, is_taken_off_the_end) {
  EXPECT_EQ(WrapperLength("showpage\n\x04"), 0U);
  const std::string closing = Exit + "@PJL EOJ\r\n" + Exit;
  EXPECT_EQ(WrapperLength("showpage\n" + Exit), Exit.size());
  EXPECT_EQ(WrapperLength("showpage\n" + closing), closing.size());
  EXPECT_EQ(WrapperLength(Exit + "showpage\n" + Exit), Exit.size());
}

TEST(JobTitle, is_the_first_title_comment) {
  EXPECT_EQ(FindTitle("\nserverdict begin 0 exitserver\n\n\n%%Title: job 12 \n\n%%Title: b\n"),
            "job 12");
  EXPECT_EQ(FindTitle("x %%Title: no\n"), "");
  EXPECT_EQ(FindTitle(""), "");
}

}  // namespace
}  // namespace rastrel::interpreter
