#include "cutting/output/gcode_writer.h"

#include <gtest/gtest.h>

#include "cutting/output/cut_file.h"
#include "tests/cutting/output/gcode_interpreter.h"
#include "tests/cutting/output/line_distance.h"
#include "tests/cutting/output/sample_jobs.h"

namespace rastrel::cutting {
namespace {

using test::Follow;
using test::JobOf;
using test::Line;
using test::Machine;
using test::Move;
using test::PathOf;
using test::Rectangle;

std::string Text(const CutJob& job, const GcodeTable& table = {}) {
  auto text = GcodeText(job, {}, 0.02, table);
  EXPECT_TRUE(text) << Describe(text ? Failure{} : text.Error());
  return text ? *std::move(text) : "";
}

std::string Fault(const CutJob& job, const GcodeTable& table) {
  const auto text = GcodeText(job, {}, 0.02, table);
  EXPECT_FALSE(text);
  return text ? "" : Describe(text.Error());
}

std::vector<Contour> Worked(const Machine& machine) {
  std::vector<Contour> lines;
  for (const Move& move : machine.moves) {
    if (!move.on) continue;
    if (lines.empty() || lines.back().End() != move.from)
      lines.push_back({.start = move.from, .segments = {}});
    lines.back().segments.push_back(LineTo(move.to));
  }
  return lines;
}

TEST(Follow, words_are_modal_and_arcs_inches_and_steps_are_known) {
  const Machine machine =
      Follow("G21 G90 (start)\nM3 S5 F60\nG1X10\nY5 ; up\nG91 G3 X-2 Y2 I-2 J0\nG20 X1\nM5\n");
  EXPECT_EQ(machine.fault, "");
  ASSERT_EQ(machine.moves.size(), 2U + 90 + 90);
  EXPECT_EQ(machine.moves[0].to, (Point{10, 0}));
  EXPECT_EQ(machine.moves[1].to, (Point{10, 5}));
  EXPECT_EQ(machine.moves[91].to, (Point{8, 7}));
  // Halfway on the quarter circle about (8, 5).
  EXPECT_NEAR(machine.moves[46].to.x, 8 + 1.41421, 1e-4);
  EXPECT_EQ(machine.moves.back().to, (Point{8 + 25.4, 7}));
  EXPECT_EQ(machine.moves[1].power, 5);
  EXPECT_FALSE(machine.on);
  EXPECT_NE(Follow("G99\n").fault, "");
  EXPECT_NE(Follow("X\n").fault, "");
}

TEST(GcodeText, a_path_is_a_rapid_move_and_lines_with_the_tool_on) {
  EXPECT_EQ(
      Text(JobOf({PathOf(Operation::Cut, {Rectangle(1, 2, 3, 4)}, {.speed = 20, .force = 55})})),
      "G21\nG90\nM5\nF1200\nG0 X1 Y2\nM3 S550\nG1 X3 Y2\nG1 X3 Y4\nG1 X1 Y4\nG1 X1 Y2\nM5\n"
      "G0 X0 Y0\nM2\n");
}

TEST(GcodeText, an_empty_job_has_start_and_end_alone) {
  EXPECT_EQ(Text(JobOf({})), "G21\nG90\nM5\nG0 X0 Y0\nM2\n");
  EXPECT_EQ(Text(JobOf({PathOf(Operation::Print, {Rectangle(0, 0, 1, 1)})})),
            "G21\nG90\nM5\nG0 X0 Y0\nM2\n");
}

TEST(GcodeText, settings_are_said_where_they_change) {
  const CutJob job = JobOf({PathOf(Operation::Cut, {Line({{0, 0}, {1, 0}})}, {.speed = 20}),
                            PathOf(Operation::Cut, {Line({{0, 1}, {1, 1}})}, {.speed = 20}),
                            PathOf(Operation::Cut, {Line({{0, 2}, {1, 2}})})});
  const Machine machine = Follow(Text(job));
  ASSERT_EQ(machine.fault, "");
  std::vector<double> feeds;
  for (const Move& move : machine.moves)
    if (move.on) feeds.push_back(move.feed);
  EXPECT_EQ(feeds, (std::vector<double>{1200, 1200, 600}));
  EXPECT_EQ(Text(job).find("F1200"), Text(job).rfind("F1200"));
}

TEST(GcodeText, a_table_has_texts_of_its_own) {
  GcodeTable table;
  table.start = "({width} x {height})";
  table.settings = "T {tool} {operation} {speed} {force}\n";
  table.toolOn = "M3 S{power}\nG4 P1";
  table.toolOff = "";
  table.rapid = "G0X{x}Y{y}";
  table.line = "G1X{x}Y{y}F{feed}S{power}";
  table.end = "M30";
  table.fullPower = 255;
  EXPECT_EQ(Text(JobOf({PathOf(Operation::Engrave, {Line({{0, 0}, {1.5, 0}})},
                               {.tool = "v-bit", .speed = 0.5, .force = 50})}),
                 table),
            "(120 x 80)\nT v-bit engrave 0.5 50\nG0X0Y0\nM3 S127.5\nG4 P1\n"
            "G1X1.5Y0F30S127.5\nM30\n");
}

TEST(GcodeText, a_tools_name_is_no_command) {
  GcodeTable table;
  table.settings = "T{tool}";
  const std::string text = Text(
      JobOf({PathOf(Operation::Cut, {Line({{0, 0}, {1, 0}})}, {.tool = "a\nM3 S999;(\xc3\xa9)"})}),
      table);
  EXPECT_NE(text.find("\nTa_M3_S999_____\n"), std::string::npos) << text;
}

TEST(GcodeText, texts_with_other_names_or_single_braces_are_refused) {
  const auto fault = [](std::string GcodeTable::*text, const char* value) {
    GcodeTable table;
    table.*text = value;
    return Fault(JobOf({}), table);
  };
  EXPECT_EQ(fault(&GcodeTable::start, "{x}"),
            "the G-code text 'start' has {x}; it may have {width}, {height}");
  EXPECT_EQ(fault(&GcodeTable::toolOn, "{pow}"),
            "the G-code text 'toolOn' has {pow}; it may have {power}, {force}, {speed}, {feed}, "
            "{tool}, {operation}");
  EXPECT_EQ(fault(&GcodeTable::line, "{}"),
            "the G-code text 'line' has {}; it may have {power}, {force}, {speed}, {feed}, {tool}, "
            "{operation}, {x}, {y}");
  for (const char* text : {"{", "}", "a{x", "x}y", "{x{y}}", "{x}}"})
    EXPECT_EQ(fault(&GcodeTable::rapid, text),
              "the G-code text 'rapid' has a brace without its counterpart");
}

TEST(GcodeText, numbers_that_a_table_can_not_have_are_refused) {
  const auto fault = [](auto member, auto value) {
    GcodeTable table;
    table.*member = value;
    return Fault(JobOf({}), table);
  };
  EXPECT_EQ(fault(&GcodeTable::decimals, -1), "positions of G-code have 0 to 6 decimals");
  EXPECT_EQ(fault(&GcodeTable::decimals, 7), "positions of G-code have 0 to 6 decimals");
  EXPECT_EQ(fault(&GcodeTable::fullPower, 0.0), "the full power of G-code is above 0");
  EXPECT_EQ(fault(&GcodeTable::speed, 0.0), "the speed and the force of G-code are above 0");
  EXPECT_EQ(fault(&GcodeTable::force, -1.0), "the speed and the force of G-code are above 0");
  for (const int decimals : {0, 6}) {
    GcodeTable table;
    table.decimals = decimals;
    EXPECT_TRUE(GcodeText(JobOf({}), {}, 0.02, table));
  }
}

TEST(GcodeText, power_goes_to_a_hundred_percent) {
  const auto job = [](double force) {
    return JobOf({PathOf(Operation::Cut, {Line({{0, 0}, {1, 0}})}, {.force = force})});
  };
  EXPECT_NE(Text(job(100)).find("S1000\n"), std::string::npos);
  EXPECT_EQ(Fault(job(100.5), {}),
            "path 1 has a force of more than 100 percent of the device's power");
  GcodeTable knife;
  knife.toolOn = "M3 S{force}";
  EXPECT_NE(Text(job(250), knife).find("S250\n"), std::string::npos);
}

TEST(GcodeText, a_drill_is_lowered_at_a_point_and_others_are_left_out) {
  const std::vector<Contour> point{Line({{3, 4}})};
  EXPECT_EQ(Worked(Follow(Text(JobOf({PathOf(Operation::Cut, point)})))).size(), 0U);
  const auto drilled = Worked(Follow(Text(JobOf({PathOf(Operation::Drill, point)}))));
  ASSERT_EQ(drilled.size(), 1U);
  EXPECT_EQ(drilled[0].End(), (Point{3, 4}));
}

TEST(GcodeText, each_pass_works_the_whole_contour) {
  const auto worked =
      Worked(Follow(Text(JobOf({PathOf(Operation::Cut, {Rectangle(0, 0, 2, 1)}, {.passes = 3})}))));
  double length = 0;
  for (const Contour& contour : worked) length += LengthOf(contour);
  EXPECT_DOUBLE_EQ(length, 18);
}

TEST(GcodeText, a_machine_that_follows_it_stays_on_every_path_and_ends_with_the_tool_off) {
  const CutJob job = test::Plate();
  const Machine machine = Follow(Text(job));
  EXPECT_EQ(machine.fault, "");
  EXPECT_FALSE(machine.on);
  for (const Move& move : machine.moves) EXPECT_NE(move.rapid, move.on);
  EXPECT_LE(test::Distance(Worked(machine), test::ToolContours(job)), 0.02);
}

GcodeTable WithArcs() {
  GcodeTable table;
  table.arcRight = "G2 X{x} Y{y} I{i} J{j}";
  table.arcLeft = "G3 X{x} Y{y} I{i} J{j}";
  return table;
}

// A circle of 30 mm, of four cubic curves.
CutJob Circle() { return JobOf({PathOf(Operation::Cut, {test::Circle({30, 30}, 30)})}); }

TEST(GcodeText, a_circle_becomes_eight_arcs_about_its_middle) {
  const std::string text = Text(Circle(), WithArcs());
  std::size_t arcs = 0;
  for (std::size_t at = 0; (at = text.find("G3 ", at)) != std::string::npos; ++at) ++arcs;
  EXPECT_EQ(arcs, 8U) << text;
  EXPECT_EQ(text.find("G2 "), std::string::npos);
  EXPECT_EQ(text.find("G1 "), std::string::npos);
  const Machine machine = Follow(text);
  EXPECT_EQ(machine.fault, "");
  for (const Move& move : machine.moves)
    if (move.on) {
      EXPECT_NEAR(Distance(move.to, Point{30, 30}), 30, 0.02);
    }
}

TEST(GcodeText, a_mirrored_page_turns_arcs_round) {
  const auto text = GcodeText(Circle(), {.a = -1, .e = 100}, 0.02, WithArcs());
  ASSERT_TRUE(text);
  EXPECT_NE(text->find("G2 "), std::string::npos);
  EXPECT_EQ(text->find("G3 "), std::string::npos);
}

TEST(GcodeText, a_machine_that_follows_its_arcs_stays_on_every_curve) {
  // A plate; an S, a loop with a narrow turn, a cusp, a straight curve, and one that stays put.
  CutJob job = test::Plate();
  for (const Segment& curve :
       {CurveTo({40, 0}, {-10, 50}, {60, 60}), CurveTo({90, 40}, {-60, 40}, {30, 0}),
        CurveTo({60, 60}, {0, 60}, {60, 0}), CurveTo({10, 10}, {20, 20}, {30, 30}),
        CurveTo({0, 0}, {0, 0}, {0, 0})})
    job.paths.push_back(PathOf(Operation::Cut, {Contour{.start = {0, 0}, .segments = {curve}}}));
  const Machine machine = Follow(Text(job, WithArcs()));
  EXPECT_EQ(machine.fault, "");
  EXPECT_FALSE(machine.on);
  EXPECT_LE(test::Distance(Worked(machine), test::ToolContours(job)), 0.02);
}

TEST(GcodeText, an_arc_to_one_side_alone_is_refused) {
  GcodeTable table = WithArcs();
  table.arcLeft.clear();
  EXPECT_EQ(Fault(test::Plate(), table),
            "G-code has the texts of arcs to the right and to the left, or none of them");
}

}  // namespace
}  // namespace rastrel::cutting
