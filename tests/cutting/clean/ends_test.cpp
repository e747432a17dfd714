#include "cutting/clean/ends.h"

#include <gtest/gtest.h>

#include <vector>

namespace rastrel::cutting::clean {
namespace {

// Ends at distances of more than a tolerance beside each other, and one within it of the last.
std::vector<OpenEnd> Row(std::size_t count, double distance, double gap, bool upright) {
  std::vector<OpenEnd> ends;
  for (std::size_t i = 0; i <= count; ++i) {
    const double along = i < count ? static_cast<double>(i) * distance
                                   : static_cast<double>(count - 1) * distance + gap;
    ends.push_back({.point = upright ? Point{0, along} : Point{along, 0}, .contour = i});
  }
  return ends;
}

TEST(PairEnds, finds_the_one_pair_of_a_thousand_ends_in_a_row_or_a_column) {
  for (const bool upright : {false, true}) {
    const auto pairs = PairEnds(Row(1000, 0.11, 0.05, upright), 0.1);
    ASSERT_EQ(pairs.size(), 1U);
    EXPECT_EQ(pairs[0].first + pairs[0].second, 999U + 1000U);
    EXPECT_NEAR(pairs[0].gap, 0.05, 1e-9);
  }
}

TEST(PairEnds, pairs_ends_at_the_tolerance_and_none_beyond) {
  EXPECT_EQ(PairEnds(Row(2, 0.5, 0.125, false), 0.125).size(), 1U);
  EXPECT_EQ(PairEnds(Row(2, 0.5, 0.126, false), 0.125).size(), 0U);
}

TEST(PairEnds, pairs_none_of_different_groups) {
  auto ends = Row(1, 1, 0.05, false);
  EXPECT_EQ(PairEnds(ends, 0.1).size(), 1U);
  ends[1].group = 1;
  EXPECT_EQ(PairEnds(ends, 0.1).size(), 0U);
}

TEST(PairEnds, gives_an_end_the_nearest_of_two_partners) {
  const std::vector<OpenEnd> ends{{.point = {0, 0}, .contour = 0},
                                  {.point = {0.08, 0}, .contour = 1},
                                  {.point = {0.13, 0}, .contour = 2}};
  const auto pairs = PairEnds(ends, 0.1);
  ASSERT_EQ(pairs.size(), 1U);
  EXPECT_EQ(pairs[0].first + pairs[0].second, 3U);
}

}  // namespace
}  // namespace rastrel::cutting::clean
