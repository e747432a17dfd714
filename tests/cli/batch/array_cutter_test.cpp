#include "cli/batch/array_cutter.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace rastrel::cli {
namespace {

TEST(ArrayCutter, the_first_array_is_a_few_single_files) {
  const GatheredResults results(100, false);
  const ArrayCutter cutter(results, 100, 5);
  const auto pieces = cutter.Next();
  ASSERT_EQ(pieces.size(), ArrayCutter::SamplePieces);
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    EXPECT_EQ(pieces[i].first, i);
    EXPECT_EQ(pieces[i].count, 1U);
  }
}

TEST(ArrayCutter, the_rest_is_given_out_at_once_in_pieces_of_so_many_seconds) {
  GatheredResults results(24, false);
  ArrayCutter cutter(results, 24, 5);
  results.Add(0, {});
  results.Add(12, {});
  cutter.Measured(1, 0.5);
  const auto pieces = cutter.Next();
  ASSERT_EQ(pieces.size(), 4U);
  EXPECT_EQ(pieces[0].first, 1U);
  EXPECT_EQ(pieces[0].count, 10U);
  EXPECT_EQ(pieces[1].first, 11U);
  EXPECT_EQ(pieces[1].count, 1U);
  EXPECT_EQ(pieces[2].first, 13U);
  EXPECT_EQ(pieces[2].count, 10U);
  EXPECT_EQ(pieces[3].first, 23U);
  EXPECT_EQ(pieces[3].count, 1U);
}

TEST(ArrayCutter, an_array_has_no_more_pieces_than_a_cluster_takes) {
  for (const std::size_t files : {std::size_t{999}, std::size_t{1000}, std::size_t{1001}}) {
    const GatheredResults results(files, false);
    ArrayCutter cutter(results, files, 5);
    cutter.Measured(1, 60);
    EXPECT_EQ(cutter.Next().size(), std::min<std::size_t>(files, 1000));
  }
}

TEST(ArrayCutter, files_of_a_piece_that_died_come_alone_up_to_the_attempt_limit) {
  const GatheredResults results(4, false);
  ArrayCutter cutter(results, 4, 100);
  cutter.Measured(1, 1);
  EXPECT_TRUE(cutter.Again(1));
  const auto pieces = cutter.Next();
  ASSERT_EQ(pieces.size(), 3U);
  EXPECT_EQ(pieces[0].count, 1U);
  EXPECT_EQ(pieces[1].first, 1U);
  EXPECT_EQ(pieces[1].count, 1U);
  EXPECT_EQ(pieces[2].count, 2U);
  EXPECT_TRUE(cutter.Again(1));
  EXPECT_FALSE(cutter.Again(1));
}

TEST(ArrayCutter, nothing_is_left_when_each_file_has_a_result) {
  GatheredResults results(1, false);
  results.Add(0, {});
  EXPECT_TRUE(ArrayCutter(results, 1, 5).Next().empty());
}

}  // namespace
}  // namespace rastrel::cli
