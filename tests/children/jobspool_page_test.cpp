#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/children/odalis_fixture.h"
#include "tests/children/queue_fixture.h"

// The page that RASTREL_RIP_PAGE chooses of PostScript with several.

namespace rastrel::jobspool::testing {
namespace {

using corerast::testing::Pixels;
using corerast::testing::ReadPixels;

// Each page takes its changes back, as pages by comments do; all have marks of their own.
const std::string Pages =
    "save 1 0 0 setrgbcolor 10 10 20 10 rectfill showpage restore\n"
    "save 0 1 0 setrgbcolor 30 40 10 50 rectfill showpage restore\n"
    "save 0 0 1 setrgbcolor 50 60 40 30 rectfill showpage restore\n";

class QueuePage : public ::testing::Test {
 protected:
  void SetUp() override { REQUIRE_GHOSTSCRIPT(); }

  ProgramRun Measure(const std::string& page, const std::string& job) {
    m_Bench.Set("RASTREL_RIP_PAGE", page);
    return m_Bench.MeasureFile(m_Bench.Job("page.ps", "%!PS\n" + job));
  }
  // Left, bottom, right and top in whole points.
  std::vector<int> Box(const std::string& page, const std::string& job) {
    const ProgramRun outcome = Measure(page, job);
    EXPECT_EQ(outcome.status, 0) << outcome.reports;
    std::vector<int> box;
    for (const double side : RecordsOf(outcome).Box())
      box.push_back(static_cast<int>(side < 0 ? side - 0.5 : side + 0.5));
    return box;
  }
  // A picture of the box 0 0 100 100, one pixel a point.
  ProgramRun Draw(const std::string& page, const std::string& job, const std::string& lines = {}) {
    m_Bench.Set("RASTREL_RIP_PAGE", page);
    return m_Bench.Convert(m_Bench.Job(
        "vkaaaaaa.ps",
        Header("%# KVI_Res= 72\r\n" + lines) + "%!PS\n%%BoundingBox: 0 0 100 100\n" + job));
  }
  // Its color at a point.
  [[nodiscard]] std::string At(unsigned x, unsigned y) const {
    return ReadPixels(Path(".cfm/page.ppm")).At(x, 99 - y);
  }
  [[nodiscard]] std::string Path(const std::string& suffix) const {
    return m_Bench.RipDirectory() + "/vkaaaaaa" + suffix;
  }

