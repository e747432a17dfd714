#include "cutting/nest/nest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <polyclipping/clipper.hpp>

#include "tests/cutting/nest/sign_shop_shapes.h"

namespace rastrel::cutting {
namespace {

using test::Disc;
using test::JobOf;
using test::Letter;
using test::Plate;
using test::SignShopShapes;

// Nanometres: finer by a thousand than the units that layouts are made in.
constexpr double Units = 1e6;

std::vector<NestInput> InputsOf(const std::vector<CutJob>& jobs) {
  std::vector<NestInput> inputs;
  for (std::size_t i = 0; i < jobs.size(); ++i)
    inputs.push_back({.name = "job" + std::to_string(i), .job = &jobs[i]});
  return inputs;
}

NestOptions Roll(double height, double gap, NestTurns turns, int effort) {
  return {.width = MaximumNestLength,
          .height = height,
          .roll = true,
          .gap = gap,
          .turns = turns,
          .effort = effort};
}

ClipperLib::Paths OutlineOf(const NestInput& input, const NestPlacement& placement, double growth) {
  ClipperLib::ClipperOffset offset(2, Units / 1e6);
  for (const CutPath& path : input.job->paths)
    for (const Contour& contour : path.contours) {
      ClipperLib::Path line;
      for (const Point& point : Flatten(Transformed(contour, placement.transform), 0.001))
        line.emplace_back(std::llround(point.x * Units), std::llround(point.y * Units));
      if (!ClipperLib::Orientation(line)) ClipperLib::ReversePath(line);
      offset.AddPath(line, ClipperLib::jtMiter, ClipperLib::etClosedPolygon);
    }
  ClipperLib::Paths grown;
  offset.MiterLimit = 2;
  offset.Execute(grown, growth * Units);
  return grown;
}

bool Overlap(const ClipperLib::Paths& a, const ClipperLib::Paths& b) {
  ClipperLib::Clipper clipper;
  clipper.AddPaths(a, ClipperLib::ptSubject, true);
  clipper.AddPaths(b, ClipperLib::ptClip, true);
  ClipperLib::Paths common;
  clipper.Execute(ClipperLib::ctIntersection, common, ClipperLib::pftNonZero,
                  ClipperLib::pftNonZero);
  return !common.empty();
}

// Grows one of two pieces by the gap less a micrometre, with round corners.
ClipperLib::Paths WithGap(const NestInput& input, const NestPlacement& placement, double gap) {
  ClipperLib::ClipperOffset offset(2, 0.0002 * Units);
  offset.AddPaths(OutlineOf(input, placement, 0), ClipperLib::jtRound, ClipperLib::etClosedPolygon);
  ClipperLib::Paths grown;
  offset.Execute(grown, (gap - 0.001) * Units);
  return grown;
}

void ExpectApartAndInside(const std::vector<NestInput>& inputs, const NestOptions& options,
                          const NestResult& result) {
  std::vector<ClipperLib::Paths> plain;
  for (const NestPlacement& placement : result.placements) {
    plain.push_back(OutlineOf(inputs[placement.input], placement, 0));
    for (const ClipperLib::Path& path : plain.back())
      for (const ClipperLib::IntPoint& point : path) {
        EXPECT_GE(point.X, 0);
        EXPECT_GE(point.Y, 0);
        EXPECT_LE(point.Y, options.height * Units);
        EXPECT_LE(point.X, result.usedLengths[placement.sheet] * Units);
      }
  }
  for (std::size_t i = 0; i < plain.size(); ++i) {
    const NestPlacement& one = result.placements[i];
    const ClipperLib::Paths grown =
        options.gap > 0 ? WithGap(inputs[one.input], one, options.gap) : plain[i];
    for (std::size_t j = i + 1; j < plain.size(); ++j) {
      if (one.sheet != result.placements[j].sheet) continue;
      EXPECT_FALSE(Overlap(grown, plain[j])) << i << " and " << j;
    }
  }
}

// Rows across the roll in the order of the pieces' lengths, as a person cuts plates.
double LengthOfRows(const std::vector<CutJob>& jobs, double height, double gap) {
  std::vector<Box> boxes;
  for (const CutJob& job : jobs) boxes.push_back(ToolBoxOf(job));
  std::ranges::stable_sort(boxes, [](const Box& a, const Box& b) { return a.Width() > b.Width(); });
  double end = 0;
  double row = 0;
  double filled = height + 1;
  for (const Box& box : boxes) {
    if (filled + box.Height() > height) {
      end += row > 0 ? row + gap : 0;
      row = box.Width();
      filled = 0;
    }
    filled += box.Height() + gap;
  }
  return end + row;
}

TEST(Nest, of_a_days_shapes_keeps_them_apart_and_is_shorter_than_rows) {
  const std::vector<CutJob> jobs = SignShopShapes(100);
  const auto inputs = InputsOf(jobs);
  const NestOptions options = Roll(600, 3, NestTurns::None, 1);
  const auto result = Nest(inputs, options);
  ASSERT_TRUE(result) << Describe(result.Error());
  ASSERT_EQ(result->placements.size(), 100U);
  ASSERT_EQ(result->usedLengths.size(), 1U);
  EXPECT_LE(result->usedLengths[0], LengthOfRows(jobs, 600, 3) + 0.001);
  EXPECT_EQ(result->layouts, 1);
  ExpectApartAndInside(inputs, options, *result);
}

TEST(Nest, turned_shapes_stay_apart) {
  const std::vector<CutJob> jobs = SignShopShapes(16);
  const auto inputs = InputsOf(jobs);
  for (const NestTurns turns : {NestTurns::Quarters, NestTurns::Any}) {
    const NestOptions options = Roll(300, 2, turns, 2);
    const auto result = Nest(inputs, options);
    ASSERT_TRUE(result) << Describe(result.Error());
    ExpectApartAndInside(inputs, options, *result);
  }
}

TEST(Nest, is_the_same_twice_and_no_longer_with_more_effort) {
  const std::vector<CutJob> jobs = SignShopShapes(12);
  const auto inputs = InputsOf(jobs);
  const auto little = Nest(inputs, Roll(300, 2, NestTurns::None, 3));
  const auto much = Nest(inputs, Roll(300, 2, NestTurns::None, 8));
  const auto again = Nest(inputs, Roll(300, 2, NestTurns::None, 8));
  ASSERT_TRUE(little && much && again);
  EXPECT_LE(much->usedLengths[0], little->usedLengths[0]);
  for (std::size_t i = 0; i < jobs.size(); ++i)
    EXPECT_EQ(much->placements[i].transform, again->placements[i].transform);
}

TEST(Nest, two_wedges_lie_within_one_box) {
  // Triangles that make a rectangle of 100 by 50 together, one of them turned by 180 degrees.
  const std::vector<CutJob> jobs{JobOf(test::Polygon({{0, 0}, {100, 0}, {0, 49}})),
                                 JobOf(test::Polygon({{0, 0}, {100, 0}, {0, 49}}))};
  const auto result = Nest(InputsOf(jobs), Roll(50, 0, NestTurns::Quarters, 3));
  ASSERT_TRUE(result);
  EXPECT_LT(result->usedLengths[0], 105);
  EXPECT_FALSE(result->rows);
}

TEST(Nest, a_piece_as_large_as_the_sheet_fits_and_one_larger_is_named_and_refused) {
  NestOptions options{.width = 100, .height = 50};
  const std::vector<CutJob> fits{JobOf(Plate(100, 50))};
  const auto result = Nest(InputsOf(fits), options);
  ASSERT_TRUE(result) << Describe(result.Error());
  EXPECT_EQ(result->usedLengths, std::vector<double>{100});
  EXPECT_NEAR(result->wastePercent, 0, 0.001);
  const std::vector<CutJob> large{JobOf(Plate(100, 50)), JobOf(Plate(100.002, 50))};
  const auto refused = Nest(InputsOf(large), options);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.Error().code, FailureCode::BadInput);
  EXPECT_EQ(Describe(refused.Error()), "job1: it fits on no sheet, however it is turned");
}

TEST(Nest, a_piece_that_fits_turned_alone_is_turned) {
  const std::vector<CutJob> jobs{JobOf(Plate(40, 90))};
  NestOptions options{.width = 100, .height = 50};
  EXPECT_FALSE(Nest(InputsOf(jobs), options));
  options.turns = NestTurns::Quarters;
  const auto result = Nest(InputsOf(jobs), options);
  ASSERT_TRUE(result);
  EXPECT_EQ(std::fmod(result->placements[0].turn, 180), 90);
}

TEST(Nest, takes_another_sheet_where_one_is_full) {
  const std::vector<CutJob> jobs{JobOf(Plate(60, 50))};
  const std::vector<NestInput> inputs{{.name = "plate", .job = jobs.data(), .copies = 3}};
  const NestOptions options{.width = 100, .height = 50};
  const auto result = Nest(inputs, options);
  ASSERT_TRUE(result);
  EXPECT_EQ(result->usedLengths, (std::vector<double>{60, 60, 60}));
  EXPECT_NEAR(result->wastePercent, 40, 0.001);
  const CutJob sheet = SheetJob(inputs, options, *result, 2);
  EXPECT_EQ(sheet.width, 100);
  EXPECT_EQ(sheet.paths.size(), 1U);
}

TEST(Nest, a_gap_may_just_fit_and_not_be_a_micrometre_larger) {
  const std::vector<CutJob> jobs{JobOf(Plate(50, 20)), JobOf(Plate(50, 20))};
  const auto fits = Nest(InputsOf(jobs), Roll(45, 5, NestTurns::None, 3));
  const auto wide = Nest(InputsOf(jobs), Roll(45, 5.001, NestTurns::None, 3));
  ASSERT_TRUE(fits && wide);
  EXPECT_NEAR(fits->usedLengths[0], 50, 0.001);
  EXPECT_GT(wide->usedLengths[0], 100);
}

TEST(Nest, paths_outside_of_the_outline_take_room_and_a_job_without_outlines_its_box) {
  CutJob lines{.width = 50, .height = 50, .paths = {}};
  lines.paths.push_back({.contours = {{.start = {0, 0}, .segments = {LineTo({50, 50})}}}});
  CutJob flag = JobOf(Plate(20, 20));
  flag.paths.push_back({.contours = {{.start = {20, 10}, .segments = {LineTo({60, 10})}}},
                        .operation = Operation::Crease});
  const std::vector<CutJob> jobs{lines, flag};
  const auto result = Nest(InputsOf(jobs), Roll(50, 0, NestTurns::None, 3));
  ASSERT_TRUE(result);
  // The diagonal takes all 50 mm of the roll, so that the flag lies beside it.
  EXPECT_NEAR(result->usedLengths[0], 110, 0.5);
}

TEST(Nest, refuses_what_it_has_no_piece_or_no_room_for) {
  const std::vector<CutJob> jobs{JobOf(Plate(1, 1))};
  const CutJob empty;
  NestOptions options = Roll(10, 0, NestTurns::None, 0);
  const auto why = [&](const std::vector<NestInput>& inputs) {
    const auto result = Nest(inputs, options);
    return result ? std::string("no failure") : Describe(result.Error());
  };
  EXPECT_EQ(why({}), "there is no piece to place");
  EXPECT_EQ(why({{.name = "a", .job = &empty}}), "a: it has no path for a tool");
  EXPECT_EQ(why({{.name = "a", .job = jobs.data(), .copies = 0}}), "a: there is one copy at least");
  EXPECT_EQ(why({{.name = "a", .job = jobs.data(), .copies = 1001}}),
            "there are more than 1000 pieces");
  EXPECT_EQ(why({{.name = "a", .job = jobs.data(), .copies = 999}}), "no failure");
  EXPECT_EQ(why({{.name = "a", .job = jobs.data(), .copies = 1000}}), "no failure");
  const std::vector<CutJob> far{JobOf(test::Polygon({{0, 0}, {100'001, 0}, {0, 1}}))};
  EXPECT_EQ(why(InputsOf(far)), "job0: a path lies more than 100 m from the page");
  options.gap = -1;
  EXPECT_EQ(why(InputsOf(jobs)), "a gap is from 0 to 1000 mm");
  options.gap = std::nan("");
  EXPECT_EQ(why(InputsOf(jobs)), "a gap is from 0 to 1000 mm");
  options = Roll(10, 0, NestTurns::None, MaximumNestEffort + 1);
  EXPECT_EQ(why(InputsOf(jobs)), "an effort is from 0 to 10000 layouts");
  options = Roll(0, 0, NestTurns::None, 0);
  EXPECT_EQ(why(InputsOf(jobs)), "a sheet's sides are from 0.001 to 100000 mm");
}

TEST(Nest, gives_rows_of_boxes_if_it_is_ended_at_once) {
  const std::vector<CutJob> jobs = SignShopShapes(20);
  NestOptions options = Roll(600, 3, NestTurns::None, 5);
  options.goOn = [](int) { return false; };
  const auto inputs = InputsOf(jobs);
  const auto result = Nest(inputs, options);
  ASSERT_TRUE(result);
  EXPECT_TRUE(result->rows);
  EXPECT_EQ(result->layouts, 0);
  ExpectApartAndInside(inputs, options, *result);
}

TEST(Nest, outlines_that_cross_themselves_or_have_no_area_are_placed) {
  const std::vector<CutJob> jobs{JobOf(test::Polygon({{0, 0}, {40, 40}, {40, 0}, {0, 40}})),
                                 JobOf(test::Polygon({{0, 0}, {40, 0}, {20, 0}})),
                                 JobOf(test::Polygon({{5, 5}, {5, 5}})), JobOf(Disc(10)),
                                 JobOf(Letter(2, 40))};
  const auto result = Nest(InputsOf(jobs), Roll(50, 1, NestTurns::Any, 3));
  ASSERT_TRUE(result) << Describe(result.Error());
  EXPECT_EQ(result->placements.size(), 5U);
}

}  // namespace
}  // namespace rastrel::cutting
