#include "cutting/toolpath/closing.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "cutting/toolpath/measured_contour.h"
#include "tests/cutting/toolpath/shapes.h"

namespace rastrel::cutting {
namespace {

using test::Circle;
using test::Line;
using test::Polygon;
using test::Rectangle;

std::vector<LineIndex::Line> LinesOf(const Contour& contour) {
  std::vector<LineIndex::Line> lines;
  std::vector<Point> points = Flatten(contour, 0.01);
  if (contour.closed) points.push_back(points.front());
  for (std::size_t i = 1; i < points.size(); ++i) lines.push_back({points[i - 1], points[i]});
  return lines;
}

std::vector<Contour> Close(const Contour& contour, const ToolSettings& settings,
                           ClosingReport& report, int depth = 0) {
  return CloseLine({contour, 0, depth}, settings, LineIndex(LinesOf(contour)), report);
}

TEST(MeasuredContour, a_part_keeps_whole_segments_and_splits_the_others) {
  const MeasuredContour measured(Rectangle(0, 0, 10, 10));
  EXPECT_EQ(measured.Length(), 40);
  EXPECT_EQ(measured.Part(5, 25),
            (Contour{.start = {5, 0},
                     .segments = {LineTo({10, 0}), LineTo({10, 10}), LineTo({5, 10})},
                     .closed = false}));
}

TEST(MeasuredContour, a_part_goes_on_past_the_start) {
  const MeasuredContour measured(Rectangle(0, 0, 10, 10));
  EXPECT_EQ(
      measured.Part(35, 45),
      (Contour{.start = {0, 5}, .segments = {LineTo({0, 0}), LineTo({5, 0})}, .closed = false}));
  EXPECT_EQ(measured.Part(42, 45), Line({2, 0}, {5, 0}));
}

TEST(MeasuredContour, a_part_of_a_circle_lies_on_it_and_is_as_long_as_asked) {
  const MeasuredContour measured(Circle({50, 50}, 10));
  EXPECT_NEAR(measured.Length(), 20 * std::numbers::pi, 0.05);
  for (double from = 0; from < 60; from += 3.7) {
    const Contour part = measured.Part(from, from + 7);
    EXPECT_NEAR(LengthOf(part), 7, 0.02);
    for (const Point& point : Flatten(part, 0.001))
      EXPECT_NEAR(Distance(point, {50, 50}), 10, 0.004);
    EXPECT_LT(Distance(part.End(), measured.At(from + 7)), 1e-9);
  }
}

TEST(MeasuredContour, corners_are_found_and_smooth_joins_are_none) {
  EXPECT_EQ(MeasuredContour(Rectangle(0, 0, 10, 5)).Corners(20),
            (std::vector<double>{0, 10, 15, 25}));
  EXPECT_TRUE(MeasuredContour(Circle({0, 0}, 10)).Corners(20).empty());
}

TEST(CloseLine, without_settings_it_stays_closed) {
  ClosingReport report;
  EXPECT_EQ(Close(Circle({5, 5}, 2), {}, report), std::vector<Contour>{Circle({5, 5}, 2)});
}

TEST(CloseLine, an_overcut_goes_on_past_the_start) {
  ClosingReport report;
  const std::vector<Contour> pieces = Close(Rectangle(0, 0, 10, 10), {.overcut = 12}, report);
  EXPECT_EQ(pieces,
            (std::vector<Contour>{{.start = {0, 0},
                                   .segments = {LineTo({10, 0}), LineTo({10, 10}), LineTo({0, 10}),
                                                LineTo({0, 0}), LineTo({10, 0}), LineTo({10, 2})},
                                   .closed = false}}));
  EXPECT_EQ(report.overcuts, 1U);
}

TEST(CloseLine, an_overcut_follows_curves) {
  ClosingReport report;
  const Contour piece = Close(Circle({50, 50}, 10), {.overcut = 5}, report).at(0);
  EXPECT_NEAR(LengthOf(piece), 20 * std::numbers::pi + 5, 0.05);
  EXPECT_NEAR(Distance(piece.End(), {50, 50}), 10, 0.004);
  EXPECT_NEAR(std::atan2(piece.End().y - 50, piece.End().x - 50), 0.5, 0.002);
}

TEST(CloseLine, an_overcut_goes_round_once_more_at_most) {
  ClosingReport report;
  const Contour piece = Close(Rectangle(0, 0, 10, 10), {.overcut = 1e9}, report).at(0);
  EXPECT_NEAR(LengthOf(piece), 80, 1e-9);
}

TEST(CloseLine, the_way_in_comes_from_outside_of_an_outline_and_inside_of_a_hole) {
  ClosingReport report;
  const double leg = std::numbers::sqrt2;
  for (const Contour& ring : {Rectangle(0, 0, 10, 10), Reversed(Rectangle(0, 0, 10, 10))}) {
    const Contour outer = Close(ring, {.leadIn = 2}, report, 0).at(0);
    EXPECT_LT(Distance(outer.start, {-leg, -leg}), 1e-6);
    EXPECT_EQ(outer.segments.front(), LineTo({0, 0}));
    EXPECT_EQ(outer.End(), (Point{0, 0}));
    EXPECT_FALSE(outer.closed);
    const Contour hole = Close(ring, {.leadIn = 2}, report, 1).at(0);
    EXPECT_LT(Distance(hole.start, {leg, leg}), 1e-6);
  }
  EXPECT_EQ(report.leadIns, 4U);
  EXPECT_EQ(report.shorterLeadIns, 0U);
}

TEST(CloseLine, the_way_in_slants_to_a_smooth_start) {
  ClosingReport report;
  const Contour outer = Close(Circle({0, 0}, 10), {.leadIn = 2}, report, 0).at(0);
  // It begins at the right and runs upward: from the lower right, as a chord of 0.01 mm sees it.
  EXPECT_LT(Distance(outer.start, {10 + std::numbers::sqrt2, -std::numbers::sqrt2}), 0.01);
  const Contour hole = Close(Circle({0, 0}, 10), {.leadIn = 2}, report, 1).at(0);
  EXPECT_LT(Distance(hole.start, {10 - std::numbers::sqrt2, -std::numbers::sqrt2}), 0.01);
}

TEST(CloseLine, a_way_in_that_would_meet_a_path_is_shorter_or_left_out) {
  const Contour ring = Rectangle(0, 0, 10, 10);
  std::vector<LineIndex::Line> lines = LinesOf(ring);
  lines.push_back({{-1, 5}, {-1, -5}});
  ClosingReport report;
  const Contour piece = CloseLine({ring, 0, 0}, {.leadIn = 2}, LineIndex(lines), report).at(0);
  EXPECT_NEAR(piece.start.x, -std::numbers::sqrt2 / 2, 1e-6);
  EXPECT_EQ(report.shorterLeadIns, 1U);
  lines.push_back({{-0.1, 5}, {-0.1, -5}});
  EXPECT_EQ(CloseLine({ring, 0, 0}, {.leadIn = 2}, LineIndex(lines), report).at(0), ring);
  EXPECT_EQ(report.noLeadIn, 1U);
}

TEST(CloseLine, bridges_are_spread_evenly_and_as_wide_as_asked) {
  ClosingReport report;
  const std::vector<Contour> pieces =
      Close(Circle({0, 0}, 10), {.bridges = 4, .bridgeWidth = 1}, report);
  ASSERT_EQ(pieces.size(), 4U);
  const double length = MeasuredContour(Circle({0, 0}, 10)).Length();
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    EXPECT_NEAR(LengthOf(pieces[i]), length / 4 - 1, 0.01);
    EXPECT_NEAR(Distance(pieces[i].End(), pieces[(i + 1) % 4].start), 1, 0.01);
    EXPECT_FALSE(pieces[i].closed);
  }
  EXPECT_EQ(report.bridges, 4U);
  EXPECT_EQ(report.cornerBridges, 0U);
}

TEST(CloseLine, a_bridge_moves_away_from_a_corner) {
  // Four bridges of a square that begins in the middle of a side would all be at corners.
  const Contour square = Polygon({{5, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0}});
  ClosingReport report;
  const std::vector<Contour> pieces = Close(square, {.bridges = 4, .bridgeWidth = 1}, report);
  ASSERT_EQ(pieces.size(), 4U);
  for (std::size_t i = 0; i < 4; ++i) {
    const Point from = pieces[i].End();
    const Point to = pieces[(i + 1) % 4].start;
    // Both ends of a gap are on one side of the square, and it is a straight one.
    EXPECT_TRUE(from.x == to.x || from.y == to.y);
    EXPECT_NEAR(Distance(from, to), 1, 1e-9);
  }
  EXPECT_EQ(report.cornerBridges, 0U);
}

TEST(CloseLine, bridges_at_corners_are_counted_where_nothing_is_straight) {
  std::vector<Point> zigzag;
  for (int i = 0; i < 40; ++i) zigzag.push_back({0.5 * i, i % 2 == 0 ? 0.0 : 0.5});
  zigzag.push_back({10, 20});
  ClosingReport report;
  EXPECT_EQ(Close(Polygon(zigzag), {.bridges = 8, .bridgeWidth = 2}, report).size(), 8U);
  EXPECT_GT(report.cornerBridges, 0U);
}

TEST(CloseLine, bridges_take_half_of_a_contour_at_most) {
  for (const auto& [asked, given] : {std::pair{4, 4}, {5, 5}, {6, 5}}) {
    ClosingReport report;
    const std::vector<Contour> pieces =
        Close(Rectangle(0, 0, 10, 10), {.bridges = asked, .bridgeWidth = 4}, report);
    EXPECT_EQ(pieces.size(), static_cast<std::size_t>(given));
    EXPECT_EQ(report.fewerBridges, asked > given ? 1U : 0U);
  }
  ClosingReport report;
  EXPECT_EQ(Close(Rectangle(0, 0, 1, 1), {.bridges = 1, .bridgeWidth = 3}, report),
            std::vector<Contour>{Rectangle(0, 0, 1, 1)});
  EXPECT_EQ(report.fewerBridges, 1U);
}

TEST(CloseLine, open_and_hostile_contours_are_left_as_they_are) {
  const ToolSettings all{.overcut = 1, .leadIn = 1, .bridges = 2, .bridgeWidth = 0.1};
  const LineIndex none({});
  ClosingReport report;
  const Contour open = Line({0, 0}, {5, 0});
  EXPECT_EQ(CloseLine({open, 0, 0}, all, none, report), std::vector<Contour>{open});
  const Contour endless = Rectangle(0, 0, 1e300, 1);
  EXPECT_EQ(CloseLine({endless, 0, 0}, all, none, report), std::vector<Contour>{endless});
  const Contour dot = Rectangle(1, 1, 1, 1);
  EXPECT_EQ(CloseLine({dot, 0, 0}, all, none, report).size(), 1U);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const Contour ring = Rectangle(0, 0, 9, 9);
  EXPECT_EQ(
      CloseLine({ring, 0, 0}, {.overcut = nan, .leadIn = nan, .bridges = 3, .bridgeWidth = nan},
                none, report),
      std::vector<Contour>{ring});
}

TEST(CloseLine, a_million_bridges_are_a_thousand_at_most) {
  ClosingReport report;
  EXPECT_EQ(
      Close(Rectangle(0, 0, 100, 100), {.bridges = 1'000'000, .bridgeWidth = 1e-6}, report).size(),
      1'000U);
}

}  // namespace
}  // namespace rastrel::cutting
