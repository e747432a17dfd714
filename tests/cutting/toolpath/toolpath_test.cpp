#include "cutting/toolpath/toolpath.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "tests/cutting/toolpath/shapes.h"

namespace rastrel::cutting {
namespace {

using test::Circle;
using test::Line;
using test::RandomRing;
using test::Rectangle;

CutJob PlateWithHoles() {
  CutPath path{.contours = {Rectangle(10, 10, 110, 60), Circle({20, 20}, 4), Circle({100, 50}, 4)},
               .rule = "outline"};
  path.settings = {.kerf = 0.2, .overcut = 1, .leadIn = 2};
  CutPath print{.contours = {Circle({50, 50}, 30)}, .operation = Operation::Print};
  return {.width = 120, .height = 70, .paths = {path, print}};
}

TEST(MakeToolPaths, a_plate_is_offset_ordered_and_closed) {
  const Expected<ToolPathResult> result = MakeToolPaths(PlateWithHoles(), {});
  ASSERT_TRUE(result);
  const std::vector<CutPath>& paths = result->job.paths;
  ASSERT_EQ(paths.size(), 2U);
  EXPECT_EQ(paths[0], PlateWithHoles().paths[1]);
  EXPECT_EQ(paths[1].rule, "outline");
  EXPECT_EQ(paths[1].settings, ToolSettings{});
  // Both holes come before the plate, each with its way in from within.
  ASSERT_EQ(paths[1].contours.size(), 3U);
  EXPECT_LT(BoxOf(paths[1].contours[0]).Width(), 9);
  EXPECT_LT(BoxOf(paths[1].contours[1]).Width(), 9);
  EXPECT_GT(BoxOf(paths[1].contours[2]).Width(), 100);
  EXPECT_LT(Distance(paths[1].contours[0].start, {20, 20}), 3.5);
  EXPECT_FALSE(paths[1].contours[2].closed);
  EXPECT_EQ(result->report.kerf.moved, 3U);
  EXPECT_EQ(result->report.closing.overcuts, 3U);
  EXPECT_EQ(result->report.closing.leadIns, 3U);
  EXPECT_EQ(result->report.lines, 3U);
}

TEST(MakeToolPaths, a_job_that_is_read_back_is_not_worked_twice) {
  const Expected<ToolPathResult> once = MakeToolPaths(PlateWithHoles(), {});
  const Expected<ToolPathResult> twice = MakeToolPaths(once->job, {.order = false});
  EXPECT_EQ(twice->job, once->job);
  EXPECT_EQ(twice->report.toolLength, once->report.toolLength);
}

TEST(MakeToolPaths, a_weeding_box_makes_no_hole_of_an_outline) {
  CutJob job{.width = 100, .height = 100, .paths = {{.contours = {Rectangle(40, 40, 60, 60)}}}};
  job.paths[0].settings.leadIn = 2;
  const Expected<ToolPathResult> result =
      MakeToolPaths(job, {.weeding = {.boxGap = 10, .step = 15}});
  ASSERT_TRUE(result);
  bool isFound = false;
  for (const CutPath& path : result->job.paths) {
    for (const Contour& contour : path.contours) {
      if (contour.segments.size() != 5) continue;
      isFound = true;
      const Point start = contour.start;
      EXPECT_TRUE(start.x < 40 || start.x > 60 || start.y < 40 || start.y > 60);
    }
  }
  EXPECT_TRUE(isFound);
  EXPECT_EQ(result->report.closing.leadIns, 1U);
}

TEST(MakeToolPaths, without_order_the_lines_stay_as_they_are) {
  CutJob job = PlateWithHoles();
  job.paths[0].settings = {};
  const Expected<ToolPathResult> result = MakeToolPaths(job, {.order = false});
  EXPECT_EQ(result->job.paths.at(1), job.paths[0]);
  EXPECT_EQ(result->report.travelBefore, result->report.travelAfter);
}

TEST(MakeToolPaths, paths_whose_turns_are_mixed_come_several_times) {
  CutJob job;
  job.paths = {{.contours = {Line({0, 0}, {1, 0}), Line({4, 0}, {5, 0})}, .rule = "a"},
               {.contours = {Line({2, 0}, {3, 0})}, .rule = "b"}};
  const Expected<ToolPathResult> result = MakeToolPaths(job, {});
  ASSERT_EQ(result->job.paths.size(), 3U);
  EXPECT_EQ(result->job.paths[1].rule, "b");
  EXPECT_EQ(result->report.travelBefore, 0 + 3 + 3);
  EXPECT_EQ(result->report.travelAfter, 2);
}

TEST(MakeToolPaths, marks_and_the_page_stay) {
  CutJob job = PlateWithHoles();
  job.marks = {{.center = {5, 5}, .size = 3}};
  const Expected<ToolPathResult> result = MakeToolPaths(job, {});
  EXPECT_EQ(result->job.marks, job.marks);
  EXPECT_EQ(result->job.width, 120);
  EXPECT_EQ(result->job.height, 70);
}

TEST(MakeToolPaths, a_weeding_step_that_is_none_is_refused) {
  EXPECT_FALSE(MakeToolPaths(PlateWithHoles(), {.weeding = {.step = -1}}));
}

TEST(MakeToolPaths, hostile_jobs_end_without_a_crash) {
  std::mt19937 random(8);
  const double special[] = {0, 1, -1, 1e300, -1e300, std::nan(""), 5e4, 1e-12, 7};
  const auto value = [&] {
    return random() % 2 == 0 ? special[random() % std::size(special)]
                             : static_cast<double>(random() % 50);
  };
  for (int round = 0; round < 200; ++round) {
    CutJob job{.width = value(), .height = value(), .paths = {}};
    for (int i = 0; i < 6; ++i) {
      CutPath path{.contours = {}, .operation = static_cast<Operation>(random() % 9)};
      path.settings = {.order = static_cast<int>(random() % 3),
                       .kerf = value(),
                       .overcut = value(),
                       .leadIn = value(),
                       .bridges = static_cast<int>(random() % 5) - 1,
                       .bridgeWidth = value()};
      for (auto k = random() % 4; k > 0; --k) {
        Contour contour{.start = {value(), value()}, .segments = {}, .closed = random() % 3 != 0};
        for (auto n = random() % 6; n > 0; --n) {
          contour.segments.push_back(
              random() % 2 == 0
                  ? LineTo({value(), value()})
                  : CurveTo({value(), value()}, {value(), value()}, {value(), value()}));
        }
        path.contours.push_back(contour);
      }
      job.paths.push_back(path);
    }
    const ToolPathOptions options{.corners = static_cast<Corners>(random() % 3),
                                  .weeding = {.boxGap = value(), .step = value()}};
    const Expected<ToolPathResult> result = MakeToolPaths(job, options);
    EXPECT_TRUE(result || !Describe(result.Error()).empty());
  }
}

}  // namespace
}  // namespace rastrel::cutting
