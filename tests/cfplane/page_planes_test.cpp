#include "cfplane/page_planes.h"

#include <gtest/gtest.h>

#include "tests/support/page_files.h"

using namespace rastrel::planes;
namespace pages = rastrel::pages;
namespace test = rastrel::test;
using rastrel::test::ScratchDirectory;

namespace {

std::string Text(const rastrel::Expected<Pixels>& pixels) {
  if (!pixels) return "failed: " + Describe(pixels.Error());
  const auto bytes = pixels->block.Bytes();
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// Rows of `samples`, each followed by zeros up to a multiple of 4.
std::string Padded(const std::string& samples, std::size_t rowBytes) {
  std::string padded;
  for (std::size_t at = 0; at < samples.size(); at += rowBytes) {
    padded += samples.substr(at, rowBytes);
    padded.append((4 - rowBytes % 4) % 4, '\0');
  }
  return padded;
}

TEST(PagePicture, of_rgb_is_blue_green_red_in_rows_of_whole_four_bytes) {
  for (unsigned width = 1; width <= 9; ++width) {
    const ScratchDirectory root;
    const std::string samples = test::CountingBytes(std::size_t{width} * 3 * 4);
    const auto info = test::WriteRgbPage(root, "p", width, 4, samples);
    std::string swapped = samples;
    for (std::size_t i = 0; i < swapped.size(); i += 3) std::swap(swapped[i], swapped[i + 2]);
    EXPECT_EQ(Text(ReadPicture(root.Path("p"), info)), Padded(swapped, width * 3)) << width;
  }
}

TEST(PagePicture, of_gray_is_the_samples_in_rows_of_whole_four_bytes) {
  for (unsigned width = 1; width <= 9; ++width) {
    const ScratchDirectory root;
    const std::string samples = test::CountingBytes(std::size_t{width} * 4);
    const auto info = test::WriteGrayPage(root, "p", width, 4, samples);
    EXPECT_EQ(Text(ReadPicture(root.Path("p"), info)), Padded(samples, width)) << width;
  }
}

TEST(PagePicture, of_many_rows_is_whole) {
  // Rows of 1001 pixels, of which the buffer holds some and a part of the next.
  const ScratchDirectory root;
  const std::string samples = test::CountingBytes(std::size_t{1001} * 3 * 500);
  const auto info = test::WriteRgbPage(root, "p", 1001, 500, samples);
  std::string swapped = samples;
  for (std::size_t i = 0; i < swapped.size(); i += 3) std::swap(swapped[i], swapped[i + 2]);
  EXPECT_TRUE(Text(ReadPicture(root.Path("p"), info)) == Padded(swapped, 3003));
}

TEST(PagePicture, of_a_row_larger_than_the_buffer_is_whole) {
  const ScratchDirectory root;
  const std::string samples = test::CountingBytes(std::size_t{100'001} * 3 * 2);
  const auto info = test::WriteRgbPage(root, "p", 100'001, 2, samples);
  std::string swapped = samples;
  for (std::size_t i = 0; i < swapped.size(); i += 3) std::swap(swapped[i], swapped[i + 2]);
  EXPECT_TRUE(Text(ReadPicture(root.Path("p"), info)) == Padded(swapped, 300'003));
}

TEST(PagePicture, is_none_of_a_separated_page) {
  const ScratchDirectory root;
  const auto info = test::WriteSeparatedPage(root, "p", 3, 5);
  EXPECT_EQ(Text(ReadPicture(root.Path("p"), info)),
            "failed: " + root.Path("p") + ": the page is separated, and is no picture");
}

TEST(PagePicture, has_red_green_and_blue_side_by_side_in_one_file) {
  const ScratchDirectory root;
  auto info = test::WriteRgbPage(root, "p", 1, 1, "abc");
  std::swap(info.planes[0].channel, info.planes[2].channel);
  EXPECT_FALSE(PictureForm(info));
  root.Write("p/other.ppm", test::Netpbm("P6", 1, 1, "abc"));
  info = test::DescribePage(
      root, "p", 1, 1, pages::PageColor::Rgb,
      {{"Red", "page.ppm", 0}, {"Green", "other.ppm", 1}, {"Blue", "page.ppm", 2}});
  EXPECT_FALSE(PictureForm(info));
}

TEST(PagePicture, has_files_of_the_page_s_size_and_samples) {
  const ScratchDirectory root;
  auto info = test::WriteRgbPage(root, "p", 2, 1, "abcdef");
  ++info.width;
  EXPECT_EQ(Text(ReadPicture(root.Path("p"), info)),
            "failed: read pixels '" + root.Path("p/page.ppm") +
                "': has 2 by 1 pixels, and the page 3 by 1");
  info.width = 2;
  info.height = 2;
  EXPECT_FALSE(ReadPicture(root.Path("p"), info));
  root.Write("p/page.ppm", test::Netpbm("P5", 2, 1, "ab"));
  info = test::DescribePage(
      root, "p", 2, 1, pages::PageColor::Rgb,
      {{"Red", "page.ppm", 0}, {"Green", "page.ppm", 1}, {"Blue", "page.ppm", 2}});
  EXPECT_FALSE(ReadPicture(root.Path("p"), info)) << "one sample a pixel";
}

TEST(PageForm, takes_8_bits_a_sample_alone) {
  pages::PageInfo info;
  info.width = info.height = 1;
  info.color = pages::PageColor::Gray;
  info.planes = {{"Gray", "page.pgm", 0}};
  for (const unsigned bits : {1U, 7U, 8U, 9U, 16U}) {
    info.bits = bits;
    EXPECT_EQ(static_cast<bool>(PictureForm(info)), bits == 8) << bits;
    EXPECT_EQ(static_cast<bool>(PlaneForm(info, 0)), bits == 8) << bits;
  }
}

TEST(PageForm, has_sides_of_2000000_pixels_and_less_than_4_GiB) {
  pages::PageInfo info;
  info.color = pages::PageColor::Gray;
  info.planes = {{"Gray", "page.pgm", 0}};
  const auto fits = [&](unsigned width, unsigned height) {
    info.width = width;
    info.height = height;
    return static_cast<bool>(PictureForm(info));
  };
  EXPECT_TRUE(fits(1'999'999, 1));
  EXPECT_TRUE(fits(2'000'000, 1));
  EXPECT_FALSE(fits(2'000'001, 1));
  EXPECT_TRUE(fits(1, 2'000'000));
  EXPECT_FALSE(fits(1, 2'000'001));
  // Rows of 4092 bytes: 4092 * 1049601 is 4 GiB less 4 bytes, which is the largest block.
  EXPECT_TRUE(fits(4092, 1'049'600));
  EXPECT_TRUE(fits(4092, 1'049'601));
  EXPECT_FALSE(fits(4096, 1'048'576));
}

TEST(PagePlane, of_a_separated_page_is_its_file_s_samples) {
  const ScratchDirectory root;
  const auto info = test::WriteSeparatedPage(root, "p", 5, 3);
  for (std::size_t plane = 0; plane < 5; ++plane)
    EXPECT_EQ(Text(ReadPlane(root.Path("p"), info, plane)),
              Padded(std::string(15, static_cast<char>(1 + plane)), 5))
        << plane;
  EXPECT_FALSE(ReadPlane(root.Path("p"), info, 5));
}

TEST(PagePlane, of_an_rgb_page_is_one_sample_of_each_pixel) {
  const ScratchDirectory root;
  const auto info = test::WriteRgbPage(root, "p", 2, 2, "rgbRGBsuvSUV");
  EXPECT_EQ(Text(ReadPlane(root.Path("p"), info, 0)), Padded("rRsS", 2));
  EXPECT_EQ(Text(ReadPlane(root.Path("p"), info, 1)), Padded("gGuU", 2));
  EXPECT_EQ(Text(ReadPlane(root.Path("p"), info, 2)), Padded("bBvV", 2));
}

TEST(PagePlane, in_a_sample_that_its_file_has_not_is_refused) {
  const ScratchDirectory root;
  auto info = test::WriteRgbPage(root, "p", 1, 1, "abc");
  info.planes[0].channel = 2;
  EXPECT_TRUE(ReadPlane(root.Path("p"), info, 0));
  info.planes[0].channel = 3;
  EXPECT_FALSE(ReadPlane(root.Path("p"), info, 0));
}

}  // namespace
