#include "host/drawing/plotter_reader.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/host/drawing/path_files.h"

namespace rastrel::drawing {
namespace {

using Rgb = VectorPath::Rgb;

// 400 units are a centimetre.
test::ReadPaths Read(const std::string& bytes) { return test::PathsBy(ReadPlotterFile, bytes); }

VectorPath PathOf(const std::string& bytes) {
  const auto read = Read(bytes);
  EXPECT_EQ(read.refusal, "");
  EXPECT_EQ(read.paths.size(), 1U);
  return read.paths.empty() ? VectorPath() : read.paths[0];
}

TEST(Plotter, forty_units_are_a_millimetre) {
  test::ExpectBox(PathOf("IN;SP1;PU400,800;PD1200,800,1200,1600;PU;"), 1, 2, 3, 4);
}

TEST(Plotter, each_run_of_the_pen_is_a_path_that_is_closed_where_it_comes_back) {
  const auto read = Read("PU0,0;PD400,0;PD400,400;PD0,0;PU800,0;PD1200,0;SP2;PD1600,0");
  ASSERT_EQ(read.paths.size(), 3U);
  EXPECT_TRUE(read.paths[0].shape.subPaths.at(0).closed);
  EXPECT_EQ(read.paths[0].shape.subPaths.at(0).segments.size(), 2U);
  EXPECT_FALSE(read.paths[1].shape.subPaths.at(0).closed);
  test::ExpectBox(read.paths[2], 3, 0, 4, 0);
}

TEST(Plotter, instructions_need_no_separators) {
  test::ExpectBox(PathOf("INSP1PU400 800PD1200,800PA1200 1600PU"), 1, 2, 3, 4);
  test::ExpectBox(PathOf("PU0,0;PD-400-800"), -1, -2, 0, 0);
}

TEST(Plotter, relative_moves_add_up) {
  test::ExpectBox(PathOf("PU400,400;PR;PD400,0,0,400;PA;PD0,0"), 0, 0, 2, 2);
}

TEST(Plotter, arcs_turn_around_their_centre_by_their_angle) {
  const VectorPath absolute = PathOf("PU800,0;PD;AA0,0,90;");
  test::ExpectBox(absolute, 0, 0, 2, 2, 2e-5);
  test::VisitPoints(absolute, 20,
                    [](const CWorldPoint& p) { EXPECT_NEAR(std::hypot(p.x, p.y), 2, 2e-5); });
  test::ExpectBox(PathOf("PU800,0;PD;AR-800,0,-90;"), 0, -2, 2, 0, 2e-5);
  const auto goesOn = Read("PU800,0;AA0,0,90;PD400,800");
  ASSERT_EQ(goesOn.paths.size(), 1U) << "with the pen up an arc is a move";
  test::ExpectBox(goesOn.paths[0], 0, 2, 1, 2, 2e-5);
}

TEST(Plotter, circles_and_rectangles_are_closed_and_leave_the_pen_where_it_is) {
  const auto read = Read("PU400,400;CI400;EA1200,800;ER400,-400;RA800,800;RR-400,-400;PD0,400");
  ASSERT_EQ(read.paths.size(), 6U);
  test::ExpectBox(read.paths[0], 0, 0, 2, 2, 2e-5);
  test::ExpectBox(read.paths[1], 1, 1, 3, 2);
  test::ExpectBox(read.paths[2], 1, 0, 2, 1);
  test::ExpectBox(read.paths[3], 1, 1, 2, 2);
  test::ExpectBox(read.paths[4], 0, 0, 1, 1);
  for (std::size_t i = 0; i < 5; ++i) {
    EXPECT_TRUE(read.paths[i].shape.subPaths.at(0).closed);
    EXPECT_EQ(read.paths[i].fill.has_value(), i > 2);
    EXPECT_EQ(read.paths[i].line.has_value(), i <= 2);
  }
  test::ExpectBox(read.paths[5], 0, 1, 1, 1);
}

TEST(Plotter, pens_have_colors_and_widths) {
  const auto read = Read(
      "SP1;PD1,0;PU;SP3;PD9,0;PU;SP0;PD1,1;PU;PW0.5;SP1;PD5,5;PU;PW0.7,2;SP2;PD9,9;PU;"
      "PC1,10,20,30;SP1;PD7,7;");
  ASSERT_EQ(read.paths.size(), 5U);
  EXPECT_EQ(read.paths[0].line, (Rgb{0, 0, 0}));
  EXPECT_EQ(read.paths[0].lineWidth, 0);
  EXPECT_EQ(read.paths[1].line, (Rgb{0, 255, 0}));
  EXPECT_NEAR(read.paths[2].lineWidth, 0.05, 1e-12);
  EXPECT_EQ(read.paths[3].line, (Rgb{255, 0, 0}));
  EXPECT_NEAR(read.paths[3].lineWidth, 0.07, 1e-12);
  EXPECT_EQ(read.paths[4].line, (Rgb{10, 20, 30}));
}

// P1 and P2 are 10 by 20 cm apart.
TEST(Plotter, sc_scales_between_the_corners_of_ip) {
  const std::string corners = "IP400,800,4400,8800;";
  test::ExpectBox(PathOf(corners + "SC0,10,0,10;PU0,0;PD10,10"), 1, 2, 11, 22);
  test::ExpectBox(PathOf(corners + "SC0,10,0,10,1;PU0,0;PD10,10"), 1, 7, 11, 17);
  test::ExpectBox(PathOf(corners + "SC2,40,3,80,2;PU2,3;PD12,13"), 1, 2, 2, 4);
  test::ExpectBox(PathOf(corners + "SC0,10,0,10;SC;PU0,0;PD400,400"), 0, 0, 1, 1);
  test::ExpectBox(PathOf(corners + "SC5,5,0,10;PU0,0;PD400,400"), 0, 0, 1, 1);
}

TEST(Plotter, in_goes_back_to_the_beginning) {
  test::ExpectBox(PathOf("SC0,1,0,1;PR;PD;IN;PU400,0;PD800,0"), 1, 0, 2, 0);
}

TEST(Plotter, labels_comments_and_device_sequences_are_passed_over) {
  const auto read = Read("\x1B%-1BIN;\x1B.@;1:CO\"PD9,9;\";LBPD9,9\x03;DT*;LBPU*SP1;PU0,0;PD400,0");
  ASSERT_EQ(read.paths.size(), 1U);
  test::ExpectBox(read.paths[0], 0, 0, 1, 0);
  ASSERT_EQ(read.notes.size(), 1U);
  EXPECT_EQ(read.notes[0], "instructions that are no plain lines are left out: LB");
}

TEST(Plotter, instructions_that_draw_otherwise_are_noted) {
  const auto read = Read("PE<=abc7;PD400,0;WG1,2,3;VS10;LT;");
  ASSERT_EQ(read.paths.size(), 1U);
  ASSERT_EQ(read.notes.size(), 1U);
  EXPECT_EQ(read.notes[0], "instructions that are no plain lines are left out: PE, WG");
}

TEST(Plotter, a_file_without_a_line_is_refused) {
  for (const std::string bytes : {"", "IN;", "PU1,1;PU2,2", "PD", "PD5", "CI0", "AA1,2", "EA1",
                                  "SP0;PD1,1", "\x1B", "PD1e999,1"}) {
    const auto read = Read(bytes);
    EXPECT_EQ(read.refusal.empty(), !read.paths.empty()) << bytes;
  }
  EXPECT_EQ(Read("IN;").refusal, "it draws nothing");
}

TEST(Plotter, a_file_that_is_cut_off_anywhere_ends) {
  const std::string whole =
      "IN;SP1;IP0,0,400,400;SC0,1,0,1,1;PU1,1;PD2,2,3,1;CI5;AA3,3,90;LBa\x03PC1,2,3,4;RA9,9";
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const auto read = Read(whole.substr(0, length));
    EXPECT_EQ(read.refusal.empty(), !read.paths.empty()) << length;
  }
}

}  // namespace
}  // namespace rastrel::drawing
