#include "cfplane/pixel_block.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <utility>

using rastrel::planes::BlockForm;
using rastrel::planes::PixelBlock;

namespace {

TEST(PixelBlock, is_zeroed_and_can_be_written_to_its_last_byte) {
  constexpr std::size_t LargePage = std::size_t{2} << 20;
  for (const std::size_t bytes : {std::size_t{1}, std::size_t{4097}, LargePage - 1, LargePage,
                                  LargePage + 1, 3 * LargePage - 5}) {
    auto block = PixelBlock::Allocate(bytes);
    ASSERT_TRUE(block) << bytes;
    EXPECT_EQ(block->Bytes().size(), bytes);
    EXPECT_TRUE(std::ranges::all_of(block->Bytes(), [](std::byte b) { return b == std::byte{0}; }));
    std::ranges::fill(block->Bytes(), std::byte{7});
    const PixelBlock moved = std::move(*block);
    EXPECT_EQ(moved.Bytes().back(), std::byte{7});
  }
}

TEST(PixelBlock, fails_where_there_is_not_as_much_memory) {
  const auto block = PixelBlock::Allocate(std::size_t{1} << 60);
  ASSERT_FALSE(block);
  EXPECT_EQ(block.Error().error, ENOMEM);
}

TEST(BlockForm, pads_each_row_to_four_bytes) {
  EXPECT_EQ((BlockForm{1, 1, 1}.Stride()), 4U);
  EXPECT_EQ((BlockForm{4, 1, 1}.Stride()), 4U);
  EXPECT_EQ((BlockForm{5, 1, 1}.Stride()), 8U);
  EXPECT_EQ((BlockForm{1, 1, 3}.Stride()), 4U);
  EXPECT_EQ((BlockForm{4, 1, 3}.Stride()), 12U);
  EXPECT_EQ((BlockForm{5, 7, 3}.Bytes()), 16U * 7U);
  EXPECT_EQ((BlockForm{2'000'000, 2'000'000, 3}.Bytes()), 12'000'000'000'000U);
}

}  // namespace
