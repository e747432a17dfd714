// Where frames of both generations are on a pane.

#include <gtest/gtest.h>

#include <random>

#include "rastrel/imports/cr2/frame_position.h"
#include "rastrel/imports/cr2/pane_point.h"
#include "tests/imports/cr2/literal_placements.h"

static std::ostream& operator<<(std::ostream& out, const BOUNDS& bounds) {
  return out << bounds.xmin << ".." << bounds.xmax << ", " << bounds.ymin << ".." << bounds.ymax;
}

static std::ostream& operator<<(std::ostream& out, const CWorldPoint& point) {
  return out << point.x << ", " << point.y;
}

static std::ostream& operator<<(std::ostream& out, const TM& matrix) {
  return out << matrix.a << ' ' << matrix.d << ' ' << matrix.tx << ' ' << matrix.ty;
}

namespace {

using namespace rastrel::imports;
using namespace rastrel::test;

/// A pane of 10 by 6 cm at (100, 200).
constexpr CWorldRect Pane{.left = 100, .top = 206, .right = 110, .bottom = 200};

CR2_PLACEMENT At(int origin) {
  return {.origin = origin, .x = 1, .y = 2, .width = 4, .height = 3, .constrained = false};
}

TEST(EffectivePlacement, counts_from_the_template_margins_in_centimetres) {
  const CR2_PLACEMENT effective = EffectivePlacement(
      {.origin = 3, .x = 1, .y = 2, .width = 3, .height = 4, .constrained = true},
      {.left = 10, .top = 20, .right = 30, .bottom = 40});
  EXPECT_EQ(effective.origin, 3);
  EXPECT_EQ(effective.x, 11 * 2.54);
  EXPECT_EQ(effective.y, 22 * 2.54);
  EXPECT_EQ(effective.width, 3 * 2.54);
  EXPECT_EQ(effective.height, 4 * 2.54);
  EXPECT_TRUE(effective.constrained);
}

TEST(GetFramePosition, puts_a_frame_by_each_origin) {
  // Left edges by column: 101; 101 less half of 4; 110 less 4 less 1. Bottom edges by hand.
  const BOUNDS expected[] = {
      {101, 105, 201, 204},      // 2 down from 206, then 3 high
      {99, 103, 201, 204},       // the center counts from the left edge
      {105, 109, 201, 204},      //
      {101, 105, 202.5, 205.5},  // 2 down from the top to the middle
      {99, 103, 202.5, 205.5},   //
      {105, 109, 200.5, 203.5},  // 2 up from the bottom to the middle
      {101, 105, 202, 205},      //
      {99, 103, 202, 205},       //
      {105, 109, 202, 205},
  };
  for (int origin = 1; origin <= 9; ++origin)
    EXPECT_EQ(GetFramePosition(Pane, At(origin)), expected[origin - 1]) << origin;
}

TEST(GetFramePosition, takes_x_and_y_themselves_for_any_other_origin) {
  for (const int origin : {-1, 0, 10})
    EXPECT_EQ(GetFramePosition(Pane, At(origin)), (BOUNDS{1, 5, 2, 5})) << origin;
}

TEST(GetFramePosition, rounds_each_edge_to_single_precision) {
  CR2_PLACEMENT placement = At(7);
  placement.x = 0.1;
  const BOUNDS frame = GetFramePosition({.left = 0, .top = 6, .right = 10, .bottom = 0}, placement);
  EXPECT_EQ(frame.xmin, 0.10000000149011612);  // the single precision number next to 0.1
  EXPECT_EQ(frame.xmax, 4.099999904632568);    // and next to 4.1
}

TEST(CreateTmForPlacement, scales_each_side_and_moves_to_the_frame) {
  // 2 by 1 cm become 4 by 3 at 101, 202.
  EXPECT_EQ(CreateTmForPlacement(Pane, At(7), {.xmin = 5, .xmax = 7, .ymin = 8, .ymax = 9}),
            (TM{.a = 2, .b = 0, .c = 0, .d = 3, .tx = 101 - 10.0, .ty = 202 - 24.0}));
}

TEST(CreateTmForPlacement, does_not_scale_a_side_without_length) {
  const TM matrix = CreateTmForPlacement(Pane, At(7), {.xmin = 5, .xmax = 5, .ymin = 8, .ymax = 9});
  EXPECT_EQ(matrix.a, 1.0);
  EXPECT_EQ(matrix.d, 3.0);
  EXPECT_EQ(CreateTmForPlacement(Pane, At(7), {}).d, 1.0);
}

TEST(CreateTmForPlacement, a_constrained_placement_takes_the_smaller_factor) {
  CR2_PLACEMENT placement = At(7);
  placement.constrained = true;
  const BOUNDS wide{.xmin = 0, .xmax = 8, .ymin = 0, .ymax = 1};  // 0.5 and 3
  EXPECT_EQ(CreateTmForPlacement(Pane, placement, wide).a, 0.5);
  EXPECT_EQ(CreateTmForPlacement(Pane, placement, wide).d, 0.5);
  const BOUNDS high{.xmin = 0, .xmax = 1, .ymin = 0, .ymax = 12};  // 4 and 0.25
  EXPECT_EQ(CreateTmForPlacement(Pane, placement, high).a, 0.25);
  EXPECT_EQ(CreateTmForPlacement(Pane, placement, high).d, 0.25);
}

TEST(CreateTmForPlacement, of_two_factors_of_one_magnitude_the_vertical_one_counts) {
  CR2_PLACEMENT placement = At(7);
  placement.constrained = true;
  placement.width = -3;
  const TM matrix = CreateTmForPlacement(Pane, placement, {0, 1, 0, 1});  // -3 and 3
  EXPECT_EQ(matrix.a, 3.0);
  EXPECT_EQ(matrix.d, 3.0);
}

TEST(CreateTmForPlacement, a_constrained_width_of_0_makes_both_factors_0) {
  CR2_PLACEMENT placement = At(7);
  placement.constrained = true;
  placement.width = 0;
  const TM matrix = CreateTmForPlacement(Pane, placement, {0, 2, 0, 1});
  EXPECT_EQ(matrix.a, 0.0);
  EXPECT_EQ(matrix.d, 0.0);
}

/// A template of that origin with margins of 1, 0.5, 2 and 1.5: the inner pane is 101..108 by
/// 201.5..205.5.
CR2_TEMPLATE TemplateOf(int origin) {
  CR2_TEMPLATE plate;
  plate.placement.origin = origin;
  plate.margins = {.left = 1, .top = 0.5, .right = 2, .bottom = 1.5};
  return plate;
}

TEST(GetPaneBoundsInsideMargins, takes_each_margin_off_its_side) {
  const CWorldRect inner = GetPaneBoundsInsideMargins(Pane, TemplateOf(1).margins);
  EXPECT_EQ(inner, (CWorldRect{.left = 101, .top = 205.5, .right = 108, .bottom = 201.5}));
}

TEST(GetPointInPane, counts_from_the_template_origin) {
  const CWorldPoint expected[] = {{102, 203.5}, {105.5, 203.5}, {109, 203.5},
                                  {102, 205.5}, {105.5, 205.5}, {109, 205.5},
                                  {102, 203.5}, {105.5, 203.5}, {109, 202.5}};
  for (int origin = 1; origin <= 9; ++origin)
    EXPECT_EQ(GetPointInPane(Pane, TemplateOf(origin), {.x = 1, .y = 2}), expected[origin - 1])
        << origin;
}

TEST(GetPointInPane, an_origin_of_9_counts_both_axes_by_x) {
  EXPECT_EQ(GetPointInPane({.left = 0, .top = 10, .right = 20, .bottom = 0},
                           [] {
                             CR2_TEMPLATE plate;
                             plate.placement.origin = 9;
                             return plate;
                           }(),
                           {.x = 1.0, .y = 2.0}),
            (CWorldPoint{.x = 21, .y = 1}));
}

TEST(GetPointInPane, any_other_origin_leaves_the_point) {
  for (const int origin : {-3, 0, 10})
    EXPECT_EQ(GetPointInPane(Pane, TemplateOf(origin), {.x = 1, .y = 2}),
              (CWorldPoint{.x = 1, .y = 2}));
}

TEST(GetFramePosition, puts_the_named_part_of_a_zml_frame_on_its_point) {
  const BOUNDS expected[] = {{1, 5, -1, 2},    {-1, 3, -1, 2},    {-3, 1, -1, 2},
                             {1, 5, 0.5, 3.5}, {-1, 3, 0.5, 3.5}, {-3, 1, 0.5, 3.5},
                             {1, 5, 2, 5},     {-1, 3, 2, 5},     {-3, 1, 2, 5}};
  for (int origin = 1; origin <= 9; ++origin) {
    BOUNDS frame;
    GetFramePosition(At(origin), frame);
    EXPECT_EQ(frame, expected[origin - 1]) << origin;
  }
}

TEST(GetFramePosition, a_zml_origin_outside_the_table_keeps_left_and_bottom) {
  BOUNDS frame{.xmin = 50, .xmax = 0, .ymin = 60, .ymax = 0};
  GetFramePosition(At(0), frame);
  EXPECT_EQ(frame, (BOUNDS{50, 54, 60, 63}));
}

CR2_PLACEMENT Sized(double width, double height, bool constrained = false) {
  return {
      .origin = 7, .x = 0, .y = 0, .width = width, .height = height, .constrained = constrained};
}

/// Objects of 8 by 2.
constexpr BOUNDS Objects{.xmin = 1, .xmax = 9, .ymin = 5, .ymax = 7};

TEST(SizedToObjects, only_a_width_given_lets_the_height_follow_the_proportions) {
  EXPECT_EQ(SizedToObjects(Sized(4, 0), Objects).width, 4.0);
  EXPECT_EQ(SizedToObjects(Sized(4, 0), Objects).height, 1.0);
}

TEST(SizedToObjects, only_a_height_given_lets_the_width_follow_the_proportions) {
  EXPECT_EQ(SizedToObjects(Sized(0, 1), Objects).width, 4.0);
  EXPECT_EQ(SizedToObjects(Sized(-1, 1), Objects).width, 4.0);
}

TEST(SizedToObjects, neither_given_keeps_the_size_of_the_objects) {
  EXPECT_EQ(SizedToObjects(Sized(0, 0), Objects).width, 8.0);
  EXPECT_EQ(SizedToObjects(Sized(0, 0), Objects).height, 2.0);
  EXPECT_EQ(SizedToObjects(Sized(1e-60, 1e-60), Objects).width, 8.0) << "0 in single precision";
}

TEST(SizedToObjects, both_given_count_unless_proportions_are_kept) {
  EXPECT_EQ(SizedToObjects(Sized(4, 4), Objects).height, 4.0);
  EXPECT_EQ(SizedToObjects(Sized(4, 4, true), Objects).width, 4.0);
  EXPECT_EQ(SizedToObjects(Sized(4, 4, true), Objects).height, 1.0);  // half of 2
}

TEST(SizedToObjects, objects_that_are_a_straight_line_stay_finite) {
  constexpr BOUNDS Line{.xmin = 1, .xmax = 9, .ymin = 5, .ymax = 5};
  EXPECT_EQ(SizedToObjects(Sized(0, 1), Line).width, 8.0);
  EXPECT_EQ(SizedToObjects(Sized(4, 0), Line).height, 0.0);
  EXPECT_EQ(SizedToObjects(Sized(4, 3, true), Line).width, 4.0);
  EXPECT_EQ(SizedToObjects(Sized(4, 3, true), BOUNDS()).width, 4.0);
}

/// Random panes, margins, placements and objects, in and out of order and of all magnitudes.
class RandomPlacements : public ::testing::Test {
 protected:
  double Number() {
    const double magnitude = std::uniform_real_distribution(-2.0, 3.0)(m_Random);
    return std::uniform_real_distribution(-1.0, 1.0)(m_Random) * std::pow(10.0, magnitude);
  }
  CWorldRect Rectangle() { return {Number(), Number(), Number(), Number()}; }
  CR2_PLACEMENT Placement(int origin) {
    return {.origin = origin,
            .x = Number(),
            .y = Number(),
            .width = Number(),
            .height = Number(),
            .constrained = (m_Random() & 1U) != 0};
  }
  BOUNDS Bounds() {
    const double left = Number();
    const double bottom = Number();
    return {.xmin = left,
            .xmax = left + std::fabs(Number()),
            .ymin = bottom,
            .ymax = bottom + std::fabs(Number())};
  }

