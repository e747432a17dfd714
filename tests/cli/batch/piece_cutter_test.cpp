#include "cli/batch/piece_cutter.h"

#include <gtest/gtest.h>

namespace rastrel::cli {
namespace {

TEST(PieceCutter, pieces_are_of_one_file_until_a_file_was_measured) {
  const GatheredResults results(100, false);
  PieceCutter cutter(results, 100, 5, 2);
  for (std::size_t file = 0; file < 3; ++file) {
    const auto piece = cutter.Next();
    ASSERT_TRUE(piece);
    EXPECT_EQ(piece->first, file);
    EXPECT_EQ(piece->count, 1U);
  }
}

TEST(PieceCutter, a_piece_has_as_many_files_as_its_seconds_take) {
  const GatheredResults results(1000, false);
  PieceCutter cutter(results, 1000, 5, 2);
  cutter.Measured(2, 1.0);
  EXPECT_EQ(cutter.Next()->count, 10U);
  // A file that takes longer than a piece is a piece.
  cutter.Measured(1, 10'000);
  EXPECT_EQ(cutter.Next()->count, 1U);
}

TEST(PieceCutter, the_rest_is_shared_by_all_workers) {
  const GatheredResults results(40, false);
  PieceCutter cutter(results, 40, 5, 4);
  cutter.Measured(1000, 1.0);
  std::size_t files = 0;
  std::size_t pieces = 0;
  std::size_t last = 40;
  while (const auto piece = cutter.Next()) {
    EXPECT_EQ(piece->first, files);
    EXPECT_LE(piece->count, last);
    last = piece->count;
    files += piece->count;
    ++pieces;
  }
  EXPECT_EQ(files, 40U);
  EXPECT_GE(pieces, 8U);
  EXPECT_EQ(last, 1U);
}

TEST(PieceCutter, files_with_a_result_are_passed_over_and_part_pieces) {
  GatheredResults results(6, false);
  for (const std::size_t file : {0U, 3U, 5U}) results.Add(file, {});
  PieceCutter cutter(results, 6, 5, 1);
  cutter.Measured(1000, 1.0);
  std::vector<std::size_t> files;
  while (const auto piece = cutter.Next())
    for (std::size_t i = 0; i < piece->count; ++i) files.push_back(piece->first + i);
  EXPECT_EQ(files, (std::vector<std::size_t>{1, 2, 4}));
}

TEST(PieceCutter, a_file_is_given_out_three_times_at_most) {
  const GatheredResults results(1, false);
  PieceCutter cutter(results, 1, 5, 1);
  for (int attempt = 1; attempt <= 3; ++attempt) {
    const auto piece = cutter.Next();
    ASSERT_TRUE(piece) << attempt;
    EXPECT_EQ(piece->count, 1U);
    EXPECT_EQ(cutter.Again(0), attempt < 3) << attempt;
  }
  EXPECT_FALSE(cutter.Next());
}

}  // namespace
}  // namespace rastrel::cli
