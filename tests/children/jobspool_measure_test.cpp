#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "children/jobspool/page_measure.h"
#include "tests/children/queue_fixture.h"

namespace rastrel::jobspool::testing {
namespace {

// A mark of a known size: a filled rectangle has no more than its corners.
const std::string Rectangle =
    "newpath 100 200 moveto 150 200 lineto 150 230 lineto 100 230 lineto "
    "closepath fill\n";

// Within a dot of the measuring device, on each side.
void ExpectBox(const std::vector<double>& box, const std::vector<double>& expected,
               double tolerance = 0.05) {
  ASSERT_EQ(box.size(), 4U);
  for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(box[i], expected[i], tolerance) << i;
}

class QueueMeasure : public ::testing::Test {
 protected:
  void SetUp() override { REQUIRE_GHOSTSCRIPT(); }

  std::vector<double> BoxOf(const std::string& content) {
    m_Outcome = m_Bench.MeasureFile(m_Bench.Job("page.ps", content));
    EXPECT_EQ(m_Outcome.status, 0) << m_Outcome.reports;
    return RecordsOf(m_Outcome).Box();
  }

  QueueFixture m_Bench;
  ProgramRun m_Outcome;
};

TEST_F(QueueMeasure, a_page_without_a_size_is_the_box_around_its_marks) {
  ExpectBox(BoxOf("%!PS\n" + Rectangle + "showpage\n"), {100, 200, 150, 230});
}

TEST_F(QueueMeasure, marks_count_wherever_they_lie) {
  ExpectBox(BoxOf("%!PS\n-5000 3000 translate\n" + Rectangle + "showpage\n"),
            {-4900, 3200, -4850, 3230});
}

TEST_F(QueueMeasure, comments_do_not_stand_for_marks) {
  ExpectBox(
      BoxOf("%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 999 999\n" + Rectangle + "showpage\n"),
      {100, 200, 150, 230});
}

TEST_F(QueueMeasure, a_page_that_the_job_sets_is_that_sheet) {
  ExpectBox(BoxOf("%!PS\n<< /PageSize [ 300 400 ] >> setpagedevice\n" + Rectangle + "showpage\n"),
            {0, 0, 300, 400});
  ExpectBox(BoxOf("%!PS\nletter\n" + Rectangle + "showpage\n"), {0, 0, 612, 792});
}

TEST_F(QueueMeasure, other_settings_of_the_page_device_do_not_set_a_page) {
  ExpectBox(BoxOf("%!PS\n<< /NumCopies 3 >> setpagedevice\n" + Rectangle + "showpage\n"),
            {100, 200, 150, 230});
}

TEST_F(QueueMeasure, a_job_can_not_change_the_measuring_device) {
  ExpectBox(
      BoxOf("%!PS\n<< /HWResolution [ 72 72 ] /Install { 2 2 scale } /BeginPage { pop } /EndPage "
            "{ pop pop true } /OutputDevice /ppmraw >> setpagedevice\n" +
            Rectangle + "showpage\n"),
      {100, 200, 150, 230});
}

TEST_F(QueueMeasure, a_job_without_showpage_is_measured_too) {
  ExpectBox(BoxOf("%!PS-Adobe-3.0 EPSF-3.0\n/showpage {} def\n" + Rectangle), {100, 200, 150, 230});
  ExpectBox(BoxOf("%!PS\n" + Rectangle + "\x04\r\n"), {100, 200, 150, 230});
}

TEST_F(QueueMeasure, only_the_first_page_counts_and_no_more_is_run) {
  ExpectBox(BoxOf("%!PS\n" + Rectangle + "showpage\n0 0 500 500 rectfill showpage\n{} loop\n"),
            {100, 200, 150, 230});
}

TEST_F(QueueMeasure, an_error_behind_the_first_page_is_none) {
  ExpectBox(BoxOf("%!PS\n" + Rectangle + "showpage\nno.such.name\n"), {100, 200, 150, 230});
}

TEST_F(QueueMeasure, a_page_without_marks_has_the_box_of_the_comments) {
  ExpectBox(BoxOf("%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 10 20 110 220\nshowpage\n"),
            {10, 20, 110, 220}, 1e-3);
  EXPECT_EQ(RecordsOf(m_Outcome).values["mavl"], "0");
}

TEST_F(QueueMeasure, a_file_without_marks_and_showpage_has_no_page) {
  for (const char* const job : {"%!PS\n/x 3 def\n", "%!PS-Adobe-3.0\n%%BoundingBox: 1 2 30 40\n"}) {
    const ProgramRun outcome = m_Bench.MeasureFile(m_Bench.Job("page.ps", job));
    EXPECT_EQ(outcome.status, 1) << job;
    EXPECT_TRUE(RecordsOf(outcome).values.empty()) << job;
    EXPECT_TRUE(outcome.Says("ERROR: The job makes no page.")) << outcome.reports;
  }
}

TEST_F(QueueMeasure, a_page_without_marks_and_comments_is_a_sheet) {
  ExpectBox(BoxOf("%!PS\nshowpage\n"), {0, 0, 595, 842}, 1e-3);
  ExpectBox(BoxOf("%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 0 0\nshowpage\n"), {0, 0, 595, 842},
            1e-3);
}

TEST_F(QueueMeasure, marks_without_an_end_have_the_box_of_the_comments) {
  ExpectBox(
      BoxOf("%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 10 20 110 220\nclippath fill showpage\n"),
      {10, 20, 110, 220}, 1e-3);
  EXPECT_EQ(RecordsOf(m_Outcome).values["mavl"], "1");
}

TEST_F(QueueMeasure, a_box_at_minus_one_inch_is_not_taken_for_none) {
  const auto box = BoxOf("%!PS\n<< /PageSize [ 300 400 ] >> setpagedevice\nshowpage\n");
  ExpectBox(box, {0, 0, 300, 400}, 1e-3);
  const PageMeasure page{{-72, -72, 72, 72}, true};
  EXPECT_NE(
      FormatPageRecords(page, "x", 72).find("QRAST:bbox -1.000001 2.000000 2.000000 -1.000001"),
      std::string::npos);
}

TEST_F(QueueMeasure, the_header_in_front_is_passed_over) {
  ExpectBox(BoxOf(Header("%# KVI_Res= 300\r\n") + "%!PS\n" + Rectangle + "showpage\n"),
            {100, 200, 150, 230});
  const Records records = RecordsOf(m_Outcome);
  EXPECT_EQ(records.values.at("xdpi"), "300");
  EXPECT_EQ(records.values.at("ydpi"), "300");
}

TEST_F(QueueMeasure, every_record_is_reported) {
  BoxOf("%!PS\n%%Title: shop front\n" + Rectangle + "showpage\n");
  const Records records = RecordsOf(m_Outcome);
  EXPECT_EQ(records.values.at("name"), "shop front");
  EXPECT_EQ(records.values.at("bits"), "24");
  EXPECT_EQ(records.values.at("npls"), "3");
  EXPECT_EQ(records.values.at("xdpi"), "72");
  EXPECT_EQ(records.values.at("ydpi"), "72");
  EXPECT_EQ(records.values.at("mavl"), "1");
  EXPECT_EQ(records.values.at("bmap"), "100 200 50 30");
  EXPECT_EQ(records.values.size(), 8U);
  EXPECT_TRUE(m_Outcome.Says("INFO: INITIALISING"));
  EXPECT_TRUE(m_Outcome.Says("INFO: INTERPRETING"));
}

// An EPS with a binary header of 30 bytes, whose PostScript follows a preview of 5 bytes.
std::string BinaryEps(const std::string& postScript) {
  std::string file = "\xC5\xD0\xD3\xC6";
  const auto number = [&](std::size_t value) {
    for (int i = 0; i < 4; ++i) file += static_cast<char>(value >> (8 * i) & 255U);
  };
  for (const std::size_t value : {std::size_t{35}, postScript.size(), std::size_t{0},
                                  std::size_t{0}, std::size_t{30}, std::size_t{5}}) {
    number(value);
  }
  return file + "\xFF\xFF" + "image" + postScript + "no PostScript";
}

TEST_F(QueueMeasure, the_postscript_is_cut_out_of_an_eps_with_a_binary_header) {
  const std::string eps = BinaryEps("%!PS-Adobe-3.0 EPSF-3.0\n" + Rectangle);
  ExpectBox(BoxOf(eps), {100, 200, 150, 230});
  ExpectBox(BoxOf(Header() + eps), {100, 200, 150, 230});
}

TEST_F(QueueMeasure, a_binary_header_that_leads_outside_the_file_fails) {
  std::string eps = BinaryEps("%!PS\nshowpage\n");
  eps[10] = '\x7F';
  const ProgramRun outcome = m_Bench.MeasureFile(m_Bench.Job("page.ps", eps));
  EXPECT_EQ(outcome.status, 2);
  EXPECT_TRUE(RecordsOf(outcome).values.empty());
}

const std::string Pdf =
    "%PDF-1.4\n1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n"
    "2 0 obj<</Type/Pages/Kids[3 0 R]/Count 1>>endobj\n"
    "3 0 obj<</Type/Page/Parent 2 0 R/MediaBox[0 0 300 500]/CropBox[50 100 250 400]>>endobj\n"
    "trailer<</Root 1 0 R>>\n%%EOF\n";

TEST_F(QueueMeasure, a_pdf_has_the_size_of_its_crop_box) {
  ExpectBox(BoxOf(Pdf), {0, 0, 200, 300}, 1e-3);
  ExpectBox(BoxOf(Header() + Pdf), {0, 0, 200, 300}, 1e-3);
}

TEST_F(QueueMeasure, a_pdf_that_can_not_be_read_is_no_empty_sheet) {
  const std::string noPages =
      "%PDF-1.4\n1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n"
      "2 0 obj<</Type/Pages/Kids[]/Count 0>>endobj\ntrailer<</Root 1 0 R>>\n%%EOF\n";
  for (const std::string& pdf : {std::string("%PDF-1.4\nhello\n"), Pdf.substr(0, 60), noPages}) {
    const ProgramRun outcome = m_Bench.MeasureFile(m_Bench.Job("page.pdf", pdf));
    EXPECT_EQ(outcome.status, 2) << pdf;
    EXPECT_TRUE(RecordsOf(outcome).values.empty()) << outcome.reports;
    EXPECT_NE(outcome.reports.find("ERROR: The PDF "), std::string::npos) << outcome.reports;
  }
}

TEST_F(QueueMeasure, a_job_that_fails_has_no_box) {
  for (const std::string& job : {std::string("%!PS\nno.such.name\n"), std::string("%!PS\nquit\n"),
                                 std::string("hello\n"), std::string()}) {
    const ProgramRun outcome = m_Bench.MeasureFile(m_Bench.Job("page.ps", job));
    EXPECT_NE(outcome.status, 0) << job;
    EXPECT_TRUE(RecordsOf(outcome).values.empty()) << job;
    EXPECT_NE(outcome.reports.find("ERROR: "), std::string::npos) << job;
  }
  EXPECT_NE(m_Bench.MeasureFile(m_Bench.Root() + "/none.ps").status, 0);
}

TEST_F(QueueMeasure, a_job_cannot_forge_the_report) {
  ExpectBox(
      BoxOf("%!PS\n(%stderr) (w) file dup (\\nQRAST:bbox 1 1 1 1\\n000 BOX 30\\n) writestring "
            "flushfile\n" +
            Rectangle + "showpage\n"),
      {100, 200, 150, 230});
  EXPECT_TRUE(m_Outcome.Says("gs: QRAST:bbox 1 1 1 1"));
}

TEST_F(QueueMeasure, an_endless_job_ends_at_the_limit) {
  m_Bench.Set("RASTREL_RIP_TIMEOUT", "1");
  const ProgramRun outcome = m_Bench.MeasureFile(m_Bench.Job("page.ps", "%!PS\n{} loop\n"));
  EXPECT_EQ(outcome.status, 3);
  EXPECT_NE(outcome.reports.find("RASTREL_RIP_TIMEOUT"), std::string::npos);
  EXPECT_TRUE(m_Bench.Processes().empty());
}

TEST_F(QueueMeasure, nothing_is_left_behind) {
  BoxOf("%!PS\nshowpage\n");
  EXPECT_EQ(m_Bench.Leftovers(), std::vector<std::string>{"page.ps"});
}

// Columns of the corpus's table with another program's measure.
constexpr std::size_t PathColumn = 0;
constexpr std::size_t BoxColumn = 19;
constexpr std::size_t UnclippedColumn = 20;

std::vector<std::string> Columns(const std::string& line) {
  std::vector<std::string> columns(1);
  for (const char character : line) {
    if (character == '\t') {
      columns.emplace_back();
    } else {
      columns.back() += character;
    }
  }
  return columns;
}

std::optional<std::vector<double>> Four(const std::string& text) {
  std::istringstream numbers(text);
  std::vector<double> four(4);
  for (double& number : four) numbers >> number;
  if (!numbers) return {};
  return four;
}

// Boxes that the table has wrong, and why: that program's sheet has its corner at the
// origin and ends nowhere, and it doesn't ask which page a file sets.
std::optional<std::vector<double>> Known(const std::string& path) {
  if (path == "ps/cups-testfile-pages.ps") return {{0, 0, 612, 792}};  // fills all; by its comment
  if (path == "ps/scribus-onepage.ps") return {{0, 0, 612, 792}};      // sets this page
  return {};
}

// The table has the program's sheet for it. It has no showpage either.
bool HasNoMark(const std::string& path) { return path == "doseps/ai24-no-preview-sections.eps"; }

TEST_F(QueueMeasure, real_files_have_the_boxes_that_were_measured_independently) {
  const std::string table = CorpusFile("INDEX.tsv");
  if (table.empty()) GTEST_SKIP() << "The shared files are not here.";
  std::ifstream lines(table);
  unsigned compared = 0;
  for (std::string line; std::getline(lines, line);) {
    const auto columns = Columns(line);
    const std::string& path = columns[PathColumn];
    if (!path.starts_with("eps/") && !path.starts_with("doseps/") && !path.starts_with("ps/")) {
      continue;
    }
    auto expected = Four(columns.at(BoxColumn));
    // That program cuts at the axes; where it was made not to, whole points are known.
    const auto unclipped = Four(columns.at(UnclippedColumn));
    double tolerance = 0.1;
    if (expected && unclipped && (*unclipped)[1] < -1) {
      expected = unclipped;
      tolerance = 1.1;
    }
    if (const auto known = Known(path)) expected = known;
    if (HasNoMark(path)) expected.reset();
    SCOPED_TRACE(path);
    const ProgramRun outcome = m_Bench.MeasureFile(CorpusFile(path));
    if (!expected) {
      EXPECT_NE(outcome.status, 0);
      continue;
    }
    ExpectBox(RecordsOf(outcome).Box(), *expected, tolerance);
    ++compared;
  }
  EXPECT_GE(compared, 10U);
}

TEST(QueueMeasureReport, a_report_of_another_form_is_refused) {
  for (const char* const text :
       {"", "1 2 3 4 5", "1 2 3 4 5 x", "1 2 nan 4 5 6", "1 2 inf 4 5 6"}) {
    EXPECT_FALSE(MeasuredPage(text, {})) << text;
  }
  EXPECT_TRUE(MeasuredPage("1 2 3 4 5 6 ", {}));
}

// A carriage return at its end is no part of it.
TEST(QueueMeasureReport, a_name_never_breaks_its_line) {
  const std::string text = FormatPageRecords({}, "a\nQRAST:bbox 1 1 1 1\r", 72);
  EXPECT_TRUE(text.starts_with("QRAST:name a\\x0aQRAST:bbox 1 1 1 1\nQRAST:bits")) << text;
}

}  // namespace
}  // namespace rastrel::jobspool::testing
