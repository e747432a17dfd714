// `rastrel cut --rules`.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cutting/job/job_file.h"
#include "tests/cli/command_runner.h"

namespace rastrel::test {
namespace {

constexpr const char* Rules =
    "[[rule]]\nname = \"contour\"\nspot = \"Cut*\"\noperation = \"cut\"\nspeed = \"50 mm/s\"\n"
    "[[rule]]\nname = \"folds\"\nrgb = \"#ff0000\"\npaint = \"stroke\"\noperation = \"crease\"\n"
    "[[rule]]\nname = \"holes\"\nspot = \"Drill\"\noperation = \"drill\"\n";

// A contour, a red stroke, a red area, and a blue stroke.
constexpr const char* Art =
    "%!PS\n<< /PageSize [144 72] >> setpagedevice\n"
    "[/Separation (CutContour) /DeviceCMYK {0 exch 0 0}] setcolorspace 1 setcolor\n"
    "0 0 moveto 0 36 36 72 72 72 curveto stroke\n"
    "1 0.004 0 setrgbcolor 36 36 moveto 72 36 lineto stroke 1 1 9 9 rectfill\n"
    "0 0 1 setrgbcolor 36 36 moveto 72 36 lineto stroke\nshowpage\n";

TEST(CutRules, each_path_gets_the_operation_of_the_first_rule_that_fits) {
  CommandRunner runner{CommandRunner::Children::Real};
  runner.Place().Write("art.ps", Art);
  runner.Place().Write("rules.toml", Rules);
  const CommandResult result =
      runner.Run({"cut", "art.ps", "--rules", "rules.toml", "-o", "job.json"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.error, "warning: the rule 'holes' took nothing\n");
  const auto job = cutting::ReadJobFile(runner.Place().Read("job.json"), "job.json");
  ASSERT_TRUE(job);
  ASSERT_EQ(job->paths.size(), 2U);
  EXPECT_EQ(job->paths[0].operation, cutting::Operation::Cut);
  EXPECT_EQ(job->paths[0].rule, "contour");
  EXPECT_EQ(job->paths[0].settings.speed, 50);
  EXPECT_TRUE(job->paths[0].contours.at(0).segments.at(0).isCurve);
  EXPECT_EQ(job->paths[1].operation, cutting::Operation::Crease);
  EXPECT_EQ(job->paths[1].rule, "folds");
}

TEST(CutRules, a_line_width_chooses_among_strokes_of_one_color) {
  CommandRunner runner{CommandRunner::Children::Real};
  runner.Place().Write("art.ps",
                       "%!PS\n0 setgray 1 setlinewidth 1 1 moveto 9 9 lineto stroke\n"
                       "4 setlinewidth 2 2 moveto 9 9 lineto stroke\nshowpage\n");
  runner.Place().Write("rules.toml",
                       "[[rule]]\nname = \"fine\"\nline-width = { max = 0.5 }\n"
                       "operation = \"engrave\"\n");
  const CommandResult result =
      runner.Run({"cut", "art.ps", "--rules", "rules.toml", "-o", "job.json"});
  EXPECT_EQ(result.status, 0) << result.error;
  const auto job = cutting::ReadJobFile(runner.Place().Read("job.json"), "job.json");
  ASSERT_TRUE(job);
  ASSERT_EQ(job->paths.size(), 1U);
  EXPECT_NEAR(job->paths[0].paint.lineWidth, 25.4 / 72, 1e-4);
}

TEST(CutRules, rules_change_the_operations_of_a_job) {
  CommandRunner runner{CommandRunner::Children::None};
  cutting::CutJob job{.width = 10, .height = 10, .paths = {}};
  job.paths.push_back(
      {.contours = {}, .paint = {.color = {cutting::ColorModel::Spot, {}, "Cut here"}}});
  job.paths.push_back(
      {.contours = {}, .paint = {.color = {cutting::ColorModel::Spot, {}, "Varnish"}}});
  runner.Place().Write("in.json", cutting::JobFileText(job));
  runner.Place().Write("rules.toml", Rules);
  const CommandResult result =
      runner.Run({"cut", "in.json", "--rules", "rules.toml", "-o", "out.json"});
  EXPECT_EQ(result.status, 0) << result.error;
  const auto read = cutting::ReadJobFile(runner.Place().Read("out.json"), "out.json");
  ASSERT_TRUE(read);
  EXPECT_EQ(read->paths.at(0).rule, "contour");
  EXPECT_EQ(read->paths.at(1).operation, cutting::Operation::Print);
}

TEST(CutRules, a_bad_rule_is_told_with_its_line_before_any_work) {
  CommandRunner runner{CommandRunner::Children::None};
  runner.Place().Write("rules.toml", "[[rule]]\nname = \"x\"\noperation = \"saw\"\n");
  const CommandResult bad =
      runner.Run({"cut", "missing.ps", "--rules", "rules.toml", "-o", "job.json"});
  EXPECT_EQ(bad.status, 3);
  EXPECT_NE(bad.error.find("rules.toml:3:"), std::string::npos) << bad.error;
  const CommandResult missing =
      runner.Run({"cut", "missing.ps", "--rules", "none.toml", "-o", "job.json"});
  EXPECT_EQ(missing.status, 3);
  EXPECT_NE(missing.error.find("none.toml"), std::string::npos) << missing.error;
}

}  // namespace
}  // namespace rastrel::test
