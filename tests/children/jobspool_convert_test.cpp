#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "children/jobspool/bitmap_file.h"
#include "rastrel/platform/os/path.h"
#include "tests/children/odalis_fixture.h"
#include "tests/children/queue_fixture.h"
#include "tests/support/ordinary_user.h"

namespace rastrel::jobspool::testing {
namespace {

namespace fs = std::filesystem;
using corerast::testing::CheckedInfo;
using corerast::testing::Pixels;
using corerast::testing::ReadPixels;

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// A Windows bitmap with 24 bits, read by its specification.
struct Bitmap {
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::uint32_t dotsPerMetre = 0;
  std::string data;

  [[nodiscard]] std::string At(unsigned x, unsigned y) const {
    const std::size_t stride = (static_cast<std::size_t>(width) * 3 + 3) / 4 * 4;
    const std::size_t row = static_cast<std::size_t>(height) - 1 - y;
    std::string text;
    for (std::size_t i = 3; i-- > 0;) {
      const char sample = data.at(54 + row * stride + x * std::size_t{3} + i);
      text += (text.empty() ? "" : ",") + std::to_string(static_cast<unsigned char>(sample));
    }
    return text;
  }
};

Bitmap ReadBitmap(const std::string& path) {
  Bitmap bitmap;
  bitmap.data = ReadFile(path);
  if (bitmap.data.size() < 54) {
    ADD_FAILURE() << path;
    return bitmap;
  }
  const auto number = [&](std::size_t at, std::size_t bytes) {
    std::uint32_t value = 0;
    for (std::size_t i = bytes; i-- > 0;) {
      value = value << 8 | static_cast<unsigned char>(bitmap.data[at + i]);
    }
    return value;
  };
  EXPECT_EQ(bitmap.data.substr(0, 2), "BM");
  EXPECT_EQ(number(2, 4), bitmap.data.size());
  EXPECT_EQ(number(10, 4), 54U);
  EXPECT_EQ(number(14, 4), 40U);
  EXPECT_EQ(number(26, 2), 1U);
  EXPECT_EQ(number(28, 2), 24U);
  EXPECT_EQ(number(30, 4), 0U);
  bitmap.width = static_cast<std::int32_t>(number(18, 4));
  bitmap.height = static_cast<std::int32_t>(number(22, 4));
  bitmap.dotsPerMetre = number(38, 4);
  EXPECT_EQ(number(42, 4), bitmap.dotsPerMetre);
  return bitmap;
}

// A blue square in the lower left corner of the box, a green one in the upper right.
const std::string Squares =
    "0 0 1 setrgbcolor 100 200 50 50 rectfill 0 1 0 setrgbcolor 250 250 50 50 rectfill\n";
const std::string Eps = "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 100 200 300 300\n" + Squares;

class QueueConvert : public ::testing::Test {
 protected:
  void SetUp() override { REQUIRE_GHOSTSCRIPT(); }

  ProgramRun Run(const std::string& content, const std::string& name = "vkaaaaaa.ps") {
    m_Stem = m_Bench.RipDirectory() + "/" + name.substr(0, name.rfind('.'));
    return m_Bench.Convert(m_Bench.Job(name, content));
  }
  void RunWell(const std::string& content) {
    const ProgramRun outcome = Run(content);
    EXPECT_EQ(outcome.status, 0) << outcome.reports;
    EXPECT_TRUE(outcome.reports.ends_with("INFO: CLQ_success\n")) << outcome.reports;
  }
  void ExpectNothing(const ProgramRun& outcome) {
    EXPECT_NE(outcome.status, 0);
    EXPECT_TRUE(outcome.reports.ends_with("INFO: CLQ_failure\n")) << outcome.reports;
    EXPECT_NE(outcome.reports.find("\nERROR: "), std::string::npos);
    EXPECT_EQ(m_Bench.Leftovers(), std::vector<std::string>{"vkaaaaaa.ps"});
  }
  [[nodiscard]] Pixels Page() const { return ReadPixels(m_Stem + ".cfm/page.ppm"); }

