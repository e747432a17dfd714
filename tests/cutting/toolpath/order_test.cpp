#include "cutting/toolpath/order.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>

#include "cutting/toolpath/tour.h"
#include "tests/cutting/toolpath/shapes.h"

namespace rastrel::cutting {
namespace {

using test::Circle;
using test::Line;
using test::RandomRing;
using test::Rectangle;

CutPath PathOf(std::vector<Contour> contours, Operation operation = Operation::Cut, int order = 0,
               std::string tool = {}) {
  CutPath path{.contours = std::move(contours), .operation = operation};
  path.settings.order = order;
  path.settings.tool = std::move(tool);
  return path;
}

OrderResult Order(const CutJob& job) { return OrderLines(job, ToolLinesOf(job), {0, 0}); }

std::vector<std::size_t> PathsOf(const OrderResult& result) {
  std::vector<std::size_t> paths;
  for (const ToolLine& line : result.lines) paths.push_back(line.path);
  return paths;
}

// The shortest way of all orders, directions and starts.
double ShortestTravel(const std::vector<Contour>& contours, std::vector<bool>& isUsed, Point at) {
  double least = std::numeric_limits<double>::infinity();
  for (std::size_t i = 0; i < contours.size(); ++i) {
    if (isUsed[i]) continue;
    isUsed[i] = true;
    const Contour& contour = contours[i];
    for (std::size_t k = 0; k < (contour.closed ? StartCount(contour) : 2); ++k) {
      const Point in = contour.closed ? StartAt(contour, k)
                       : k == 0       ? contour.start
                                      : contour.End();
      const Point out = contour.closed ? in : k == 0 ? contour.End() : contour.start;
      least = std::min(least, Distance(at, in) + ShortestTravel(contours, isUsed, out));
    }
    isUsed[i] = false;
  }
  return std::isinf(least) ? 0 : least;
}

TEST(OrderLines, a_job_without_paths_has_no_travel) {
  const OrderResult result = Order({});
  EXPECT_TRUE(result.lines.empty());
  EXPECT_EQ(result.travelAfter, 0);
}

TEST(OrderLines, the_settings_order_comes_before_a_short_way) {
  const CutJob job{.paths = {PathOf({Line({0, 0}, {1, 0})}, Operation::Cut, 2),
                             PathOf({Line({900, 0}, {901, 0})}, Operation::Cut, -1),
                             PathOf({Line({1, 0}, {2, 0})}, Operation::Crease, 1)}};
  EXPECT_EQ(PathsOf(Order(job)), (std::vector<std::size_t>{1, 2, 0}));
}

TEST(OrderLines, cutting_through_comes_last_of_the_operations) {
  std::vector<CutPath> paths;
  for (const Operation operation :
       {Operation::Cut, Operation::CutHalf, Operation::Perforate, Operation::Crease,
        Operation::Engrave, Operation::Drill, Operation::Mark})
    paths.push_back(PathOf({Line({0, 0}, {1, 0})}, operation));
  EXPECT_EQ(PathsOf(Order({.paths = paths})), (std::vector<std::size_t>{6, 5, 4, 3, 2, 1, 0}));
}

TEST(OrderLines, printed_and_ignored_paths_have_no_turn) {
  const CutJob job{.paths = {PathOf({Line({0, 0}, {1, 0})}, Operation::Print),
                             PathOf({Line({0, 0}, {1, 0})}, Operation::Ignore),
                             PathOf({Line({0, 0}, {1, 0})})}};
  EXPECT_EQ(PathsOf(Order(job)), (std::vector<std::size_t>{2}));
}

TEST(OrderLines, inner_contours_come_before_the_one_around_them) {
  const CutJob job{.paths = {PathOf({Rectangle(0, 0, 100, 100)}), PathOf({Circle({50, 50}, 40)}),
                             PathOf({Circle({50, 50}, 20)}), PathOf({Line({45, 50}, {55, 50})})}};
  EXPECT_EQ(PathsOf(Order(job)), (std::vector<std::size_t>{3, 2, 1, 0}));
}

TEST(OrderLines, one_tool_finishes_before_the_next_begins) {
  const CutJob job{.paths = {PathOf({Line({0, 0}, {1, 0})}, Operation::Cut, 0, "a"),
                             PathOf({Line({2, 0}, {3, 0})}, Operation::Cut, 0, "b"),
                             PathOf({Line({4, 0}, {5, 0})}, Operation::Cut, 0, "a")}};
  EXPECT_EQ(PathsOf(Order(job)), (std::vector<std::size_t>{0, 2, 1}));
}

TEST(OrderLines, the_tool_of_inner_contours_comes_first) {
  const CutJob job{.paths = {PathOf({Rectangle(0, 0, 9, 9)}, Operation::Cut, 0, "a"),
                             PathOf({Rectangle(2, 2, 4, 4)}, Operation::Cut, 0, "b"),
                             PathOf({Rectangle(20, 0, 29, 9)}, Operation::Cut, 0, "a")}};
  EXPECT_EQ(PathsOf(Order(job)), (std::vector<std::size_t>{1, 0, 2}));
}

TEST(OrderLines, inner_before_outer_is_worth_a_change_of_the_tool) {
  const CutJob job{.paths = {PathOf({Rectangle(0, 0, 9, 9)}, Operation::Cut, 0, "a"),
                             PathOf({Rectangle(2, 2, 7, 7)}, Operation::Cut, 0, "b"),
                             PathOf({Rectangle(4, 4, 5, 5)}, Operation::Cut, 0, "a")}};
  EXPECT_EQ(PathsOf(Order(job)), (std::vector<std::size_t>{2, 1, 0}));
}

TEST(OrderLines, an_open_path_is_reversed_where_its_end_is_nearer) {
  const OrderResult result = Order({.paths = {PathOf({Line({50, 0}, {5, 0})})}});
  EXPECT_EQ(result.lines.at(0).contour, Line({5, 0}, {50, 0}));
  EXPECT_EQ(result.travelBefore, 50);
  EXPECT_EQ(result.travelAfter, 5);
}

TEST(OrderLines, a_closed_path_begins_at_its_nearest_corner) {
  const Contour ring = Reversed(Rectangle(10, 0, 40, 30));
  const OrderResult result =
      Order({.paths = {PathOf({Line({0, 30}, {1, 30})}, Operation::Crease), PathOf({ring})}});
  EXPECT_EQ(result.lines.at(1).contour.start, (Point{10, 30}));
  EXPECT_NEAR(AreaOf(result.lines.at(1).contour), AreaOf(ring), 1e-9);
  EXPECT_NEAR(LengthOf(result.lines.at(1).contour), 120, 1e-9);
}

TEST(OrderLines, an_order_that_is_already_short_is_kept) {
  std::vector<Contour> row;
  for (int i = 0; i < 50; ++i) row.push_back(Line({2.0 * i, 0}, {2.0 * i + 1, 0}));
  const CutJob job{.paths = {PathOf(row)}};
  EXPECT_EQ(Order(job).lines, ToolLinesOf(job));
}

TEST(OrderLines, the_way_is_near_the_shortest_of_all_orders) {
  std::mt19937 random(3);
  std::uniform_real_distribution<double> place(0, 100);
  double found = 0;
  double shortest = 0;
  for (int round = 0; round < 30; ++round) {
    std::vector<Contour> contours;
    for (int i = 0; i < 5; ++i) {
      const Point at{place(random), place(random)};
      contours.push_back(i % 2 == 0 ? Line(at, {place(random), place(random)})
                                    : Rectangle(at.x, at.y, at.x + 0.01, at.y + 0.01));
    }
    std::vector<bool> isUsed(contours.size());
    const double least = ShortestTravel(contours, isUsed, {0, 0});
    const double travel = Order({.paths = {PathOf(contours)}}).travelAfter;
    ASSERT_GE(travel, least - 1e-9);
    ASSERT_LE(travel, 2 * least);
    found += travel;
    shortest += least;
  }
  // The nearest next one alone is about a quarter longer than the shortest way.
  EXPECT_LE(found, 1.15 * shortest);
}

TEST(OrderLines, every_line_comes_once_and_inner_before_outer_in_random_jobs) {
  std::mt19937 random(5);
  for (int round = 0; round < 30; ++round) {
    std::vector<Contour> contours;
    for (int i = 0; i < 60; ++i) {
      const Point center{100.0 * (i % 6), 100.0 * (i / 6 % 5)};
      contours.push_back(RandomRing(random, center, 10 + 20 * (i / 30), 18 + 20 * (i / 30), 40));
    }
    std::shuffle(contours.begin(), contours.end(), random);
    std::vector<CutPath> paths;
    for (const Contour& contour : contours) paths.push_back(PathOf({contour}));
    const OrderResult result = Order({.paths = paths});
    ASSERT_EQ(result.lines.size(), contours.size());
    std::vector<bool> isDone(contours.size());
    for (const ToolLine& line : result.lines) {
      ASSERT_FALSE(isDone[line.path]);
      isDone[line.path] = true;
      const Box box = BoxOf(line.contour);
      for (std::size_t i = 0; i < contours.size(); ++i) {
        const Box other = BoxOf(contours[i]);
        const bool holds = other.left > box.left && other.right < box.right &&
                           other.bottom > box.bottom && other.top < box.top;
        ASSERT_TRUE(!holds || isDone[i]);
      }
    }
    EXPECT_LE(result.travelAfter, result.travelBefore);
    EXPECT_NEAR(result.travelAfter, TravelOf(result.lines, {0, 0}), 1e-6);
  }
}

TEST(OrderLines, a_hundred_thousand_paths_take_a_fraction_of_their_travel) {
  std::mt19937 random(9);
  std::uniform_real_distribution<double> place(0, 1000);
  std::vector<Contour> contours;
  for (int i = 0; i < 100'000; ++i) {
    const Point at{place(random), place(random)};
    contours.push_back(Line(at, {at.x + 0.5, at.y}));
  }
  const OrderResult result = Order({.paths = {PathOf(contours)}});
  EXPECT_EQ(result.lines.size(), contours.size());
  // A tour through n random points in a square is about 0.72 sqrt(n area) long.
  EXPECT_LT(result.travelAfter, 1.25 * 0.7124 * std::sqrt(100'000.0) * 1000);
}

TEST(OrderLines, equal_points_and_deep_nests_take_no_longer) {
  std::vector<Contour> contours(20'000, Line({5, 5}, {5, 5}));
  EXPECT_NEAR(Order({.paths = {PathOf(contours)}}).travelAfter, std::sqrt(50), 1e-9);
  contours.clear();
  for (int i = 0; i < 20'000; ++i) {
    const double half = 0.01 * (i + 1);
    contours.push_back(Rectangle(500 - half, 500 - half, 500 + half, 500 + half));
  }
  EXPECT_EQ(Order({.paths = {PathOf(contours)}}).lines.size(), contours.size());
}

TEST(OrderLines, lines_that_are_on_no_sheet_come_last_and_unchanged) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const CutJob job{.paths = {PathOf({Line({nan, 0}, {1, 1}), Line({1, 1}, {1e300, 0})}),
                             PathOf({Line({3, 0}, {1, 0})}), PathOf({Contour{}})}};
  const OrderResult result = Order(job);
  EXPECT_EQ(PathsOf(result), (std::vector<std::size_t>{2, 1, 0, 0}));
  EXPECT_TRUE(std::isnan(result.lines.at(2).contour.start.x));
  EXPECT_EQ(result.lines.at(3).contour.segments.at(0).end.x, 1e300);
  EXPECT_EQ(result.travelAfter, 1);
}

TEST(StartedAt, curves_keep_their_shape_and_the_line_back_becomes_a_segment) {
  Contour contour{.start = {0, 0},
                  .segments = {LineTo({10, 0}), CurveTo({15, 5}, {15, 5}, {10, 10})},
                  .closed = true};
  const Contour turned = StartedAt(contour, 1);
  EXPECT_EQ(
      turned,
      (Contour{.start = {10, 0},
               .segments = {CurveTo({15, 5}, {15, 5}, {10, 10}), LineTo({0, 0}), LineTo({10, 0})},
               .closed = true}));
  EXPECT_EQ(StartedAt(contour, 0), contour);
  EXPECT_EQ(StartedAt(contour, 3), contour);
  contour.closed = false;
  EXPECT_EQ(StartedAt(contour, 1), contour);
}

}  // namespace
}  // namespace rastrel::cutting
