#include "cutting/output/hpgl_writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string_view>

#include "tests/cutting/output/sample_jobs.h"

namespace rastrel::cutting {
namespace {

using test::Circle;
using test::JobOf;
using test::Line;
using test::PathOf;
using test::Rectangle;

std::string Text(const CutJob& job, const HpglOptions& options = {}, double tolerance = 0.02) {
  auto text = HpglText(job, {}, tolerance, options);
  EXPECT_TRUE(text) << Describe(text ? Failure{} : text.Error());
  return text ? *std::move(text) : "";
}

std::string Fault(const CutJob& job, const HpglOptions& options = {}) {
  const auto text = HpglText(job, {}, 0.02, options);
  EXPECT_FALSE(text);
  return text ? "" : Describe(text.Error());
}

// The positions of all PD and PU with positions, a run for each PU.
std::vector<std::vector<std::pair<long, long>>> RunsOf(const std::string& text) {
  std::vector<std::vector<std::pair<long, long>>> runs;
  for (std::size_t at = 0; at < text.size(); at = text.find('\n', at) + 1) {
    const std::string line = text.substr(at, text.find('\n', at) - at);
    if (line.starts_with("PU") && line != "PU;") runs.emplace_back();
    if (!line.starts_with("PU") && !line.starts_with("PD")) continue;
    const char* cursor = line.c_str() + 2;
    while (*cursor != ';') {
      char* end = nullptr;
      const long x = std::strtol(cursor, &end, 10);
      const long y = std::strtol(end + 1, &end, 10);
      runs.back().emplace_back(x, y);
      cursor = *end == ',' ? end + 1 : end;
    }
  }
  return runs;
}

TEST(HpglText, an_empty_job_lifts_the_pen_and_puts_it_away) {
  EXPECT_EQ(Text(JobOf({})), "IN;\nPU;\nSP0;\n");
}

TEST(HpglText, a_closed_path_leads_back_to_its_start) {
  EXPECT_EQ(Text(JobOf({PathOf(Operation::Cut, {Rectangle(10, 10, 40, 30)})})),
            "IN;\nSP1;\nPU400,400;\nPD1600,400,1600,1200,400,1200,400,400;\nPU;\nSP0;\n");
}

TEST(HpglText, an_open_path_ends_at_its_end) {
  EXPECT_EQ(Text(JobOf({PathOf(Operation::Crease, {Line({{0, 0}, {1, 0}, {1, 2.5}})})})),
            "IN;\nSP3;\nPU0,0;\nPD40,0,40,100;\nPU;\nSP0;\n");
}

TEST(HpglText, paths_keep_their_order_and_a_pen_is_taken_where_it_changes) {
  const CutJob job = JobOf({PathOf(Operation::Cut, {Line({{0, 0}, {1, 0}})}),
                            PathOf(Operation::Cut, {Line({{0, 1}, {1, 1}})}),
                            PathOf(Operation::CutHalf, {Line({{0, 2}, {1, 2}})}),
                            PathOf(Operation::Cut, {Line({{0, 3}, {1, 3}})})});
  EXPECT_EQ(Text(job),
            "IN;\nSP1;\nPU0,0;\nPD40,0;\nPU0,40;\nPD40,40;\nSP2;\nPU0,80;\nPD40,80;\n"
            "SP1;\nPU0,120;\nPD40,120;\nPU;\nSP0;\n");
}

TEST(HpglText, print_and_ignored_paths_are_left_out) {
  EXPECT_EQ(
      Text(JobOf({PathOf(Operation::Print, {Rectangle(0, 0, 9, 9)}),
                  PathOf(Operation::Ignore, {Rectangle(0, 0, 9, 9)}), PathOf(Operation::Cut, {})})),
      "IN;\nPU;\nSP0;\n");
}

TEST(HpglText, a_tool_by_its_name_has_a_pen_of_its_own) {
  HpglOptions options;
  options.penOfTool["wheel"] = 8;
  EXPECT_EQ(Text(JobOf({PathOf(Operation::Crease, {Line({{0, 0}, {1, 0}})}, {.tool = "wheel"})}),
                 options),
            "IN;\nSP8;\nPU0,0;\nPD40,0;\nPU;\nSP0;\n");
}

TEST(HpglText, speed_is_in_centimetres_a_second_and_force_in_grams) {
  const CutJob job =
      JobOf({PathOf(Operation::Cut, {Line({{0, 0}, {1, 0}})}, {.speed = 300, .force = 80}),
             PathOf(Operation::Cut, {Line({{0, 1}, {1, 1}})}, {.speed = 300, .force = 90.4}),
             PathOf(Operation::Cut, {Line({{0, 2}, {1, 2}})}, {.speed = 25}),
             PathOf(Operation::Cut, {Line({{0, 3}, {1, 3}})})});
  EXPECT_EQ(Text(job),
            "IN;\nSP1;\nVS30;\nFS80;\nPU0,0;\nPD40,0;\nFS90;\nPU0,40;\nPD40,40;\n"
            "VS2.5;\nFS;\nPU0,80;\nPD40,80;\nVS;\nPU0,120;\nPD40,120;\nPU;\nSP0;\n");
}

TEST(HpglText, a_speed_and_a_force_that_round_to_nothing_stay_the_least) {
  const CutJob job =
      JobOf({PathOf(Operation::Cut, {Line({{0, 0}, {1, 0}})}, {.speed = 0.001, .force = 0.1})});
  EXPECT_EQ(Text(job), "IN;\nSP1;\nVS0.1;\nFS1;\nPU0,0;\nPD40,0;\nPU;\nSP0;\n");
}

TEST(HpglText, each_pass_goes_along_again) {
  EXPECT_EQ(Text(JobOf({PathOf(Operation::Cut, {Line({{0, 0}, {1, 0}})}, {.passes = 3})})),
            "IN;\nSP1;\nPU0,0;\nPD40,0;\nPU0,0;\nPD40,0;\nPU0,0;\nPD40,0;\nPU;\nSP0;\n");
}

TEST(HpglText, a_hundredth_of_a_millimetre_is_the_other_unit) {
  EXPECT_EQ(Text(JobOf({PathOf(Operation::Cut, {Line({{0, 0}, {1.234, 5}})})}),
                 {.unitsPerMillimetre = 100}),
            "IN;\nSP1;\nPU0,0;\nPD123,500;\nPU;\nSP0;\n");
}

TEST(HpglText, a_path_within_one_unit_is_left_out_but_a_drill_is_lowered_there) {
  const std::vector<Contour> tiny{Line({{1, 1}, {1.001, 1}, {1.001, 1.001}}), Line({{2, 2}})};
  EXPECT_EQ(RunsOf(Text(JobOf({PathOf(Operation::Cut, tiny)}))).size(), 0U);
  EXPECT_EQ(Text(JobOf({PathOf(Operation::Drill, tiny)})),
            "IN;\nSP6;\nPU40,40;\nPD40,40;\nPU80,80;\nPD80,80;\nPU;\nSP0;\n");
}

TEST(HpglText, a_path_away_and_back_within_a_unit_does_not_close_twice) {
  EXPECT_EQ(Text(JobOf({PathOf(Operation::Cut, {Line({{0, 0}, {1, 0}, {0.001, 0}}, true)})})),
            "IN;\nSP1;\nPU0,0;\nPD40,0,0,0;\nPU;\nSP0;\n");
}

TEST(HpglText, positions_round_to_the_nearest_unit_on_both_sides_of_zero) {
  EXPECT_EQ(Text(JobOf({PathOf(Operation::Cut, {Line({{-0.0124, -0.0126}, {-1.0126, 1.0126}})})})),
            "IN;\nSP1;\nPU0,-1;\nPD-41,41;\nPU;\nSP0;\n");
}

// Steps of 0.3 of a unit: rounded one after another they would never leave the start.
TEST(HpglText, no_rounding_error_adds_up_along_a_path) {
  std::vector<Point> points;
  for (int i = 0; i <= 10'000; ++i) points.push_back({i * 0.0075, i * -0.0075});
  const auto runs = RunsOf(Text(JobOf({PathOf(Operation::Cut, {Line(points)})})));
  ASSERT_EQ(runs.size(), 1U);
  EXPECT_EQ(runs[0].back(), (std::pair<long, long>{3000, -3000}));
  EXPECT_EQ(runs[0].size(), 3001U);  // each unit once
}

TEST(HpglText, an_instruction_holds_no_more_points_than_it_may) {
  std::vector<Point> points;
  for (int i = 0; i <= 7; ++i) points.push_back({i * 1.0, 0});
  const auto withLines = [&](std::size_t count) {
    const std::string text =
        Text(JobOf({PathOf(Operation::Cut, {Line(points)})}), {.pointsOfInstruction = count});
    EXPECT_EQ(RunsOf(text).at(0).size(), 8U);
    std::size_t lines = 0;
    for (std::size_t at = text.find("PD"); at != std::string::npos; at = text.find("PD", at + 1))
      ++lines;
    return lines;
  };
  EXPECT_EQ(withLines(1), 7U);
  EXPECT_EQ(withLines(6), 2U);
  EXPECT_EQ(withLines(7), 1U);
  EXPECT_EQ(withLines(8), 1U);
}

TEST(HpglText, an_instruction_holds_no_more_bytes_than_it_may) {
  std::vector<Point> points;
  for (int i = 0; i < 500; ++i)
    points.push_back({i % 2 == 0 ? -200'000.0 + i : i * 1.0, i % 3 == 0 ? 0.0 : -199'000.0});
  const CutJob job = JobOf({PathOf(Operation::Cut, {Line(points)})});
  const auto whole = RunsOf(Text(job));
  for (const std::size_t bytes : {20U, 21U, 38U, 39U, 64U, 256U}) {
    const std::string text = Text(job, {.pointsOfInstruction = 1000, .bytesOfInstruction = bytes});
    EXPECT_EQ(RunsOf(text), whole);
    for (std::size_t at = 0; at < text.size(); at = text.find('\n', at) + 1)
      ASSERT_LE(text.find('\n', at) - at, bytes);
  }
}

TEST(HpglText, limits_of_instructions_that_hold_no_position_are_refused) {
  EXPECT_EQ(Fault(JobOf({}), {.pointsOfInstruction = 0}),
            "a plotter's instruction has one point or more");
  EXPECT_EQ(Fault(JobOf({}), {.bytesOfInstruction = 19}),
            "a plotter's instruction needs 20 bytes for one position");
  EXPECT_EQ(Fault(JobOf({}), {.unitsPerMillimetre = 39}), "a plotter's unit is 1/40 or 1/100 mm");
  EXPECT_EQ(Fault(JobOf({}), {.farthest = 8'388'609}),
            "a plotter's positions go to 8388608 units at most");
  EXPECT_EQ(Fault(JobOf({}), {.farthest = 0}), "a plotter's positions go to 8388608 units at most");
}

TEST(HpglText, pens_are_one_to_ninety_nine) {
  HpglOptions options;
  const CutJob job = JobOf({PathOf(Operation::Cut, {Line({{0, 0}, {1, 0}})})});
  for (const int pen : {1, 99}) {
    options.penOf[0] = pen;
    EXPECT_NE(Text(job, options).find("SP" + std::to_string(pen) + ";"), std::string::npos);
  }
  options.penOf[0] = 0;
  EXPECT_EQ(Fault(job, options), "path 1 has the pen 0: pens are 1 to 99");
  options.penOf[0] = 100;
  EXPECT_EQ(Fault(job, options), "path 1 has the pen 100: pens are 1 to 99");
}

TEST(HpglText, the_farthest_position_is_taken_and_the_next_is_not) {
  const auto job = [](double units) {
    return JobOf({PathOf(Operation::Cut, {Line({{0, 0}, {0, units / 40}})})});
  };
  HpglOptions small;
  small.farthest = 32'767;
  for (const double units : {32'766.0, 32'767.0, -32'767.0})
    EXPECT_EQ(RunsOf(Text(job(units), small)).at(0).at(1).second, static_cast<long>(units));
  for (const double units : {32'768.0, -32'768.0})
    EXPECT_EQ(
        Fault(job(units), small),
        "path 1 leads more than 32767 units from the origin, farther than the plotter can say");
  EXPECT_EQ(RunsOf(Text(job(-8'388'608))).at(0).at(1).second, -8'388'608);
  EXPECT_NE(Fault(job(8'388'609)).find("path 1 leads more than 8388608 units"), std::string::npos);
}

TEST(HpglText, a_coordinate_that_is_no_number_is_refused) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double bad : {nan, infinity, -infinity}) {
    EXPECT_NE(Fault(JobOf({PathOf(Operation::Cut, {Line({{0, 0}, {bad, 0}})})})), "");
    EXPECT_NE(Fault(JobOf({PathOf(Operation::Cut, {Line({{0, bad}})})})), "");
    Contour circle = Circle({10, 10}, 5);
    circle.segments[1].second.y = bad;
    EXPECT_NE(Fault(JobOf({PathOf(Operation::Cut, {circle})})), "");
  }
}

// A circle's points are all on it, and the middles of its lines within the tolerance and the unit.
TEST(HpglText, curves_become_lines_within_the_tolerance) {
  const double radius = 100;
  for (const double tolerance : {0.01, 0.02, 0.5}) {
    const auto runs =
        RunsOf(Text(JobOf({PathOf(Operation::Cut, {Circle({0, 0}, radius)})}), {}, tolerance));
    ASSERT_EQ(runs.size(), 1U);
    EXPECT_EQ(runs[0].front(), runs[0].back());
    for (std::size_t i = 1; i < runs[0].size(); ++i) {
      const auto [ax, ay] = runs[0][i - 1];
      const auto [bx, by] = runs[0][i];
      const double middle =
          std::hypot(static_cast<double>(ax + bx) / 80, static_cast<double>(ay + by) / 80);
      // A Bézier circle itself is 0.027 % beside a round one; half a unit's diagonal is 0.018 mm.
      EXPECT_NEAR(middle, radius, tolerance + 0.018 + 0.028);
    }
  }
}

}  // namespace
}  // namespace rastrel::cutting