  QueueFixture m_Bench;
  std::string m_Stem;
};

TEST_F(QueueConvert, reports_its_steps_in_order) {
  const ProgramRun outcome = Run(Header("%# KVI_Res= 72\r\n") + Eps);
  EXPECT_EQ(outcome.status, 0);
  std::size_t at = 0;
  for (const char* const line :
       {"INFO: INITIALISING\n", "INFO: READY\n", "INFO: INTERPRETING\n", "INFO: CONVERTING\n",
        "PAGE: 1\n", "INFO: FLUSHING\n", "INFO: CLQ_success\n"}) {
    const std::size_t found = outcome.reports.find(line, at);
    ASSERT_NE(found, std::string::npos) << line << outcome.reports;
    at = found;
  }
  EXPECT_TRUE(outcome.output.empty());
  EXPECT_TRUE(m_Bench.Processes().empty());
}

TEST_F(QueueConvert, makes_the_page_directory_and_the_bitmap_and_nothing_else) {
  RunWell(Header("%# KVI_Res= 72\r\n") + Eps);
  EXPECT_EQ(m_Bench.Leftovers(),
            (std::vector<std::string>{"vkaaaaaa.cfm", "vkaaaaaa.ps", "vkaaaaaa_Color.bmp"}));
  const pages::PageInfo info = CheckedInfo(m_Stem + ".cfm");
  EXPECT_EQ(info.width, 200U);
  EXPECT_EQ(info.height, 100U);
  EXPECT_EQ(info.xResolution, 72);
  EXPECT_EQ(info.color, pages::PageColor::Rgb);
}

TEST_F(QueueConvert, the_declared_box_is_the_picture) {
  RunWell(Header("%# KVI_Res= 72\r\n") + Eps);
  const Pixels page = Page();
  EXPECT_EQ(page.At(0, 99), "0,0,255");
  EXPECT_EQ(page.At(49, 50), "0,0,255");
  EXPECT_EQ(page.At(50, 49), "255,255,255");
  EXPECT_EQ(page.At(199, 0), "0,255,0");
  EXPECT_EQ(page.At(150, 49), "0,255,0");
  EXPECT_EQ(page.At(149, 50), "255,255,255");
  EXPECT_EQ(page.At(0, 0), "255,255,255");
}

TEST_F(QueueConvert, the_bitmap_holds_the_same_pixels) {
  RunWell(Header("%#PageSize=Custom,101.0,50.0\r\n%# KVI_Res= 72\r\n") + Eps);
  const Pixels page = Page();
  const Bitmap bitmap = ReadBitmap(m_Stem + "_Color.bmp");
  ASSERT_EQ(bitmap.width, 101);
  ASSERT_EQ(bitmap.height, 50);
  EXPECT_EQ(bitmap.dotsPerMetre, 2835U);
  for (unsigned y = 0; y < 50; ++y) {
    for (unsigned x = 0; x < 101; ++x) ASSERT_EQ(bitmap.At(x, y), page.At(x, y)) << x << "," << y;
  }
  EXPECT_EQ(bitmap.At(0, 49), "0,0,255");
  EXPECT_EQ(bitmap.At(100, 0), "0,255,0");
}

TEST_F(QueueConvert, the_page_size_is_filled_and_never_turned) {
  RunWell(Header("%#PageSize=Custom,50.000000,200.000000\r\n%# KVI_Res= 144\r\n") + Eps);
  const Pixels page = Page();
  ASSERT_EQ(page.width, 100U);
  ASSERT_EQ(page.height, 400U);
  EXPECT_EQ(page.At(0, 399), "0,0,255");
  EXPECT_EQ(page.At(24, 201), "0,0,255");
  EXPECT_EQ(page.At(26, 399), "255,255,255");
  EXPECT_EQ(page.At(99, 0), "0,255,0");
  EXPECT_EQ(page.At(76, 198), "0,255,0");
}

TEST_F(QueueConvert, a_page_that_the_job_sets_fills_the_size_too) {
  const std::string page =
      "%!PS\n<< /PageSize [ 200 100 ] /HWResolution [ 600 600 ] /Policies << /PageSize 3 >> "
      "/Install { 9 9 scale } /EndPage { pop pop false } >> setpagedevice\n"
      "1 0 0 setrgbcolor 0 0 100 50 rectfill showpage\n";
  RunWell(Header("%#PageSize=Custom,100.0,100.0\r\n%# KVI_Res= 72\r\n") + page);
  ASSERT_EQ(Page().width, 100U);
  ASSERT_EQ(Page().height, 100U);
  EXPECT_EQ(Page().At(1, 98), "255,0,0");
  EXPECT_EQ(Page().At(48, 52), "255,0,0");
  EXPECT_EQ(Page().At(52, 98), "255,255,255");
  EXPECT_EQ(Page().At(1, 48), "255,255,255");
  RunWell(Header("%# KVI_Res= 36\r\n") + page);
  EXPECT_EQ(Page().width, 100U);
  EXPECT_EQ(Page().height, 50U);
}

TEST_F(QueueConvert, a_job_may_ask_for_a_page_of_any_size) {
  m_Bench.Set("RASTREL_RIP_PIXELS", "20000");
  RunWell(Header("%# KVI_Res= 72\r\n") +
          "%!PS\n%%BoundingBox: 100 200 300 300\n<< /PageSize [ 9000 9000 ] >> setpagedevice\n" +
          Squares + "showpage\n");
  EXPECT_EQ(Page().At(0, 99), "0,0,255");
  RunWell(Header("%# KVI_Res= 72\r\n") + "%!PS\n%%BoundingBox: 100 200 300 300\nletter\n" +
          Squares + "showpage\n");
  EXPECT_EQ(Page().At(199, 0), "0,255,0");
}

TEST_F(QueueConvert, a_job_without_any_size_is_the_box_around_its_marks) {
  RunWell(Header("%# KVI_Res= 72\r\n") + "%!PS\n" + Squares + "showpage\n");
  EXPECT_NEAR(Page().width, 200, 1);
  EXPECT_NEAR(Page().height, 100, 1);
  EXPECT_EQ(Page().At(2, 97), "0,0,255");
  EXPECT_EQ(Page().At(197, 2), "0,255,0");
}

TEST_F(QueueConvert, a_size_that_the_host_did_not_know_is_none) {
  RunWell(Header("%#PageSize=Custom,0.000000,0.000000\r\n%# KVI_Res= 72\r\n") + Eps);
  EXPECT_EQ(Page().width, 200U);
}

TEST_F(QueueConvert, a_job_may_leave_its_page_open) {
  RunWell(Header("%# KVI_Res= 72\r\n") + Eps + "\x04");
  EXPECT_EQ(Page().At(0, 99), "0,0,255");
}

TEST_F(QueueConvert, a_picture_is_the_first_page_and_no_more_is_run) {
  RunWell(Header("%# KVI_Res= 72\r\n") + Eps + "showpage 0 0 999 999 rectfill showpage {} loop\n");
  EXPECT_EQ(Page().At(50, 49), "255,255,255");
  EXPECT_FALSE(fs::exists(m_Stem + ".cfm/p0002"));
}

TEST_F(QueueConvert, without_a_resolution_it_is_the_ordinary_one) {
  RunWell(Header() + Eps);
  EXPECT_EQ(Page().width, 200U);
}

const std::string Pdf =
    "%PDF-1.4\n1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n"
    "2 0 obj<</Type/Pages/Kids[3 0 R]/Count 1>>endobj\n"
    "3 0 obj<</Type/Page/Parent 2 0 R/MediaBox[0 0 300 500]/CropBox[50 100 250 400]"
    "/Contents 4 0 R>>endobj\n4 0 obj<</Length 29>>stream\n1 0 0 rg 50 100 100 150 re f \n"
    "endstream endobj\ntrailer<</Root 1 0 R>>\n%%EOF\n";

TEST_F(QueueConvert, a_pdf_has_its_header_beside_it) {
  m_Bench.Job("vkaaaaaa.jhdr", Header("%# KVI_Res= 36\r\n"));
  const ProgramRun outcome = Run(Pdf, "vkaaaaaa.pdf");
  ASSERT_EQ(outcome.status, 0) << outcome.reports;
  ASSERT_EQ(Page().width, 100U);
  ASSERT_EQ(Page().height, 150U);
  EXPECT_EQ(Page().At(1, 148), "255,0,0");
  EXPECT_EQ(Page().At(48, 77), "255,0,0");
  EXPECT_EQ(Page().At(52, 148), "255,255,255");
  EXPECT_TRUE(fs::exists(m_Stem + ".jhdr"));
  EXPECT_EQ(ReadBitmap(m_Stem + "_Color.bmp").At(1, 148), "255,0,0");
}

TEST_F(QueueConvert, a_pdf_fills_a_page_size_too) {
  m_Bench.Job("vkaaaaaa.jhdr", Header("%#PageSize=Custom,80,40\r\n%# KVI_Res= 72\r\n"));
  ASSERT_EQ(Run(Pdf, "vkaaaaaa.pdf").status, 0);
  ASSERT_EQ(Page().width, 80U);
  ASSERT_EQ(Page().height, 40U);
  EXPECT_EQ(Page().At(1, 38), "255,0,0");
  EXPECT_EQ(Page().At(38, 21), "255,0,0");
  EXPECT_EQ(Page().At(42, 38), "255,255,255");
}

// The second page is half as large as the first, and blue.
const std::string TwoPages =
    "%PDF-1.4\n1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n"
    "2 0 obj<</Type/Pages/Kids[3 0 R 5 0 R]/Count 2>>endobj\n"
    "3 0 obj<</Type/Page/Parent 2 0 R/MediaBox[0 0 144 72]/Contents 4 0 R>>endobj\n"
    "4 0 obj<</Length 27>>stream\n1 0 0 rg 0 0 144 72 re f   \nendstream endobj\n"
    "5 0 obj<</Type/Page/Parent 2 0 R/MediaBox[0 0 72 72]/Contents 6 0 R>>endobj\n"
    "6 0 obj<</Length 27>>stream\n0 0 1 rg 0 0 72 72 re f    \nendstream endobj\n"
    "trailer<</Root 1 0 R>>\n%%EOF\n";

TEST_F(QueueConvert, a_pdfs_picture_is_of_the_page_that_is_chosen) {
  m_Bench.Job("vkaaaaaa.jhdr", Header());
  ASSERT_EQ(Run(TwoPages, "vkaaaaaa.pdf").status, 0);
  EXPECT_EQ(Page().width, 144U);
  EXPECT_EQ(Page().At(36, 36), "255,0,0");
  m_Bench.Set("RASTREL_RIP_PAGE", "2");
  ASSERT_EQ(Run(TwoPages, "vkaaaaaa.pdf").status, 0);
  EXPECT_EQ(Page().width, 72U);
  EXPECT_EQ(Page().At(36, 36), "0,0,255");
}

TEST_F(QueueConvert, a_pdf_without_the_chosen_page_says_how_many_it_has) {
  m_Bench.Job("vkaaaaaa.jhdr", Header());
  m_Bench.Set("RASTREL_RIP_PAGE", "3");
  const ProgramRun outcome = Run(TwoPages, "vkaaaaaa.pdf");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_NE(outcome.reports.find("has no page of the number that is asked for; it has 2"),
            std::string::npos)
      << outcome.reports;
}

TEST_F(QueueConvert, a_pdf_has_any_resolution_too) {
  for (const unsigned resolution : {1U, 3U, 4U}) {
    m_Bench.Job("vkaaaaaa.jhdr", Header("%# KVI_Res= " + std::to_string(resolution) + "\r\n"));
    ASSERT_EQ(Run(Pdf, "vkaaaaaa.pdf").status, 0);
    EXPECT_NEAR(Page().width, 200 * resolution / 72.0, 0.51);
    EXPECT_NEAR(Page().height, 300 * resolution / 72.0, 0.51);
    EXPECT_EQ(CheckedInfo(m_Stem + ".cfm").xResolution, resolution);
  }
}

TEST_F(QueueConvert, a_job_without_a_header_is_separated_page_by_page) {
  RunWell(
      "%!PS\n<< /PageSize [ 72 72 ] >> setpagedevice 0 1 0 0 setcmykcolor 0 0 36 72 rectfill "
      "showpage\n"
      "[ /Separation (Gold) /DeviceCMYK { pop 0 0 1 0 } ] setcolorspace 1 setcolor 0 0 36 72 "
      "rectfill showpage\n");
  const pages::PageInfo first = CheckedInfo(m_Stem + ".cfm");
  EXPECT_EQ(first.planes.size(), 4U);
  EXPECT_EQ(first.page, 1U);
  EXPECT_EQ(first.width, 300U);
  const pages::PageInfo second = CheckedInfo(m_Stem + ".cfm/p0002");
  ASSERT_EQ(second.planes.size(), 5U);
  EXPECT_EQ(second.page, 2U);
  EXPECT_EQ(second.planes[4].name, "Gold");
  const auto ink = [&](const std::string& file, std::size_t x) {
    const auto plane = odalis::testing::ReadTiff(m_Stem + ".cfm/" + file);
    EXPECT_EQ(plane.pixels.size(), 300U * 300U) << file;
    return plane.pixels.empty() ? -1 : 255 - plane.pixels.at(150 * 300 + x);
  };
  for (const char* const none : {"cyan.tif", "yellow.tif", "black.tif", "p0002/magenta.tif"}) {
    EXPECT_EQ(ink(none, 10), 0) << none;
  }
  EXPECT_EQ(ink("magenta.tif", 10), 255);
  EXPECT_EQ(ink("magenta.tif", 290), 0);
  EXPECT_EQ(ink("p0002/" + second.planes[4].file, 10), 255);
  EXPECT_EQ(ink("p0002/" + second.planes[4].file, 290), 0);
  EXPECT_EQ(m_Bench.Leftovers(), (std::vector<std::string>{"vkaaaaaa.cfm", "vkaaaaaa.ps"}));
}

TEST_F(QueueConvert, a_line_of_the_header_that_can_not_be_used_is_warned_of) {
  const ProgramRun outcome = Run(Header("%# KVI_Res= many\r\n") + Eps);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_NE(outcome.reports.find("\nWARNING: The job header's line \"%# KVI_Res= many\""),
            std::string::npos);
}

TEST_F(QueueConvert, files_of_an_earlier_run_are_replaced) {
  m_Bench.Job("vkaaaaaa.cut", "old");
  m_Bench.Job("vkaaaaaa_Color.bmp", "old");
  fs::create_directories(m_Bench.RipDirectory() + "/vkaaaaaa.cfm/p0007");
  m_Bench.Job("vkaaaaaa.cfm/.info", "old");
  RunWell(Header("%# KVI_Res= 72\r\n") + Eps);
  EXPECT_FALSE(fs::exists(m_Stem + ".cut"));
  EXPECT_FALSE(fs::exists(m_Stem + ".cfm/p0007"));
  EXPECT_EQ(CheckedInfo(m_Stem + ".cfm").width, 200U);
}

TEST_F(QueueConvert, a_directory_that_is_somebody_elses_stays) {
  fs::create_directories(m_Bench.RipDirectory() + "/vkaaaaaa.cfm");
  m_Bench.Job("vkaaaaaa.cfm/letter.txt", "dear");
  const ProgramRun outcome = Run(Header() + Eps);
  EXPECT_EQ(outcome.status, 3);
  EXPECT_EQ(ReadFile(m_Stem + ".cfm/letter.txt"), "dear");
}

TEST_F(QueueConvert, a_bitmap_that_nobody_fetched_goes_after_an_hour) {
  const auto age = [&](const std::string& name, int minutes) {
    fs::last_write_time(m_Bench.Job(name, "x"),
                        fs::file_time_type::clock::now() - std::chrono::minutes(minutes));
  };
  age("vkbbbbbb_Color.bmp", 61);  // goes
  age("vkcccccc_Color.bmp", 59);  // may still be fetched
  age("vkdddddd_Color.bmp", 90);  // its job is there
  age("vkdddddd.ps", 90);
  age("poster_Color.bmp", 90);  // of somebody's own name
  RunWell(Header() + Eps);
  EXPECT_FALSE(fs::exists(m_Bench.RipDirectory() + "/vkbbbbbb_Color.bmp"));
  for (const char* const kept : {"vkcccccc", "vkdddddd", "poster"}) {
    EXPECT_TRUE(fs::exists(m_Bench.RipDirectory() + "/" + kept + "_Color.bmp")) << kept;
  }
}

TEST_F(QueueConvert, a_job_that_fails_leaves_nothing) {
  const ProgramRun failed = Run(Header() + "%!PS\n%%BoundingBox: 0 0 9 9\nno.such.name\n");
  EXPECT_EQ(failed.status, 1);
  ExpectNothing(failed);
  EXPECT_EQ(Run("hello").status, 2);
  const ProgramRun measured = Run(Header() + "%!PS\nno.such.name\n");
  EXPECT_EQ(measured.status, 1);
  ExpectNothing(measured);
}

TEST_F(QueueConvert, without_its_interpreter_or_prolog_it_fails) {
  m_Bench.Set("PATH", "/nowhere");
  ProgramRun outcome = Run(Header() + Eps);
  EXPECT_EQ(outcome.status, 3);
  EXPECT_NE(outcome.reports.find("Ghostscript is not installed"), std::string::npos);
  ExpectNothing(outcome);
  m_Bench.Set("PATH", os::EnvironmentValue("PATH"));
  fs::remove_all(m_Bench.RipDirectory() + "/System/prolog");
  outcome = Run(Header() + Eps);
  EXPECT_EQ(outcome.status, 3);
  ExpectNothing(outcome);
}

TEST_F(QueueConvert, a_long_job_reports_its_progress) {
  std::string strokes;
  while (strokes.size() < 3000000) strokes += "20 { 0 0 moveto 99 300 lineto stroke } repeat\n";
  const ProgramRun outcome = Run(Header("%# KVI_Res= 300\r\n") + Eps + strokes);
  ASSERT_EQ(outcome.status, 0);
  int last = 0;
  unsigned count = 0;
  for (std::size_t at = outcome.reports.find("\nPROGRESS: "); at != std::string::npos;
       at = outcome.reports.find("\nPROGRESS: ", at + 1)) {
    int percent = 0;
    ASSERT_EQ(std::sscanf(outcome.reports.c_str() + at, "\nPROGRESS: %d %%", &percent), 1);
    EXPECT_GT(percent, last);
    EXPECT_LT(percent, 100);
    last = percent;
    ++count;
  }
  EXPECT_GE(count, 2U) << outcome.reports;
}

TEST_F(QueueConvert, a_job_without_a_file_or_arguments_fails) {
  const ProgramRun missing = m_Bench.Convert(m_Bench.Root() + "/none.ps");
  EXPECT_EQ(missing.status, 2);
  EXPECT_TRUE(missing.Says("INFO: CLQ_failure"));
  EXPECT_EQ(m_Bench.RunProgram({m_Bench.Program()}).status, 2);
}

TEST_F(QueueConvert, a_picture_that_is_too_large_is_refused) {
  m_Bench.Set("RASTREL_RIP_PIXELS", "20000");
  EXPECT_EQ(Run(Header("%# KVI_Res= 72\r\n") + Eps).status, 0);  // 200 by 100
  m_Bench.Set("RASTREL_RIP_PIXELS", "19999");
  fs::remove_all(m_Stem + ".cfm");
  fs::remove(m_Stem + "_Color.bmp");
  const ProgramRun outcome = Run(Header("%# KVI_Res= 72\r\n") + Eps);
  EXPECT_EQ(outcome.status, 3);
  ExpectNothing(outcome);
  EXPECT_NE(outcome.reports.find("RASTREL_RIP_PIXELS"), std::string::npos);
}

TEST_F(QueueConvert, a_picture_has_a_pixel_at_least_and_any_resolution) {
  RunWell(Header("%#PageSize=Custom,0.1,72.0\r\n%# KVI_Res= 72\r\n") + Eps);
  EXPECT_EQ(Page().width, 1U);
  EXPECT_EQ(Page().height, 72U);
  for (const unsigned resolution : {1U, 2U, 3U, 4U, 5U, 9U}) {
    RunWell(
        Header("%#PageSize=Custom,1440,720\r\n%# KVI_Res= " + std::to_string(resolution) + "\r\n") +
        Eps);
    const Pixels page = Page();
    ASSERT_EQ(page.width, 20 * resolution);
    ASSERT_EQ(page.height, 10 * resolution);
    EXPECT_EQ(page.At(0, 10 * resolution - 1), "0,0,255");
    EXPECT_EQ(page.At(20 * resolution - 1, 0), "0,255,0");
    EXPECT_EQ(page.At(10 * resolution, 0), "255,255,255");
    EXPECT_EQ(CheckedInfo(m_Stem + ".cfm").xResolution, resolution);
  }
}

TEST_F(QueueConvert, a_box_without_bounds_is_refused_with_a_message) {
  const ProgramRun outcome =
      Run(Header("%# KVI_Res= 72\r\n") + "%!PS\n%%BoundingBox: 0 0 9999999 9999999\nshowpage\n");
  EXPECT_EQ(outcome.status, 3);
  ExpectNothing(outcome);
  EXPECT_NE(outcome.reports.find("9999999 x 9999999 pixels"), std::string::npos) << outcome.reports;
}

TEST_F(QueueConvert, an_endless_job_ends_at_the_limit) {
  m_Bench.Set("RASTREL_RIP_TIMEOUT", "1");
  const ProgramRun outcome = Run(Header() + "%!PS\n%%BoundingBox: 0 0 9 9\n{} loop\n");
  EXPECT_EQ(outcome.status, 3);
  ExpectNothing(outcome);
  EXPECT_TRUE(m_Bench.Processes().empty());
}

TEST_F(QueueConvert, a_job_reaches_no_file_outside_its_own) {
  const std::string victim = m_Bench.Job("victim", "mine");
  const std::string job =
      Header() + "%!PS\n%%BoundingBox: 0 0 9 9\n[ (" + victim + ") (" + m_Bench.RipDirectory() +
      "/new) (vkaaaaaa.ps) (../new) (%pipe%touch " + m_Bench.RipDirectory() +
      "/new) ] { mark exch { (w) file dup (bad) writestring closefile } stopped cleartomark } "
      "forall\nmark { (" +
      victim + ") deletefile } stopped cleartomark\nmark { (" + victim +
      ") (r) file closefile (READ IT) = flush } stopped cleartomark\nshowpage\n";
  const ProgramRun outcome = Run(job);
  EXPECT_EQ(outcome.reports.find("READ IT"), std::string::npos);
  EXPECT_EQ(ReadFile(victim), "mine");
  EXPECT_FALSE(fs::exists(m_Bench.RipDirectory() + "/new"));
  EXPECT_FALSE(fs::exists(m_Bench.Root() + "/Queue/new"));
}

TEST_F(QueueConvert, the_prefix_can_not_be_reached_by_a_name) {
  // A separation's name is any text of the header; none of it is run.
  const ProgramRun outcome =
      Run(Header("%# KVI_CutLine= SEP, ) quit (\r\n%# KVI_CutLine= SEP, > /x\r\n") + Eps);
  EXPECT_EQ(outcome.status, 0) << outcome.reports;
  EXPECT_TRUE(fs::exists(m_Stem + ".cut"));
}

// Gives a directory with all in it to the ordinary user, and back.
class OwnedBy {
 public:
  explicit OwnedBy(fs::path directory) : m_Directory(std::move(directory)) { Give(65534); }
  ~OwnedBy() { Give(0); }
  OwnedBy(const OwnedBy&) = delete;
  OwnedBy& operator=(const OwnedBy&) = delete;

