#include "pages/page_info.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "tests/support/scratch_directory.h"

namespace rastrel::pages {
namespace {

const std::string FirstSum(64, '1');
const std::string SecondSum(64, 'a');

PageInfo Sample() {
  PageInfo info;
  info.job =
      "100% Gr\xC3\xBC\xC3\x9F"
      "e\nzwei";
  info.printer = "KVI Tiff Screen Preview";
  info.mode = "TIFF/tiff default.ps";
  info.page = 2;
  info.width = 1240;
  info.height = 1754;
  info.xResolution = 150;
  info.yResolution = 72.5;
  info.color = PageColor::Separations;
  info.planes = {{"Black", "black.tif", 0}, {"Cut Contour", "spot 1.tif", 3}};
  info.files = {{"black.tif", 17, FirstSum}, {"spot 1.tif", 18446744073709551615U, SecondSum}};
  return info;
}

// Written by hand after docs/formats/page-directory.md.
const std::string SampleText =
    "Rastrel page 1\n"
    "job: 100%25 Gr\xC3\xBC\xC3\x9F"
    "e%0Azwei\n"
    "printer: KVI Tiff Screen Preview\n"
    "mode: TIFF/tiff default.ps\n"
    "page: 2\n"
    "width: 1240\n"
    "height: 1754\n"
    "x-resolution: 150\n"
    "y-resolution: 72.5\n"
    "bits: 8\n"
    "colour: separations\n"
    "plane: 0 black.tif Black\n"
    "plane: 3 spot%201.tif Cut Contour\n"
    "file: 17 " +
    FirstSum +
    " black.tif\n"
    "file: 18446744073709551615 " +
    SecondSum +
    " spot 1.tif\n"
    "end\n";

std::string Replaced(std::string text, const std::string& old, const std::string& fresh) {
  const std::size_t at = text.find(old);
  EXPECT_NE(at, std::string::npos) << old;
  return text.replace(at, old.size(), fresh);
}

// The line and the reason of the failure to read a text, or "read".
std::string Complaint(const std::string& text) {
  const auto info = pages::ParsePageInfo(text);
  if (info) return "read";
  EXPECT_EQ(info.Error().error, EINVAL);
  return "line " + std::to_string(info.Error().line) + ": " + info.Error().why;
}

TEST(PageInfo, is_written_line_by_line) { EXPECT_EQ(pages::FormatPageInfo(Sample()), SampleText); }

TEST(PageInfo, comes_back_as_it_was) {
  const auto read = pages::ParsePageInfo(SampleText);
  ASSERT_TRUE(read) << Describe(read.Error());
  const PageInfo expected = Sample();
  EXPECT_EQ(read->job, expected.job);
  EXPECT_EQ(read->printer, expected.printer);
  EXPECT_EQ(read->mode, expected.mode);
  EXPECT_EQ(read->page, 2U);
  EXPECT_EQ(read->width, 1240U);
  EXPECT_EQ(read->height, 1754U);
  EXPECT_EQ(read->xResolution, 150);
  EXPECT_EQ(read->yResolution, 72.5);
  EXPECT_EQ(read->bits, 8U);
  EXPECT_EQ(read->color, PageColor::Separations);
  ASSERT_EQ(read->planes.size(), 2U);
  EXPECT_EQ(read->planes[1].name, "Cut Contour");
  EXPECT_EQ(read->planes[1].file, "spot 1.tif");
  EXPECT_EQ(read->planes[1].channel, 3U);
  ASSERT_EQ(read->files.size(), 2U);
  EXPECT_EQ(read->files[1].name, "spot 1.tif");
  EXPECT_EQ(read->files[1].bytes, 18446744073709551615U);
  EXPECT_EQ(read->files[1].sum, SecondSum);
}

TEST(PageInfo, brings_every_byte_of_a_text_back) {
  pages::PageInfo info = Sample();
  info.job.clear();
  for (int byte = 0; byte < 256; ++byte) info.job += static_cast<char>(byte);
  info.planes[0].name = "  (a) %41 \xE2\x82\xAC\xE2 ";
  const auto read = pages::ParsePageInfo(pages::FormatPageInfo(info));
  ASSERT_TRUE(read) << Describe(read.Error());
  EXPECT_EQ(read->job, info.job);
  EXPECT_EQ(read->planes[0].name, info.planes[0].name);
}

TEST(PageInfo, may_lack_job_printer_and_mode) {
  pages::PageInfo info = Sample();
  info.job = info.printer = info.mode = "";
  const auto read = pages::ParsePageInfo(pages::FormatPageInfo(info));
  ASSERT_TRUE(read) << Describe(read.Error());
  EXPECT_EQ(read->job + read->printer + read->mode, "");
}

// Written by hand after docs/formats/page-directory.md.
TEST(PageInfo, may_have_the_access_of_its_job) {
  pages::PageInfo info = Sample();
  EXPECT_EQ(pages::FormatPageInfo(info), SampleText) << "none is known";
  info.access = 0640;
  const std::string text = Replaced(SampleText, "page: 2\n", "access: 0640\npage: 2\n");
  EXPECT_EQ(pages::FormatPageInfo(info), text);
  const auto read = pages::ParsePageInfo(text);
  ASSERT_TRUE(read) << Describe(read.Error());
  EXPECT_EQ(read->access, 0640U);
  for (const char* wrong : {"0755", "0440", "06400", "689", "", "-1"})
    EXPECT_EQ(Complaint(Replaced(text, "0640", wrong)), "line 5: not the permissions of a file")
        << wrong;
}

// Written by hand after docs/formats/page-directory.md.
TEST(PageInfo, may_have_the_looks_of_its_spot_colors) {
  pages::PageInfo info = Sample();
  info.planes[1].ink = {{0.2, 0, 1, 0.0501}};
  const std::string text =
      Replaced(SampleText, " Cut Contour\n", " Cut Contour\nink: 0.2 0 1 0.0501\n");
  EXPECT_EQ(pages::FormatPageInfo(info), text);
  const auto read = pages::ParsePageInfo(text);
  ASSERT_TRUE(read) << Describe(read.Error());
  EXPECT_EQ(read->planes[0].ink, std::nullopt);
  EXPECT_EQ(read->planes[1].ink, info.planes[1].ink);
  for (const char* wrong :
       {"0.2 0 1", "0.2 0 1 0.0501 0", "0.2 0 1 1.0001", "-0.1 0 1 0", "0.2 0 1 nan", "0.2 0 1 inf",
        "0.2  0 1 0", "0.2 0 1 0 ", "a 0 1 0", ""})
    EXPECT_EQ(Complaint(Replaced(text, "0.2 0 1 0.0501", wrong)),
              "line 14: not four parts of ink from 0 to 1")
        << wrong;
  EXPECT_EQ(Complaint(Replaced(text, "ink: 0.2 0 1 0.0501\n", "ink: 0 0 0 1\nink: 0 0 0 1\n")),
            "line 15: \"file: \" expected");
}

TEST(PageInfo, is_refused_when_cut_at_any_byte) {
  for (std::size_t length = 0; length < SampleText.size(); ++length) {
    EXPECT_FALSE(pages::ParsePageInfo(SampleText.substr(0, length))) << length;
  }
}

TEST(PageInfo, is_refused_with_the_line_that_is_wrong) {
  EXPECT_EQ(Complaint(Replaced(SampleText, "page 1", "page 2")),
            "line 1: not a page info of this version");
  EXPECT_EQ(Complaint(Replaced(SampleText, "100%25", "100%2")), "line 2: a bad escape");
  EXPECT_EQ(Complaint(Replaced(SampleText, "mode: ", "made: ")), "line 4: \"mode: \" expected");
  EXPECT_EQ(Complaint(Replaced(SampleText, "page: 2", "page: 0")), "line 5: not a number above 0");
  EXPECT_EQ(Complaint(Replaced(SampleText, "width: 1240", "width: -1")),
            "line 6: not a number above 0");
  EXPECT_EQ(Complaint(Replaced(SampleText, "height: 1754", "height: 4294967296")),
            "line 7: not a number above 0");
  EXPECT_EQ(Complaint(Replaced(SampleText, "x-resolution: 150", "x-resolution: inf")),
            "line 8: not a resolution above 0");
  EXPECT_EQ(Complaint(Replaced(SampleText, "72.5", "0")), "line 9: not a resolution above 0");
  EXPECT_EQ(Complaint(Replaced(SampleText, "separations", "sepia")),
            "line 11: an unknown colour model");
  EXPECT_EQ(Complaint(Replaced(SampleText, "plane: 0", "plane: 64")), "line 12: a bad channel");
  EXPECT_EQ(Complaint(Replaced(SampleText, " Black", " ")), "line 12: a plane without a name");
  EXPECT_EQ(Complaint(Replaced(SampleText, FirstSum, FirstSum.substr(1))),
            "line 14: a bad check sum");
  EXPECT_EQ(Complaint(SampleText + "\n"), "line 16: text behind the end");
}

TEST(PageInfo, names_no_file_outside_of_its_directory) {
  for (const std::string name : {"..", ".", "", "a/b", "/etc/passwd", "..%2Fpage.ppm", "a%00"}) {
    EXPECT_EQ(Complaint(Replaced(SampleText, " black.tif\nfile", " " + name + "\nfile")),
              "line 14: not a plain file name")
        << name;
  }
}

TEST(PageInfo, holds_planes_and_color_against_each_other) {
  pages::PageInfo info = Sample();
  for (const PageColor color : {PageColor::Gray, PageColor::Rgb, PageColor::Cmyk}) {
    info.color = color;
    EXPECT_FALSE(pages::ParsePageInfo(pages::FormatPageInfo(info)));
  }
  EXPECT_EQ(Complaint(Replaced(SampleText, "spot%201.tif", "spot%202.tif")),
            "line 16: a plane lies in a file that is not listed: spot 2.tif");
}

TEST(PageInfo, is_read_from_its_directory) {
  const test::ScratchDirectory directory;
  EXPECT_EQ(pages::ReadPageInfo(directory.Path()).Error().error, ENOENT);
  directory.Write(".info", SampleText);
  EXPECT_TRUE(pages::ReadPageInfo(directory.Path()));
  EXPECT_TRUE(pages::ReadPageInfo(directory.Path() + "/"));
  directory.Write(".info", std::string(2000000, 'x'));
  EXPECT_EQ(pages::ReadPageInfo(directory.Path()).Error().error, EFBIG);
  directory.Write(".info", "Rastrel page 1\nprinter: \n");
  EXPECT_EQ(Describe(pages::ReadPageInfo(directory.Path()).Error()),
            "read page info '" + directory.Path() + "/.info:2': \"job: \" expected");
}

}  // namespace
}  // namespace rastrel::pages
