#include "cutting/frame/frame_map.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace rastrel::cutting {
namespace {

const FrameMap Perspective{{1.01, 0.03, 12, -0.02, 0.99, -7, 3e-4, -2e-4, 1}};
const FrameMap Affine{{1.1, 0.2, 5, -0.1, 0.9, 6, 0, 0, 1}};

Point On(Point a, const Segment& s, double t) {
  const double u = 1 - t;
  return {u * u * u * a.x + 3 * u * u * t * s.first.x + 3 * u * t * t * s.second.x +
              t * t * t * s.end.x,
          u * u * u * a.y + 3 * u * u * t * s.first.y + 3 * u * t * t * s.second.y +
              t * t * t * s.end.y};
}

double DistanceTo(Point p, Point a, Point b) {
  const double square = std::pow(Distance(a, b), 2);
  double t = square == 0 ? 0 : ((p.x - a.x) * (b.x - a.x) + (p.y - a.y) * (b.y - a.y)) / square;
  t = std::clamp(t, 0.0, 1.0);
  return Distance(p, {a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)});
}

double DistanceTo(Point p, const std::vector<Point>& line) {
  double nearest = 1e9;
  for (std::size_t i = 1; i < line.size(); ++i)
    nearest = std::min(nearest, DistanceTo(p, line[i - 1], line[i]));
  return nearest;
}

TEST(FrameMap, at_a_point_is_its_affine_form_there) {
  const Point at{100, 50};
  const Transform form = Perspective.At(at);
  EXPECT_LE(Distance(form.Apply(at), Perspective.Apply(at)), 1e-12);
  const Point near{100.001, 49.999};
  EXPECT_LE(Distance(form.Apply(near), Perspective.Apply(near)), 1e-8);
}

TEST(FrameMap, chained_maps_by_the_first_and_then_the_second) {
  const Point point{70, 30};
  EXPECT_LE(
      Distance(Chained(Affine, Perspective).Apply(point), Perspective.Apply(Affine.Apply(point))),
      1e-9);
}

TEST(Mapped, keeps_lines_as_lines) {
  const Contour square{.start = {0, 0},
                       .segments = {LineTo({100, 0}), LineTo({100, 100}), LineTo({0, 100})},
                       .closed = true};
  const Contour mapped = Mapped(square, Perspective);
  ASSERT_EQ(mapped.segments.size(), 3U);
  EXPECT_TRUE(mapped.closed);
  EXPECT_EQ(mapped.start, Perspective.Apply({0, 0}));
  EXPECT_EQ(mapped.segments[1], LineTo(Perspective.Apply({100, 100})));
}

TEST(Mapped, keeps_one_curve_as_one_under_an_affine_map) {
  const Contour curve{.start = {0, 0}, .segments = {CurveTo({0, 40}, {60, 40}, {60, 0})}};
  const Contour mapped = Mapped(curve, Affine);
  ASSERT_EQ(mapped.segments.size(), 1U);
  EXPECT_LE(Distance(mapped.segments[0].first, Affine.Apply({0, 40})), 1e-12);
}

TEST(Mapped, has_curves_within_the_tolerance_of_the_true_image) {
  std::mt19937 random(23);
  std::uniform_real_distribution<double> place(0, 600);
  std::size_t most = 0;
  for (int round = 0; round < 100; ++round) {
    const auto point = [&] { return Point{place(random), place(random)}; };
    const Point start = point();
    const Segment curve = CurveTo(point(), point(), point());
    const Contour mapped = Mapped({.start = start, .segments = {curve}}, Perspective);
    EXPECT_EQ(mapped.segments.back().end, Perspective.Apply(curve.end));
    most = std::max(most, mapped.segments.size());
    const auto line = Flatten(mapped, 0.0005);
    for (int step = 0; step <= 200; ++step)
      ASSERT_LE(DistanceTo(Perspective.Apply(On(start, curve, step / 200.0)), line),
                CurveTolerance + 0.0005);
  }
  // A page-wide curve under a strong perspective takes a few dozen pieces, and no more.
  EXPECT_GT(most, 1U);
  EXPECT_LE(most, 64U);
}

TEST(Mapped, splits_a_curve_more_for_a_finer_tolerance) {
  const Contour curve{.start = {0, 0}, .segments = {CurveTo({0, 400}, {600, 400}, {600, 0})}};
  const std::size_t coarse = Mapped(curve, Perspective, 0.5).segments.size();
  const std::size_t fine = Mapped(curve, Perspective, 0.0005).segments.size();
  EXPECT_LT(coarse, fine);
  EXPECT_LE(Mapped(curve, Perspective, 0).segments.size(), 1024U);
}

TEST(Mapped, moves_the_paths_marks_and_page_of_a_job) {
  CutJob job{.width = 200, .height = 100, .paths = {}};
  job.paths.push_back({.contours = {{.start = {10, 10}, .segments = {LineTo({20, 10})}}}});
  job.marks.push_back(
      {.center = {5, 5}, .shape = RegistrationMark::Shape::Corner, .size = 6, .rotation = 90});
  // A quarter turn counterclockwise, twice as large, moved by (300, 10).
  const auto mapped = Mapped(job, FrameMap{{0, -2, 300, 2, 0, 10, 0, 0, 1}});
  ASSERT_TRUE(mapped);
  EXPECT_EQ(mapped->paths[0].contours[0].start, (Point{280, 30}));
  EXPECT_EQ(mapped->paths[0].contours[0].segments[0].end, (Point{280, 50}));
  EXPECT_EQ(mapped->marks[0].center, (Point{290, 20}));
  EXPECT_NEAR(mapped->marks[0].size, 12, 1e-12);
  EXPECT_NEAR(mapped->marks[0].rotation, 180, 1e-12);
  EXPECT_EQ(mapped->width, 300);
  EXPECT_EQ(mapped->height, 410);
}

TEST(Mapped, refuses_a_point_beyond_the_horizon) {
  CutJob job{.width = 100, .height = 100, .paths = {}};
  job.paths.push_back({.contours = {{.start = {10, 10}, .segments = {LineTo({-900, 10})}}}});
  // w is 0 at x = -1000, and 1.05 at the page's middle.
  const FrameMap map{{1, 0, 0, 0, 1, 0, 0.001, 0, 1}};
  const auto mapped = Mapped(job, map);
  ASSERT_FALSE(mapped);
  EXPECT_EQ(Describe(mapped.Error()),
            "the map of the marks has no sound image of the point -900,10 of the page");
  job.paths[0].contours[0].segments[0].end.x = -890;
  EXPECT_TRUE(Mapped(job, map));
}

TEST(Mapped, refuses_points_that_are_no_numbers) {
  CutJob job{.width = 100, .height = 100, .paths = {}};
  job.paths.push_back({.contours = {{.start = {std::nan(""), 10}, .segments = {}}}});
  EXPECT_FALSE(Mapped(job, FrameMap{}));
}

}  // namespace
}  // namespace rastrel::cutting
