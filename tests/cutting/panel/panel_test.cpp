#include "cutting/panel/panel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "cutting/panel/seam.h"

namespace rastrel::cutting {
namespace {

Contour Circle(Point center, double radius) {
  const double k = 0.5522847498307936 * radius;
  const auto at = [&](double x, double y) { return Point{center.x + x, center.y + y}; };
  return {.start = at(radius, 0),
          .segments = {CurveTo(at(radius, k), at(k, radius), at(0, radius)),
                       CurveTo(at(-k, radius), at(-radius, k), at(-radius, 0)),
                       CurveTo(at(-radius, -k), at(-k, -radius), at(0, -radius)),
                       CurveTo(at(k, -radius), at(radius, -k), at(radius, 0))},
          .closed = true};
}

Contour Square(double left, double bottom, double side) {
  return {.start = {left, bottom},
          .segments = {LineTo({left + side, bottom}), LineTo({left + side, bottom + side}),
                       LineTo({left, bottom + side})},
          .closed = true};
}

CutJob JobOf(double width, double height, std::vector<Contour> contours) {
  CutJob job{.width = width, .height = height, .paths = {}};
  job.paths.push_back({.contours = std::move(contours)});
  return job;
}

double LengthOfJob(const CutJob& job) {
  double length = 0;
  for (const CutPath& path : job.paths)
    for (const Contour& contour : path.contours) length += LengthOf(contour);
  return length;
}

Point PointOf(Point from, const Segment& segment, double t) {
  const double s = 1 - t;
  if (!segment.isCurve) return {s * from.x + t * segment.end.x, s * from.y + t * segment.end.y};
  const auto at = [&](double p0, double p1, double p2, double p3) {
    return s * s * s * p0 + 3 * s * s * t * p1 + 3 * s * t * t * p2 + t * t * t * p3;
  };
  return {at(from.x, segment.first.x, segment.second.x, segment.end.x),
          at(from.y, segment.first.y, segment.second.y, segment.end.y)};
}

// The distance from one segment: from each sample that is nearer than its neighbors by thirds.
double DistanceTo(Point point, Point from, const Segment& segment) {
  constexpr int Samples = 300;
  const auto distance = [&](double t) { return Distance(point, PointOf(from, segment, t)); };
  double best = std::min(distance(0), distance(1));
  for (int i = 0; i <= Samples; ++i) {
    double low = std::max(0.0, static_cast<double>(i - 1) / Samples);
    double high = std::min(1.0, static_cast<double>(i + 1) / Samples);
    const double middle = distance(static_cast<double>(i) / Samples);
    if (middle > distance(low) || middle > distance(high)) continue;
    for (int k = 0; k < 80; ++k) {
      const double third = (high - low) / 3;
      if (distance(low + third) < distance(high - third)) {
        high -= third;
      } else {
        low += third;
      }
    }
    best = std::min(best, distance((low + high) / 2));
  }
  return best;
}

double DistanceTo(Point point, const Contour& contour) {
  double best = 1e9;
  Point from = contour.start;
  for (const Segment& segment : contour.segments) {
    best = std::min(best, DistanceTo(point, from, segment));
    from = segment.end;
  }
  return contour.closed ? std::min(best, DistanceTo(point, from, LineTo(contour.start))) : best;
}

TEST(Panels, go_from_left_to_right_and_from_the_bottom_up_with_their_overlap) {
  const auto panels =
      SplitIntoPanels(JobOf(250, 180, {}), {.width = 100, .height = 100, .overlap = 10});
  ASSERT_TRUE(panels);
  // 100 + 90 + 80 across; 100 + 90 up.
  ASSERT_EQ(panels->size(), 6U);
  EXPECT_EQ((*panels)[0].area, (Box{0, 0, 100, 100}));
  EXPECT_EQ((*panels)[1].area, (Box{90, 0, 190, 100}));
  EXPECT_EQ((*panels)[2].area, (Box{180, 0, 250, 100}));
  EXPECT_EQ((*panels)[3].area, (Box{0, 90, 100, 180}));
  EXPECT_EQ((*panels)[5].number, 6U);
  EXPECT_EQ((*panels)[5].column, 2U);
  EXPECT_EQ((*panels)[5].row, 1U);
  EXPECT_EQ((*panels)[5].job.width, 70);
}

TEST(Panels, a_page_of_one_panels_size_is_one_and_a_hair_more_is_two) {
  const PanelOptions options{.width = 100, .height = 100, .overlap = 10};
  EXPECT_EQ(SplitIntoPanels(JobOf(99.999, 100, {}), options)->size(), 1U);
  EXPECT_EQ(SplitIntoPanels(JobOf(100, 100, {}), options)->size(), 1U);
  EXPECT_EQ(SplitIntoPanels(JobOf(100.001, 100, {}), options)->size(), 2U);
  EXPECT_EQ(SplitIntoPanels(JobOf(190, 100, {}), options)->size(), 2U);
  EXPECT_EQ(SplitIntoPanels(JobOf(190.001, 100, {}), options)->size(), 3U);
}

TEST(Panels, a_contour_within_one_is_whole_and_closed) {
  const CutJob job = JobOf(200, 100, {Circle({150, 50}, 20)});
  const auto panels = SplitIntoPanels(job, {.width = 105, .height = 100, .overlap = 10});
  ASSERT_TRUE(panels);
  EXPECT_TRUE((*panels)[0].job.paths.empty());
  ASSERT_EQ((*panels)[1].job.paths.size(), 1U);
  EXPECT_EQ((*panels)[1].job.paths[0].contours[0], Transformed(Circle({150, 50}, 20), {.e = -95}));
}

TEST(Panels, a_square_over_a_seam_is_opened_in_the_middle_of_the_overlap) {
  const CutJob job = JobOf(190, 100, {Square(80, 20, 40)});
  const auto panels = SplitIntoPanels(job, {.width = 100, .height = 100, .overlap = 10});
  ASSERT_TRUE(panels);
  ASSERT_EQ(panels->size(), 2U);
  // The seam is at 95, 5 mm within the overlap from 90 to 100.
  const Contour left{.start = {95, 60},
                     .segments = {LineTo({80, 60}), LineTo({80, 20}), LineTo({95, 20})}};
  const Contour right{.start = {5, 20},
                      .segments = {LineTo({30, 20}), LineTo({30, 60}), LineTo({5, 60})}};
  EXPECT_EQ((*panels)[0].job.paths[0].contours, std::vector<Contour>{left});
  EXPECT_EQ((*panels)[1].job.paths[0].contours, std::vector<Contour>{right});
}

TEST(Panels, together_hold_every_path_with_curves_as_curves) {
  std::mt19937 random(5);
  const auto at = [&] { return static_cast<double>(random() % 10'000) / 10; };
  std::vector<Contour> contours;
  for (int i = 0; i < 20; ++i) {
    Contour contour{.start = {at(), at()}, .segments = {}, .closed = i % 2 == 0};
    for (int k = 0; k < 4; ++k) {
      if (k % 2 == 0)
        contour.segments.push_back(CurveTo({at(), at()}, {at(), at()}, {at(), at()}));
      else
        contour.segments.push_back(LineTo({at(), at()}));
    }
    contours.push_back(contour);
  }
  for (const Contour& contour : contours) {
    const CutJob job = JobOf(1000, 1000, {contour});
    const auto panels = SplitIntoPanels(job, {.width = 300, .height = 220, .overlap = 25});
    ASSERT_TRUE(panels);
    double length = 0;
    for (const Panel& panel : *panels) {
      length += LengthOfJob(panel.job);
      for (const CutPath& path : panel.job.paths)
        for (const Contour& part : path.contours) {
          const Contour back = Transformed(part, {.e = panel.area.left, .f = panel.area.bottom});
          Point from = back.start;
          for (const Segment& segment : back.segments) {
            EXPECT_LT(DistanceTo(PointOf(from, segment, 0.4), contour), 1e-6);
            EXPECT_LT(DistanceTo(segment.end, contour), 1e-6);
            from = segment.end;
          }
          const Box box = BoxOf(back);
          EXPECT_GE(box.left, panel.area.left - 1e-6);
          EXPECT_LE(box.right, panel.area.right + 1e-6);
          EXPECT_GE(box.bottom, panel.area.bottom - 1e-6);
          EXPECT_LE(box.top, panel.area.top + 1e-6);
        }
    }
    EXPECT_NEAR(length, LengthOf(contour), LengthOf(contour) * 2e-4);
  }
}

TEST(Panels, ends_at_a_seam_meet_exactly) {
  const CutJob job = JobOf(190, 100, {Circle({95, 50}, 40)});
  const auto panels = SplitIntoPanels(job, {.width = 100, .height = 100, .overlap = 10});
  ASSERT_TRUE(panels);
  const Contour& left = (*panels)[0].job.paths.at(0).contours.at(0);
  const Contour& right = (*panels)[1].job.paths.at(0).contours.at(0);
  EXPECT_FALSE(left.closed);
  EXPECT_NEAR(Distance(left.start, {95, 90}), 0, 1e-6);
  EXPECT_NEAR(Distance(left.End(), {95, 10}), 0, 1e-6);
  EXPECT_NEAR(Distance(right.start, {5, 10}), 0, 1e-6);
  EXPECT_NEAR(Distance(right.End(), {5, 90}), 0, 1e-6);
  for (const Segment& segment : left.segments) EXPECT_TRUE(segment.isCurve);
}

TEST(Panels, a_path_along_a_seam_is_in_one_of_them) {
  const CutJob job =
      JobOf(190, 100, {{.start = {95, 10}, .segments = {LineTo({95, 90})}}, Square(95, 20, 10)});
  const auto panels = SplitIntoPanels(job, {.width = 100, .height = 100, .overlap = 10});
  ASSERT_TRUE(panels);
  EXPECT_TRUE((*panels)[0].job.paths.empty());
  EXPECT_EQ((*panels)[1].job.paths[0].contours.size(), 2U);
}

TEST(Panels, paths_beyond_the_page_are_covered_and_marks_stay_with_the_panels_that_show_them) {
  CutJob job = JobOf(100, 100, {Square(-50, 0, 10)});
  job.marks = {{.center = {90, 90}, .size = 10}, {.center = {45, 50}, .size = 20}};
  const auto panels = SplitIntoPanels(job, {.width = 100, .height = 100, .overlap = 0});
  ASSERT_TRUE(panels);
  ASSERT_EQ(panels->size(), 2U);
  EXPECT_EQ((*panels)[0].area, (Box{-50, 0, 50, 100}));
  EXPECT_EQ((*panels)[0].job.paths.size(), 1U);
  EXPECT_TRUE((*panels)[0].job.marks.empty());
  ASSERT_EQ((*panels)[1].job.marks.size(), 1U);
  EXPECT_EQ((*panels)[1].job.marks[0].center, (Point{40, 90}));
}

TEST(Panels, marks_have_their_place_from_the_lower_left_corner_of_their_panel) {
  CutJob job = JobOf(100, 200, {});
  job.marks = {{.center = {30, 170}, .size = 10}};
  const auto panels = SplitIntoPanels(job, {.width = 100, .height = 100, .overlap = 0});
  ASSERT_TRUE(panels);
  ASSERT_EQ(panels->size(), 2U);
  EXPECT_TRUE((*panels)[0].job.marks.empty());
  ASSERT_EQ((*panels)[1].job.marks.size(), 1U);
  EXPECT_EQ((*panels)[1].job.marks[0].center, (Point{30, 70}));
}

TEST(Panels, sizes_out_of_their_range_are_refused) {
  const CutJob job = JobOf(100, 100, {});
  const auto why = [&](const CutJob& of, const PanelOptions& options) {
    const auto panels = SplitIntoPanels(of, options);
    return panels ? std::string("no failure") : Describe(panels.Error());
  };
  EXPECT_EQ(why(job, {.width = 0.999, .height = 5}), "a panel's sides are from 1 to 1000000 mm");
  EXPECT_EQ(why(job, {.width = std::nan(""), .height = 5}),
            "a panel's sides are from 1 to 1000000 mm");
  EXPECT_EQ(why(job, {.width = 1, .height = 1}), "no failure");
  EXPECT_EQ(why(JobOf(100.5, 100, {}), {.width = 1, .height = 1}),
            "it takes more than 10000 panels");
  EXPECT_EQ(why(job, {.width = 50, .height = 50, .overlap = 25}), "no failure");
  EXPECT_EQ(why(job, {.width = 50, .height = 50, .overlap = 25.1}),
            "an overlap is from 0 mm to half of a panel's shorter side");
  EXPECT_EQ(why(job, {.width = 50, .height = 50, .overlap = -1}),
            "an overlap is from 0 mm to half of a panel's shorter side");
}

}  // namespace
}  // namespace rastrel::cutting
