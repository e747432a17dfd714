#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "cutting/rules/rule_text.h"
#include "cutting/rules/rules.h"

namespace rastrel::cutting {
namespace {

constexpr std::string_view Head = "[[rule]]\nname = \"it\"\noperation = \"cut\"\n";

std::string Refusal(const std::string& text) {
  const auto rules = ReadRules(text, "r.toml");
  if (rules) return "";
  EXPECT_EQ(rules.Error().code, FailureCode::BadInput);
  return Describe(rules.Error());
}

// Of a rule with this as its fourth line.
std::string RefusalOf(const std::string& line) { return Refusal(std::string(Head) + line + "\n"); }

Rule FirstRule(const std::string& text) {
  const auto rules = ReadRules(text, "r.toml");
  EXPECT_TRUE(rules) << (rules ? "" : Describe(rules.Error()));
  return rules ? rules->Rules().front() : Rule{};
}

Rule RuleWith(const std::string& line) { return FirstRule(std::string(Head) + line + "\n"); }

TEST(ReadRules, settings_are_read_in_their_units) {
  const ToolSettings settings = RuleWith(R"(tool = "knife"
speed = "40 cm/s"
force = 120
passes = 2
order = -3
kerf = "0.01 in"
overcut = "1cm"
lead-in = "72 pt"
bridges = { count = 4, width = 0.5 })")
                                    .settings;
  EXPECT_EQ(settings.tool, "knife");
  EXPECT_EQ(settings.speed, 400);
  EXPECT_EQ(settings.force, 120);
  EXPECT_EQ(settings.passes, 2);
  EXPECT_EQ(settings.order, -3);
  EXPECT_DOUBLE_EQ(settings.kerf, 0.254);
  EXPECT_DOUBLE_EQ(settings.overcut, 10);
  EXPECT_DOUBLE_EQ(settings.leadIn, 25.4);
  EXPECT_EQ(settings.bridges, 4);
  EXPECT_DOUBLE_EQ(settings.bridgeWidth, 0.5);
}

TEST(ReadRules, defaults_hold_where_the_file_says_nothing) {
  const auto rules = ReadRules(Head, "r.toml");
  ASSERT_TRUE(rules);
  EXPECT_EQ(rules->Defaults().tolerance, 0.02);
  EXPECT_EQ(rules->Defaults().joining, 0.1);
  EXPECT_EQ(rules->Defaults().residual, 0.3);
  EXPECT_EQ(rules->Rules()[0].settings, ToolSettings{});
}

TEST(ReadRules, a_rule_has_the_kerf_and_the_bridges_of_the_defaults_or_its_own) {
  const std::string defaults =
      "[defaults]\nkerf = 0.2\nbridges = { count = 2, width = 1 }\ntolerance = \"0.5 mm\"\n";
  const Rule of = FirstRule(defaults + std::string(Head));
  EXPECT_EQ(of.settings.kerf, 0.2);
  EXPECT_EQ(of.settings.bridges, 2);
  const Rule own = FirstRule(defaults + std::string(Head) + "kerf = 0\nbridges = \"none\"\n");
  EXPECT_EQ(own.settings.kerf, 0);
  EXPECT_EQ(own.settings.bridges, 0);
  EXPECT_EQ(own.settings.bridgeWidth, 0);
}

TEST(ReadRules, an_unknown_key_is_refused_with_the_one_that_was_meant) {
  EXPECT_EQ(RefusalOf("spott = \"Cut\""), "r.toml:4:1: unknown key 'spott'; did you mean 'spot'?");
  EXPECT_EQ(RefusalOf("colour = 1"), "r.toml:4:1: unknown key 'colour'");
  EXPECT_EQ(Refusal("[default]\n" + std::string(Head)),
            "r.toml:1:2: unknown key 'default'; did you mean 'defaults'?");
  EXPECT_EQ(Refusal("[defaults]\n  join = 1\n" + std::string(Head)),
            "r.toml:2:3: unknown key 'join'");
}

TEST(ReadRules, the_first_fault_of_the_file_is_named) {
  EXPECT_EQ(RefusalOf("kerf = true\nforce = true\nspeed = true").substr(0, 9), "r.toml:4:");
}

TEST(ReadRules, a_wrong_type_is_refused_at_its_place) {
  EXPECT_EQ(RefusalOf("spot = 3"), "r.toml:4:8: 'spot' must be a text in quotes");
  EXPECT_EQ(RefusalOf("spot = [\"a\", 3]"), "r.toml:4:14: 'spot' must be a text in quotes");
  EXPECT_EQ(RefusalOf("passes = 1.5"), "r.toml:4:10: 'passes' must be a whole number, 1 to 99");
  EXPECT_EQ(RefusalOf("force = \"1\""), "r.toml:4:9: 'force' must be a number, 0 to 100000");
  EXPECT_EQ(RefusalOf("kerf = \"1 yard\""),
            "r.toml:4:8: 'kerf' must be a number, or a text of a number and one of mm, cm, in, pt");
  EXPECT_EQ(RefusalOf("rgb = \"red\""), "r.toml:4:7: 'rgb' must be \"#rrggbb\" or three numbers");
  EXPECT_EQ(RefusalOf("rgb = [1, 2]"), "r.toml:4:7: 'rgb' must have 3 numbers");
  EXPECT_EQ(RefusalOf("cmyk = [0, 0, 0]"), "r.toml:4:8: 'cmyk' must have 4 numbers");
  EXPECT_EQ(RefusalOf("line-width = 1"),
            "r.toml:4:14: 'line-width' must be { min = ..., max = ... } or one of the two");
  EXPECT_EQ(RefusalOf("bridges = 3"),
            "r.toml:4:11: 'bridges' must be { count = 4, width = \"0.5 mm\" } or \"none\"");
  EXPECT_EQ(Refusal("rule = 3\n"), "r.toml:1:8: each rule must be a section, [[rule]]");
  EXPECT_EQ(Refusal("defaults = 3\n" + std::string(Head)),
            "r.toml:1:12: 'defaults' must be a section, [defaults]");
}

TEST(ReadRules, values_are_taken_up_to_their_limits_and_not_beyond) {
  for (const char* good :
       {"passes = 1", "passes = 99", "order = -9999", "order = 9999", "kerf = 0", "kerf = 50",
        "overcut = \"100 cm\"", "speed = 10000", "force = 0", "rgb = [0, 0, 255]",
        "cmyk = [0, 0, 0, 100]", "bridges = { count = 999, width = 1000 }"})
    EXPECT_EQ(RefusalOf(good), "");
  for (const char* bad :
       {"passes = 0", "passes = 100", "order = -10000", "order = 10000", "kerf = -0.1",
        "kerf = 50.1", "kerf = nan", "kerf = inf", "overcut = \"100.1 cm\"", "speed = 0",
        "speed = 10001", "force = -1", "rgb = [0, 0, 256]", "cmyk = [0, 0, 0, 101]",
        "cmyk = [nan, 0, 0, 0]", "bridges = { count = 0, width = 1 }", "tool = \"\"", "spot = []",
        "passes = 99999999999999999999"})
    EXPECT_EQ(RefusalOf(bad).substr(0, 9), "r.toml:4:") << bad;
}

TEST(ReadRules, texts_alternatives_and_rules_are_counted) {
  const auto text = [](std::size_t bytes) { return "tool = \"" + std::string(bytes, 'x') + "\""; };
  EXPECT_EQ(RefusalOf(text(255)), "");
  EXPECT_EQ(RefusalOf(text(256)), "r.toml:4:8: 'tool' must have 1 to 255 bytes");
  const auto spots = [](int count) {
    std::string list;
    for (int i = 0; i < count; ++i) list += "\"x\",";
    return "spot = [" + list + "]";
  };
  EXPECT_EQ(RefusalOf(spots(64)), "");
  EXPECT_EQ(RefusalOf(spots(65)), "r.toml:4:8: 'spot' must have 1 to 64 texts");
  const auto rules = [](int count) {
    std::string file;
    for (int i = 0; i < count; ++i)
      file += "[[rule]]\nname = \"" + std::to_string(i) + "\"\noperation = \"cut\"\n";
    return file;
  };
  EXPECT_EQ(Refusal(rules(256)), "");
  EXPECT_EQ(Refusal(rules(257)), "r.toml:769:1: a file has 256 rules at most");
}

TEST(ReadRules, a_file_up_to_its_limit_is_read) {
  std::string text(Head);
  text.resize(MaximumRuleBytes, '\n');
  EXPECT_EQ(Refusal(text), "");
  EXPECT_EQ(Refusal(text + "\n"), "r.toml: a rule file has 262144 bytes at most");
}

TEST(ReadRules, a_rule_needs_a_name_of_its_own_and_an_operation) {
  EXPECT_EQ(Refusal("[[rule]]\noperation = \"cut\"\n"), "r.toml:1:1: this rule has no name");
  EXPECT_EQ(Refusal("[[rule]]\nname = \"a\"\n"), "r.toml:1:1: this rule has no operation");
  EXPECT_EQ(Refusal(std::string(Head) + std::string(Head)),
            "r.toml:5:8: two rules have the name 'it'");
  EXPECT_EQ(Refusal("[[rule]]\nname = \"a\"\noperation = \"craese\"\n"),
            "r.toml:3:13: unknown operation 'craese'; did you mean 'crease'?");
  EXPECT_EQ(Refusal(""), "r.toml:1:1: the file has no rule");
}

TEST(ReadRules, conditions_that_nothing_can_meet_are_refused) {
  EXPECT_EQ(RefusalOf("paint = \"fil\""),
            "r.toml:4:9: a paint is 'stroke', 'fill' or 'text', and not 'fil'; did you mean "
            "'fill'?");
  EXPECT_EQ(RefusalOf("line-width = { min = 2, max = 1 }"),
            "r.toml:4:14: 'min' of 'line-width' is above its 'max'");
  EXPECT_EQ(RefusalOf("line-width = { min = 2 }\npaint = \"fill\""),
            "r.toml:4:14: 'line-width' goes with the paint 'stroke' alone");
  EXPECT_EQ(RefusalOf("difference = 3"), "r.toml:4:14: 'difference' needs 'rgb' or 'cmyk'");
  EXPECT_EQ(RefusalOf("rgb = \"#ff0000\"\ndifference = 100"), "");
  EXPECT_EQ(RefusalOf("rgb = \"#ff0000\"\ndifference = 100.5"),
            "r.toml:5:14: 'difference' must be a number, 0 to 100");
}

TEST(ReadRules, tool_settings_of_a_print_are_refused) {
  EXPECT_EQ(Refusal("[[rule]]\nname = \"a\"\noperation = \"print\"\nkerf = 1\n"),
            "r.toml:4:8: 'kerf' has no effect with the operation 'print'");
}

TEST(ReadRules, text_that_is_no_toml_is_refused_at_its_place) {
  EXPECT_EQ(Refusal("[[rule]]\nname = \n").substr(0, 9), "r.toml:2:");
  EXPECT_NE(Refusal(std::string(Head) + "name = \"again\"\n"), "");
  EXPECT_NE(Refusal(std::string("\xFF\xFE\0x", 4)), "");
  EXPECT_NE(Refusal("a = " + std::string(100'000, '[')), "");
}

TEST(ReadRules, a_key_of_a_hundred_thousand_parts_is_refused_and_ends_no_program) {
  std::string key = "a";
  for (int part = 0; part < 100'000; ++part) key += ".a";
  EXPECT_EQ(Refusal("description = \"\"\n" + key + " = 1\n"),
            "r.toml:2:1: a key has more than 16 parts");
  EXPECT_EQ(Refusal("a.b = 1\n"), "r.toml:1:1: unknown key 'a'");
}

TEST(ReadRules, a_file_cut_at_any_byte_is_read_or_refused) {
  const std::string text =
      "[defaults]\nkerf = \"1 mm\"\n[[rule]]\nname = \"a\"\nrgb = [\"#ff0000\", [1, 2, 3]]\n"
      "line-width = { min = 0.1 }\noperation = \"cut\"\nbridges = { count = 4, width = 1 }\n";
  EXPECT_EQ(Refusal(text), "");
  for (std::size_t size = 0; size < text.size(); ++size) {
    const auto rules = ReadRules(std::string_view(text).substr(0, size), "r.toml");
    EXPECT_TRUE(rules || rules.Error().line >= 1) << size;
  }
}

TEST(Measured, takes_fixed_numbers_with_a_known_unit) {
  EXPECT_EQ(Measured("2", LengthUnits()), 2);
  EXPECT_EQ(Measured("2 mm", LengthUnits()), 2);
  EXPECT_EQ(Measured("2  cm", LengthUnits()), 20);
  EXPECT_EQ(Measured("2in", LengthUnits()), 50.8);
  EXPECT_EQ(Measured("144pt", LengthUnits()), 144 * (25.4 / 72));
  EXPECT_EQ(Measured("6 mm/s", SpeedUnits()), 6);
  EXPECT_EQ(Measured("6 cm/s", SpeedUnits()), 60);
  EXPECT_EQ(Measured("2 in/s", SpeedUnits()), 50.8);
  EXPECT_EQ(Measured("6 m/min", SpeedUnits()), 100);
  for (const char* bad : {"", " 2", "2 ", "mm", "2 MM", "1e3", "0x2", "2 mm mm", "2,5 mm"})
    EXPECT_FALSE(Measured(bad, LengthUnits())) << bad;
}

// The rows of the page's tables, as "section key value default".
std::set<std::string> RowsOfPage() {
  std::ifstream page(RASTREL_SOURCE_DIR "/docs/formats/cut-rules.md");
  std::set<std::string> rows;
  std::string section;
  for (std::string line; std::getline(page, line);) {
    if (line.starts_with("## ")) section = line.substr(3);
    if (!line.starts_with("| `")) continue;
    std::istringstream cells(line.substr(3));
    std::string key;
    std::string value;
    std::string defaultValue;
    std::getline(cells, key, '`');
    std::getline(cells, value, '|');
    std::getline(cells, value, '|');
    std::getline(cells, defaultValue, '|');
    const auto trimmed = [](const std::string& text) {
      const auto first = text.find_first_not_of(' ');
      if (first == std::string::npos) return std::string();
      return text.substr(first, text.find_last_not_of(' ') - first + 1);
    };
    rows.insert(section + "|" + key + "|" + trimmed(value) + "|" + trimmed(defaultValue));
  }
  return rows;
}

TEST(RuleKeys, are_those_of_the_formats_page) {
  std::set<std::string> keys;
  for (const RuleKey& key : RuleKeys())
    keys.insert(std::string(key.section) + "|" + std::string(key.key) + "|" +
                std::string(key.value) + "|" + std::string(key.defaultValue));
  EXPECT_EQ(keys, RowsOfPage());
}

TEST(RuleKeys, have_defaults_that_change_nothing_when_they_are_written_down) {
  std::string text = "[defaults]\n";
  for (const RuleKey& key : RuleKeys())
    if (key.section == "defaults")
      text += std::string(key.key) + " = \"" + std::string(key.defaultValue) + "\"\n";
  const auto written = ReadRules(text + std::string(Head), "r.toml");
  ASSERT_TRUE(written) << Describe(written.Error());
  EXPECT_EQ(written->Defaults().tolerance, RuleDefaults{}.tolerance);
  EXPECT_EQ(written->Defaults().joining, RuleDefaults{}.joining);
  EXPECT_EQ(written->Defaults().residual, RuleDefaults{}.residual);
  EXPECT_EQ(written->Defaults().kerf, RuleDefaults{}.kerf);
  EXPECT_EQ(written->Defaults().bridges, RuleDefaults{}.bridges);
}

}  // namespace
}  // namespace rastrel::cutting
