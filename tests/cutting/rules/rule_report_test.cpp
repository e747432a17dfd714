#include "cutting/rules/rule_report.h"

#include <gtest/gtest.h>

namespace rastrel::cutting {
namespace {

CutPath Line(double length, PaintColor color) {
  return {.contours = {{.start = {0, 0}, .segments = {LineTo({length, 0})}}},
          .paint = {.color = std::move(color)}};
}

PaintColor Spot(const std::string& name) { return {.model = ColorModel::Spot, .name = name}; }
PaintColor Rgb(double red) { return {.model = ColorModel::Rgb, .components = {red, 0, 0}}; }

RuleSet Rules() {
  auto rules = ReadRules(
      "[[rule]]\nname = \"a\"\nspot = \"Cut*\"\noperation = \"crease\"\npasses = 3\n"
      "[[rule]]\nname = \"b\"\nspot = \"Drill\"\noperation = \"drill\"\n",
      "r.toml");
  EXPECT_TRUE(rules);
  return rules.ValueOr({});
}

TEST(Applied, gives_paths_their_rule_and_counts_them) {
  CutJob job;
  job.paths = {Line(10, Spot("CutA")), Line(30, Rgb(1)), Line(20, Spot("CutB")),
               Line(5, Spot("CutA"))};
  job.paths[1].settings.passes = 7;
  RuleReport report;
  const CutJob applied = Applied(Rules(), job, report);

  EXPECT_EQ(applied.paths[0].operation, Operation::Crease);
  EXPECT_EQ(applied.paths[0].rule, "a");
  EXPECT_EQ(applied.paths[0].settings.passes, 3);
  EXPECT_EQ(applied.paths[0].contours, job.paths[0].contours);
  EXPECT_EQ(applied.paths[1].operation, Operation::Print);
  EXPECT_EQ(applied.paths[1].rule, "");
  EXPECT_EQ(applied.paths[1].settings, ToolSettings{});

  ASSERT_EQ(report.rules.size(), 2U);
  EXPECT_EQ(report.rules[0].sum.paths, 3U);
  EXPECT_EQ(report.rules[0].sum.contours, 3U);
  EXPECT_DOUBLE_EQ(report.rules[0].sum.length, 35);
  ASSERT_EQ(report.rules[0].colors.size(), 2U);
  EXPECT_EQ(report.rules[0].colors[0].color.name, "CutB") << "the longest first";
  EXPECT_DOUBLE_EQ(report.rules[0].colors[1].sum.length, 15);
  EXPECT_EQ(report.rules[1].name, "b");
  EXPECT_EQ(report.rules[1].sum.paths, 0U);
  EXPECT_EQ(report.untaken.sum.paths, 1U);
  EXPECT_DOUBLE_EQ(report.untaken.colors.at(0).sum.length, 30);
}

TEST(Applied, keeps_a_spot_apart_from_the_color_that_it_is_named_after) {
  CutJob job;
  job.paths = {Line(1, Rgb(1)), Line(2, Spot("#ff0000"))};
  RuleReport report;
  EXPECT_EQ(Applied(Rules(), job, report).paths.size(), 2U);
  EXPECT_EQ(report.untaken.colors.size(), 2U);
}

TEST(TextOf, colors_are_written_for_people) {
  EXPECT_EQ(TextOf(Spot("Cut")), "Cut");
  EXPECT_EQ(TextOf(Rgb(1)), "#ff0000");
  EXPECT_EQ(TextOf({.components = {0.5}}), "grey 50 %");
  EXPECT_EQ(TextOf({.model = ColorModel::Cmyk, .components = {0, 1, 0.125, 0}}),
            "cmyk 0 100 12.5 0");
}

}  // namespace
}  // namespace rastrel::cutting
