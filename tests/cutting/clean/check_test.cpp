#include "cutting/clean/check.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <string>

#include "tests/cutting/clean/shapes.h"

namespace rastrel::cutting {
namespace {

using namespace test;

std::string FaultsOf(const CheckReport& report) {
  std::string names;
  for (const Fault& fault : report.faults) {
    if (!names.empty()) names += ' ';
    names += NameOf(fault.kind);
    names += "@" + std::to_string(fault.contour.path);
  }
  return names;
}

std::string FaultsOf(const CutJob& job) { return FaultsOf(Check(job)); }

void ExpectFault(const CutJob& job, FaultKind kind, Point place, double length,
                 double tolerance = 0.02) {
  const CheckReport report = Check(job);
  ASSERT_EQ(report.faults.size(), 1U) << FaultsOf(report);
  const Fault& fault = report.faults.front();
  EXPECT_EQ(NameOf(fault.kind), NameOf(kind));
  EXPECT_NEAR(fault.place.x, place.x, tolerance);
  EXPECT_NEAR(fault.place.y, place.y, tolerance);
  EXPECT_NEAR(fault.length, length, tolerance);
  EXPECT_TRUE(report.complete);
}

TEST(Check, of_an_empty_job_finds_nothing) {
  EXPECT_EQ(Check({}).faults.size(), 0U);
  EXPECT_EQ(FaultsOf(JobOf({})), "");
}

TEST(Check, of_sound_shapes_finds_nothing_and_counts_them) {
  const CheckReport report = Check(JobOf({Rectangle(10, 10, 50, 30), Circle({100, 100}, 20)}));
  EXPECT_EQ(FaultsOf(report), "");
  EXPECT_EQ(report.paths, 2U);
  EXPECT_EQ(report.contours, 2U);
  EXPECT_NEAR(report.length, 160 + 40 * std::numbers::pi, 0.1);
}

TEST(Check, passes_over_paths_without_a_tool) {
  const std::vector<Contour> faulty{Line({{1, 1}, {5, 5}}), Line({{1, 5}, {5, 1}})};
  EXPECT_EQ(FaultsOf(JobOf(faulty, Operation::Print)), "");
  EXPECT_EQ(FaultsOf(JobOf(faulty, Operation::Ignore)), "");
  EXPECT_EQ(Check(JobOf(faulty, Operation::Print)).paths, 0U);
}

TEST(Check, finds_an_open_outline_at_its_loose_end) {
  ExpectFault(JobOf({Line({{10, 10}, {60, 10}, {60, 40}})}), FaultKind::Open, {10, 10}, 80);
}

TEST(Check, lets_a_crease_be_open_and_cross) {
  EXPECT_EQ(
      FaultsOf(JobOf({Line({{10, 10}, {60, 60}}), Line({{10, 60}, {60, 10}})}, Operation::Crease)),
      "");
}

TEST(Check, finds_a_gap_of_a_nearly_closed_outline) {
  ExpectFault(JobOf({Line({{10, 10}, {60, 10}, {60, 40}, {10, 40}, {10, 10.06}})}),
              FaultKind::UnjoinedEnds, {10, 10.03}, 0.06);
}

TEST(Check, finds_a_return_to_the_start_that_is_not_closed) {
  ExpectFault(JobOf({Line({{10, 10}, {60, 10}, {60, 40}, {10, 10}})}), FaultKind::UnjoinedEnds,
              {10, 10}, 0);
}

TEST(Check, takes_a_gap_at_the_joining_tolerance_and_none_above) {
  const auto gap = [](double size) {
    return FaultsOf(JobOf({Line({{10, 10}, {60, 10}, {60, 40}, {10, 40}, {10, 10 + size}})}));
  };
  EXPECT_EQ(gap(0.0999), "unjoined-ends@0");
  EXPECT_EQ(gap(0.125), "open@0");
  CheckLimits limits;
  limits.joining = 0.125;  // exact in binary
  const CutJob job = JobOf({Line({{8, 8}, {60, 8}, {60, 40}, {8, 40}, {8, 8.125}})});
  EXPECT_EQ(FaultsOf(Check(job, limits)), "unjoined-ends@0");
}

TEST(Check, finds_both_gaps_of_an_outline_in_two_pieces) {
  const CheckReport report = Check(
      JobOf({Line({{10, 10}, {60, 10}, {60, 40}}), Line({{60.05, 40}, {10, 40}, {10, 10.08}})}));
  ASSERT_EQ(FaultsOf(report), "unjoined-ends@0 unjoined-ends@0");
  EXPECT_NEAR(report.faults[0].length, 0.08, 1e-9);
  EXPECT_NEAR(report.faults[1].length, 0.05, 1e-9);
  EXPECT_EQ(report.faults[0].other, (ContourPlace{1, 0}));
}

TEST(Check, pairs_no_ends_of_different_settings) {
  CutJob job = JobOf({Line({{10, 10}, {60, 10}, {60, 40}}), Line({{60, 40}, {10, 40}, {10, 10}})});
  EXPECT_EQ(FaultsOf(job), "unjoined-ends@0 unjoined-ends@0");
  job.paths[1].settings.passes = 2;
  EXPECT_EQ(FaultsOf(job), "open@0 open@1");
  job.paths[1] = {.contours = job.paths[1].contours, .operation = Operation::CutHalf};
  EXPECT_EQ(FaultsOf(job), "open@0 open@1");
}

TEST(Check, finds_a_duplicate_in_every_form) {
  const Contour circle = Circle({50, 50}, 20);
  Contour turned = circle;  // from another corner
  turned.start = circle.segments[0].end;
  turned.segments = {circle.segments[1], circle.segments[2], circle.segments[3],
                     circle.segments[0]};
  Contour flat = Polygon(Flatten(circle, 0.001));
  for (const Contour& copy :
       {circle, Reversed(circle), turned, Split(circle, 0.3), Reversed(Split(turned, 0.7)), flat}) {
    const CheckReport report = Check(JobOf({circle, copy}));
    ASSERT_EQ(FaultsOf(report), "duplicate@1");
    EXPECT_EQ(report.faults[0].other, (ContourPlace{0, 0}));
    EXPECT_NEAR(report.faults[0].length, 40 * std::numbers::pi, 0.05);
  }
}

TEST(Check, reports_every_copy_after_the_first) {
  std::vector<Contour> copies(40, Split(Circle({50, 50}, 20), 0.5));
  copies.resize(80, Circle({50, 50}, 20));
  const CheckReport report = Check(JobOf(copies));
  EXPECT_EQ(report.faults.size(), 79U);
  for (const Fault& fault : report.faults) EXPECT_EQ(fault.kind, FaultKind::Duplicate);
  EXPECT_TRUE(report.complete);
}

TEST(Check, finds_a_duplicate_that_lies_within_the_tolerance_beside) {
  const auto beside = [](double distance) {
    return FaultsOf(JobOf({Rectangle(10, 10, 50, 30), Rectangle(10, 10 + distance, 50, 30)}));
  };
  EXPECT_EQ(beside(0.0199), "duplicate@1");
  EXPECT_NE(beside(0.021), "duplicate@1");
}

// Twenty circles of nearly half a kilometre are more lines of a quarter of the tolerance than are
// kept, so that they are flattened four times as coarse.
TEST(Check, of_more_curves_than_it_keeps_lines_of_has_a_tolerance_four_times_as_large) {
  const auto beside = [](double distance, int circles) {
    std::vector<Contour> contours{Rectangle(10, 10, 50, 30), Rectangle(10, 10 + distance, 50, 30)};
    for (int i = 0; i < circles; ++i) contours.push_back(Circle({0, 0}, 400'000 - 1000.0 * i));
    return FaultsOf(JobOf(contours)).starts_with("duplicate@1");
  };
  EXPECT_FALSE(beside(0.05, 1));
  EXPECT_TRUE(beside(0.05, 20));
  EXPECT_FALSE(beside(0.09, 20));
}

TEST(Check, keeps_the_same_line_of_two_operations) {
  CutJob job = JobOf({Rectangle(10, 10, 50, 30), Rectangle(10, 10, 50, 30)});
  job.paths[1].operation = Operation::Crease;
  EXPECT_EQ(FaultsOf(job), "");
}

TEST(Check, finds_the_edge_that_two_plates_share) {
  ExpectFault(JobOf({Rectangle(10, 10, 50, 30), Rectangle(60, 15, 50, 20)}), FaultKind::Overlap,
              {60, 25}, 20, 0.05);
}

TEST(Check, finds_a_run_on_a_line_beside_another_within_the_tolerance) {
  ExpectFault(JobOf({Rectangle(10, 10, 50, 30), Rectangle(60.015, 15, 50, 20)}), FaultKind::Overlap,
              {60.015, 25}, 20, 0.05);
}

TEST(Check, finds_the_arc_that_two_outlines_share) {
  // Half of a circle, closed by its diameter, on the circle.
  const Contour circle = Circle({50, 50}, 20);
  const Contour half{
      .start = circle.start, .segments = {circle.segments[0], circle.segments[1]}, .closed = true};
  const CheckReport report = Check(JobOf({circle, Split(half, 0.4)}));
  ASSERT_EQ(FaultsOf(report), "overlap@1");
  EXPECT_NEAR(report.faults[0].length, 20 * std::numbers::pi, 0.2);
}

TEST(Check, takes_a_run_from_the_overlap_length_on) {
  const auto run = [](double length) {
    return FaultsOf(JobOf({Rectangle(10, 10, 50, 30), Rectangle(60, 40 - length, 50, 20)}));
  };
  EXPECT_EQ(run(0.4), "");
  EXPECT_EQ(run(0.6), "overlap@1");
}

TEST(Check, lets_shapes_touch) {
  EXPECT_EQ(FaultsOf(JobOf({Circle({100, 100}, 50), Circle({200, 100}, 50)})), "");
  EXPECT_EQ(FaultsOf(JobOf({Circle({100, 100}, 50), Circle({110, 100}, 40)})), "");
  EXPECT_EQ(FaultsOf(JobOf({Circle({100, 100}, 50), Rectangle(150, 50, 20, 100)})), "");
  EXPECT_EQ(FaultsOf(JobOf({Rectangle(10, 10, 20, 20), Rectangle(30, 30, 20, 20)})), "");
  EXPECT_EQ(FaultsOf(JobOf({Rectangle(10, 10, 20, 20), Polygon({{30, 20}, {50, 10}, {50, 30}})})),
            "");
  EXPECT_EQ(FaultsOf(JobOf({Circle({100, 100}, 50), Circle({100, 100}, 49.9)})), "");
}

TEST(Check, finds_a_tiny_piece_below_its_size_and_none_at_it) {
  ExpectFault(JobOf({Rectangle(10, 10, 0.25, 0.2)}), FaultKind::Tiny, {10, 10}, 0.9);
  CheckLimits limits;
  limits.tinySize = 0.25;
  EXPECT_EQ(FaultsOf(Check(JobOf({Rectangle(8, 8, 0.125, 0.25)}), limits)), "");
  EXPECT_EQ(FaultsOf(Check(JobOf({Rectangle(8, 8, 0.125, 0.2499)}), limits)), "tiny@0");
  EXPECT_EQ(FaultsOf(JobOf({Rectangle(8, 8, 0.2, 0.2)}, Operation::Drill)), "");
}

TEST(Check, finds_a_piece_without_length) {
  ExpectFault(JobOf({Contour{.start = {7, 8}, .segments = {}}}), FaultKind::Tiny, {7, 8}, 0);
  ExpectFault(JobOf({Line({{7, 8}, {7, 8}})}), FaultKind::Tiny, {7, 8}, 0);
}

TEST(Check, finds_a_spike_at_its_tip) {
  ExpectFault(
      JobOf({Polygon({{10, 10}, {60, 10}, {60, 25}, {75, 25}, {60, 25.01}, {60, 40}, {10, 40}})}),
      FaultKind::Spike, {75, 25}, 15, 0.03);
}

TEST(Check, finds_a_spike_at_the_start_of_a_contour) {
  ExpectFault(
      JobOf({Polygon({{75, 25}, {60, 25}, {60, 40}, {10, 40}, {10, 10}, {60, 10}, {60, 25}})}),
      FaultKind::Spike, {75, 25}, 15, 0.03);
}

TEST(Check, adds_up_the_pieces_of_a_spike) {
  ExpectFault(JobOf({Polygon({{10, 10},
                              {60, 10},
                              {60, 25},
                              {68, 25},
                              {75, 25},
                              {68, 25},
                              {60, 25},
                              {60, 40},
                              {10, 40}})}),
              FaultKind::Spike, {75, 25}, 15, 0.03);
}

TEST(Check, lets_a_sharp_corner_be) {
  EXPECT_EQ(FaultsOf(JobOf({Polygon({{10, 10}, {110, 11}, {10, 12}})})), "");
}

TEST(Check, finds_a_line_that_goes_out_and_back_and_nothing_else) {
  ExpectFault(JobOf({Polygon({{10, 10}, {60, 10}})}), FaultKind::Overlap, {35, 10}, 50, 0.2);
}

TEST(Check, finds_where_an_outline_crosses_itself) {
  ExpectFault(JobOf({Polygon({{10, 10}, {50, 50}, {50, 10}, {10, 50}})}), FaultKind::SelfCrossing,
              {30, 30}, 2 * 40 + 2 * 40 * std::numbers::sqrt2);
}

TEST(Check, finds_a_crossing_in_a_corner_of_both_ways) {
  ExpectFault(JobOf({Polygon({{10, 10}, {30, 30}, {50, 50}, {50, 10}, {30, 30}, {10, 50}})}),
              FaultKind::SelfCrossing, {30, 30}, 2 * 40 + 2 * 40 * std::numbers::sqrt2);
}

TEST(Check, lets_an_outline_touch_itself_in_a_corner) {
  EXPECT_EQ(
      FaultsOf(JobOf({Polygon({{10, 10}, {30, 30}, {50, 10}, {50, 50}, {30, 30}, {10, 50}})})), "");
}

TEST(Check, finds_both_crossings_of_two_circles) {
  const CheckReport report = Check(JobOf({Circle({50, 50}, 20), Circle({80, 50}, 20)}));
  ASSERT_EQ(FaultsOf(report), "crossing@1 crossing@1");
  const double height = std::sqrt(400.0 - 225.0);
  EXPECT_NEAR(report.faults[0].place.x, 65, 0.02);
  EXPECT_NEAR(report.faults[0].place.y, 50 - height, 0.02);
  EXPECT_NEAR(report.faults[1].place.y, 50 + height, 0.02);
  EXPECT_EQ(report.faults[0].other, (ContourPlace{0, 0}));
}

TEST(Check, lets_outlines_of_two_operations_cross) {
  CutJob job = JobOf({Circle({50, 50}, 20), Circle({80, 50}, 20)});
  job.paths[1].operation = Operation::CutHalf;
  EXPECT_EQ(FaultsOf(job), "");
}

TEST(Check, finds_the_part_outside_the_sheet) {
  // Two sides of 20 mm and one of 30 mm.
  ExpectFault(JobOf({Rectangle(970, 10, 50, 30)}), FaultKind::OutsideSheet, {1020, 10}, 70);
  ExpectFault(JobOf({Rectangle(1010, -40, 50, 30)}), FaultKind::OutsideSheet, {1060, -40}, 160);
  EXPECT_EQ(FaultsOf(JobOf({Rectangle(0, 0, 1000, 1000)})), "");
  EXPECT_EQ(FaultsOf(JobOf({Rectangle(-0.0199, 0, 500, 500)})), "");
  EXPECT_EQ(FaultsOf(JobOf({Rectangle(-0.0201, 0, 500, 500)})), "outside-sheet@0");
}

TEST(Check, knows_no_outside_of_a_job_without_a_page) {
  CutJob job = JobOf({Rectangle(-50, 10, 50, 30)});
  job.width = 0;
  EXPECT_EQ(FaultsOf(job), "");
  job.width = std::nan("");
  EXPECT_EQ(FaultsOf(job), "");
}

CutJob Filled(std::vector<Contour> contours) {
  CutJob job = JobOf(std::move(contours));
  for (CutPath& path : job.paths) path.paint.kind = Paint::Kind::Fill;
  return job;
}

TEST(Check, finds_a_shape_that_a_later_one_hides) {
  const CutJob job = Filled({Rectangle(30, 30, 10, 10), Rectangle(10, 10, 80, 80)});
  ExpectFault(job, FaultKind::Covered, {30, 30}, 40);
  EXPECT_EQ(Check(job).faults[0].other, (ContourPlace{1, 0}));
}

TEST(Check, lets_a_later_shape_lie_on_an_earlier_one) {
  EXPECT_EQ(FaultsOf(Filled({Rectangle(10, 10, 80, 80), Rectangle(30, 30, 10, 10)})), "");
}

TEST(Check, lets_a_shape_show_through_a_hole) {
  CutJob job = Filled({Rectangle(30, 30, 10, 10), Rectangle(10, 10, 80, 80)});
  job.paths[1].contours.push_back(Reversed(Rectangle(25, 25, 30, 30)));
  EXPECT_EQ(FaultsOf(job), "");
  job.paths[1].contours.back() = Rectangle(25, 25, 30, 30);  // now it is filled as well
  EXPECT_EQ(FaultsOf(job), "covered@0");
  job.paths[1].paint.kind = Paint::Kind::EvenOddFill;
  EXPECT_EQ(FaultsOf(job), "");
}

TEST(Check, lets_strokes_lie_under_anything) {
  EXPECT_EQ(FaultsOf(JobOf({Rectangle(30, 30, 10, 10), Rectangle(10, 10, 80, 80)})), "");
}

TEST(Check, reports_coordinates_that_no_tool_can_reach) {
  const double nan = std::nan("");
  for (const double value : {nan, 1e300, -1e300, std::numeric_limits<double>::infinity()}) {
    for (const Contour& bad :
         {Line({{value, 1}, {2, 3}}), Line({{1, 1}, {2, value}}),
          Contour{.start = {1, 1}, .segments = {CurveTo({value, 1}, {2, 2}, {3, 3})}}}) {
      EXPECT_EQ(FaultsOf(JobOf({Rectangle(10, 10, 20, 20), bad})), "unusable@1");
    }
  }
  EXPECT_EQ(FaultsOf(JobOf({Rectangle(999'990, 0, 10, 500)})), "outside-sheet@0");
  EXPECT_EQ(FaultsOf(JobOf({Rectangle(999'990, 0, 10.1, 500)})), "unusable@0");
}

TEST(Check, takes_limits_that_are_no_numbers_as_the_smallest) {
  const double nan = std::nan("");
  for (const double value : {nan, 0.0, -1.0}) {
    const CheckLimits limits{value, value, value, value, value};
    EXPECT_EQ(FaultsOf(Check(JobOf({Circle({50, 50}, 20), Rectangle(100, 10, 5, 5)}), limits)), "");
  }
  const CheckLimits huge{1e300, 1e300, 1e300, 1e300, 1e300};
  EXPECT_FALSE(Check(JobOf({Circle({50, 50}, 20)}), huge).faults.empty());
}

}  // namespace
}  // namespace rastrel::cutting
