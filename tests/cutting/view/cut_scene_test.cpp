#include "cutting/view/cut_scene.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

namespace rastrel::cutting {
namespace {

Contour Line(Point from, Point to) { return {.start = from, .segments = {LineTo(to)}}; }

Contour Square(double left, double bottom, double edge) {
  return {.start = {left, bottom},
          .segments = {LineTo({left + edge, bottom}), LineTo({left + edge, bottom + edge}),
                       LineTo({left, bottom + edge})},
          .closed = true};
}

CutJob Job(std::vector<CutPath> paths) {
  return {.width = 100, .height = 50, .paths = std::move(paths)};
}

TEST(CutScene, groups_are_of_an_operation_and_a_tool_and_count_each_pass) {
  const auto scene = CutScene::Of(Job(
      {{.contours = {Square(10, 10, 20)}, .settings = {.tool = "knife", .passes = 2}},
       {.contours = {Line({0, 0}, {30, 40})}, .operation = Operation::Crease},
       {.contours = {Line({0, 0}, {1, 0}), Line({0, 5}, {1, 5})}, .settings = {.tool = "knife"}},
       {.contours = {Line({0, 0}, {9, 9})}, .operation = Operation::Print}}));
  ASSERT_TRUE(scene);
  ASSERT_EQ(scene->Groups().size(), 2U);
  EXPECT_EQ(scene->Groups()[0].strokes, 3U);
  EXPECT_DOUBLE_EQ(scene->Groups()[0].length, 80 * 2 + 2);  // a square of 20 twice, two lines of 1
  EXPECT_EQ(scene->Groups()[1].operation, Operation::Crease);
  EXPECT_DOUBLE_EQ(scene->Groups()[1].length, 50);  // 3, 4, 5
  EXPECT_EQ(scene->Strokes()[2].path, 2U);
}

TEST(CutScene, a_closed_stroke_ends_where_it_starts) {
  const auto scene = CutScene::Of(Job({{.contours = {Square(10, 10, 20)}}}));
  EXPECT_EQ(scene->Start(0), (Point{10, 10}));
  EXPECT_EQ(scene->End(0), (Point{10, 10}));
  EXPECT_EQ(scene->Strokes()[0].points, 5U);
}

TEST(CutScene, a_contour_without_segments_is_a_point) {
  const auto scene = CutScene::Of(
      Job({{.contours = {{.start = {3, 4}, .segments = {}}}, .operation = Operation::Drill}}));
  ASSERT_EQ(scene->Strokes().size(), 1U);
  EXPECT_EQ(scene->Strokes()[0].length, 0);
  EXPECT_EQ(scene->Outline(0, 1), (std::vector<Point>{{3, 4}}));
  EXPECT_EQ(scene->Nearest({3, 5}, 2)->distance, 1);
}

TEST(CutScene, what_is_a_kilometre_off_is_shown_and_what_is_farther_refused) {
  EXPECT_TRUE(CutScene::Of(Job({{.contours = {Line({0, 0}, {1e6, 0})}}})));
  EXPECT_FALSE(CutScene::Of(Job({{.contours = {Line({0, 0}, {1e6 + 1, 0})}}})));
  EXPECT_FALSE(CutScene::Of(Job({{.contours = {Line({0, 0}, {NAN, 0})}}})));
  CutJob job = Job({});
  job.marks.push_back({.center = {0, std::numeric_limits<double>::infinity()}, .size = 5});
  EXPECT_FALSE(CutScene::Of(job));
  job = Job({});
  job.width = -1;
  EXPECT_FALSE(CutScene::Of(job));
}

TEST(CutScene, the_extent_has_the_page_the_strokes_and_the_marks) {
  CutJob job = Job({{.contours = {Line({-10, 5}, {120, 5})}}});
  job.marks.push_back({.center = {50, 60}, .size = 10});
  EXPECT_EQ(CutScene::Of(job)->Extent(), (Box{-10, 0, 120, 65}));
}

TEST(CutScene, strokes_that_touch_the_box_are_in_sight_and_others_not) {
  const auto scene = CutScene::Of(Job({{.contours = {Square(0, 0, 10), Square(20, 0, 10)}}}));
  EXPECT_EQ(scene->InSight({0, 0, 5, 5}, 0.1), (std::vector<std::size_t>{0}));
  EXPECT_EQ(scene->InSight({10, 0, 20, 5}, 0.1), (std::vector<std::size_t>{0, 1}));
  EXPECT_TRUE(scene->InSight({10.1, 0, 19.9, 5}, 0.1).empty());
}

TEST(CutScene, a_hidden_group_is_neither_seen_nor_hit) {
  auto scene =
      CutScene::Of(Job({{.contours = {Square(0, 0, 10)}},
                        {.contours = {Square(0, 0, 10)}, .operation = Operation::Crease}}));
  scene->Show(1, false);
  EXPECT_EQ(scene->InSight({0, 0, 5, 5}, 0.1), (std::vector<std::size_t>{0}));
  EXPECT_EQ(scene->Nearest({0, 0}, 1)->stroke, 0U);
  EXPECT_EQ(scene->Numbers({-1, -1, 20, 20}, 0.1, 9).size(), 1U);
  EXPECT_EQ(scene->Arrows({-1, -1, 20, 20}, 0.1, 9).size(), 1U);
  scene->Show(1, true);
  EXPECT_EQ(scene->Nearest({0, 0}, 1)->stroke, 1U);  // the later one is above
}

TEST(CutScene, of_strokes_below_a_pixel_one_a_pixel_and_group_is_drawn) {
  std::vector<CutPath> paths(2);
  paths[1].operation = Operation::Drill;
  for (int i = 0; i < 1000; ++i)
    for (CutPath& path : paths) path.contours.push_back(Line({i * 0.01, 1}, {i * 0.01 + 0.005, 1}));
  const auto scene = CutScene::Of(Job(paths));
  EXPECT_EQ(scene->InSight({0, 0, 20, 20}, 1).size(), 20U);  // 10 mm of 1 mm each, two groups
  EXPECT_EQ(scene->InSight({0, 0, 20, 20}, 0.001).size(), 2000U);
}

TEST(CutScene, a_stroke_of_one_pixel_is_drawn_beside_others) {
  const auto scene =
      CutScene::Of(Job({{.contours = {Line({0, 1}, {1, 1}), Line({0, 1}, {1, 1})}},
                        {.contours = {Line({5, 1}, {5.9, 1}), Line({5, 1}, {5.9, 1})}}}));
  EXPECT_EQ(scene->InSight({0, 0, 20, 20}, 1), (std::vector<std::size_t>{0, 1, 2}));
}

TEST(CutScene, an_outline_has_no_points_within_half_a_pixel_but_its_ends) {
  Contour contour{.start = {0, 0}, .segments = {}};
  for (int i = 1; i <= 1001; ++i) contour.segments.push_back(LineTo({i * 0.1, 0}));
  const auto scene = CutScene::Of(Job({{.contours = {contour}}}));
  EXPECT_EQ(scene->Outline(0, 0.1).size(), 1002U);
  const auto coarse = scene->Outline(0, 1.9);  // points of 1 mm each, and the last
  EXPECT_EQ(coarse.size(), 102U);
  EXPECT_EQ(coarse.front(), (Point{0, 0}));
  EXPECT_NEAR(coarse.back().x, 100.1, 1e-4);
}

TEST(CutScene, an_outline_keeps_the_points_of_its_every_direction) {
  for (const Point end : {Point{100, 0}, Point{0, 100}, Point{-70, 70}}) {
    Contour contour{.start = {0, 0}, .segments = {}};
    for (int i = 1; i <= 100; ++i)
      contour.segments.push_back(LineTo({end.x * i / 100, end.y * i / 100}));
    const auto scene = CutScene::Of(Job({{.contours = {contour}}}));
    EXPECT_EQ(scene->Outline(0, 0.5).size(), 101U) << end.x << ", " << end.y;
  }
}

TEST(CutScene, a_hit_is_the_nearest_place_within_the_radius) {
  const auto scene =
      CutScene::Of(Job({{.contours = {Line({0, 0}, {10, 0}), Line({0, 4}, {10, 4})}}}));
  const auto hit = scene->Nearest({5, 2.5}, 3);
  ASSERT_TRUE(hit);
  EXPECT_EQ(hit->stroke, 1U);
  EXPECT_EQ(hit->at, (Point{5, 4}));
  EXPECT_DOUBLE_EQ(hit->distance, 1.5);
  EXPECT_TRUE(scene->Nearest({5, 6}, 2));
  EXPECT_FALSE(scene->Nearest({5, 6}, 1.99));
  EXPECT_EQ(scene->Nearest({13, 4}, 3)->at, (Point{10, 4}));  // beyond an end
}

TEST(CutScene, numbers_that_would_lie_on_each_other_give_way_to_the_first) {
  const auto scene = CutScene::Of(
      Job({{.contours = {Line({1, 1}, {2, 2}), Line({2, 1}, {2, 2}), Line({64, 1}, {65, 2})}}}));
  const auto far = scene->Numbers({0, 0, 100, 50}, 1, 100);  // cells of 64 x 32 mm
  ASSERT_EQ(far.size(), 2U);
  EXPECT_EQ(far[0].stroke, 0U);
  EXPECT_EQ(far[1].stroke, 2U);
  EXPECT_EQ(scene->Numbers({0, 0, 100, 50}, 0.01, 100).size(), 3U);
  EXPECT_EQ(scene->Numbers({0, 0, 100, 50}, 0.01, 2).size(), 2U);
  EXPECT_EQ(scene->Numbers({0, 0, 1.5, 50}, 0.01, 9).size(), 1U);
}

TEST(CutScene, an_arrow_is_a_little_before_the_middle_of_a_stroke_of_24_pixels) {
  const auto scene = CutScene::Of(Job({{.contours = {Line({0, 0}, {0, 24})}}}));
  const auto arrows = scene->Arrows({-1, 0, 1, 50}, 1, 9);
  ASSERT_EQ(arrows.size(), 1U);
  EXPECT_EQ(arrows[0].at, (Point{0, 0.45 * 24}));
  EXPECT_EQ(arrows[0].direction, (Point{0, 1}));
  EXPECT_TRUE(scene->Arrows({-1, 0, 1, 50}, 1.001, 9).empty());
  EXPECT_TRUE(scene->Arrows({-1, 0, 1, 10}, 1, 9).empty());  // its place is out of sight
  EXPECT_TRUE(scene->Arrows({-1, 0, 1, 50}, 1, 0).empty());
}

TEST(CutScene, curves_keep_the_tolerance_far_from_the_origin) {
  const double k = 0.5522847498 * 10;
  const Point center{900'000, 900'000};
  const auto [x, y] = center;
  const auto scene = CutScene::Of(Job(
      {{.contours = {{.start = {x + 10, y},
                      .segments = {CurveTo({x + 10, y + k}, {x + k, y + 10}, {x, y + 10})}}}}}));
  for (const Point& point : scene->Outline(0, 1e-6)) EXPECT_NEAR(Distance(point, center), 10, 0.02);
  EXPECT_NEAR(scene->Strokes()[0].length, 5 * std::numbers::pi, 0.02);
}

}  // namespace
}  // namespace rastrel::cutting
