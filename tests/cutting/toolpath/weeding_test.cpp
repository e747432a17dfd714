#include "cutting/toolpath/weeding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "tests/cutting/toolpath/shapes.h"

namespace rastrel::cutting {
namespace {

using test::Circle;
using test::Line;
using test::RandomRing;
using test::Rectangle;

CutJob JobOf(std::vector<Contour> contours, Operation operation = Operation::Cut) {
  return {.width = 200,
          .height = 200,
          .paths = {{.contours = std::move(contours), .operation = operation}}};
}

std::vector<Contour> WeedingOf(const CutJob& job, const WeedingOptions& options) {
  const Expected<CutJob> result = AddWeeding(job, options);
  if (!result) return {};
  return result->paths.size() > job.paths.size() ? result->paths.back().contours
                                                 : std::vector<Contour>{};
}

double DistanceToLine(Point p, Point a, Point b) {
  const double square = (b.x - a.x) * (b.x - a.x) + (b.y - a.y) * (b.y - a.y);
  const double t =
      square > 0
          ? std::clamp(((p.x - a.x) * (b.x - a.x) + (p.y - a.y) * (b.y - a.y)) / square, 0.0, 1.0)
          : 0;
  return Distance(p, {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t});
}

TEST(AddWeeding, without_options_or_cuts_nothing_is_added) {
  const CutJob job = JobOf({Circle({50, 50}, 10)});
  EXPECT_EQ(*AddWeeding(job, {}), job);
  const CutJob creases = JobOf({Circle({50, 50}, 10)}, Operation::Crease);
  EXPECT_EQ(*AddWeeding(creases, {.boxGap = 5, .step = 10}), creases);
}

TEST(AddWeeding, a_scribble_of_thousands_of_crossings_is_refused) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> place(0, 100);
  Contour scribble{.start = {0, 0}, .segments = {}};
  for (int i = 0; i < 20'000; ++i)
    scribble.segments.push_back(LineTo({place(random), place(random)}));
  const Expected<CutJob> result = AddWeeding(JobOf({scribble}), {.boxGap = 5, .step = 10});
  ASSERT_FALSE(result);
  EXPECT_EQ(Describe(result.Error()), "the paths cross each other too often for weeding");
}

TEST(AddWeeding, a_box_lies_around_all_cuts_by_its_gap) {
  EXPECT_EQ(
      WeedingOf(JobOf({Rectangle(50, 60, 70, 90), Rectangle(100, 60, 120, 80)}), {.boxGap = 5}),
      std::vector<Contour>{Rectangle(45, 55, 125, 95)});
}

TEST(AddWeeding, a_box_ends_at_the_page_and_keeps_clear_of_a_cut_there) {
  // The cut is 0.5 mm from the left edge: no upright side has room there.
  const std::vector<Contour> sides =
      WeedingOf(JobOf({Rectangle(0.5, 50, 60, 80)}), {.boxGap = 5, .clearance = 2});
  ASSERT_FALSE(sides.empty());
  for (const Contour& side : sides) {
    EXPECT_FALSE(side.closed);
    for (const Point point : {side.start, side.End()}) {
      EXPECT_GE(point.x, 0);
      EXPECT_FALSE(point.x < 0.1 && point.y > 48.1 && point.y < 81.9);
    }
  }
}

TEST(AddWeeding, lines_stand_by_their_step_and_go_through_no_piece) {
  const std::vector<Contour> lines =
      WeedingOf(JobOf({Rectangle(20, 20, 40, 40), Rectangle(60, 20, 80, 40)}),
                {.boxGap = 10, .step = 20, .clearance = 1});
  // The box is 10..90 by 10..50. At a height of 30 both pieces are in the way; the upright lines
  // at 30 and 70 likewise, and the one at 50 is free.
  const std::vector<Contour> expected{Line({10, 30}, {19, 30}), Line({41, 30}, {59, 30}),
                                      Line({81, 30}, {90, 30}), Line({30, 10}, {30, 19}),
                                      Line({30, 41}, {30, 50}), Line({50, 10}, {50, 50}),
                                      Line({70, 10}, {70, 19}), Line({70, 41}, {70, 50})};
  ASSERT_EQ(lines.size(), expected.size() + 1);
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_LT(Distance(lines[i].start, expected[i].start), 0.05) << i;
    EXPECT_LT(Distance(lines[i].End(), expected[i].End()), 0.05) << i;
  }
}

TEST(AddWeeding, lines_run_in_holes_and_keep_clear_of_every_tools_path) {
  CutJob job = JobOf({Rectangle(20, 20, 100, 100), Rectangle(40, 40, 80, 80)});
  job.paths.push_back({.contours = {Line({55, 45}, {55, 75})}, .operation = Operation::Crease});
  bool isInHole = false;
  for (const Contour& line : WeedingOf(job, {.boxGap = 10, .step = 9})) {
    if (line.closed) continue;
    const Point middle{(line.start.x + line.End().x) / 2, (line.start.y + line.End().y) / 2};
    if (middle.x > 40 && middle.x < 80 && middle.y > 40 && middle.y < 80) isInHole = true;
    for (int i = 0; i <= 20; ++i) {
      const Point at{line.start.x + (line.End().x - line.start.x) * i / 20,
                     line.start.y + (line.End().y - line.start.y) * i / 20};
      EXPECT_GE(DistanceToLine(at, {55, 45}, {55, 75}), 1);
    }
  }
  EXPECT_TRUE(isInHole);
}

TEST(AddWeeding, random_rings_are_never_touched) {
  std::mt19937 random(4);
  for (int round = 0; round < 10; ++round) {
    std::vector<Contour> rings;
    for (int i = 0; i < 9; ++i)
      rings.push_back(RandomRing(random, {40.0 + 50 * (i % 3), 40.0 + 50 * (i / 3)}, 8, 22, 12));
    const std::vector<Contour> lines =
        WeedingOf(JobOf(rings), {.boxGap = 5, .step = 7, .clearance = 1.5});
    ASSERT_GT(lines.size(), 10U);
    for (const Contour& line : lines) {
      if (line.closed) continue;
      for (const Contour& ring : rings) {
        const std::vector<Point> points = Flatten(ring, 0.01);
        for (std::size_t i = 0; i < points.size(); ++i) {
          const Point& a = points[i];
          const Point& b = points[(i + 1) % points.size()];
          EXPECT_GE(DistanceToLine(a, line.start, line.End()), 1.499);
          EXPECT_GE(DistanceToLine(line.start, a, b), 1.499);
          EXPECT_GE(DistanceToLine(line.End(), a, b), 1.499);
        }
      }
    }
  }
}

TEST(AddWeeding, lines_are_half_cuts_where_the_job_has_them) {
  CutJob job = JobOf({Rectangle(10, 10, 90, 90)});
  job.paths.push_back({.contours = {Circle({50, 50}, 10)}, .operation = Operation::CutHalf});
  job.paths[1].settings = {.tool = "blade", .speed = 40, .order = 3, .kerf = 1, .overcut = 2};
  const Expected<CutJob> result = AddWeeding(job, {.boxGap = 2});
  ASSERT_TRUE(result);
  EXPECT_EQ(result->paths.at(2).operation, Operation::CutHalf);
  EXPECT_EQ(result->paths.at(2).settings, (ToolSettings{.tool = "blade", .speed = 40, .order = 3}));
}

TEST(AddWeeding, lengths_that_are_none_are_refused) {
  const CutJob job = JobOf({Circle({50, 50}, 10)});
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(Describe(AddWeeding(job, {.boxGap = -1}).Error()),
            "the gap of the weeding box is no length that can be used");
  EXPECT_EQ(Describe(AddWeeding(job, {.step = 0}).Error()),
            "the step of the weeding lines is no length that can be used");
  EXPECT_FALSE(AddWeeding(job, {.step = nan}));
  EXPECT_FALSE(AddWeeding(job, {.boxGap = 1, .clearance = nan}));
}

TEST(AddWeeding, ten_thousand_lines_are_the_limit) {
  // 98 by 98 mm with the clearance: 100 by 100.
  const CutJob job = JobOf({Rectangle(51, 51, 149, 149)});
  EXPECT_TRUE(AddWeeding(job, {.step = 0.0201}));
  EXPECT_TRUE(AddWeeding(job, {.step = 0.02}));
  EXPECT_EQ(Describe(AddWeeding(job, {.step = 0.0199}).Error()),
            "the weeding lines would be more than 10000; give a larger step");
}

TEST(AddWeeding, contours_on_no_sheet_are_passed_over) {
  CutJob job = JobOf({Rectangle(0, 0, 1e300, 1), Rectangle(50, 50, 60, 60)});
  EXPECT_EQ(WeedingOf(job, {.boxGap = 5}), std::vector<Contour>{Rectangle(45, 45, 65, 65)});
}

}  // namespace
}  // namespace rastrel::cutting
