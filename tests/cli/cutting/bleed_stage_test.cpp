// Whether the print reaches over the cut: `--bleed` of `cut --check` and `print --rules`.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/cli/command_runner.h"

namespace rastrel::test {
namespace {

// Blue from 40 to 240 and from 40 to 140 points. The cut lies 10 points within it, at the top 6:
// the print reaches 2.1 mm beyond the cut there, and 3.5 mm elsewhere.
constexpr const char* Sign =
    "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 300 200\n%%EndComments\n"
    "0.2 0.4 0.9 setrgbcolor 40 40 200 100 rectfill\n"
    "1 0 0 setrgbcolor 0.5 setlinewidth 50 50 180 84 rectstroke\nshowpage\n%%EOF\n";
constexpr const char* Rules =
    "[[rule]]\nname = \"cut\"\nrgb = \"#ff0000\"\npaint = \"stroke\"\noperation = \"cut\"\n";

class BleedStage : public testing::Test {
 protected:
  BleedStage() {
    runner.Place().Write("sign.eps", Sign);
    runner.Place().Write("rules.toml", Rules);
  }
  CommandResult Check(const std::string& bleed) {
    return runner.Run({"cut", "sign.eps", "--rules", "rules.toml", "--check", "--bleed", bleed});
  }

  CommandRunner runner{CommandRunner::Children::Real};
};

TEST_F(BleedStage, a_check_passes_up_to_the_bleed_that_the_print_has) {
  const CommandResult result = Check("2mm");
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_NE(result.output.find("0 places without the bleed\n"), std::string::npos) << result.output;
}

TEST_F(BleedStage, a_check_finds_the_edge_over_which_the_print_ends_too_early) {
  const CommandResult result = Check("3mm");
  EXPECT_EQ(result.status, 11) << result.error;
  EXPECT_NE(result.output.find("path 1, contour 1: the print ends 2."), std::string::npos)
      << result.output;
  EXPECT_NE(result.output.find("1 place without the bleed\n"), std::string::npos) << result.output;
  // The upper edge of 180 points alone.
  EXPECT_NE(result.output.find("along 63.5 mm"), std::string::npos) << result.output;
}

TEST_F(BleedStage, a_cut_warns_and_is_made_all_the_same) {
  const CommandResult result =
      runner.Run({"cut", "sign.eps", "--rules", "rules.toml", "--bleed", "3mm", "-o", "sign.plt"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_NE(result.error.find("warning: path 1, contour 1: the print ends"), std::string::npos)
      << result.error;
  EXPECT_TRUE(std::filesystem::exists(runner.Place().Path("sign.plt")));
}

TEST_F(BleedStage, refuses_a_file_without_a_print_and_a_page_without_rules) {
  runner.Place().Write("drawing.svg",
                       "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"9mm\" height=\"9mm\" "
                       "viewBox=\"0 0 9 9\"><path d=\"M1 1h5v5z\" stroke=\"red\"/></svg>");
  EXPECT_EQ(runner.Run({"cut", "sign.eps", "--check", "--bleed", "1mm"}).status, 2);
  EXPECT_EQ(runner.Run({"cut", "drawing.svg", "--rules", "rules.toml", "--check", "--bleed", "1mm"})
                .status,
            2);
  EXPECT_EQ(Check("thick").status, 2);
}

}  // namespace
}  // namespace rastrel::test
