#include "cutting/rules/rules.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace rastrel::cutting {
namespace {

RuleSet Rules(const std::string& text) {
  auto rules = ReadRules(text, "r.toml");
  EXPECT_TRUE(rules) << (rules ? "" : Describe(rules.Error()));
  return rules.ValueOr({});
}

// One rule that cuts, with these conditions.
RuleSet RuleWith(const std::string& conditions) {
  return Rules("[[rule]]\nname = \"it\"\noperation = \"cut\"\n" + conditions + "\n");
}

Paint Spot(const std::string& name) { return {.color = {.model = ColorModel::Spot, .name = name}}; }

Paint Rgb(double red, double green, double blue) {
  return {.color = {.model = ColorModel::Rgb, .components = {red / 255, green / 255, blue / 255}}};
}

Paint Cmyk(double cyan, double magenta, double yellow, double black) {
  return {.color = {.model = ColorModel::Cmyk,
                    .components = {cyan / 100, magenta / 100, yellow / 100, black / 100}}};
}

Paint Gray(double level) { return {.color = {.components = {level}}}; }

std::string RuleOf(const RuleSet& rules, const Paint& paint) {
  const Rule* rule = rules.RuleFor(paint);
  return rule == nullptr ? "" : rule->name;
}

TEST(RuleSet, takes_the_first_rule_that_fits) {
  const RuleSet rules = Rules(R"(
[[rule]]
name = "one"
spot = "CutContour"
operation = "cut"
[[rule]]
name = "other"
spot = "Cut*"
operation = "crease"
[[rule]]
name = "again"
spot = "CutContour"
operation = "drill"
)");
  EXPECT_EQ(RuleOf(rules, Spot("CutContour")), "one");
  EXPECT_EQ(RuleOf(rules, Spot("Cutting")), "other");
  EXPECT_EQ(RuleOf(rules, Spot("Crease")), "");
}

TEST(RuleSet, finds_a_spot_whatever_the_case_of_its_letters) {
  const RuleSet rules = RuleWith("spot = [\"CutContour\", \"*thru*\"]");
  EXPECT_EQ(RuleOf(rules, Spot("cutcontour")), "it");
  EXPECT_EQ(RuleOf(rules, Spot("My THRU line")), "it");
  EXPECT_EQ(RuleOf(rules, Spot("CutContour2")), "");
  EXPECT_EQ(RuleOf(rules, Rgb(0, 0, 0)), "");
}

TEST(RuleSet, takes_a_color_up_to_its_difference) {
  // 255,0,255 and 250,0,255 are 0.4 apart, 255,0,255 and 200,0,255 about 8.
  EXPECT_EQ(RuleOf(RuleWith("rgb = \"#ff00ff\""), Rgb(255, 0, 255)), "it");
  EXPECT_EQ(RuleOf(RuleWith("rgb = [255, 0, 255]"), Rgb(250, 0, 255)), "it");
  EXPECT_EQ(RuleOf(RuleWith("rgb = \"#ff00ff\""), Rgb(200, 0, 255)), "");
  EXPECT_EQ(RuleOf(RuleWith("rgb = \"#ff00ff\"\ndifference = 12"), Rgb(200, 0, 255)), "it");
  EXPECT_EQ(RuleOf(RuleWith("rgb = \"#ff00ff\"\ndifference = 0"), Rgb(255, 0, 255)), "it");
  EXPECT_EQ(RuleOf(RuleWith("rgb = \"#ff00ff\"\ndifference = 0"), Rgb(254, 0, 255)), "");
}

TEST(RuleSet, takes_a_color_at_exactly_its_difference_and_none_beyond) {
  const auto one = LabOf(Rgb(255, 0, 0).color);
  const auto other = LabOf(Rgb(240, 20, 0).color);
  ASSERT_TRUE(one && other);
  const double apart = ColorDifference(*one, *other);
  const auto within = [](double limit) {
    return RuleOf(RuleWith("rgb = \"#ff0000\"\ndifference = " + std::to_string(limit)),
                  Rgb(240, 20, 0));
  };
  EXPECT_EQ(within(apart - 0.001), "");
  EXPECT_EQ(within(apart + 0.001), "it");
}

TEST(RuleSet, takes_gray_as_rgb_of_equal_parts) {
  const RuleSet rules = RuleWith("rgb = [128, 128, 128]\ndifference = 0.01");
  EXPECT_EQ(RuleOf(rules, Gray(128.0 / 255)), "it");
  EXPECT_EQ(RuleOf(rules, Gray(0.3)), "");
  EXPECT_EQ(RuleOf(RuleWith("rgb = \"#000000\""), Cmyk(0, 0, 0, 100)), "");
}

TEST(RuleSet, takes_cmyk_by_cmyk_alone) {
  const RuleSet rules = RuleWith("cmyk = [[0, 100, 0, 0], [100, 0, 0, 0]]");
  EXPECT_EQ(RuleOf(rules, Cmyk(0, 100, 0, 0)), "it");
  EXPECT_EQ(RuleOf(rules, Cmyk(100, 0, 0, 0)), "it");
  EXPECT_EQ(RuleOf(rules, Cmyk(0, 99, 0, 0)), "it");
  EXPECT_EQ(RuleOf(rules, Cmyk(0, 60, 0, 0)), "");
  EXPECT_EQ(RuleOf(rules, Rgb(255, 0, 255)), "");
}

TEST(RuleSet, takes_any_of_its_spots_and_colors) {
  const RuleSet rules = RuleWith("spot = \"Cut\"\nrgb = \"#ff0000\"\ncmyk = [0, 0, 100, 0]");
  EXPECT_EQ(RuleOf(rules, Spot("Cut")), "it");
  EXPECT_EQ(RuleOf(rules, Rgb(255, 0, 0)), "it");
  EXPECT_EQ(RuleOf(rules, Cmyk(0, 0, 100, 0)), "it");
  EXPECT_EQ(RuleOf(rules, Gray(1)), "");
}

TEST(RuleSet, takes_lines_within_a_range_of_widths) {
  const RuleSet rules = RuleWith("line-width = { min = \"0.2 pt\", max = \"0.3 pt\" }");
  const auto wide = [&](double points) {
    Paint paint = Gray(0);
    paint.lineWidth = points * 25.4 / 72;
    return RuleOf(rules, paint);
  };
  EXPECT_EQ(wide(0.19), "");
  EXPECT_EQ(wide(0.2), "it");
  EXPECT_EQ(wide(0.3), "it");
  EXPECT_EQ(wide(0.30000001192), "it") << "the same width in single precision";
  EXPECT_EQ(wide(0.31), "");
}

TEST(RuleSet, takes_hairlines_by_a_greatest_width_and_no_fill_by_any) {
  const RuleSet rules = RuleWith("line-width = { max = 0.1 }");
  EXPECT_EQ(RuleOf(rules, Gray(0)), "it");
  Paint fill = Gray(0);
  fill.kind = Paint::Kind::Fill;
  EXPECT_EQ(RuleOf(rules, fill), "");
}

TEST(RuleSet, takes_the_kinds_of_paint_that_it_names) {
  const auto kinds = [](const RuleSet& rules) {
    std::string taken;
    for (const auto kind :
         {Paint::Kind::Stroke, Paint::Kind::Fill, Paint::Kind::EvenOddFill, Paint::Kind::Text}) {
      Paint paint = Gray(0);
      paint.kind = kind;
      taken += rules.RuleFor(paint) != nullptr ? '1' : '0';
    }
    return taken;
  };
  EXPECT_EQ(kinds(RuleWith("")), "1111");
  EXPECT_EQ(kinds(RuleWith("paint = \"stroke\"")), "1000");
  EXPECT_EQ(kinds(RuleWith("paint = \"fill\"")), "0110");
  EXPECT_EQ(kinds(RuleWith("paint = [\"fill\", \"text\"]")), "0111");
}

TEST(RuleSet, takes_layers_by_their_names) {
  const RuleSet rules = RuleWith("layer = [\"Knife*\", \"Cut\"]");
  Paint paint = Gray(0);
  EXPECT_EQ(RuleOf(rules, paint), "");
  paint.layer = "knife 2";
  EXPECT_EQ(RuleOf(rules, paint), "it");
  paint.layer = "Cut out";
  EXPECT_EQ(RuleOf(rules, paint), "");
}

TEST(RuleSet, takes_no_color_with_a_wrong_number_of_components) {
  const RuleSet rules = RuleWith("rgb = \"#000000\"\ndifference = 100");
  EXPECT_EQ(RuleOf(rules, {.color = {.model = ColorModel::Rgb, .components = {0, 0}}}), "");
  EXPECT_EQ(RuleOf(rules, {.color = {.model = ColorModel::Rgb}}), "");
}

TEST(RuleSet, decides_the_same_after_more_colors_than_it_keeps) {
  const RuleSet rules = RuleWith("rgb = \"#000000\"\ndifference = 1");
  for (int i = 0; i < 20'000; ++i) EXPECT_EQ(rules.RuleFor(Gray(0.1 + i / 25'000.0)), nullptr);
  EXPECT_EQ(RuleOf(rules, Gray(0)), "it");
  EXPECT_EQ(RuleOf(rules, Gray(0.5)), "");
}

}  // namespace
}  // namespace rastrel::cutting
