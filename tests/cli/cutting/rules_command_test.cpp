// `rastrel rules check` with a cut job.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>

#include "cutting/job/job_file.h"
#include "cutting/rules/rules.h"
#include "tests/cli/command_runner.h"

namespace rastrel::test {
namespace {

std::string FileContent(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

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
            "Contour\tcut\t1\t1\t10\tCutContour (1 path, 10 mm)\n"
            "Fold\tcrease\t0\t0\t0\t\n"
            "(no rule)\t\t5\t5\t150\t#ff0000 (1 path, 50 mm), #cc0000 (1 path, 40 mm), "
            "#990000 (1 path, 30 mm), #660000 (1 path, 20 mm), and 1 more\n");
  EXPECT_EQ(result.error, "warning: the rule 'Fold' took nothing\n");
}

TEST_F(RulesCommand, gives_an_object_for_each_rule) {
  const CommandResult result = runner.Run({"rules", "check", "rules.toml", "job.json", "--json"});
  const std::string contour =
      R"x({"event":"rule","name":"Contour","operation":"cut","paths":1,"contours":1,)x"
      R"x("length_mm":10.0,"colours":["CutContour (1 path, 10 mm)"]})x";
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

// ---- Rules by their names ----

TEST_F(RulesCommand, finds_ready_rules_by_their_name) {
  const CommandResult result = runner.Run({"rules", "check", "shop-words", "job.json"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_NE(result.output.find("Cut\tcut\t1\t1\t10\tCutContour"), std::string::npos)
      << result.output;
}

TEST_F(RulesCommand, takes_the_users_rules_before_the_installed_ones) {
  const std::string own = runner.Root() + "/cut-rules";
  std::filesystem::create_directories(own);
  std::ofstream(own + "/shop-words.toml")
      << "description = \"Ours\"\n[[rule]]\nname = \"Own\"\noperation = \"engrave\"\n";
  const CommandResult shown = runner.Run({"rules", "check", "shop-words", "job.json"});
  EXPECT_NE(shown.output.find("Own\tengrave\t6"), std::string::npos) << shown.output;
  const CommandResult listed = runner.Run({"rules", "list"});
  EXPECT_NE(listed.output.find("shop-words\tOurs\n"), std::string::npos) << listed.output;
  EXPECT_NE(listed.output.find("red-hairlines\t"), std::string::npos) << listed.output;
}

TEST_F(RulesCommand, lists_a_file_that_can_not_be_read_with_its_fault) {
  const std::string own = runner.Root() + "/cut-rules";
  std::filesystem::create_directories(own);
  std::ofstream(own + "/broken.toml") << "[[rule]]\nnam = 1\n";
  const CommandResult listed = runner.Run({"rules", "list", "--json"});
  EXPECT_EQ(listed.status, 0);
  EXPECT_NE(listed.output.find("\"fault\""), std::string::npos) << listed.output;
}

TEST_F(RulesCommand, prints_a_rule_file_as_it_is) {
  const CommandResult result = runner.Run({"rules", "show", "red-hairlines"});
  EXPECT_EQ(result.output, FileContent(RASTREL_SOURCE_DIR "/share/cut-rules/red-hairlines.toml"));
}

TEST_F(RulesCommand, refuses_a_name_that_no_rules_have) {
  const CommandResult result = runner.Run({"rules", "check", "nobodys-words", "job.json"});
  EXPECT_EQ(result.status, 3);
  EXPECT_NE(result.error.find("there are no rules 'nobodys-words'"), std::string::npos)
      << result.error;
}

// Names of spot colors, as shops choose them, each with its operation.
TEST(ReadyRules, take_plain_words_for_the_operations_that_they_mean) {
  const auto rules = cutting::ReadRules(
      FileContent(RASTREL_SOURCE_DIR "/share/cut-rules/shop-words.toml"), "shop-words");
  ASSERT_TRUE(rules) << Describe(rules.Error());
  const std::pair<const char*, const char*> words[] = {
      {"CutContour", "cut"},     {"Cut Contour", "cut"},       {"contour-cut", "cut"},
      {"Thru-cut", "cut"},       {"Through Cut", "cut"},       {"DIECUT", "cut"},
      {"Die-line", "cut"},       {"Kiss-cut", "cut-half"},     {"KissCut", "cut-half"},
      {"Half Cut", "cut-half"},  {"Crease", "crease"},         {"Fold line", "crease"},
      {"Perf-cut", "perforate"}, {"Perforation", "perforate"}, {"Engrave", "engrave"},
      {"Drill", "drill"},        {"Registration", "mark"},     {"Bleed", "ignore"}};
  for (const auto& [word, operation] : words) {
    const cutting::Paint paint{.color = {.model = cutting::ColorModel::Spot, .name = word}};
    const cutting::Rule* const rule = rules->RuleFor(paint);
    ASSERT_NE(rule, nullptr) << word;
    EXPECT_EQ(cutting::NameOf(rule->operation), operation) << word;
  }
  for (const char* const word : {"Gold", "White", "Varnish", "Shortcut Blue", "Stretch", "Whole"}) {
    const cutting::Paint paint{.color = {.model = cutting::ColorModel::Spot, .name = word}};
    EXPECT_EQ(rules->RuleFor(paint), nullptr) << word;
  }
}

TEST(ReadyRules, of_the_installation_can_all_be_read) {
  for (const auto& entry :
       std::filesystem::directory_iterator(RASTREL_SOURCE_DIR "/share/cut-rules")) {
    const auto rules =
        cutting::ReadRules(FileContent(entry.path()), entry.path().filename().string());
    ASSERT_TRUE(rules) << Describe(rules.Error());
    EXPECT_FALSE(rules->Description().empty()) << entry.path();
  }
}

}  // namespace
}  // namespace rastrel::test