 private:
  void Give(uid_t user) const {
    if (geteuid() != 0) return;
    EXPECT_EQ(lchown(m_Directory.c_str(), user, static_cast<gid_t>(-1)), 0);
    for (const auto& entry : fs::recursive_directory_iterator(m_Directory))
      EXPECT_EQ(lchown(entry.path().c_str(), user, static_cast<gid_t>(-1)), 0);
  }
  fs::path m_Directory;
};

TEST_F(QueueConvert, a_directory_that_takes_no_file_fails) {
#if defined(__SANITIZE_ADDRESS__)
  if (::geteuid() == 0)
    GTEST_SKIP() << "leaks are counted as a debugger looks for them, which a changed user may not";
#endif
  const std::string place = m_Bench.RipDirectory() + "/closed";
  fs::create_directories(place);
  const std::string job = m_Bench.Job("closed/a.ps", Header() + Eps);
  // The superuser may write everywhere, so the data root goes to somebody whom permissions bind.
  const OwnedBy nobody(fs::path(m_Bench.Root()).parent_path());
  const auto convert = [&](fs::perms permissions) {
    fs::permissions(place, permissions);
    const test::OrdinaryUser user;
    return m_Bench.Convert(job);
  };
  const ProgramRun closed = convert(fs::perms::owner_read | fs::perms::owner_exec);
  EXPECT_EQ(closed.status, 3) << closed.reports;
  EXPECT_TRUE(closed.Says("INFO: CLQ_failure"));
  const ProgramRun open = convert(fs::perms::owner_all);
  EXPECT_EQ(open.status, 0) << "nothing but the permissions was in the way: " << open.reports;
}

TEST_F(QueueConvert, a_relative_path_is_a_place_like_any) {
  // The runs' working directory is the RIP's.
  m_Bench.Job("here.ps", Header("%# KVI_Res= 72\r\n") + Eps);
  const ProgramRun outcome = m_Bench.Convert("here.ps");
  EXPECT_EQ(outcome.status, 0) << outcome.reports;
  EXPECT_EQ(CheckedInfo(m_Bench.RipDirectory() + "/here.cfm").width, 200U);
}

TEST_F(QueueConvert, a_path_in_the_librarys_text_is_the_same_place) {
  m_Bench.Job("here.ps", Header("%# KVI_Res= 72\r\n") + Eps);
  std::string path = m_Bench.RipDirectory() + "\\here.ps";
  EXPECT_EQ(m_Bench.Convert(path).status, 0);
  EXPECT_TRUE(fs::exists(m_Bench.RipDirectory() + "/here.cfm/.info"));
}

// A picture of that size whose samples take no room on the disk.
std::string SparsePicture(const test::ScratchDirectory& scratch, std::uint64_t width,
                          std::uint64_t height, std::uint64_t missing = 0) {
  const std::string head =
      "P6\n" + std::to_string(width) + " " + std::to_string(height) + "\n255\n";
  scratch.Write("page.ppm", head);
  fs::resize_file(scratch.Path("page.ppm"), head.size() + width * height * 3 - missing);
  return scratch.Path("page.ppm");
}

TEST(QueueBitmap, holds_rows_of_every_width_from_the_bottom) {
  const test::ScratchDirectory scratch;
  for (unsigned width = 1; width <= 5; ++width) {
    std::string picture = "P6\n" + std::to_string(width) + " 3\n255\n";
    for (unsigned i = 0; i < width * 9; ++i) picture += static_cast<char>(i * 5 + 1);
    scratch.Write("page.ppm", picture);
    const std::string path = scratch.Path("out" + std::to_string(width) + ".bmp");
    ASSERT_TRUE(WriteBitmapFile(scratch.Path("page.ppm"), path, 254));
    const Bitmap bitmap = ReadBitmap(path);
    EXPECT_EQ(bitmap.dotsPerMetre, 10000U);
    const Pixels pixels = ReadPixels(scratch.Path("page.ppm"));
    for (unsigned y = 0; y < 3; ++y) {
      for (unsigned x = 0; x < width; ++x) ASSERT_EQ(bitmap.At(x, y), pixels.At(x, y));
    }
  }
}

TEST(QueueBitmap, of_four_gibibytes_is_refused) {
  const test::ScratchDirectory scratch;
  const std::string picture = SparsePicture(scratch, 40000, 35792);
  const auto written = WriteBitmapFile(picture, scratch.Path("out.bmp"), 72);
  ASSERT_FALSE(written);
  EXPECT_EQ(written.Error().error, EFBIG);
  EXPECT_FALSE(fs::exists(scratch.Path("out.bmp")));
}

TEST(QueueBitmap, of_a_file_that_is_no_whole_picture_is_refused) {
  const test::ScratchDirectory scratch;
  EXPECT_FALSE(WriteBitmapFile(SparsePicture(scratch, 10, 10, 1), scratch.Path("a.bmp"), 72));
  for (const char* const text : {"", "P6", "P5\n1 1\n255\nx", "P6\n0 1\n255\n",
                                 "P6\n1 1\n65535\n123456", "P6\n99999999999 1\n255\nabc"}) {
    scratch.Write("page.ppm", text);
    const auto written = WriteBitmapFile(scratch.Path("page.ppm"), scratch.Path("a.bmp"), 72);
    ASSERT_FALSE(written) << text;
    EXPECT_EQ(written.Error().error, EINVAL) << text;
  }
  EXPECT_FALSE(WriteBitmapFile(scratch.Path("none"), scratch.Path("a.bmp"), 72));
}

}  // namespace
}  // namespace rastrel::jobspool::testing
