#include "host/render/plane_tiff.h"

#include <gtest/gtest.h>

namespace rastrel::render {
namespace {

std::uint32_t Number(const std::string& bytes, std::size_t at) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < 4; ++i)
    number |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[at + i])) << 8 * i;
  return number;
}

TEST(PlaneTiff, of_no_pages_is_refused) { EXPECT_FALSE(PlaneTiff::Of({})); }

TEST(PlaneTiff, has_each_directory_at_an_even_place_also_after_odd_pixels) {
  const auto tiff =
      PlaneTiff::Of({{"Cyan", 3, 1, 72, 72}, {"Long name of an ink", 1, 1, 300, 150}});
  ASSERT_TRUE(tiff);
  std::string file = tiff->Head(0) + std::string(3, '\x11');
  file += tiff->Head(1) + std::string(1, '\x22');
  EXPECT_EQ(file.substr(0, 4), std::string("II*\0", 4));
  const std::uint32_t first = Number(file, 4);
  EXPECT_EQ(first, 8U);
  EXPECT_EQ(file[first], 15);  // fields
  const std::uint32_t second = Number(file, first + 2 + 15 * 12);
  EXPECT_EQ(second % 2, 0U);
  EXPECT_EQ(file[second], 15);
  EXPECT_EQ(Number(file, second + 2 + 15 * 12), 0U) << "the last page";
  // The pixels are where the directories say: field 7 is StripOffsets.
  EXPECT_EQ(file[Number(file, first + 2 + 6 * 12 + 8)], '\x11');
  EXPECT_EQ(file[Number(file, second + 2 + 6 * 12 + 8)], '\x22');
}

TEST(PlaneTiff, ends_at_four_gibibytes) {
  // A page's head takes 8 bytes of the file's own, 186 of its directory, 16 of resolutions and 6 of
  // the name "Cyan" with its end.
  constexpr std::uint32_t heads = 8 + 186 + 16 + 6;
  constexpr std::uint32_t room = 0xFFFFFFFF - heads;
  EXPECT_TRUE(PlaneTiff::Of({{"Cyan", room - 1, 1, 72, 72}}));
  EXPECT_FALSE(PlaneTiff::Of({{"Cyan", room + 1, 1, 72, 72}}));
  EXPECT_FALSE(PlaneTiff::Of({{"Cyan", 400'000, 400'000, 72, 72}}));
}

}  // namespace
}  // namespace rastrel::render
