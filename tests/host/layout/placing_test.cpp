#include "host/layout/placing.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace rastrel::layout {
namespace {

constexpr CWorldRect Frame{10, 30, 50, 10};  // 40 wide, 20 high
constexpr BOUNDS Bounds{2, 8, 1, 4};         // 6 wide, 3 high

CWorldPoint Mapped(const TM& m, double x, double y) {
  return {m.a * x + m.c * y + m.tx, m.b * x + m.d * y + m.ty};
}

// Written out by hand: x rightward from the left and the middle, leftward from the right; y
// downward from the top, upward from the middle and the bottom.
TEST(Placing, x_and_y_count_inward_from_the_origin) {
  constexpr double x = 3, y = 2;
  const CWorldPoint expected[] = {{13, 28}, {33, 28}, {47, 28}, {13, 22}, {33, 22},
                                  {47, 22}, {13, 12}, {33, 12}, {47, 12}};
  for (std::int32_t origin = 1; origin <= 9; ++origin) {
    EXPECT_EQ(PointFrom(Frame, origin, x, y), expected[origin - 1]) << origin;
  }
}

TEST(Placing, the_same_part_of_the_graphic_is_at_the_point) {
  const CWorldPoint parts[] = {{2, 4},   {5, 4}, {8, 4}, {2, 2.5}, {5, 2.5},
                               {8, 2.5}, {2, 1}, {5, 1}, {8, 1}};
  for (std::int32_t origin = 1; origin <= 9; ++origin) {
    EXPECT_EQ(PartOf(Bounds, origin), parts[origin - 1]) << origin;
    Placement placement;
    placement.origin = origin;
    placement.x = 3;
    placement.y = 2;
    placement.width = 12;
    placement.height = 9;
    placement.rotation = 37;
    const TM tm = TmOf(placement, Frame, Bounds);
    const CWorldPoint point = PointFrom(Frame, origin, 3, 2);
    const CWorldPoint part = Mapped(tm, parts[origin - 1].x, parts[origin - 1].y);
    EXPECT_NEAR(part.x, point.x, 1e-12) << origin;
    EXPECT_NEAR(part.y, point.y, 1e-12) << origin;
  }
}

TEST(Placing, a_size_that_is_missing_is_the_graphics_own_or_proportional) {
  const struct {
    double width, height, expectedWidth, expectedHeight;
  } sizes[] = {{0, 0, 6, 3}, {12, 0, 12, 6}, {0, 12, 24, 12}, {12, 12, 12, 12}};
  for (const auto& size : sizes) {
    Placement placement;
    placement.width = size.width;
    placement.height = size.height;
    const BOUNDS placed = DBTranslateBounds(Bounds, TmOf(placement, Frame, Bounds));
    EXPECT_NEAR(placed.xmax - placed.xmin, size.expectedWidth, 1e-12);
    EXPECT_NEAR(placed.ymax - placed.ymin, size.expectedHeight, 1e-12);
    EXPECT_NEAR((placed.xmax + placed.xmin) / 2, 30, 1e-12);
    EXPECT_NEAR((placed.ymax + placed.ymin) / 2, 20, 1e-12);
  }
}

TEST(Placing, a_graphic_without_a_width_is_moved_and_scaled_in_height_alone) {
  Placement placement;
  placement.origin = 7;
  placement.width = 5;
  placement.height = 6;
  const BOUNDS line{2, 2, 1, 4};
  const BOUNDS placed = DBTranslateBounds(line, TmOf(placement, Frame, line));
  EXPECT_EQ(placed, (BOUNDS{10, 10, 10, 16}));
}

TEST(Placing, a_rotation_is_counter_clockwise_about_the_point) {
  Placement placement;
  placement.origin = 7;
  placement.rotation = 90;
  // The lower left corner stays at the frame's, and the graphic goes to the left of it.
  EXPECT_EQ(DBTranslateBounds(Bounds, TmOf(placement, Frame, Bounds)), (BOUNDS{7, 10, 10, 16}));
}

TEST(Placing, quarter_turns_are_exact) {
  for (int turns = -8; turns <= 8; ++turns) {
    const TM tm = TurnAbout({0, 0}, turns * 90.0);
    for (const double part : {tm.a, tm.b, tm.c, tm.d}) {
      EXPECT_TRUE(part == 0 || part == 1 || part == -1) << turns;
    }
    EXPECT_EQ(tm.a, turns % 2 != 0 ? 0 : turns % 4 == 0 ? 1 : -1);
  }
}

TEST(Placing, a_turn_keeps_its_center) {
  for (const double degrees : {0.0, 30.0, 90.0, 123.4, -200.0}) {
    const CWorldPoint center = Mapped(TurnAbout({3, -7}, degrees), 3, -7);
    EXPECT_NEAR(center.x, 3, 1e-12);
    EXPECT_NEAR(center.y, -7, 1e-12);
  }
  const CWorldPoint turned = Mapped(TurnAbout({0, 0}, 30), 1, 0);
  EXPECT_NEAR(turned.x, std::sqrt(3) / 2, 1e-12);
  EXPECT_NEAR(turned.y, 0.5, 1e-12);
}

TEST(Placing, content_of_a_quarter_turn_is_laid_out_with_sides_exchanged) {
  EXPECT_EQ(ContentFrame(Frame, 0), Frame);
  EXPECT_EQ(ContentFrame(Frame, 180), Frame);
  EXPECT_EQ(ContentFrame(Frame, 45), Frame);
  for (const double degrees : {90.0, 270.0, -90.0, 450.0}) {
    EXPECT_EQ(ContentFrame(Frame, degrees), (CWorldRect{20, 40, 40, 0}));
    EXPECT_EQ(FrameInside(Frame, degrees), ContentFrame(Frame, degrees));
  }
}

TEST(Placing, a_turned_frame_stays_inside_of_its_plate_and_touches_it) {
  for (const double degrees : {1.0, 30.0, 45.0, 89.0, 135.0, -20.0, 200.0}) {
    const CWorldRect inside = FrameInside(Frame, degrees);
    const BOUNDS turned = DBTranslateBounds({inside.left, inside.right, inside.bottom, inside.top},
                                            TurnAbout({30, 20}, degrees));
    EXPECT_GE(turned.xmin, Frame.left - 1e-9);
    EXPECT_LE(turned.xmax, Frame.right + 1e-9);
    EXPECT_GE(turned.ymin, Frame.bottom - 1e-9);
    EXPECT_LE(turned.ymax, Frame.top + 1e-9);
    EXPECT_TRUE(std::abs(turned.xmax - Frame.right) < 1e-9 ||
                std::abs(turned.ymax - Frame.top) < 1e-9);
    EXPECT_NEAR((inside.right - inside.left) / (inside.top - inside.bottom), 2, 1e-9);
  }
}

TEST(Placing, numbers_that_are_no_lengths_are_refused) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_TRUE(IsLength(LargestLength));
  EXPECT_TRUE(IsLength(-LargestLength));
  EXPECT_FALSE(IsLength(std::nextafter(LargestLength, infinity)));
  EXPECT_FALSE(IsLength(std::nan("")));
  EXPECT_FALSE(IsLength(infinity));
  Placement placement;
  EXPECT_TRUE(IsPlacement(placement));
  for (double Placement::*value : {&Placement::x, &Placement::y, &Placement::width,
                                   &Placement::height, &Placement::rotation}) {
    for (const double bad : {std::nan(""), infinity, -infinity}) {
      Placement spoiled;
      spoiled.*value = bad;
      EXPECT_FALSE(IsPlacement(spoiled));
    }
  }
  placement.width = -1;
  EXPECT_FALSE(IsPlacement(placement));
}

}  // namespace
}  // namespace rastrel::layout