  QueueFixture m_Bench;
};

TEST_F(QueuePage, that_is_chosen_is_measured_without_the_marks_of_those_before) {
  EXPECT_EQ(Box("1", Pages), (std::vector{10, 10, 30, 20}));
  EXPECT_EQ(Box("2", Pages), (std::vector{30, 40, 40, 90}));
  EXPECT_EQ(Box("3", Pages), (std::vector{50, 60, 90, 90}));
}

TEST_F(QueuePage, may_be_a_sheet_of_its_own) {
  const std::string job =
      "<</PageSize [100 200]>> setpagedevice 0 0 9 9 rectfill showpage\n"
      "<</PageSize [300 400]>> setpagedevice 0 0 9 9 rectfill showpage\n";
  EXPECT_EQ(Box("1", job), (std::vector{0, 0, 100, 200}));
  EXPECT_EQ(Box("2", job), (std::vector{0, 0, 300, 400}));
}

TEST_F(QueuePage, has_the_pixels_of_that_page_alone) {
  ASSERT_EQ(Draw("2", Pages).status, 0);
  EXPECT_EQ(At(35, 50), "0,255,0");
  EXPECT_EQ(At(15, 15), "255,255,255");
  EXPECT_EQ(At(70, 70), "255,255,255");
  ASSERT_EQ(Draw("3", Pages).status, 0);
  EXPECT_EQ(At(70, 70), "0,0,255");
  EXPECT_EQ(At(35, 50), "255,255,255");
}

TEST_F(QueuePage, that_the_job_does_not_have_is_refused_with_the_number_that_it_has) {
  ASSERT_EQ(Draw("3", Pages).status, 0);
  for (const std::string page : {"4", "1000000"}) {
    const std::string refusal = "ERROR: The job has no page " + page + "; it has 3.";
    const ProgramRun measured = Measure(page, Pages);
    EXPECT_EQ(measured.status, 1);
    EXPECT_TRUE(measured.Says(refusal)) << measured.reports;
    const ProgramRun drawn = Draw(page, Pages);
    EXPECT_EQ(drawn.status, 1);
    EXPECT_TRUE(drawn.Says(refusal)) << drawn.reports;
    EXPECT_EQ(drawn.reports.find("does not end its page"), std::string::npos) << drawn.reports;
  }
}

TEST_F(QueuePage, that_is_left_open_counts_if_it_has_marks) {
  const std::string one = "10 10 20 10 rectfill showpage\n";
  const std::string open = one + "1 0 0 setrgbcolor 30 40 10 50 rectfill\n";
  EXPECT_EQ(Box("2", open), (std::vector{30, 40, 40, 90}));
  ASSERT_EQ(Draw("2", open).status, 0);
  EXPECT_EQ(At(35, 50), "255,0,0");
  for (const auto& [page, job, count] :
       {std::tuple("3", open, "2"), std::tuple("2", one, "1"), std::tuple("3", one, "1")}) {
    const std::string refusal =
        std::string("ERROR: The job has no page ") + page + "; it has " + count + ".";
    EXPECT_TRUE(Measure(page, job).Says(refusal)) << refusal;
    EXPECT_TRUE(Draw(page, job).Says(refusal)) << refusal;
  }
}

TEST_F(QueuePage, may_be_one_of_copypage) {
  const std::string job =
      "10 10 20 10 rectfill copypage 0 1 0 setrgbcolor 30 40 10 50 rectfill copypage\n";
  ASSERT_EQ(Draw("2", job).status, 0);
  EXPECT_EQ(At(35, 50), "0,255,0");
  EXPECT_EQ(At(15, 15), "255,255,255");
}

TEST_F(QueuePage, comes_after_one_whose_colors_leave_operands_behind) {
  const std::string spot =
      "[/Separation (Knife) /DeviceCMYK {dup 0 exch 0 0}] setcolorspace 1 setcolor "
      "10 10 20 10 rectfill showpage\n";
  const std::string job = spot + spot + "0 1 0 setrgbcolor 30 40 10 50 rectfill showpage\n";
  EXPECT_EQ(Box("3", job), (std::vector{30, 40, 40, 90}));
  ASSERT_EQ(Draw("3", job).status, 0);
  EXPECT_EQ(At(35, 50), "0,255,0");
  EXPECT_EQ(At(15, 15), "255,255,255");
}

TEST_F(QueuePage, can_not_be_changed_by_the_job) {
  const std::string job =
      "userdict /erasepage {} put /showpage { systemdict /showpage get exec } def\n"
      "<< /EndPage { pop pop true } /BeginPage { pop } >> setpagedevice\n" +
      Pages;
  ASSERT_EQ(Draw("2", job).status, 0);
  EXPECT_EQ(At(35, 50), "0,255,0");
  EXPECT_EQ(At(15, 15), "255,255,255");
}

TEST_F(QueuePage, has_the_cut_lines_of_that_page_alone) {
  const std::string cut = "%# KVI_CutLine= RGB, 1.000, 0.000, 0.000\r\n";
  // So many segments that they are reported in many pieces.
  const std::string first =
      "save 1 0 0 setrgbcolor 5 5 moveto 1 1 3000 { pop 7 9 lineto 5 5 lineto } for stroke "
      "showpage restore\n";
  const std::string second = "1 0 0 setrgbcolor 20 20 moveto 40 60 lineto stroke showpage\n";
  const ProgramRun outcome = Draw("2", first + second, cut);
  ASSERT_EQ(outcome.status, 0) << outcome.reports;
  // Heads and one path of one part with two vertices: a longer path would make a longer file.
  ASSERT_TRUE(std::filesystem::exists(Path(".cut")));
  EXPECT_LT(std::filesystem::file_size(Path(".cut")), 300U);
  const ProgramRun none = Draw("2", first + "0 0 9 9 rectfill showpage\n", cut);
  EXPECT_TRUE(
      none.Says("WARNING: No path and no text is painted in the cut colour rgb 1.0 0.0 "
                "0.0; nothing is cut in it."))
      << none.reports;
}

TEST_F(QueuePage, is_no_matter_of_a_separation_whose_pages_all_count) {
  m_Bench.Set("RASTREL_RIP_PAGE", "2");
  ASSERT_EQ(m_Bench.Convert(m_Bench.Job("vkaaaaaa.ps", "%!PS\n" + Pages)).status, 0);
  EXPECT_TRUE(std::filesystem::exists(Path(".cfm/p0003")));
  // A job that ends no page is one page, whichever is chosen.
  std::filesystem::remove_all(Path(".cfm"));
  ASSERT_EQ(m_Bench.Convert(m_Bench.Job("vkaaaaaa.ps", "%!PS\n10 10 20 10 rectfill\n")).status, 0);
  EXPECT_TRUE(std::filesystem::exists(Path(".cfm/.info")));
}

}  // namespace
}  // namespace rastrel::jobspool::testing
