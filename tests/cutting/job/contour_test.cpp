#include "cutting/job/contour.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

#include "cutting/job/cut_job.h"

namespace rastrel::cutting {
namespace {

// A quarter of a circle by a Bézier curve is at most 0.03 % of the radius beside it.
constexpr double Kappa = 0.5522847498307936;

Contour Circle(Point center, double radius) {
  const double k = Kappa * radius;
  const auto at = [&](double x, double y) { return Point{center.x + x, center.y + y}; };
  return {.start = at(radius, 0),
          .segments = {CurveTo(at(radius, k), at(k, radius), at(0, radius)),
                       CurveTo(at(-k, radius), at(-radius, k), at(-radius, 0)),
                       CurveTo(at(-radius, -k), at(-k, -radius), at(0, -radius)),
                       CurveTo(at(k, -radius), at(radius, -k), at(radius, 0))},
          .closed = true};
}

Contour Square(double side) {
  return {.start = {0, 0},
          .segments = {LineTo({side, 0}), LineTo({side, side}), LineTo({0, side})},
          .closed = true};
}

double DistanceToLine(Point p, Point a, Point b) {
  const double length = Distance(a, b);
  if (length == 0) return Distance(p, a);
  double t = ((p.x - a.x) * (b.x - a.x) + (p.y - a.y) * (b.y - a.y)) / (length * length);
  t = std::clamp(t, 0.0, 1.0);
  return Distance(p, {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t});
}

TEST(Contour, of_a_square_has_its_length_area_and_box) {
  EXPECT_DOUBLE_EQ(LengthOf(Square(10)), 40);
  EXPECT_DOUBLE_EQ(AreaOf(Square(10)), 100);
  EXPECT_EQ(BoxOf(Square(10)), (Box{0, 0, 10, 10}));
}

TEST(Contour, of_a_circle_has_its_length_area_and_box) {
  const Contour circle = Circle({30, 20}, 10);
  EXPECT_NEAR(LengthOf(circle), 20 * std::numbers::pi, 0.02);
  EXPECT_NEAR(AreaOf(circle), 100 * std::numbers::pi, 0.1);
  const Box box = BoxOf(circle);
  EXPECT_NEAR(box.left, 20, 1e-9);
  EXPECT_NEAR(box.right, 40, 1e-9);
  EXPECT_NEAR(box.bottom, 10, 1e-9);
  EXPECT_NEAR(box.top, 30, 1e-9);
}

TEST(Contour, box_reaches_where_a_curve_turns_and_not_to_its_control_points) {
  // y = 3 t (1 - t)² 4 + 3 t² (1 - t) 4 = 12 t (1 - t): 3 at the middle.
  const Contour arch{.start = {0, 0}, .segments = {CurveTo({0, 4}, {6, 4}, {6, 0})}};
  const Box box = BoxOf(arch);
  EXPECT_DOUBLE_EQ(box.top, 3);
  EXPECT_DOUBLE_EQ(box.left, 0);
  EXPECT_DOUBLE_EQ(box.right, 6);
}

TEST(Contour, open_one_has_no_line_back) {
  Contour open = Square(10);
  open.closed = false;
  EXPECT_DOUBLE_EQ(LengthOf(open), 30);
  EXPECT_EQ(open.End(), (Point{0, 10}));
  EXPECT_EQ(Square(10).End(), (Point{0, 0}));
}

TEST(Contour, flat_lines_lie_within_the_tolerance_of_random_curves) {
  std::mt19937 random(17);
  std::uniform_real_distribution<double> place(-50, 50);
  for (int i = 0; i < 200; ++i) {
    const auto point = [&] { return Point{place(random), place(random)}; };
    const Point start = point();
    const Segment curve = CurveTo(point(), point(), point());
    const std::vector<Point> flat = Flatten({.start = start, .segments = {curve}}, 0.02);
    ASSERT_GE(flat.size(), 2U);
    EXPECT_EQ(flat.front(), start);
    EXPECT_EQ(flat.back(), curve.end);
    for (int step = 0; step <= 1000; ++step) {
      const double t = step / 1000.0;
      const double u = 1 - t;
      const Point on{u * u * u * start.x + 3 * u * u * t * curve.first.x +
                         3 * u * t * t * curve.second.x + t * t * t * curve.end.x,
                     u * u * u * start.y + 3 * u * u * t * curve.first.y +
                         3 * u * t * t * curve.second.y + t * t * t * curve.end.y};
      double nearest = 1e9;
      for (std::size_t k = 1; k < flat.size(); ++k)
        nearest = std::min(nearest, DistanceToLine(on, flat[k - 1], flat[k]));
      ASSERT_LE(nearest, 0.02 + 1e-9);
    }
  }
}

TEST(Contour, a_circle_of_a_hundred_meters_is_flattened_within_the_tolerance) {
  constexpr double Tolerance = 0.0025;
  const Contour circle = Circle({0, 0}, 100'000);
  const Point start = circle.start;
  const Segment curve = circle.segments.front();
  const std::vector<Point> flat = Flatten({.start = start, .segments = {curve}}, Tolerance);
  const std::size_t lines = flat.size() - 1;
  for (std::size_t i = 0; i < lines; ++i) {
    // Lines are even in the curve's parameter; the middle of a part is the farthest from its line.
    const double t = (static_cast<double>(i) + 0.5) / static_cast<double>(lines);
    const double u = 1 - t;
    const Point on{u * u * u * start.x + 3 * u * u * t * curve.first.x +
                       3 * u * t * t * curve.second.x + t * t * t * curve.end.x,
                   u * u * u * start.y + 3 * u * u * t * curve.first.y +
                       3 * u * t * t * curve.second.y + t * t * t * curve.end.y};
    ASSERT_LE(DistanceToLine(on, flat[i], flat[i + 1]), Tolerance);
  }
}

TEST(Contour, closed_one_is_flattened_without_its_first_point_again) {
  EXPECT_EQ(Flatten(Square(10), 0.01).size(), 4U);
  Contour closed = Square(10);
  closed.segments.push_back(LineTo({0, 0}));
  EXPECT_EQ(Flatten(closed, 0.01).size(), 4U);
}

TEST(Contour, of_coordinates_that_are_no_numbers_is_flattened_in_bounds) {
  const double nan = std::nan("");
  const Contour bad{.start = {nan, 0},
                    .segments = {CurveTo({1e300, nan}, {-1e300, 1e300}, {1, 1})}};
  EXPECT_LE(Flatten(bad, 0.01).size(), 4098U);
}

TEST(Contour, reversed_twice_is_the_same) {
  for (const bool closed : {false, true}) {
    Contour contour = Circle({0, 0}, 5);
    contour.closed = closed;
    EXPECT_EQ(Reversed(Reversed(contour)), contour);
    Contour square = Square(10);
    square.closed = closed;
    EXPECT_EQ(Reversed(Reversed(square)), square);
    EXPECT_DOUBLE_EQ(AreaOf(Reversed(square)), -AreaOf(square));
    EXPECT_DOUBLE_EQ(LengthOf(Reversed(square)), LengthOf(square));
  }
}

TEST(Contour, transformed_is_turned_scaled_and_moved) {
  // A quarter turn counterclockwise, twice as large, moved.
  const Transform turn{.a = 0, .b = 2, .c = -2, .d = 0, .e = 100, .f = 10};
  EXPECT_EQ(turn.Apply({3, 1}), (Point{98, 16}));
  const Contour moved = Transformed(Circle({0, 0}, 5), turn);
  EXPECT_NEAR(AreaOf(moved), 4 * AreaOf(Circle({0, 0}, 5)), 1e-9);
  EXPECT_NEAR(BoxOf(moved).left, 90, 1e-9);
}

TEST(CutJob, operations_have_their_names) {
  for (int i = 0; i <= static_cast<int>(Operation::Ignore); ++i) {
    const auto operation = static_cast<Operation>(i);
    EXPECT_EQ(OperationOf(NameOf(operation)), operation);
  }
  EXPECT_EQ(NameOf(Operation::CutHalf), "cut-half");
  EXPECT_EQ(OperationOf("Cut"), std::nullopt);
  EXPECT_EQ(OperationOf(""), std::nullopt);
}

TEST(CutJob, tool_box_is_around_the_paths_that_a_tool_follows) {
  CutJob job{.width = 100, .height = 100, .paths = {}};
  EXPECT_TRUE(ToolBoxOf(job).IsEmpty());
  job.paths.push_back({.contours = {Square(10)}});
  job.paths.push_back({.contours = {Square(90)}, .operation = Operation::Print});
  job.paths.push_back({.contours = {Square(80)}, .operation = Operation::Ignore});
  EXPECT_EQ(ToolBoxOf(job), (Box{0, 0, 10, 10}));
}

}  // namespace
}  // namespace rastrel::cutting
