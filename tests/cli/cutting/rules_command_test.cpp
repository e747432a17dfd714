// `rastrel rules check` with a cut job.

#include <gtest/gtest.h>

#include <string>

#include "cutting/job/job_file.h"
#include "tests/cli/command_runner.h"

namespace rastrel::test {
namespace {

cutting::CutPath Line(double length, cutting::PaintColor color) {
  cutting::CutPath path;
  path.contours = {{.start = {0, 0}, .segments = {cutting::LineTo({length, 0})}}};
  path.paint.color = std::move(color);
  return path;
}

class RulesCommand : public testing::Test {
 protected:
  RulesCommand() {
    cutting::CutJob job;
    job.width = 100;
    job.height = 50;
    const auto rgb = [](double red) {
      return cutting::PaintColor{.model = cutting::ColorModel::Rgb, .components = {red, 0, 0}};
    };
    job.paths = {Line(10, {.model = cutting::ColorModel::Spot, .name = "CutContour"})};
    for (int i = 1; i <= 5; ++i) job.paths.push_back(Line(10 * i, rgb(i * 51 / 255.0)));
    runner.Place().Write("job.json", cutting::JobFileText(job));
    runner.Place().Write("rules.toml",
                         "[[rule]]\nname = \"Contour\"\nspot = \"cut*\"\noperation = \"cut\"\n"
                         "[[rule]]\nname = \"Fold\"\nspot = \"Fold\"\noperation = \"crease\"\n");
  }

  CommandRunner runner{CommandRunner::Children::None};
};

TEST_F(RulesCommand, shows_the_paths_of_each_rule_and_those_of_none) {
  const CommandResult result = runner.Run({"rules", "check", "rules.toml", "job.json"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output,
            "rule\toperation\tpaths\tcontours\tmm\tcolours\n"
            "Contour\tcut\t1\t1\t10\tCutContour (1 paths, 10 mm)\n"
            "Fold\tcrease\t0\t0\t0\t\n"
            "(no rule)\t\t5\t5\t150\t#ff0000 (1 paths, 50 mm), #cc0000 (1 paths, 40 mm), "
            "#990000 (1 paths, 30 mm), #660000 (1 paths, 20 mm), and 1 more\n");
  EXPECT_EQ(result.error, "warning: the rule 'Fold' took nothing\n");
}

TEST_F(RulesCommand, gives_an_object_for_each_rule) {
  const CommandResult result = runner.Run({"rules", "check", "rules.toml", "job.json", "--json"});
  const std::string contour =
      R"x({"event":"rule","name":"Contour","operation":"cut","paths":1,"contours":1,)x"
      R"x("length_mm":10.0,"colours":["CutContour (1 paths, 10 mm)"]})x";
  EXPECT_NE(result.output.find(contour), std::string::npos) << result.output;
  EXPECT_EQ(result.LastLine(), R"x({"event":"done","exit":0})x");
}

TEST_F(RulesCommand, a_bad_rule_file_is_refused_with_line_and_reason) {
  runner.Place().Write("rules.toml", "[[rule]]\nname = \"x\"\noperation = \"cut\"\nspott = 1\n");
  const CommandResult result = runner.Run({"rules", "check", "rules.toml", "job.json"});
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.error, "rastrel: rules.toml:4:1: unknown key 'spott'; did you mean 'spot'?\n");
  EXPECT_EQ(result.output, "");
}

TEST_F(RulesCommand, needs_a_rule_file_and_one_job) {
  EXPECT_EQ(runner.Run({"rules", "check", "rules.toml"}).status, 2);
  EXPECT_EQ(runner.Run({"rules", "check", "rules.toml", "job.json", "job.json"}).status, 2);
  EXPECT_EQ(runner.Run({"rules", "check", "none.toml", "job.json"}).status, 3);
}

}  // namespace
}  // namespace rastrel::test
