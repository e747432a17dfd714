// `rastrel cut` with a file to interpret.

#include <gtest/gtest.h>

#include <string>

#include "cutting/job/job_file.h"
#include "tests/cli/command_runner.h"

namespace rastrel::test {
namespace {

constexpr const char* Art =
    "%!PS\n<< /PageSize [144 72] >> setpagedevice\n1 0 0 setrgbcolor 2 setlinewidth\n"
    "36 36 moveto 72 36 lineto 72 54 lineto closepath stroke\n"
    "[/Separation (Kiss cut) /DeviceCMYK {0 exch 0 0}] setcolorspace 1 setcolor\n"
    "0 0 moveto 0 36 36 72 72 72 curveto stroke\nshowpage\n";

class CutCapture : public testing::Test {
 protected:
  // The job of a file.
  cutting::CutJob JobOf(const std::string& name, const std::vector<std::string>& more = {}) {
    std::vector<std::string> arguments{"cut", name, "-o", "job.json"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const CommandResult result = runner.Run(arguments);
    EXPECT_EQ(result.status, 0) << result.error;
    if (result.status != 0) return {};
    const auto job = cutting::ReadJobFile(runner.Place().Read("job.json"), "job.json");
    EXPECT_TRUE(job);
    return job ? *job : cutting::CutJob{};
  }

  CommandRunner runner{CommandRunner::Children::Real};
};

// Coordinates are whole 1/256 pixels of 144 an inch.
constexpr double Step = 25.4 / 144 / 256;

TEST_F(CutCapture, paths_of_every_paint_come_in_millimetres_and_curves_stay_curves) {
  runner.Place().Write("art.ps", Art);
  const cutting::CutJob job = JobOf("art.ps");
  EXPECT_DOUBLE_EQ(job.width, 50.8);
  EXPECT_DOUBLE_EQ(job.height, 25.4);
  ASSERT_EQ(job.paths.size(), 2U);
  const cutting::CutPath& red = job.paths[0];
  EXPECT_EQ(red.paint.color, (cutting::PaintColor{cutting::ColorModel::Rgb, {1, 0, 0}, {}}));
  EXPECT_NEAR(red.paint.lineWidth, 2 * 25.4 / 72, 1e-4);
  EXPECT_TRUE(red.contours.at(0).closed);
  EXPECT_NEAR(red.contours.at(0).start.x, 12.7, Step);
  EXPECT_NEAR(red.contours.at(0).start.y, 12.7, Step);
  const cutting::CutPath& kiss = job.paths[1];
  EXPECT_EQ(kiss.paint.color, (cutting::PaintColor{cutting::ColorModel::Spot, {}, "Kiss cut"}));
  ASSERT_TRUE(kiss.contours.at(0).segments.at(0).isCurve);
  EXPECT_NEAR(kiss.contours.at(0).segments.at(0).end.x, 25.4, Step);
}

TEST_F(CutCapture, an_eps_is_cropped_to_its_box) {
  runner.Place().Write("art.eps",
                       "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 72 72 144 108\n%%EndComments\n"
                       "1 0 0 setrgbcolor 72 72 moveto 144 108 lineto stroke\n");
  const cutting::CutJob job = JobOf("art.eps");
  EXPECT_DOUBLE_EQ(job.width, 25.4);
  EXPECT_DOUBLE_EQ(job.height, 12.7);
  ASSERT_EQ(job.paths.size(), 1U);
  EXPECT_NEAR(job.paths[0].contours.at(0).start.x, 0, Step);
  EXPECT_NEAR(job.paths[0].contours.at(0).segments.at(0).end.y, 12.7, Step);
}

TEST_F(CutCapture, a_pdf_gives_strokes_fills_and_text) {
  std::string pdf = "%PDF-1.4\n";
  std::string table = "xref\n0 6\n0000000000 65535 f \n";
  const std::string content =
      "1 0 0 RG 2 w 36 36 m 72 36 l 72 54 l s 0 0 1 rg 0 0 9 9 re f "
      "BT /F 20 Tf 0 0 0 1 k 80 20 Td (I) Tj ET";
  const std::string objects[] = {
      "<< /Type /Catalog /Pages 2 0 R >>", "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
      "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 144 72] /Contents 4 0 R /Resources << /Font << "
      "/F 5 0 R >> >> >>",
      "<< /Length " + std::to_string(content.size()) + " >>\nstream\n" + content + "\nendstream",
      "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>"};
  for (int number = 1; number <= 5; ++number) {
    std::string place = std::to_string(pdf.size());
    table += std::string(10 - place.size(), '0') + place + " 00000 n \n";
    pdf += std::to_string(number) + " 0 obj\n" + objects[number - 1] + "\nendobj\n";
  }
  const std::string start = std::to_string(pdf.size());
  runner.Place().Write("art.pdf", pdf + table + "trailer << /Size 6 /Root 1 0 R >>\nstartxref\n" +
                                      start + "\n%%EOF\n");
  const cutting::CutJob job = JobOf("art.pdf");
  EXPECT_DOUBLE_EQ(job.width, 50.8);
  ASSERT_EQ(job.paths.size(), 3U);
  EXPECT_EQ(job.paths[0].paint.kind, cutting::Paint::Kind::Stroke);
  EXPECT_EQ(job.paths[1].paint.kind, cutting::Paint::Kind::Fill);
  EXPECT_EQ(job.paths[2].paint.kind, cutting::Paint::Kind::Text);
  EXPECT_NEAR(job.paths[0].contours.at(0).start.x, 12.7, Step);
}

TEST_F(CutCapture, another_page_is_chosen) {
  runner.Place().Write("art.ps",
                       std::string("%!PS\n1 1 moveto 2 2 lineto stroke showpage\n") + Art);
  EXPECT_EQ(JobOf("art.ps", {"--page", "2"}).paths.size(), 2U);
  const CommandResult beyond = runner.Run({"cut", "art.ps", "-o", "job.json", "--page", "3"});
  EXPECT_EQ(beyond.status, 3);
  EXPECT_EQ(beyond.error,
            "rastrel: can't take the paths of 'art.ps': it has no page 3; it has 2\n");
}

TEST_F(CutCapture, a_file_that_fails_as_a_program_leaves_nothing) {
  runner.Place().Write("art.ps", "%!PS\nnonsense\n");
  const CommandResult result = runner.Run({"cut", "art.ps", "-o", "job.json"});
  EXPECT_EQ(result.status, 3);
  EXPECT_NE(result.error.find("/undefined in nonsense"), std::string::npos) << result.error;
  EXPECT_FALSE(runner.Place().Has("job.json"));
  EXPECT_EQ(runner.NamesIn("jobs").size(), 0U);
}

}  // namespace
}  // namespace rastrel::test
