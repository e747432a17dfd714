// Drawings in SVG and DXF as the files of `rastrel cut` and its neighbors.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/cli/command_runner.h"

namespace rastrel::test {
namespace {

constexpr const char* Sign =
    "<svg xmlns='http://www.w3.org/2000/svg' width='100mm' height='50mm' viewBox='0 0 100 50'>\n"
    "<g id='Cut'><path d='M0 0H10V10H0Z' fill='none' stroke='#f00'/></g>\n"
    "<g id='Fold'><path d='M0 20H10' fill='none' stroke='#f00'/></g>\n"
    "<text>Sign</text><text>Shop</text></svg>\n";
constexpr const char* Plan =
    "0\nSECTION\n2\nENTITIES\n0\nLINE\n8\nFold\n10\n0\n20\n0\n11\n10\n21\n0\n0\nENDSEC\n0\nEOF\n";
constexpr const char* Rules =
    "[[rule]]\nname = 'cut'\nlayer = 'cut*'\noperation = 'cut'\n"
    "[[rule]]\nname = 'fold'\nlayer = 'Fold'\noperation = 'crease'\n";

class DrawingInput : public testing::Test {
 protected:
  DrawingInput() {
    runner.Place().Write("sign.svg", Sign);
    runner.Place().Write("plan.DXF", Plan);
    runner.Place().Write("rules.toml", Rules);
  }
  CommandRunner runner{CommandRunner::Children::None};
};

TEST_F(DrawingInput, rules_take_the_paths_of_layers) {
  const CommandResult result =
      runner.Run({"cut", "sign.svg", "--rules", "rules.toml", "-o", "job.json"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.error, "warning: sign.svg:4: text is not read; make it paths first (2 times)\n");
  const std::string job = runner.Place().Read("job.json");
  EXPECT_NE(job.find(R"("operation": "cut")"), std::string::npos) << job;
  EXPECT_NE(job.find(R"("operation": "crease")"), std::string::npos) << job;
  EXPECT_NE(job.find(R"("layer": "Fold")"), std::string::npos) << job;
}

TEST_F(DrawingInput, rules_check_counts_the_paths_of_layers) {
  const CommandResult result = runner.Run({"rules", "check", "rules.toml", "plan.DXF"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_NE(result.output.find("fold"), std::string::npos);
  EXPECT_NE(result.error.find("the rule 'cut' took nothing"), std::string::npos);
  EXPECT_NE(result.error.find("plan.DXF:1: the drawing names no unit"), std::string::npos);
}

TEST_F(DrawingInput, a_drawing_becomes_a_cutters_file) {
  const CommandResult result = runner.Run({"cut", "plan.DXF", "-o", "plan.plt"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_NE(runner.Place().Read("plan.plt").find("PD400,0"), std::string::npos);
}

TEST_F(DrawingInput, several_files_become_a_result_each_and_a_bad_one_keeps_none_back) {
  runner.Place().Write("bad.svg", "<svg");
  const CommandResult result =
      runner.Run({"cut", "plan.DXF", "bad.svg", "sign.svg", "--rules", "rules.toml", "-o", "out/"});
  EXPECT_EQ(result.status, 3) << result.error;
  EXPECT_NE(result.error.find("cutting: bad.svg"), std::string::npos) << result.error;
  EXPECT_NE(runner.Place().Read("out/plan.plt").find("PD400,0"), std::string::npos);
  EXPECT_NE(runner.Place().Read("out/sign.plt").find("PD"), std::string::npos);
  const CommandResult named =
      runner.Run({"cut", "plan.DXF", "sign.svg", "--rules", "rules.toml", "-o", "{name}-cut.svg"});
  EXPECT_EQ(named.status, 0) << named.error;
  EXPECT_NE(runner.Place().Read("plan-cut.svg").find("<svg"), std::string::npos);
}

TEST_F(DrawingInput, a_result_that_the_user_did_not_name_is_replaced_by_force_alone) {
  runner.Place().Write("out/plan.plt", "mine");
  const CommandResult kept = runner.Run({"cut", "plan.DXF", "-o", "out"});
  EXPECT_NE(kept.status, 0);
  EXPECT_NE(kept.error.find("only --force replaces"), std::string::npos) << kept.error;
  EXPECT_EQ(runner.Place().Read("out/plan.plt"), "mine");
  EXPECT_EQ(runner.Run({"cut", "plan.DXF", "-o", "out", "--force"}).status, 0);
  EXPECT_NE(runner.Place().Read("out/plan.plt"), "mine");
}

TEST_F(DrawingInput, several_files_refuse_one_result_and_options_of_one_file) {
  for (const std::vector<std::string>& more : {std::vector<std::string>{"-o", "one.plt"},
                                               {"-o", "-"},
                                               {},
                                               {"-o", "out/", "--picture", "a.png"}}) {
    std::vector<std::string> arguments{"cut", "plan.DXF", "sign.svg", "--rules", "rules.toml"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    EXPECT_EQ(runner.Run(arguments).status, 2) << more.size();
  }
  EXPECT_EQ(runner.Run({"cut", "plan.DXF", "plan.DXF", "--rules", "rules.toml", "-o", "o/"}).status,
            2);
}

TEST_F(DrawingInput, drawings_are_nested_and_split) {
  EXPECT_EQ(runner.Run({"nest", "sign.svg", "--sheet", "100x100mm", "-o", "nest.svg"}).status, 0);
  EXPECT_EQ(runner.Run({"tile", "sign.svg", "--panel", "60x60mm", "-o", "panel.svg"}).status, 0);
}

TEST_F(DrawingInput, a_fault_is_told_with_its_line_and_no_file_is_made) {
  runner.Place().Write("bad.svg", "<svg>\n<path d='M0'/></svg>");
  const CommandResult result = runner.Run({"cut", "bad.svg", "-o", "out.plt"});
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.error,
            "rastrel: bad.svg:2:1: the path's data at character 3: a number is expected here\n");
  EXPECT_FALSE(runner.Place().Has("out.plt"));
  EXPECT_EQ(runner.Run({"cut", "none.svg", "-o", "out.plt"}).status, 3);
}

TEST_F(DrawingInput, a_drawing_has_no_picture_to_print) {
  const CommandResult result =
      runner.Run({"cut", "sign.svg", "-o", "out.plt", "--print", "out.tif"});
  EXPECT_EQ(result.status, 2);
  EXPECT_FALSE(runner.Place().Has("out.plt"));
}

}  // namespace
}  // namespace rastrel::test
