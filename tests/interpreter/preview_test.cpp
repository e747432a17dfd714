#include "interpreter/preview.h"

#include <gtest/gtest.h>
#include <png.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "tests/support/scratch_directory.h"

namespace rastrel::interpreter {
namespace {

struct Picture {
  unsigned width = 0;
  unsigned height = 0;
  std::vector<unsigned char> rgb;

  [[nodiscard]] int At(unsigned x, unsigned y, unsigned channel) const {
    return rgb[(std::size_t{y} * width + x) * 3 + channel];
  }
};

Picture ReadPng(const std::string& path) {
  png_image image;
  std::memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  Picture picture;
  EXPECT_NE(png_image_begin_read_from_file(&image, path.c_str()), 0);
  image.format = PNG_FORMAT_RGB;
  picture.width = image.width;
  picture.height = image.height;
  picture.rgb.resize(PNG_IMAGE_SIZE(image));
  EXPECT_NE(png_image_finish_read(&image, nullptr, picture.rgb.data(), 0, nullptr), 0);
  return picture;
}

// A picture of a page whose pixels come from a function.
template <typename Pixel>
Picture Make(const PageSize& size, Pixel pixel) {
  const test::ScratchDirectory directory;
  Preview preview(size);
  std::vector<std::byte> row(size.RowBytes());
  for (unsigned y = 0; y < size.height; ++y) {
    if (!preview.Wants(y)) continue;
    for (unsigned x = 0; x < size.width; ++x) {
      for (unsigned c = 0; c < size.channels; ++c) {
        row[std::size_t{x} * size.channels + c] = static_cast<std::byte>(pixel(x, y, c));
      }
    }
    preview.AddRow(y, row);
  }
  EXPECT_TRUE(preview.Write(directory.Path("preview.png")));
  return ReadPng(directory.Path("preview.png"));
}

TEST(Preview, of_a_small_page_is_the_page) {
  const Picture picture =
      Make({5, 3, 3}, [](unsigned x, unsigned y, unsigned c) { return x * 40 + y * 10 + c; });
  ASSERT_EQ(picture.width, 5U);
  ASSERT_EQ(picture.height, 3U);
  for (unsigned y = 0; y < 3; ++y) {
    for (unsigned x = 0; x < 5; ++x) {
      EXPECT_EQ(picture.At(x, y, 2), static_cast<int>(x * 40 + y * 10 + 2));
    }
  }
}

TEST(Preview, has_256_pixels_on_its_longer_side) {
  const auto white = [](unsigned, unsigned, unsigned) { return 255; };
  const Picture tall = Make({1000, 2000, 1}, white);
  EXPECT_EQ(tall.width, 128U);
  EXPECT_EQ(tall.height, 256U);
  const Picture line = Make({100000, 1, 3}, white);
  EXPECT_EQ(line.width, 256U);
  EXPECT_EQ(line.height, 1U);
  EXPECT_EQ(line.At(255, 0, 0), 255);
}

TEST(Preview, keeps_things_where_they_are) {
  // Left half red, lower quarter black.
  const Picture picture = Make({1001, 777, 3}, [](unsigned x, unsigned y, unsigned c) {
    if (y >= 583) return 0;
    return x < 500 && c > 0 ? 0 : 255;
  });
  EXPECT_EQ(picture.At(10, 10, 0), 255);
  EXPECT_EQ(picture.At(10, 10, 1), 0);
  EXPECT_EQ(picture.At(120, 100, 1), 0);
  EXPECT_EQ(picture.At(135, 100, 1), 255);
  EXPECT_EQ(picture.At(200, 190, 0), 0);
}

TEST(Preview, takes_the_mean_of_fine_detail) {
  // Stripes of one pixel, in cells of 4 by 4 pixels: every sample counts.
  const Picture picture =
      Make({1024, 1024, 1}, [](unsigned x, unsigned, unsigned) { return x % 2 == 0 ? 0 : 200; });
  EXPECT_EQ(picture.At(17, 99, 0), 100);
}

TEST(Preview, replaces_no_file) {
  const test::ScratchDirectory directory;
  directory.Write("preview.png", "old");
  const auto written = Preview({4, 4, 1}).Write(directory.Path("preview.png"));
  ASSERT_FALSE(written);
  EXPECT_EQ(written.Error().error, EEXIST);
  EXPECT_EQ(directory.Read("preview.png"), "old");
}

}  // namespace
}  // namespace rastrel::interpreter
