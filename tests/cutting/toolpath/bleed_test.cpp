#include "cutting/toolpath/bleed.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/cutting/toolpath/shapes.h"

namespace rastrel::cutting {
namespace {

using test::Circle;
using test::Line;
using test::Rectangle;

// 100 by 80 mm of pixels of 0.25 mm.
struct Page {
  static constexpr double Pixel = 0.25;
  static constexpr std::size_t Width = 400;
  static constexpr std::size_t Height = 320;
  std::vector<std::uint8_t> pixels = std::vector<std::uint8_t>(Width * Height);

  void Fill(double left, double bottom, double right, double top, std::uint8_t value = 1) {
    for (std::size_t row = 0; row < Height; ++row) {
      for (std::size_t column = 0; column < Width; ++column) {
        const double x = (static_cast<double>(column) + 0.5) * Pixel;
        const double y = (static_cast<double>(Height - 1 - row) + 0.5) * Pixel;
        if (x > left && x < right && y > bottom && y < top) pixels[row * Width + column] = value;
      }
    }
  }
  [[nodiscard]] Coverage View() const { return {pixels, Width, Height, Pixel}; }
};

CutJob JobOf(std::vector<Contour> contours, Operation operation = Operation::Cut) {
  return {.width = 100,
          .height = 80,
          .paths = {{.contours = {}}, {.contours = std::move(contours), .operation = operation}}};
}

TEST(CheckBleed, print_that_reaches_over_the_cut_everywhere_has_no_gap) {
  Page page;
  page.Fill(7, 7, 63, 53);
  EXPECT_TRUE(CheckBleed(JobOf({Rectangle(10, 10, 60, 50)}), page.View(), 2).empty());
  EXPECT_TRUE(CheckBleed(JobOf({Circle({35, 30}, 20)}), page.View(), 2).empty());
}

TEST(CheckBleed, a_side_with_too_little_print_is_found_with_its_reach) {
  Page page;
  // Enough on three sides, and 1 mm on the right one.
  page.Fill(7, 7, 61, 53);
  const std::vector<BleedGap> gaps =
      CheckBleed(JobOf({Circle({80, 70}, 3), Rectangle(10, 10, 60, 50)}), page.View(), 2);
  ASSERT_EQ(gaps.size(), 1U);
  EXPECT_EQ(gaps[0].path, 1U);
  EXPECT_EQ(gaps[0].contour, 1U);
  EXPECT_NEAR(gaps[0].reach, 1, Page::Pixel);
  EXPECT_NEAR(gaps[0].length, 40, 1);
  EXPECT_LT(Distance(gaps[0].from, {60, 10}), 1);
  EXPECT_LT(Distance(gaps[0].to, {60, 50}), 1);
}

TEST(CheckBleed, print_that_ends_before_the_cut_has_a_negative_reach) {
  Page page;
  page.Fill(10.5, 7, 63, 53);
  const std::vector<BleedGap> gaps = CheckBleed(JobOf({Rectangle(10, 10, 60, 50)}), page.View(), 2);
  ASSERT_EQ(gaps.size(), 1U);
  EXPECT_NEAR(gaps[0].reach, -0.5, Page::Pixel);
}

TEST(CheckBleed, an_unprinted_edge_needs_no_bleed) {
  Page page;
  page.Fill(20, 20, 50, 40);
  EXPECT_TRUE(CheckBleed(JobOf({Rectangle(10, 10, 60, 50)}), page.View(), 3).empty());
}

TEST(CheckBleed, the_waste_of_a_hole_is_within_it) {
  Page page;
  page.Fill(5, 5, 95, 75);
  page.Fill(31, 31, 49, 49, 0);
  const CutJob job = JobOf({Rectangle(10, 10, 90, 70), Rectangle(30, 30, 50, 50)});
  const std::vector<BleedGap> gaps = CheckBleed(job, page.View(), 2);
  ASSERT_EQ(gaps.size(), 1U);
  EXPECT_EQ(gaps[0].contour, 1U);
  EXPECT_NEAR(gaps[0].reach, 1, Page::Pixel);
  EXPECT_NEAR(gaps[0].length, 80, 2);
  page.Fill(31, 31, 49, 49, 1);
  EXPECT_TRUE(CheckBleed(job, page.View(), 2).empty());
}

TEST(CheckBleed, a_run_over_the_start_is_one) {
  Page page;
  page.Fill(7, 9, 63, 53);
  // It begins in the middle of the side that lacks print.
  const Contour ring = test::Polygon({{35, 10}, {60, 10}, {60, 50}, {10, 50}, {10, 10}});
  const std::vector<BleedGap> gaps = CheckBleed(JobOf({ring}), page.View(), 2);
  ASSERT_EQ(gaps.size(), 1U);
  EXPECT_NEAR(gaps[0].length, 50, 1);
  EXPECT_LT(Distance(gaps[0].from, {10, 10}), 1);
  EXPECT_LT(Distance(gaps[0].to, {60, 10}), 1);
}

TEST(CheckBleed, beyond_the_page_nothing_is_printed) {
  Page page;
  page.Fill(0, 0, 100, 80);
  EXPECT_EQ(CheckBleed(JobOf({Rectangle(1, 10, 60, 50)}), page.View(), 2).size(), 1U);
}

TEST(CheckBleed, one_pixel_too_little_is_enough) {
  for (const auto& [right, count] : {std::pair{62.0, 0}, {61.75, 0}, {61.25, 1}}) {
    Page page;
    page.Fill(7, 7, right, 53);
    EXPECT_EQ(CheckBleed(JobOf({Rectangle(10, 10, 60, 50)}), page.View(), 2).size(),
              static_cast<std::size_t>(count))
        << right;
  }
}

// A kilometre of creases, which nothing is looked for along, leaves the steps along the cut short.
TEST(CheckBleed, a_short_gap_is_found_however_long_other_operations_are) {
  Page page;
  page.Fill(7, 7, 63, 53);
  page.Fill(60, 32, 63, 33, 0);
  CutJob job = JobOf({Rectangle(10, 10, 60, 50)});
  std::vector<Contour> creases(10'000, Rectangle(5, 5, 30, 30));
  job.paths.push_back({.contours = std::move(creases), .operation = Operation::Crease});
  const std::vector<BleedGap> gaps = CheckBleed(job, page.View(), 2);
  ASSERT_EQ(gaps.size(), 1U);
  EXPECT_NEAR(gaps[0].from.y, 32.5, 2);
}

TEST(CheckBleed, open_paths_and_other_operations_have_none) {
  Page page;
  page.Fill(10, 10, 60, 50);
  EXPECT_TRUE(CheckBleed(JobOf({Line({10, 10}, {60, 10})}), page.View(), 2).empty());
  EXPECT_TRUE(
      CheckBleed(JobOf({Rectangle(10, 10, 60, 50)}, Operation::Crease), page.View(), 2).empty());
}

TEST(CheckBleed, hostile_numbers_end_without_a_crash) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  Page page;
  page.Fill(0, 0, 50, 50);
  const CutJob job = JobOf({Rectangle(0, 0, 1e300, 1), Rectangle(nan, 0, 1, 1),
                            Rectangle(5, 5, 5, 5), Rectangle(-1e5, -1e5, 1e5, 1e5)});
  for (const double bleed : {nan, -1.0, 0.0, 1e-9, 1e300}) {
    Coverage view = page.View();
    EXPECT_LT(CheckBleed(job, view, bleed).size(), 100U);
    view.pixel = nan;
    EXPECT_TRUE(CheckBleed(job, view, bleed).empty());
    EXPECT_TRUE(CheckBleed(job, {}, bleed).empty());
  }
  Coverage cut = page.View();
  cut.height *= 2;
  EXPECT_TRUE(CheckBleed(job, cut, 2).empty());
}

}  // namespace
}  // namespace rastrel::cutting
