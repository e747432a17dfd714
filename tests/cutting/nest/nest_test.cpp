#include "cutting/nest/nest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "cutting/nest/layout.h"
#include "cutting/nest/piece_shape.h"
#include "tests/cutting/nest/exact_layout.h"
#include "tests/cutting/nest/sign_shop_shapes.h"

namespace rastrel::cutting {
namespace {

using test::Disc;
using test::JobOf;
using test::Letter;
using test::Plate;
using test::SignShopShapes;

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

void ExpectApartAndInside(const std::vector<NestInput>& inputs, const NestOptions& options,
                          const NestResult& result) {
  EXPECT_EQ(test::FaultOf(inputs, options, result).value_or("none"), "none");
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

TEST(Nest, the_exact_test_notices_two_micrometres_too_little_and_a_place_beyond_the_sheet) {
  const std::vector<CutJob> jobs{JobOf(Plate(10, 10)), JobOf(Disc(5))};
  const auto inputs = InputsOf(jobs);
  const NestOptions options = Roll(10, 1, NestTurns::None, 0);
  const auto fault = [&](double x, double y) {
    const NestResult result{
        .placements = {{.input = 0}, {.input = 1, .transform = {.e = x, .f = y}}},
        .usedLengths = {30}};
    return test::FaultOf(inputs, options, result).value_or("none");
  };
  EXPECT_EQ(fault(11, 0), "none");
  EXPECT_EQ(fault(10.998, 0), "pieces 0 and 1 are too near");
  EXPECT_EQ(fault(20, 0), "none");
  EXPECT_EQ(fault(20.001, 0), "piece 1 lies beyond its sheet");
  EXPECT_EQ(fault(15, -0.001), "piece 1 lies beyond its sheet");
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
  options.goOn = [](const NestProgress&) { return false; };
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

// A circle about the radius, with teeth of a tenth of a millimetre.
CutJob Toothed(std::size_t corners, double radius) {
  std::vector<Point> points;
  for (std::size_t i = 0; i < corners; ++i) {
    const double angle =
        2 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(corners);
    const double r = radius - (i % 2 == 0 ? 0 : 0.1);
    points.push_back({radius + r * std::cos(angle), radius + r * std::sin(angle)});
  }
  return JobOf(test::Polygon(points));
}

TEST(Nest, thins_an_outline_of_many_corners_outward_and_says_by_how_much) {
  const std::vector<CutJob> jobs{Toothed(2000, 50), Toothed(2000, 50), JobOf(Plate(40, 40))};
  const auto inputs = InputsOf(jobs);
  const NestOptions options = Roll(120, 1, NestTurns::Quarters, 3);
  const auto result = Nest(inputs, options);
  ASSERT_TRUE(result) << Describe(result.Error());
  EXPECT_EQ(result->thinned, 2U);
  EXPECT_GT(result->thinnedBy, 0);
  // Three times the largest step: a corner's mitre, and the cleaning's moves.
  EXPECT_LT(result->thinnedBy, 3);
  ExpectApartAndInside(inputs, options, *result);
  const std::vector<CutJob> plain{JobOf(Plate(40, 40))};
  EXPECT_EQ(Nest(InputsOf(plain), options)->thinned, 0U);
}

TEST(Nest, keeps_pieces_out_of_outlines_of_thousands_of_corners) {
  // Sides of corners in a row, teeth, and a plate that would fit between the arms of an L.
  std::vector<Point> square;
  const Point ends[] = {{0, 0}, {90, 0}, {90, 30}, {30, 30}, {30, 90}, {0, 90}, {0, 0}};
  for (std::size_t side = 0; side + 1 < std::size(ends); ++side)
    for (int i = 0; i < 1000; ++i) {
      const double t = i / 1000.0;
      square.push_back({ends[side].x + t * (ends[side + 1].x - ends[side].x),
                        ends[side].y + t * (ends[side + 1].y - ends[side].y)});
    }
  const std::vector<CutJob> jobs{JobOf(test::Polygon(square)), Toothed(4500, 45),
                                 JobOf(Plate(50, 50))};
  const auto inputs = InputsOf(jobs);
  const NestOptions options = Roll(90, 0, NestTurns::Quarters, 3);
  const auto result = Nest(inputs, options);
  ASSERT_TRUE(result) << Describe(result.Error());
  ExpectApartAndInside(inputs, options, *result);
  // The L's box holds the plate, so that both need little more than the two boxes.
  EXPECT_LT(result->usedLengths[0], 90 + 90 + 2);
  // Of the areas: 90*90 - 60*60, a disc of 45 mm, and 50*50.
  const double used = 90 * result->usedLengths[0];
  EXPECT_NEAR(result->wastePercent, 100 * (1 - (4500 + 6354 + 2500) / used), 0.5);
}

TEST(Nest, takes_as_many_corners_as_its_limit_and_no_more) {
  const auto withCorners = [](std::size_t corners) {
    std::vector<Point> points{{0, 10}};
    for (std::size_t i = 1; i < corners; ++i)
      points.push_back({static_cast<double>(i) * 0.01, i % 2 == 0 ? 0.0 : 1.0});
    std::vector<CutJob> jobs{JobOf(test::Polygon(points))};
    // Scored lines cost no time, and count as well.
    jobs.front().paths.front().operation = Operation::Engrave;
    return jobs;
  };
  NestOptions options{.width = 20'000, .height = 20, .effort = 0};
  for (const std::size_t corners : {MaximumNestCorners - 1, MaximumNestCorners}) {
    const auto jobs = withCorners(corners);
    EXPECT_TRUE(Nest(InputsOf(jobs), options)) << corners;
  }
  const auto jobs = withCorners(MaximumNestCorners + 1);
  const auto refused = Nest(InputsOf(jobs), options);
  ASSERT_FALSE(refused);
  EXPECT_EQ(Describe(refused.Error()), "job0: its tool paths have more than 1000000 corners");
}

TEST(Nest, a_layout_that_takes_over_the_first_pieces_is_that_made_from_the_first) {
  const std::vector<CutJob> jobs = SignShopShapes(12);
  std::vector<nest::PieceShape> shapes;
  std::vector<std::size_t> pieces;
  for (const CutJob& job : jobs) {
    shapes.push_back(nest::ShapeOf(job, 2, {0, 90, 180, 270}));
    pieces.push_back(pieces.size());
  }
  const nest::SheetSize roll{.width = 10'000'000, .height = 300'000, .gap = 2000, .roll = true};
  const auto goOn = [] { return true; };
  std::vector<std::size_t> order = pieces;
  nest::OutlinePacker keeping(shapes, pieces, roll);
  const auto first = keeping.Pack(order, roll.width, goOn);
  ASSERT_TRUE(first);
  keeping.Keep(order, *first);
  std::swap(order[7], order[10]);
  nest::OutlinePacker fresh(shapes, pieces, roll);
  const auto kept = keeping.Pack(order, roll.width, goOn);
  const auto anew = fresh.Pack(order, roll.width, goOn);
  ASSERT_TRUE(kept && anew);
  EXPECT_EQ(kept->used, anew->used);
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    EXPECT_EQ(kept->pieces[i].at, anew->pieces[i].at) << i;
    EXPECT_EQ(kept->pieces[i].turn, anew->pieces[i].turn) << i;
  }
  EXPECT_FALSE(fresh.Pack(order, anew->used.front() - 1, goOn));
  EXPECT_TRUE(fresh.Pack(order, anew->used.front(), goOn));
}

}  // namespace
}  // namespace rastrel::cutting
