#include "cutting/output/placement.h"

#include <gtest/gtest.h>

namespace rastrel::cutting {
namespace {

CutJob Page() {
  return {
      .width = 100, .height = 60, .paths = {}, .marks = {{.center = {7, 9}}, {.center = {80, 50}}}};
}

Point Moved(const Placement& placement, Point point) {
  const auto transform = TransformOf(Page(), placement);
  EXPECT_TRUE(transform);
  return transform->Apply(point);
}

TEST(TransformOf, the_lower_left_corner_leaves_all_as_it_is) {
  EXPECT_EQ(Moved({}, {10, 20}), (Point{10, 20}));
}

TEST(TransformOf, each_origin_is_at_zero) {
  EXPECT_EQ(Moved({.origin = Origin::LowerLeft}, {0, 0}), (Point{0, 0}));
  EXPECT_EQ(Moved({.origin = Origin::LowerRight}, {100, 0}), (Point{0, 0}));
  EXPECT_EQ(Moved({.origin = Origin::UpperLeft}, {0, 60}), (Point{0, 0}));
  EXPECT_EQ(Moved({.origin = Origin::UpperRight}, {100, 60}), (Point{0, 0}));
  EXPECT_EQ(Moved({.origin = Origin::Center}, {50, 30}), (Point{0, 0}));
  EXPECT_EQ(Moved({.origin = Origin::FirstMark}, {7, 9}), (Point{0, 0}));
}

TEST(TransformOf, a_mirrored_axis_counts_the_other_way_from_the_origin) {
  EXPECT_EQ(Moved({.origin = Origin::UpperLeft, .mirrorY = true}, {10, 50}), (Point{10, 10}));
  EXPECT_EQ(Moved({.origin = Origin::LowerRight, .mirrorX = true}, {90, 20}), (Point{10, 20}));
}

TEST(TransformOf, axes_are_swapped_after_they_are_mirrored) {
  EXPECT_EQ(Moved({.swapAxes = true}, {10, 20}), (Point{20, 10}));
  EXPECT_EQ(Moved({.origin = Origin::UpperLeft, .mirrorY = true, .swapAxes = true}, {10, 50}),
            (Point{10, 10}));
  EXPECT_EQ(Moved({.origin = Origin::UpperLeft, .mirrorY = true, .swapAxes = true}, {30, 50}),
            (Point{10, 30}));
  EXPECT_EQ(Moved({.origin = Origin::FirstMark, .mirrorX = true, .swapAxes = true}, {10, 20}),
            (Point{11, -3}));
}

TEST(TransformOf, a_first_mark_that_is_not_there_is_a_failure) {
  const auto transform =
      TransformOf({.width = 10, .height = 10, .paths = {}}, {.origin = Origin::FirstMark});
  ASSERT_FALSE(transform);
  EXPECT_EQ(Describe(transform.Error()),
            "the origin is to be the first mark, but the job has no marks");
}

TEST(OriginOf, each_name_leads_back_to_its_origin) {
  for (const Origin origin : {Origin::LowerLeft, Origin::LowerRight, Origin::UpperLeft,
                              Origin::UpperRight, Origin::Center, Origin::FirstMark})
    EXPECT_EQ(OriginOf(NameOf(origin)), origin);
  EXPECT_EQ(OriginOf("middle"), std::nullopt);
  EXPECT_EQ(OriginOf(""), std::nullopt);
}

}  // namespace
}  // namespace rastrel::cutting
