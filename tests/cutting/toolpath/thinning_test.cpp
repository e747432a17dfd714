#include "cutting/toolpath/thinning.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>

#include "tests/cutting/toolpath/shapes.h"

namespace rastrel::cutting {
namespace {

using test::Circle;
using test::Polygon;
using test::RandomRing;
using test::Rectangle;

double DistanceToLine(Point point, Point from, Point to) {
  const double x = to.x - from.x;
  const double y = to.y - from.y;
  const double square = x * x + y * y;
  const double t =
      square > 0 ? std::clamp(((point.x - from.x) * x + (point.y - from.y) * y) / square, 0.0, 1.0)
                 : 0;
  return Distance(point, {from.x + x * t, from.y + y * t});
}

std::vector<Point> RingOf(const Contour& contour) {
  std::vector<Point> points{contour.start};
  for (const Segment& segment : contour.segments) points.push_back(segment.end);
  points.push_back(contour.End());
  return points;
}

// The farthest that a place of the first, at tenths of its lines, is from the second.
double FarthestFrom(const Contour& first, const Contour& second) {
  const std::vector<Point> places = RingOf(first);
  const std::vector<Point> lines = RingOf(second);
  double farthest = 0;
  for (std::size_t i = 0; i + 1 < places.size(); ++i) {
    for (int tenth = 0; tenth < 10; ++tenth) {
      const double t = tenth / 10.0;
      const Point place{places[i].x + (places[i + 1].x - places[i].x) * t,
                        places[i].y + (places[i + 1].y - places[i].y) * t};
      double nearest = std::numeric_limits<double>::infinity();
      for (std::size_t k = 0; k + 1 < lines.size(); ++k)
        nearest = std::min(nearest, DistanceToLine(place, lines[k], lines[k + 1]));
      farthest = std::max(farthest, nearest);
    }
  }
  return farthest;
}

TEST(Thinned, corners_farther_apart_than_the_distance_stay) {
  EXPECT_EQ(Thinned(Rectangle(0, 0, 10, 5), 0.1), Rectangle(0, 0, 10, 5));
}

TEST(Thinned, points_on_a_straight_line_go) {
  EXPECT_EQ(Thinned(Polygon({{0, 0}, {1, 0}, {2, 0}, {3, 0}, {3, 4}, {0, 4}}), 0.01),
            Polygon({{0, 0}, {3, 0}, {3, 4}, {0, 4}}));
}

TEST(Thinned, a_point_beside_the_line_by_the_distance_goes_and_by_more_it_stays) {
  const auto bent = [](double aside) {
    return Contour{.start = {0, 0}, .segments = {LineTo({5, aside}), LineTo({10, 0})}};
  };
  EXPECT_EQ(Thinned(bent(0.0999), 0.1).segments.size(), 1U);
  EXPECT_EQ(Thinned(bent(0.1001), 0.1).segments.size(), 2U);
}

TEST(Thinned, a_line_that_goes_out_and_back_keeps_its_tip) {
  const Contour there{.start = {0, 0}, .segments = {LineTo({5, 0}), LineTo({2, 0})}};
  EXPECT_EQ(Thinned(there, 0.1), there);
}

TEST(Thinned, curves_stay_and_lines_between_them_are_thinned) {
  Contour contour = Circle({0, 0}, 10);
  contour.segments.insert(contour.segments.begin() + 1,
                          {LineTo({-1, 10}), LineTo({-2, 10}), LineTo({-3, 10})});
  Contour expected = Circle({0, 0}, 10);
  expected.segments.insert(expected.segments.begin() + 1, LineTo({-3, 10}));
  EXPECT_EQ(Thinned(contour, 0.1), expected);
}

TEST(Thinned, contours_without_lines_or_length_stay) {
  const Contour none{.start = {1, 2}, .segments = {}, .closed = false};
  EXPECT_EQ(Thinned(none, 0.1), none);
  const Contour dot{.start = {1, 2}, .segments = {LineTo({1, 2})}, .closed = true};
  EXPECT_EQ(Thinned(dot, 0.1), dot);
}

TEST(Thinned, neither_line_is_farther_from_the_other_than_the_distance) {
  std::mt19937 random(5);
  std::uniform_real_distribution<double> step(-0.4, 0.6);
  for (const double distance : {0.01, 0.1, 0.5, 3.0}) {
    Contour walk{.start = {0, 0}, .segments = {}, .closed = false};
    for (int i = 0; i < 200; ++i) {
      const Point end = walk.End();
      walk.segments.push_back(LineTo({end.x + step(random), end.y + step(random)}));
    }
    for (const Contour& contour : {walk, RandomRing(random, {0, 0}, 19, 20, 200)}) {
      const Contour thinned = Thinned(contour, distance);
      EXPECT_LE(FarthestFrom(thinned, contour), distance * 1.000001);
      EXPECT_LE(FarthestFrom(contour, thinned), distance * 1.000001);
      EXPECT_EQ(thinned.End(), contour.End());
    }
  }
}

}  // namespace
}  // namespace rastrel::cutting
