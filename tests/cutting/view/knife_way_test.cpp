#include "cutting/view/knife_way.h"

#include <gtest/gtest.h>

namespace rastrel::cutting {
namespace {

Contour Line(Point from, Point to) { return {.start = from, .segments = {LineTo(to)}}; }

// From the origin 10 mm to a line of 20 mm, back 10 mm to a crease of 5 mm upward.
CutScene Scene(int passes = 1) {
  CutJob job{.width = 100, .height = 50, .paths = {}};
  job.paths.push_back({.contours = {Line({10, 0}, {30, 0})}, .settings = {.passes = passes}});
  job.paths.push_back({.contours = {Line({20, 0}, {20, 5})}, .operation = Operation::Crease});
  return *CutScene::Of(job);
}

TEST(KnifeWay, its_length_is_of_the_ways_between_the_strokes_and_of_the_strokes) {
  const CutScene scene = Scene();
  const KnifeWay way(scene);
  EXPECT_DOUBLE_EQ(way.TravelLength(), 20);
  EXPECT_DOUBLE_EQ(way.Length(), 45);
  EXPECT_EQ(way.Strokes(), 2U);
}

TEST(KnifeWay, the_knife_is_lifted_on_its_way_and_follows_the_stroke_then) {
  const CutScene scene = Scene();
  const KnifeWay way(scene);
  KnifePlace place = way.At(4);
  EXPECT_TRUE(place.isTravel);
  EXPECT_EQ(place.at, (Point{4, 0}));
  place = way.At(10);
  EXPECT_FALSE(place.isTravel);
  EXPECT_EQ(place.at, (Point{10, 0}));
  EXPECT_EQ(place.done, 0);
  place = way.At(25);
  EXPECT_EQ(place.at, (Point{25, 0}));
  EXPECT_EQ(place.done, 15);
  place = way.At(35);
  EXPECT_TRUE(place.isTravel);
  EXPECT_EQ(place.stroke, 1U);
  EXPECT_EQ(place.at, (Point{25, 0}));
  EXPECT_EQ(way.At(43).at, (Point{20, 3}));
}

TEST(KnifeWay, beyond_its_ends_the_knife_is_at_them) {
  const CutScene scene = Scene();
  const KnifeWay way(scene);
  EXPECT_EQ(way.At(-1).at, (Point{0, 0}));
  EXPECT_EQ(way.At(45).at, (Point{20, 5}));
  EXPECT_EQ(way.At(1000).at, (Point{20, 5}));
}

TEST(KnifeWay, a_second_pass_of_an_open_stroke_is_gone_back_to) {
  const CutScene scene = Scene(2);
  const KnifeWay way(scene);
  EXPECT_DOUBLE_EQ(way.Length(), 10 + 20 + 20 + 20 + 10 + 5);
  EXPECT_EQ(way.At(29).pass, 1);
  EXPECT_TRUE(way.At(40).isTravel);
  EXPECT_EQ(way.At(40).at, (Point{20, 0}));
  EXPECT_EQ(way.At(60).pass, 2);
  EXPECT_EQ(way.At(60).at, (Point{20, 0}));
}

TEST(KnifeWay, hidden_strokes_are_passed_over) {
  CutScene scene = Scene();
  scene.Show(0, false);
  const KnifeWay way(scene);
  EXPECT_EQ(way.Strokes(), 1U);
  EXPECT_DOUBLE_EQ(way.Length(), 25);
  EXPECT_EQ(way.At(1).stroke, 1U);
}

TEST(KnifeWay, strokes_begin_and_are_counted_in_their_order) {
  const CutScene scene = Scene(2);
  const KnifeWay way(scene);
  EXPECT_EQ(way.BeginOf(0), 10);
  EXPECT_EQ(way.BeginOf(1), 80);
  EXPECT_EQ(way.BeginOf(2), way.Length());
  EXPECT_EQ(way.CountAt(0), 1U);
  EXPECT_EQ(way.CountAt(69.9), 1U);
  EXPECT_EQ(way.CountAt(70), 2U);
  EXPECT_EQ(way.CountAt(1000), 2U);
}

TEST(KnifeWay, a_scene_without_strokes_has_no_way) {
  const CutScene scene = *CutScene::Of({.width = 1, .height = 1, .paths = {}});
  const KnifeWay way(scene);
  EXPECT_EQ(way.Strokes(), 0U);
  EXPECT_EQ(way.Length(), 0);
  EXPECT_EQ(way.CountAt(0), 0U);
}

}  // namespace
}  // namespace rastrel::cutting
