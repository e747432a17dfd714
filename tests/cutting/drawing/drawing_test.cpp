#include "cutting/drawing/drawing.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "cutting/drawing/arc.h"
#include "cutting/drawing/maps.h"

namespace rastrel::cutting {
namespace {

// How far the places of an arc about the origin lie from the circle.
double FarthestFrom(double radius, const Contour& contour) {
  double farthest = 0;
  for (const Point& point : Flatten(contour, 1e-6))
    farthest = std::max(farthest, std::abs(std::hypot(point.x, point.y) - radius));
  return farthest;
}

TEST(Arc, circles_of_any_size_lie_within_a_thousandth) {
  for (const double radius : {0.1, 1.0, 30.0, 500.0, 10000.0})
    EXPECT_LT(FarthestFrom(radius, WholeEllipse({{0, 0}, {radius, 0}, {0, radius}})), 0.001)
        << radius;
}

TEST(Arc, it_ends_where_its_angles_end_in_either_direction) {
  for (const double to : {std::numbers::pi * 1.9, -0.3}) {
    Contour contour{.start = {2, 0}, .segments = {}};
    AppendArc(contour, {{0, 0}, {2, 0}, {0, 2}}, 0, to);
    EXPECT_NEAR(contour.End().x, 2 * std::cos(to), 1e-12);
    EXPECT_NEAR(contour.End().y, 2 * std::sin(to), 1e-12);
    EXPECT_NEAR(LengthOf(contour), 2 * std::abs(to), 2e-3);
  }
}

TEST(Maps, the_first_is_applied_first) {
  const Transform both = Then({2, 0, 0, 2, 0, 0}, {1, 0, 0, 1, 5, 7});
  EXPECT_EQ(both.Apply({1, 1}), (Point{7, 9}));
}

TEST(Findings, one_text_is_one_finding_with_its_first_line) {
  Findings findings;
  findings.Add(3, "text is not read");
  findings.Add(9, "text is not read");
  findings.Add(4, "images are not read");
  const auto all = findings.Take();
  ASSERT_EQ(all.size(), 2U);
  EXPECT_EQ(all[0].line, 3);
  EXPECT_EQ(all[0].times, 2U);
  EXPECT_EQ(all[1].text, "images are not read");
}

TEST(Findings, texts_beyond_the_limit_are_counted) {
  for (const std::size_t count : {Findings::Limit - 1, Findings::Limit, Findings::Limit + 1}) {
    Findings findings;
    for (std::size_t i = 0; i < count; ++i) findings.Add(1, std::to_string(i));
    EXPECT_EQ(findings.Take().size(), count) << count;
  }
  Findings findings;
  for (std::size_t i = 0; i < Findings::Limit + 7; ++i) findings.Add(1, std::to_string(i));
  EXPECT_EQ(findings.Take().back().times, 7U);
}

TEST(DrawingLimits, the_file_and_the_repeated_segments_are_allowed_and_no_more) {
  DrawingLimits limits(10);
  EXPECT_TRUE(limits.TakeSegments(MaximumRepeatedSegments + 9));
  EXPECT_FALSE(limits.TakeSegments(2));
  EXPECT_TRUE(limits.TakeSegments(1));
  EXPECT_FALSE(limits.TakeSegments(1));
}

TEST(Drawing, a_name_is_cut_between_characters) {
  EXPECT_EQ(NameWithin("Fräse", 6), "Fräse");
  EXPECT_EQ(NameWithin("Fräse", 4), "Frä");
  EXPECT_EQ(NameWithin("Fräse", 3), "Fr");
  EXPECT_EQ(NameWithin("Fräse", 0), "");
}

TEST(Drawing, the_page_is_the_box_around_the_paths) {
  CutJob job;
  job.paths.push_back(
      {.contours = {{.start = {-10, 5}, .segments = {LineTo({30, 25})}, .closed = false}}});
  FitPageToPaths(job);
  EXPECT_EQ(job.width, 40);
  EXPECT_EQ(job.height, 20);
  EXPECT_EQ(job.paths[0].contours[0].start, (Point{0, 0}));
  CutJob empty;
  FitPageToPaths(empty);
  EXPECT_EQ(empty.width, 0);
}

}  // namespace
}  // namespace rastrel::cutting
