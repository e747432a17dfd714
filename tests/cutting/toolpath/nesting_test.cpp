#include "cutting/toolpath/nesting.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "tests/cutting/toolpath/shapes.h"

namespace rastrel::cutting {
namespace {

using test::Circle;
using test::Line;
using test::Polygon;
using test::RandomRing;
using test::Rectangle;

constexpr std::size_t None = Nesting::None;

Nesting NestingOfAll(const std::vector<Contour>& contours) {
  std::vector<const Contour*> pointers;
  for (const Contour& contour : contours) pointers.push_back(&contour);
  return NestingOf(pointers);
}

bool HoldsPoint(const std::vector<Point>& ring, Point point) {
  bool inside = false;
  for (std::size_t i = 0, j = ring.size() - 1; i < ring.size(); j = i++) {
    if ((ring[i].y > point.y) != (ring[j].y > point.y) &&
        point.x <
            (ring[j].x - ring[i].x) * (point.y - ring[i].y) / (ring[j].y - ring[i].y) + ring[i].x)
      inside = !inside;
  }
  return inside;
}

// Each contour against each: the rings that hold its start, counted. Right for contours that
// neither touch nor cross.
std::vector<int> LiteralDepths(const std::vector<Contour>& contours) {
  std::vector<int> depths;
  for (const Contour& contour : contours) {
    int depth = 0;
    for (const Contour& other : contours) {
      if (&other != &contour && other.closed && HoldsPoint(Flatten(other, 0.02), contour.start))
        ++depth;
    }
    depths.push_back(depth);
  }
  return depths;
}

TEST(NestingOf, no_contour_has_no_nesting) { EXPECT_TRUE(NestingOf({}).parent.empty()); }

TEST(NestingOf, a_ring_in_a_ring_in_a_ring_is_an_outline_a_hole_and_an_island) {
  const Nesting nesting = NestingOfAll({Circle({50, 50}, 10), Rectangle(0, 0, 100, 100),
                                        Circle({50, 50}, 30), Line({50, 48}, {50, 52})});
  EXPECT_EQ(nesting.depth, (std::vector<int>{2, 0, 1, 3}));
  EXPECT_EQ(nesting.parent, (std::vector<std::size_t>{2, None, 1, 0}));
}

TEST(NestingOf, rings_side_by_side_and_above_each_other_hold_nothing) {
  const Nesting nesting = NestingOfAll({Rectangle(0, 0, 10, 10), Rectangle(0, 20, 10, 30),
                                        Rectangle(20, 0, 30, 10), Rectangle(2, 12, 8, 18)});
  EXPECT_EQ(nesting.depth, (std::vector<int>{0, 0, 0, 0}));
}

TEST(NestingOf, the_direction_of_a_ring_says_nothing) {
  const Nesting nesting = NestingOfAll(
      {Reversed(Rectangle(0, 0, 100, 100)), Reversed(Circle({50, 50}, 30)), Circle({50, 50}, 10)});
  EXPECT_EQ(nesting.depth, (std::vector<int>{0, 1, 2}));
}

TEST(NestingOf, plates_with_a_common_edge_lie_side_by_side) {
  std::vector<Contour> plates;
  for (int row = 0; row < 4; ++row) {
    for (int column = 0; column < 4; ++column)
      plates.push_back(Rectangle(column * 10, row * 10, column * 10 + 10, row * 10 + 10));
  }
  EXPECT_EQ(NestingOfAll(plates).depth, std::vector<int>(16, 0));
}

TEST(NestingOf, a_ring_that_shares_an_edge_with_the_one_around_it_lies_within) {
  const Contour outer = Rectangle(0, 0, 100, 100);
  const std::vector<Contour> inner{Rectangle(0, 20, 20, 40), Rectangle(80, 20, 100, 40),
                                   Rectangle(40, 0, 60, 20), Rectangle(40, 80, 60, 100),
                                   Rectangle(0, 0, 20, 10)};
  for (const Contour& ring : inner) {
    EXPECT_EQ(NestingOfAll({outer, ring}).depth, (std::vector<int>{0, 1}));
    EXPECT_EQ(NestingOfAll({ring, outer}).depth, (std::vector<int>{1, 0}));
  }
}

TEST(NestingOf, duplicates_lie_at_one_depth) {
  const Contour ring = Rectangle(10, 10, 20, 20);
  const Contour turned = Polygon({{20, 20}, {20, 10}, {10, 10}, {10, 20}});
  const Nesting nesting =
      NestingOfAll({ring, Rectangle(0, 0, 30, 30), turned, ring, Circle({15, 15}, 2)});
  EXPECT_EQ(nesting.depth, (std::vector<int>{1, 0, 1, 1, 2}));
}

TEST(NestingOf, an_upright_line_and_a_point_are_found_in_their_ring) {
  const Contour point{.start = {5, 5}, .segments = {}, .closed = false};
  const Nesting nesting =
      NestingOfAll({Rectangle(0, 0, 10, 10), Line({3, 2}, {3, 8}), point, Line({20, 0}, {20, 9})});
  EXPECT_EQ(nesting.depth, (std::vector<int>{0, 1, 1, 0}));
}

TEST(NestingOf, an_open_path_holds_nothing) {
  Contour open = Rectangle(0, 0, 10, 10);
  open.closed = false;
  EXPECT_EQ(NestingOfAll({open, Circle({5, 5}, 1)}).depth, (std::vector<int>{0, 0}));
}

TEST(NestingOf, it_says_the_same_as_each_contour_against_each) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> place(0, 1000);
  for (int round = 0; round < 40; ++round) {
    std::vector<Contour> contours;
    // Rings around one center, some of them curves. They have so many corners that no chord of a
    // ring reaches the next one within.
    for (int cluster = 0; cluster < 25; ++cluster) {
      const Point center{200.0 * (cluster % 5) + 100, 200.0 * (cluster / 5) + 100};
      const int rings = std::uniform_int_distribution<int>(0, 6)(random);
      for (int i = 0; i < rings; ++i) {
        const double radius = 10.0 + 14 * i;
        contours.push_back(i % 3 == 2 ? Circle(center, radius)
                                      : RandomRing(random, center, radius - 4, radius + 4,
                                                   24 + static_cast<int>(random() % 24)));
        if (random() % 2 == 0) contours.back() = Reversed(contours.back());
      }
    }
    for (int i = 0; i < 30; ++i) {
      const Point dot{place(random), place(random)};
      contours.push_back({.start = dot, .segments = {}, .closed = false});
    }
    std::shuffle(contours.begin(), contours.end(), random);
    EXPECT_EQ(NestingOfAll(contours).depth, LiteralDepths(contours)) << "round " << round;
  }
}

TEST(NestingOf, a_hundred_thousand_rings_around_each_other_are_nested) {
  std::vector<Contour> rings;
  constexpr int Count = 100'000;
  for (int i = 0; i < Count; ++i) {
    const double half = 0.01 * (i + 1);
    rings.push_back(Rectangle(-half, -half, half, half));
  }
  const Nesting nesting = NestingOfAll(rings);
  for (int i = 0; i < Count; ++i) ASSERT_EQ(nesting.depth[i], Count - 1 - i);
}

TEST(NestingOf, hostile_contours_end_without_a_crash) {
  std::mt19937 random(11);
  const double special[] = {0,
                            1,
                            -1,
                            1e300,
                            -1e300,
                            std::numeric_limits<double>::quiet_NaN(),
                            std::numeric_limits<double>::infinity(),
                            MaximumCoordinate,
                            1e-9};
  for (int round = 0; round < 500; ++round) {
    std::vector<Contour> contours;
    for (int i = 0; i < 20; ++i) {
      const auto value = [&] {
        return random() % 4 == 0 ? special[random() % std::size(special)]
                                 : static_cast<double>(random() % 8);
      };
      Contour contour{.start = {value(), value()}, .segments = {}, .closed = random() % 3 != 0};
      for (auto k = random() % 6; k > 0; --k) {
        contour.segments.push_back(
            random() % 2 == 0
                ? LineTo({value(), value()})
                : CurveTo({value(), value()}, {value(), value()}, {value(), value()}));
      }
      contours.push_back(contour);
    }
    const Nesting nesting = NestingOfAll(contours);
    ASSERT_EQ(nesting.depth.size(), contours.size());
    for (std::size_t i = 0; i < contours.size(); ++i) {
      ASSERT_GE(nesting.depth[i], 0);
      const std::size_t parent = nesting.parent[i];
      ASSERT_EQ(nesting.depth[i], parent == None ? 0 : nesting.depth[parent] + 1);
    }
  }
}

TEST(IsOnAnySheet, a_hundred_meters_are_the_limit) {
  EXPECT_TRUE(IsOnAnySheet(Line({0, 0}, {MaximumCoordinate, -MaximumCoordinate})));
  EXPECT_FALSE(IsOnAnySheet(Line({0, 0}, {MaximumCoordinate + 1, 0})));
  EXPECT_FALSE(IsOnAnySheet(Line({0, std::nan("")}, {0, 0})));
  Contour bent = Line({0, 0}, {1, 1});
  bent.segments = {CurveTo({0, std::numeric_limits<double>::infinity()}, {0, 0}, {1, 1})};
  EXPECT_FALSE(IsOnAnySheet(bent));
}

}  // namespace
}  // namespace rastrel::cutting
