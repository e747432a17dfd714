#include "host/cutfile/plotter_writer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "host/drawing/plotter_reader.h"
#include "tests/host/cutfile/drawings.h"
#include "tests/host/drawing/path_files.h"

namespace rastrel::cutfile {
namespace {

using Rgb = graphics::VectorPath::Rgb;

std::string TextOf(const CutDrawing& drawing) {
  const auto text = PlotterFileText(drawing);
  return text ? *text : "failed: " + Describe(text.Error());
}

CutDrawing Line(std::vector<CWorldPoint> points, bool closed = false) {
  return {10, 5, {test::CutObjectOf(CutKind::Cut, {}, std::move(points), closed)}};
}

// 400 units are a centimetre.
TEST(PlotterFile, each_kind_has_a_pen_and_cuts_through_the_material_come_last) {
  CutDrawing drawing = test::ThreeKinds();
  std::swap(drawing.objects[0], drawing.objects[1]);
  EXPECT_EQ(TextOf(drawing),
            "IN;\n"
            "SP3;\n"
            "PU0,0;\nPD50,1000;\n"
            "SP1;\n"
            "PU400,400;\nPD1600,400,1600,1200,400,1200,400,400;\n"
            "SP2;\n"
            "PU2000,400;\nPD3600,400,2800,1800,2000,400;\n"
            "PU;\nSP0;\n");
}

TEST(PlotterFile, a_page_without_lines_lifts_the_pen_and_puts_it_away) {
  EXPECT_EQ(TextOf({10, 5, {}}), "IN;\nPU;\nSP0;\n");
}

TEST(PlotterFile, coordinates_are_rounded_and_equal_neighbours_left_out) {
  EXPECT_EQ(TextOf(Line({{0.0012, -0.0013}, {0.0011, -0.0012}, {1, 0}})),
            "IN;\nSP1;\nPU0,-1;\nPD0,0,400,0;\nPU;\nSP0;\n");
  EXPECT_EQ(TextOf(Line({{0, 0}, {0.001, 0.001}})), "IN;\nSP1;\nPU;\nSP0;\n");
  EXPECT_EQ(TextOf(Line({{0, 0}, {1, 0}, {0.0001, 0}}, true)),
            "IN;\nSP1;\nPU0,0;\nPD400,0,0,0;\nPU;\nSP0;\n");
}

TEST(PlotterFile, a_long_run_goes_on_in_a_further_instruction_with_the_pen_down) {
  std::vector<CWorldPoint> points;
  for (int i = 0; i <= 33; ++i) points.push_back({static_cast<double>(i), 0});
  const std::string text = TextOf(Line(points));
  EXPECT_NE(text.find("12800,0;\nPD13200,0;\nPU;"), std::string::npos) << text;
  points.pop_back();
  EXPECT_NE(TextOf(Line(points)).find("12400,0,12800,0;\nPU;"), std::string::npos);
}

// 2^23 units are 20,971.52 cm.
TEST(PlotterFile, a_point_beyond_the_languages_range_is_refused) {
  EXPECT_NE(TextOf(Line({{0, 0}, {20'971.52, 0}})).find("PD8388608,0;"), std::string::npos);
  EXPECT_EQ(TextOf(Line({{0, 0}, {0, -20'971.53}})),
            "failed: a line leads farther than a plotter file can say, 209 metres");
}

TEST(PlotterFile, our_reader_finds_the_same_lines_in_the_colors_of_their_pens) {
  const auto read = test::PathsBy(drawing::ReadPlotterFile, TextOf(test::ThreeKinds()));
  EXPECT_EQ(read.refusal, "");
  ASSERT_EQ(read.paths.size(), 3U);
  test::ExpectBox(read.paths[0], 0, 0, 0.125, 2.5);
  test::ExpectBox(read.paths[1], 1, 1, 4, 3);
  test::ExpectBox(read.paths[2], 5, 1, 9, 4.5);
  EXPECT_EQ(read.paths[0].line, (Rgb{0, 255, 0}));
  EXPECT_EQ(read.paths[1].line, (Rgb{0, 0, 0}));
  EXPECT_EQ(read.paths[2].line, (Rgb{255, 0, 0}));
  EXPECT_FALSE(read.paths[0].shape.subPaths.at(0).closed);
  EXPECT_TRUE(read.paths[1].shape.subPaths.at(0).closed);
}

}  // namespace
}  // namespace rastrel::cutfile
