#include "cutting/clean/heal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <string>

#include "tests/cutting/clean/shapes.h"

namespace rastrel::cutting {
namespace {

using namespace test;

std::string RepairsOf(const HealResult& result) {
  std::string names;
  for (const Repair& repair : result.repairs) {
    if (!names.empty()) names += ' ';
    names += NameOf(repair.kind);
    names += "@" + std::to_string(repair.contour.path);
  }
  return names;
}

HealResult United(CutJob job) { return Heal(std::move(job), {.faults = {}, .unite = true}); }

TEST(Heal, leaves_a_sound_job_as_it_is) {
  CutJob job = JobOf({Rectangle(10, 10, 50, 30), Circle({100, 100}, 20), Circle({140, 100}, 20)});
  job.paths.push_back({.contours = {}});
  job.paths.push_back({.contours = {Line({{0, 0}, {0, 0}})}, .operation = Operation::Print});
  for (const HealResult& result : {Heal(job), United(job)}) {
    EXPECT_EQ(RepairsOf(result), "");
    EXPECT_EQ(result.job, job);
  }
}

TEST(Heal, closes_a_gap_by_a_line_and_moves_no_point) {
  const Contour open = Line({{10, 10}, {60, 10}, {60, 40}, {10, 40}, {10, 10.06}});
  const HealResult result = Heal(JobOf({open}));
  ASSERT_EQ(RepairsOf(result), "joined@0");
  EXPECT_NEAR(result.repairs[0].place.y, 10.03, 1e-9);
  EXPECT_NEAR(result.repairs[0].length, 0.06, 1e-9);
  Contour closed = open;
  closed.closed = true;
  EXPECT_EQ(result.job, JobOf({closed}));
}

TEST(Heal, joins_pieces_to_an_outline_whatever_their_direction) {
  const Contour first = Line({{10, 10}, {60, 10}, {60, 40}});
  const Contour second = Line({{10, 10.08}, {10, 40}, {60.05, 40}});
  const HealResult result = Heal(JobOf({first, second}));
  EXPECT_EQ(RepairsOf(result), "joined@0 joined@0");
  EXPECT_EQ(result.job,
            JobOf({Polygon({{10, 10}, {60, 10}, {60, 40}, {60.05, 40}, {10, 40}, {10, 10.08}})}));
}

TEST(Heal, joins_many_pieces_to_an_open_line) {
  const HealResult result = Heal(JobOf(
      {Line({{20, 10}, {30, 10}}), Line({{20, 10}, {10, 10}}), Line({{40, 15}, {30, 10.01}})}));
  EXPECT_EQ(RepairsOf(result), "joined@0 joined@0");
  EXPECT_EQ(result.job, JobOf({Line({{10, 10}, {20, 10}, {30, 10}, {30, 10.01}, {40, 15}})}));
}

TEST(Heal, joins_curves_as_curves) {
  const Contour circle = Circle({50, 50}, 20);
  const Contour upper{.start = circle.start, .segments = {circle.segments[0], circle.segments[1]}};
  const Contour lower{.start = circle.segments[1].end,
                      .segments = {circle.segments[2], circle.segments[3]}};
  EXPECT_EQ(Heal(JobOf({upper, lower})).job, JobOf({circle}));
  EXPECT_EQ(Heal(JobOf({upper, Reversed(lower)})).job, JobOf({circle}));
}

TEST(Heal, joins_nothing_of_other_settings) {
  CutJob job = JobOf({Line({{10, 10}, {60, 10}, {60, 40}}), Line({{60, 40}, {10, 40}, {10, 10}})});
  job.paths[1].settings.speed = 50;
  const HealResult result = Heal(job);
  EXPECT_EQ(RepairsOf(result), "");
  EXPECT_EQ(result.job, job);
}

TEST(Heal, drops_duplicates_and_keeps_the_first) {
  const Contour circle = Circle({50, 50}, 20);
  const HealResult result = Heal(JobOf({circle, Reversed(circle), Split(circle, 0.3)}));
  EXPECT_EQ(RepairsOf(result), "dropped-duplicate@1 dropped-duplicate@2");
  EXPECT_EQ(result.job, JobOf({circle}));
}

TEST(Heal, keeps_the_same_line_with_other_settings) {
  CutJob job = JobOf({Rectangle(10, 10, 50, 30), Rectangle(10, 10, 50, 30)});
  job.paths[1].settings.tool = "fine";
  EXPECT_EQ(Heal(job).job, job);
}

TEST(Heal, drops_a_duplicate_that_comes_of_joining) {
  const HealResult result =
      Heal(JobOf({Rectangle(10, 10, 50, 30), Line({{10, 10}, {60, 10}, {60, 40}}),
                  Line({{60, 40}, {10, 40}, {10, 10}})}));
  EXPECT_EQ(RepairsOf(result), "joined@1 joined@1 dropped-duplicate@1");
  EXPECT_EQ(result.job, JobOf({Rectangle(10, 10, 50, 30)}));
}

TEST(Heal, drops_a_duplicate_that_comes_of_joining_wherever_it_lies) {
  const double tolerance = CheckLimits{}.tolerance;
  for (int step = 0; step < 60; ++step) {
    const double x = step * tolerance / 5 - 5 * tolerance;
    const double y = -x / 3;
    for (const double aside : {-0.4 * tolerance, 0.4 * tolerance}) {
      const Contour first = Line({{x + aside, y}, {x + 50 + aside, y}, {x + 50 + aside, y + 30}});
      const Contour second = Line({{x + 50 + aside, y + 30}, {x + aside, y + 30}, {x + aside, y}});
      CutJob job = JobOf({Rectangle(x, y, 50, 30), first, second});
      job.width = job.height = 0;
      EXPECT_EQ(RepairsOf(Heal(job)), "joined@1 joined@1 dropped-duplicate@1") << step;
    }
  }
}

TEST(Heal, looks_past_ignored_paths_of_any_numbers_after_joining) {
  constexpr double Infinity = std::numeric_limits<double>::infinity();
  CutJob job = JobOf({Rectangle(10, 10, 50, 30), Line({{10, 10}, {60, 10}, {60, 40}}),
                      Line({{60, 40}, {10, 40}, {10, 10}})});
  job.paths.push_back(
      {.contours = {Line({{Infinity, 0}, {0, std::nan("")}}), Line({{1e300, 0}, {0, 0}})},
       .operation = Operation::Ignore});
  EXPECT_EQ(RepairsOf(Heal(job)), "joined@1 joined@1 dropped-duplicate@1");
}

TEST(Heal, drops_crumbs_and_what_has_no_length) {
  CutJob job = JobOf({Rectangle(10, 10, 0.2, 0.2), Rectangle(20, 20, 5, 5)});
  job.paths[1].contours.push_back({.start = {7, 8}, .segments = {}});
  const HealResult result = Heal(job);
  EXPECT_EQ(RepairsOf(result), "dropped-tiny@0 dropped-tiny@1");
  EXPECT_EQ(result.job, JobOf({Rectangle(20, 20, 5, 5)}));
}

TEST(Heal, takes_a_spike_off_and_moves_no_other_point) {
  const HealResult result = Heal(
      JobOf({Polygon({{10, 10}, {60, 10}, {60, 25}, {75, 25}, {60, 25}, {60, 40}, {10, 40}})}));
  EXPECT_EQ(RepairsOf(result), "removed-spike@0");
  EXPECT_EQ(result.repairs[0].place, (Point{75, 25}));
  EXPECT_DOUBLE_EQ(result.repairs[0].length, 15);
  EXPECT_EQ(result.job, JobOf({Polygon({{10, 10}, {60, 10}, {60, 25}, {60, 40}, {10, 40}})}));
}

TEST(Heal, takes_a_spike_off_the_start) {
  const HealResult result = Heal(
      JobOf({Polygon({{75, 25}, {60, 25}, {60, 40}, {10, 40}, {10, 10}, {60, 10}, {60, 25}})}));
  EXPECT_EQ(result.job, JobOf({Polygon({{60, 25}, {60, 40}, {10, 40}, {10, 10}, {60, 10}})}));
}

TEST(Heal, drops_what_no_tool_can_reach) {
  const double nan = std::nan("");
  const HealResult result = Heal(JobOf({Line({{nan, 1}, {2, 3}}), Rectangle(20, 20, 5, 5)}));
  EXPECT_EQ(RepairsOf(result), "dropped-unusable@0");
  EXPECT_EQ(result.job, JobOf({Rectangle(20, 20, 5, 5)}));
}

TEST(Heal, unites_only_where_that_is_asked) {
  const CutJob job = JobOf({Rectangle(10, 10, 50, 30), Rectangle(40, 20, 50, 30)});
  EXPECT_EQ(Heal(job).job, job);
  const HealResult result = United(job);
  EXPECT_EQ(RepairsOf(result), "united@0");
  ASSERT_EQ(result.job.paths.size(), 1U);
  ASSERT_EQ(result.job.paths[0].contours.size(), 1U);
  EXPECT_NEAR(AreaOf(result.job.paths[0].contours[0]), 2 * 1500 - 20 * 20, 1e-6);
  EXPECT_TRUE(Check(result.job).faults.empty());
}

TEST(Heal, unites_areas_that_overlap_along_their_edges) {
  const HealResult result = United(JobOf({Rectangle(10, 10, 50, 30), Rectangle(40, 10, 50, 30)}));
  EXPECT_EQ(RepairsOf(result), "united@0");
  ASSERT_EQ(result.job.paths.size(), 1U);
  EXPECT_NEAR(AreaOf(result.job.paths[0].contours[0]), 80 * 30, 1e-6);
}

TEST(Heal, unites_no_plates_that_share_an_edge) {
  const CutJob job = JobOf({Rectangle(10, 10, 50, 30), Rectangle(60, 10, 50, 30)});
  EXPECT_EQ(United(job).job, job);
}

TEST(Heal, keeps_whole_curves_of_what_it_unites) {
  const Contour left = Circle({50, 50}, 20);
  const Contour right = Circle({70, 50}, 20);
  const HealResult result = United(JobOf({left, right}));
  ASSERT_EQ(result.job.paths.size(), 1U);
  ASSERT_EQ(result.job.paths[0].contours.size(), 1U);
  const Contour& united = result.job.paths[0].contours[0];
  // The quarters that turn away from the other circle, two of each.
  for (const Segment& quarter :
       {left.segments[1], left.segments[2], right.segments[0], right.segments[3]})
    EXPECT_NE(std::ranges::find(united.segments, quarter), united.segments.end());
  EXPECT_EQ(std::ranges::count(united.segments, true, &Segment::isCurve), 4);
  // Two circles less the lens that they share.
  const double lens = 2 * 400 * std::acos(0.5) - 10 * std::sqrt(4 * 400.0 - 400.0);
  EXPECT_NEAR(AreaOf(united), 2 * 400 * std::numbers::pi - lens, 0.5);
  EXPECT_TRUE(Check(result.job).faults.empty());
}

TEST(Heal, keeps_the_hole_of_a_plate_that_it_unites_with_another) {
  CutJob job = JobOf({Rectangle(10, 10, 50, 30), Rectangle(50, 20, 50, 30)});
  const Contour hole = Circle({25, 25}, 5);
  job.paths[0].contours.push_back(hole);
  const HealResult result = United(job);
  ASSERT_EQ(result.job.paths.size(), 1U);
  ASSERT_EQ(result.job.paths[0].contours.size(), 2U);
  EXPECT_EQ(result.job.paths[0].contours[0], hole);
}

TEST(Heal, mends_an_outline_that_crosses_itself) {
  const HealResult result = United(JobOf({Polygon({{10, 10}, {50, 50}, {50, 10}, {10, 50}})}));
  EXPECT_EQ(RepairsOf(result), "united@0");
  EXPECT_TRUE(Check(result.job).faults.empty());
  double area = 0;
  for (const Contour& contour : result.job.paths[0].contours) area += std::abs(AreaOf(contour));
  EXPECT_NEAR(area, 800, 1e-6);
}

TEST(Heal, drops_what_is_hidden_where_it_unites) {
  CutJob job = JobOf({Rectangle(30, 30, 10, 10), Rectangle(10, 10, 80, 80)});
  for (CutPath& path : job.paths) path.paint.kind = Paint::Kind::Fill;
  EXPECT_EQ(Heal(job).job, job);
  const HealResult result = United(job);
  EXPECT_EQ(RepairsOf(result), "dropped-covered@0");
  EXPECT_EQ(result.job.paths, std::vector<CutPath>{job.paths[1]});
}

TEST(Heal, finds_nothing_more_in_a_job_that_it_has_healed) {
  const HealResult once = United(
      JobOf({Line({{10, 10}, {60, 10}, {60, 40}}), Line({{60.05, 40}, {10, 40}, {10, 10.08}}),
             Circle({60, 40}, 10), Circle({60, 40}, 10), Rectangle(200, 200, 0.1, 0.1)}));
  const HealResult twice = United(once.job);
  EXPECT_EQ(RepairsOf(twice), "");
  EXPECT_EQ(twice.job, once.job);
}

}  // namespace
}  // namespace rastrel::cutting
