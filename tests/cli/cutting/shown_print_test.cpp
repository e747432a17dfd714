#include "cli/cutting/shown_print.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "rastrel/platform/os/native_file.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::cli {
namespace {

// A gray picture of one file of samples, with an inch of as many pixels as a millimetre has 10.
class ShownPrint : public testing::Test {
 protected:
  PagePicture Gray(std::uint32_t width, std::uint32_t height, const std::string& samples) {
    m_Scratch.Write("samples", samples);
    PagePicture picture;
    auto file = os::RandomAccessFile::Open(m_Scratch.Wide("samples"));
    EXPECT_TRUE(file);
    picture.parts.push_back({*std::move(file), 0});
    picture.inks.process = cutting::ProcessColors::Gray;
    picture.width = width;
    picture.height = height;
    picture.xResolution = picture.yResolution = 254;
    return picture;
  }
  // The green of a pixel.
  static int Strength(const cutting::ShownPrint& print, int x, int y) {
    return static_cast<int>(print.bgra.at(static_cast<std::size_t>(y * print.width + x) * 4 + 1));
  }

  test::ScratchDirectory m_Scratch;
};

TEST_F(ShownPrint, of_a_small_page_has_its_pixels_and_its_place) {
  PagePicture picture = Gray(3, 2, std::string("\x00\x40\x80\xC0\xE0\xFF", 6));
  const auto print = PrintOnScreen(picture, {.left = 10, .bottom = 20, .right = 0, .top = 0});
  ASSERT_TRUE(print);
  ASSERT_EQ(print->width, 3);
  ASSERT_EQ(print->height, 2);
  const std::vector<int> expected{0x00, 0x40, 0x80, 0xC0, 0xE0, 0xFF};
  for (int at = 0; at < 6; ++at) EXPECT_EQ(Strength(*print, at % 3, at / 3), expected.at(at));
  EXPECT_DOUBLE_EQ(print->place.left, 1);
  EXPECT_DOUBLE_EQ(print->place.right, 1.3);
  EXPECT_DOUBLE_EQ(print->place.bottom, 2);
  EXPECT_DOUBLE_EQ(print->place.top, 2.2);
}

// 4097 pixels are one more than is shown, so that squares of 2 by 2 become one: 2049 of them, the
// last of a row and the last row with one pixel instead of two.
TEST_F(ShownPrint, of_a_page_over_the_maximum_has_the_mean_of_squares_that_reach_over_its_edge) {
  constexpr std::uint32_t Width = MaximumShownEdge + 1;
  std::string samples(std::size_t{Width} * 3, '\xFF');
  samples[0] = '\0';                           // a quarter of the first square
  samples[Width - 1] = '\0';                   // half of the last of the first row
  samples[std::size_t{Width} * 2] = '\0';      // half of the first of the last row
  samples[std::size_t{Width} * 3 - 1] = '\0';  // all of the last
  PagePicture picture = Gray(Width, 3, samples);
  const auto print = PrintOnScreen(picture, {});
  ASSERT_TRUE(print);
  ASSERT_EQ(print->width, 2049);
  ASSERT_EQ(print->height, 2);
  EXPECT_EQ(Strength(*print, 0, 0), 191);  // 255 * 3 / 4
  EXPECT_EQ(Strength(*print, 1, 0), 255);
  EXPECT_EQ(Strength(*print, 2048, 0), 128);  // 255 / 2, rounded up
  EXPECT_EQ(Strength(*print, 0, 1), 128);
  EXPECT_EQ(Strength(*print, 2048, 1), 0);
  EXPECT_DOUBLE_EQ(print->place.right, 409.8);
  EXPECT_DOUBLE_EQ(print->place.top, 0.3);
  EXPECT_NEAR(print->place.bottom, -0.1, 1e-9);
}

TEST_F(ShownPrint, of_the_maximum_is_not_made_smaller) {
  PagePicture picture = Gray(MaximumShownEdge, 1, std::string(MaximumShownEdge, '\x20'));
  const auto print = PrintOnScreen(picture, {});
  ASSERT_TRUE(print);
  EXPECT_EQ(print->width, 4096);
  EXPECT_EQ(print->height, 1);
}

TEST_F(ShownPrint, of_files_that_are_cut_short_fails) {
  PagePicture picture = Gray(3, 2, "12345");
  EXPECT_FALSE(PrintOnScreen(picture, {}));
}

}  // namespace
}  // namespace rastrel::cli
