// The defaults of a rule file, and the options that go before them.

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "tests/cli/command_runner.h"

namespace rastrel::test {
namespace {

// Two lines whose ends are 0.5 mm apart, and a curve.
constexpr const char* Sign =
    "<svg width='100mm' height='50mm' viewBox='0 0 100 50'><g fill='none' stroke='red'>"
    "<path d='M10 10H40'/><path d='M40.5 10V40L20 30'/></g></svg>";
constexpr const char* Curve =
    "<svg width='100mm' height='50mm' viewBox='0 0 100 50'><path fill='none' stroke='red' "
    "d='M10 10Q30 30 50 10'/></svg>";

class RuleDefaults : public testing::Test {
 protected:
  RuleDefaults() {
    runner.Place().Write("sign.svg", Sign);
    runner.Place().Write("curve.svg", Curve);
  }
  void WriteRules(const std::string& defaults) {
    runner.Place().Write("rules.toml", "[defaults]\n" + defaults +
                                           "\n[[rule]]\nname = 'all'\nrgb = '#ff0000'\n"
                                           "operation = 'cut'\n");
  }
  CommandRunner runner{CommandRunner::Children::None};
};

TEST_F(RuleDefaults, joining_says_which_ends_healing_joins_and_the_option_goes_before_it) {
  const auto repairs = [&](std::vector<std::string> more) {
    std::vector<std::string> words{"cut",    "sign.svg", "--rules", "rules.toml",
                                   "--heal", "-o",       "job.json"};
    words.insert(words.end(), more.begin(), more.end());
    const CommandResult result = runner.Run(words);
    EXPECT_EQ(result.status, 0) << result.error;
    return result.error.find("joined") != std::string::npos;
  };
  WriteRules("");
  EXPECT_FALSE(repairs({}));
  EXPECT_TRUE(repairs({"--joining", "0.6mm"}));
  WriteRules("joining = 0.6");
  EXPECT_TRUE(repairs({}));
  EXPECT_FALSE(repairs({"--joining", "0.4mm"}));
}

TEST_F(RuleDefaults, tolerance_flattens_curves_and_the_option_goes_before_it) {
  const auto bytes = [&](std::vector<std::string> more) {
    std::vector<std::string> words{"cut", "curve.svg", "--rules", "rules.toml", "-o", "job.plt"};
    words.insert(words.end(), more.begin(), more.end());
    const CommandResult result = runner.Run(words);
    EXPECT_EQ(result.status, 0) << result.error;
    return runner.Place().Read("job.plt").size();
  };
  WriteRules("");
  const std::size_t usual = bytes({});
  WriteRules("tolerance = 5");
  EXPECT_LT(bytes({}), usual / 2);
  EXPECT_EQ(bytes({"--tolerance", "0.02"}), usual);
}

TEST_F(RuleDefaults, residual_says_how_well_marks_have_to_fit_and_the_option_goes_before_it) {
  const auto status = [&](std::vector<std::string> more) {
    std::vector<std::string> words{"cut", "marked.json", "--rules", "rules.toml", "-o", "out.plt"};
    for (const char* place : {"0,0", "100,0", "100,50", "0,51"}) {
      words.push_back("--measured");
      words.push_back(place);
    }
    words.insert(words.end(), {"--fit", "similar"});
    words.insert(words.end(), more.begin(), more.end());
    return runner.Run(words).status;
  };
  runner.Place().Write(
      "marked.json",
      R"({"format": "rastrel-cut-job", "version": 1, "unit": "mm", "width": 100, "height": 50,
"paths": [{"operation": "cut", "paint": {"kind": "stroke", "colour": {"model": "rgb",
"components": [1, 0, 0]}}, "contours": [{"start": [1, 1], "segments": [[9, 9]]}]}],
"marks": [{"shape": "circle", "center": [0, 0], "size": 5}, {"shape": "circle", "center": [100, 0],
"size": 5}, {"shape": "circle", "center": [100, 50], "size": 5},
{"shape": "circle", "center": [0, 50], "size": 5}]})");
  WriteRules("");
  EXPECT_NE(status({}), 0);
  WriteRules("residual = 2");
  EXPECT_EQ(status({}), 0);
  EXPECT_NE(status({"--residual", "0.1"}), 0);
}

TEST_F(RuleDefaults, limits_of_faults_are_options_of_check_and_heal) {
  const auto faults = [&](const char* option, const char* value) {
    return runner.Run({"cut", "sign.svg", "--check", option, value}).output;
  };
  EXPECT_EQ(faults("--joining", "0.1mm").find("unjoined-ends"), std::string::npos);
  EXPECT_NE(faults("--joining", "1mm").find("unjoined-ends"), std::string::npos);
  EXPECT_EQ(faults("--tiny", "1mm").find("tiny"), std::string::npos);
  EXPECT_NE(faults("--tiny", "40mm").find("tiny"), std::string::npos);
  for (const char* option : {"--joining", "--tiny", "--spike"}) {
    const CommandResult result = runner.Run({"cut", "sign.svg", "-o", "out.json", option, "1mm"});
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.error.find(std::string(option) + " goes with --check or --heal"),
              std::string::npos)
        << result.error;
    EXPECT_EQ(runner.Run({"cut", "sign.svg", "--check", option, "0"}).status, 2);
  }
}

}  // namespace
}  // namespace rastrel::test