  std::mt19937 m_Random{20};
};

TEST_F(RandomPlacements, of_a_cr2_are_where_the_table_puts_them) {
  for (int round = 0; round < 10'000; ++round) {
    for (int origin = 0; origin <= 10; ++origin) {
      const CWorldRect pane = Rectangle();
      const CR2_PLACEMENT placement = Placement(origin);
      const BOUNDS objects = Bounds();
      ASSERT_EQ(GetFramePosition(pane, placement), LiteralCr2Frame(pane, placement)) << origin;
      ASSERT_EQ(CreateTmForPlacement(pane, placement, objects),
                LiteralCr2Matrix(pane, placement, objects))
          << origin;
    }
  }
}

TEST_F(RandomPlacements, of_a_zml_are_where_the_tables_put_them_for_all_pairs_of_origins) {
  for (int round = 0; round < 1'000; ++round) {
    for (int pair = 0; pair < 11 * 11; ++pair) {
      CR2_TEMPLATE plate;
      plate.placement.origin = pair / 11;
      plate.margins = {Number(), Number(), Number(), Number()};
      const CWorldRect pane = Rectangle();
      CR2_PLACEMENT placement = Placement(pair % 11);
      const CWorldPoint point = GetPointInPane(pane, plate, {.x = placement.x, .y = placement.y});
      ASSERT_EQ(point, LiteralZmlPoint(pair / 11, pane, plate.margins, placement.x, placement.y))
          << pair / 11;
      placement.x = point.x;
      placement.y = point.y;
      const BOUNDS before = Bounds();
      BOUNDS frame = before;
      GetFramePosition(placement, frame);
      ASSERT_EQ(frame, LiteralZmlFrame(pair % 11, point.x, point.y, placement.width,
                                       placement.height, before))
          << pair / 11 << " and " << pair % 11;
    }
  }
}

}  // namespace
