#include "cutting/toolpath/kerf.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>

#include "cutting/toolpath/toolpath.h"
#include "tests/cutting/toolpath/distance_transform.h"
#include "tests/cutting/toolpath/shapes.h"

namespace rastrel::cutting {
namespace {

using test::Circle;
using test::Line;
using test::Polygon;
using test::RandomRing;
using test::Rectangle;

constexpr double Tolerance = 0.02;

CutJob JobOf(std::vector<Contour> contours, double kerf) {
  CutPath path{.contours = std::move(contours)};
  path.settings.kerf = kerf;
  return {.width = 100, .height = 100, .paths = {path}};
}

CutJob Offset(const CutJob& job, Corners corners, KerfReport& report) {
  return OffsetByKerf(job, corners, Tolerance, report);
}

std::vector<Contour> OffsetOf(const std::vector<Contour>& contours, double kerf, Corners corners) {
  KerfReport report;
  return Offset(JobOf(contours, kerf), corners, report).paths.at(0).contours;
}

TEST(OffsetByKerf, without_a_kerf_nothing_changes) {
  const CutJob job = JobOf({Circle({50, 50}, 10)}, 0);
  KerfReport report;
  EXPECT_EQ(Offset(job, Corners::Round, report), job);
  EXPECT_EQ(report.moved, 0U);
}

TEST(OffsetByKerf, pointed_corners_make_a_larger_rectangle) {
  const std::vector<Contour> moved = OffsetOf({Rectangle(10, 10, 30, 20)}, 2, Corners::Pointed);
  EXPECT_EQ(moved.at(0), Rectangle(9, 9, 31, 21));
}

TEST(OffsetByKerf, a_pointed_corner_beyond_four_times_the_offset_is_cut_off) {
  // The point of this needle would be 10 mm before its tip.
  const Contour needle = Polygon({{0, -5}, {50, 0}, {0, 5}});
  const Box box = BoxOf(OffsetOf({needle}, 2, Corners::Pointed).at(0));
  EXPECT_GE(box.right, 51 - 1e-3);
  EXPECT_LE(box.right, 54);
}

TEST(OffsetByKerf, round_corners_add_a_quarter_of_a_circle_each) {
  const Contour moved = OffsetOf({Rectangle(10, 10, 30, 20)}, 2, Corners::Round).at(0);
  EXPECT_NEAR(AreaOf(moved), 200 + 60 + std::numbers::pi, 0.05);
  EXPECT_EQ(BoxOf(moved), (Box{9, 9, 31, 21}));
}

TEST(OffsetByKerf, square_corners_are_cut_off_at_half_a_kerf) {
  const Contour moved = OffsetOf({Rectangle(10, 10, 30, 20)}, 2, Corners::Square).at(0);
  // A corner loses the triangle beyond a line across it, 1 mm from the outline's corner:
  // legs of sqrt(2) (sqrt(2) - 1).
  const double leg = std::numbers::sqrt2 * (std::numbers::sqrt2 - 1);
  EXPECT_NEAR(AreaOf(moved), 22 * 12 - 4 * leg * leg / 2, 1e-2);
}

TEST(OffsetByKerf, a_hole_shrinks_and_an_island_grows) {
  const std::vector<Contour> moved =
      OffsetOf({Rectangle(10, 10, 60, 60), Rectangle(20, 20, 50, 50), Rectangle(30, 30, 40, 40)}, 1,
               Corners::Pointed);
  EXPECT_EQ(moved, (std::vector<Contour>{Rectangle(9.5, 9.5, 60.5, 60.5),
                                         Rectangle(20.5, 20.5, 49.5, 49.5),
                                         Rectangle(29.5, 29.5, 40.5, 40.5)}));
}

TEST(OffsetByKerf, another_operation_around_it_makes_no_hole_of_an_outline) {
  CutJob job = JobOf({Rectangle(20, 20, 30, 30)}, 2);
  job.paths.push_back({.contours = {Rectangle(0, 0, 90, 90)}, .operation = Operation::Crease});
  KerfReport report;
  const CutJob moved = Offset(job, Corners::Pointed, report);
  EXPECT_EQ(moved.paths.at(0).contours.at(0), Rectangle(19, 19, 31, 31));
  EXPECT_EQ(moved.paths.at(1), job.paths.at(1));
}

TEST(OffsetByKerf, a_path_runs_as_it_did_and_begins_near_its_start) {
  const Contour ring = Reversed(Polygon({{30, 20}, {10, 20}, {10, 10}, {30, 10}}));
  const Contour moved = OffsetOf({ring}, 2, Corners::Pointed).at(0);
  EXPECT_EQ(moved.start, (Point{31, 21}));
  EXPECT_LT(AreaOf(moved), 0);
}

TEST(OffsetByKerf, a_hole_narrower_than_the_kerf_vanishes_and_is_reported) {
  KerfReport report;
  const CutJob job = JobOf({Rectangle(0, 0, 50, 50), Rectangle(10, 10, 40, 10.5)}, 0.5);
  EXPECT_EQ(Offset(job, Corners::Round, report).paths.at(0).contours.size(), 1U);
  ASSERT_EQ(report.vanished.size(), 1U);
  EXPECT_EQ(report.vanished[0].path, 0U);
  EXPECT_EQ(report.vanished[0].contour, 1U);
  EXPECT_EQ(report.vanished[0].place, (Point{25, 10.25}));
  EXPECT_NEAR(report.vanished[0].area, 15, 1e-9);
  EXPECT_EQ(report.moved, 1U);
}

TEST(OffsetByKerf, a_hole_with_a_waist_falls_into_two) {
  const Contour bone = Polygon({{10, 10},
                                {18, 10},
                                {18, 14},
                                {22, 14},
                                {22, 10},
                                {30, 10},
                                {30, 20},
                                {22, 20},
                                {22, 14.5},
                                {18, 14.5},
                                {18, 20},
                                {10, 20}});
  EXPECT_EQ(OffsetOf({Rectangle(0, 0, 50, 50), bone}, 1, Corners::Round).size(), 3U);
}

TEST(OffsetByKerf, open_paths_stay_and_are_counted) {
  KerfReport report;
  const CutJob job = JobOf({Line({0, 0}, {5, 5})}, 1);
  EXPECT_EQ(Offset(job, Corners::Round, report).paths.at(0).contours, job.paths.at(0).contours);
  EXPECT_EQ(report.open, 1U);
}

TEST(OffsetByKerf, a_job_that_is_read_back_is_not_offset_twice) {
  KerfReport report;
  const CutJob once = Offset(JobOf({Rectangle(10, 10, 30, 20)}, 2), Corners::Round, report);
  EXPECT_EQ(Offset(once, Corners::Round, report), once);
}

TEST(OffsetByKerf, both_lobes_of_an_eight_grow) {
  const Contour eight = Polygon({{10, 10}, {30, 30}, {30, 10}, {10, 30}});
  double area = 0;
  for (const Contour& contour : OffsetOf({eight}, 0.2, Corners::Round))
    area += std::abs(AreaOf(contour));
  EXPECT_GT(area, 200 + 0.1 * 90);
}

TEST(OffsetByKerf, contours_on_no_sheet_stay_and_are_counted) {
  KerfReport report;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const CutJob job = JobOf({Rectangle(0, 0, 1e300, 1), Rectangle(0, 0, nan, 1),
                            Contour{.start = {1, 1}, .segments = {}, .closed = true}},
                           1);
  EXPECT_EQ(Offset(job, Corners::Round, report).paths.at(0).contours.size(), 2U);
  EXPECT_EQ(report.offSheet, 2U);
  EXPECT_EQ(report.vanished.size(), 1U);
}

TEST(OffsetByKerf, a_scribble_of_thousands_of_crossings_stays_and_is_counted) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> place(0, 100);
  std::vector<Point> points;
  for (int i = 0; i < 20'000; ++i) points.push_back({place(random), place(random)});
  KerfReport report;
  const CutJob job = JobOf({Polygon(points), Rectangle(200, 0, 220, 10)}, 2);
  const CutJob moved = Offset(job, Corners::Pointed, report);
  EXPECT_EQ(moved.paths.at(0).contours.at(0), Polygon(points));
  EXPECT_EQ(moved.paths.at(0).contours.at(1), Rectangle(199, -1, 221, 11));
  EXPECT_EQ(report.tangled, 1U);
}

TEST(OffsetByKerf, an_outline_of_ten_thousand_lines_is_moved) {
  std::vector<Point> points;
  for (int i = 0; i < 10'000; ++i) {
    const double angle = 2 * std::numbers::pi * i / 10'000;
    points.push_back({500 * std::cos(angle), 500 * std::sin(angle)});
  }
  KerfReport report;
  const CutJob moved = Offset(JobOf({Polygon(points)}, 0.2), Corners::Round, report);
  EXPECT_EQ(report.moved, 1U);
  EXPECT_NEAR(BoxOf(moved.paths.at(0)).right, 500.1, 0.01);
}

// Corners that no thinning takes away, on a ring so wide that the job is no scribble.
Contour JaggedRing(int corners) {
  std::vector<Point> points;
  for (int i = 0; i < corners; ++i) {
    const double angle = 2 * std::numbers::pi * i / corners;
    const double radius = 3000 + (i % 2) * 0.1;
    points.push_back({radius * std::cos(angle), radius * std::sin(angle)});
  }
  return Polygon(points);
}

TEST(OffsetByKerf, an_outline_of_a_hundred_thousand_lines_is_moved_within_the_tolerance) {
  std::vector<Point> points;
  for (int i = 0; i < 100'000; ++i) {
    const double angle = 2 * std::numbers::pi * i / 100'000;
    points.push_back({500 * std::cos(angle), 500 * std::sin(angle)});
  }
  const std::vector<Contour> moved = OffsetOf({Polygon(points)}, 0.2, Corners::Round);
  ASSERT_EQ(moved.size(), 1U);
  EXPECT_LT(moved[0].segments.size(), 10'000U);
  for (const Segment& segment : moved[0].segments)
    ASSERT_NEAR(std::hypot(segment.end.x, segment.end.y), 500.1, Tolerance);
}

TEST(OffsetByKerf, work_up_to_the_limit_is_done_and_beyond_it_the_contour_stays) {
  const CutJob job = JobOf({Rectangle(10, 10, 30, 20)}, 2);
  for (const double spare : {17, 16, 15}) {
    KerfReport report;
    report.work = KerfReport::MaximumWork - spare;
    const bool fits = spare >= 16;  // the square of four corners
    const CutJob moved = Offset(job, Corners::Pointed, report);
    EXPECT_EQ(moved.paths.at(0).contours.at(0),
              fits ? Rectangle(9, 9, 31, 21) : Rectangle(10, 10, 30, 20));
    EXPECT_EQ(report.IsTooMuch(), !fits);
  }
}

TEST(OffsetByKerf, a_job_with_more_corners_than_can_be_worked_is_refused) {
  const auto result = MakeToolPaths(JobOf({JaggedRing(100'002)}, 0.2), {});
  ASSERT_FALSE(result);
  EXPECT_EQ(Describe(result.Error()),
            "the kerf is worked on one path of 100,000 corners, or on 100 of 10,000; this job has "
            "more");
}

// Pixels of 0.05 mm: whether their middle is within the contours, by the even-odd rule.
struct Raster {
  static constexpr double Pixel = 0.05;
  static constexpr int Side = 800;
  std::vector<bool> isInside = std::vector<bool>(static_cast<std::size_t>(Side) * Side);

  explicit Raster(const std::vector<Contour>& contours) {
    for (int y = 0; y < Side; ++y) {
      const double at = (y + 0.5) * Pixel;
      std::vector<double> crossings;
      for (const Contour& contour : contours) {
        const std::vector<Point> ring = Flatten(contour, 0.002);
        for (std::size_t i = 0, j = ring.size() - 1; i < ring.size(); j = i++) {
          if ((ring[i].y > at) != (ring[j].y > at))
            crossings.push_back(
                (ring[j].x - ring[i].x) * (at - ring[i].y) / (ring[j].y - ring[i].y) + ring[i].x);
        }
      }
      std::ranges::sort(crossings);
      for (std::size_t i = 0; i + 1 < crossings.size(); i += 2) {
        for (int x = 0; x < Side; ++x) {
          const double middle = (x + 0.5) * Pixel;
          if (middle >= crossings[i] && middle < crossings[i + 1])
            isInside[static_cast<std::size_t>(y) * Side + static_cast<std::size_t>(x)] = true;
        }
      }
    }
  }
};

TEST(OffsetByKerf, random_rings_and_holes_agree_with_a_distance_transform) {
  std::mt19937 random(21);
  for (int round = 0; round < 12; ++round) {
    const Point center{20, 20};
    // Stars with deep notches, so that arms meet when they grow.
    const std::vector<Contour> contours{RandomRing(random, center, 10, 17, 9 + round),
                                        RandomRing(random, center, 2, 8, 7)};
    const double half = 0.3 + 0.15 * round;
    // A growing outline is the set of points near the inside; a shrinking hole that of points far
    // from its outside. Each is compared alone, since both may be near one point.
    for (std::size_t which = 0; which < 2; ++which) {
      const Raster before({contours[which]});
      KerfReport report;
      std::vector<Contour> all{contours[0]};
      if (which == 1) all = {Rectangle(0.5, 0.5, 39.5, 39.5), contours[1]};
      CutJob moved = Offset(JobOf(all, 2 * half), Corners::Round, report);
      std::vector<Contour> result = moved.paths.at(0).contours;
      if (which == 1) result.erase(result.begin());
      const Raster after(result);
      std::vector<bool> seeds = before.isInside;
      if (which == 1) seeds.flip();
      const std::vector<double> distances =
          test::DistanceTransform(seeds, Raster::Side, Raster::Side);
      // Middles of pixels on the wrong side of the border by at most half a diagonal at both ends.
      const double doubt = Raster::Pixel * 1.5 + Tolerance;
      for (std::size_t i = 0; i < distances.size(); ++i) {
        const double distance = distances[i] * Raster::Pixel;
        if (std::abs(distance - half) < doubt) continue;
        const bool isNear = distance < half;
        ASSERT_EQ(after.isInside[i], which == 0 ? isNear : !isNear)
            << "round " << round << " ring " << which << " pixel " << i % Raster::Side << ","
            << i / Raster::Side << " at " << distance << " of " << half;
      }
    }
  }
}

TEST(DistanceTransform, it_is_the_distance_to_the_nearest_set_pixel) {
  std::mt19937 random(2);
  constexpr int Width = 17;
  constexpr int Height = 13;
  for (int round = 0; round < 20; ++round) {
    std::vector<bool> isSet(Width * Height);
    for (int i = 0; i < 1 + round; ++i) isSet[random() % isSet.size()] = true;
    const std::vector<double> distances = test::DistanceTransform(isSet, Width, Height);
    for (int i = 0; i < Width * Height; ++i) {
      double least = 1e9;
      for (int k = 0; k < Width * Height; ++k) {
        if (isSet[static_cast<std::size_t>(k)])
          least = std::min(least, std::hypot(i % Width - k % Width, i / Width - k / Width));
      }
      ASSERT_NEAR(distances[static_cast<std::size_t>(i)], least, 1e-9);
    }
  }
}

}  // namespace
}  // namespace rastrel::cutting
