#include "server/web/preview/page_picture.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <string>
#include <vector>

#include "server/web/preview/png_bytes.h"
#include "tests/support/page_files.h"

using rastrel::FailureCode;
using rastrel::test::CountingBytes;
using rastrel::test::DescribePage;
using rastrel::test::GrayTiff;
using rastrel::test::ScratchDirectory;
using rastrel::test::WriteGrayPage;
using rastrel::test::WriteRgbPage;
namespace pages = rastrel::pages;

namespace rastrel::server::web {
namespace {

// A page whose planes have one sample each; "Gold" has a look, and "Varnish" none.
pages::PageInfo WriteInks(const ScratchDirectory& root,
                          const std::vector<std::pair<std::string, std::string>>& inks,
                          unsigned width) {
  std::vector<pages::PagePlane> planes;
  for (const auto& [name, samples] : inks) {
    const std::string file = "plane-" + std::to_string(planes.size()) + ".tif";
    root.Write("p/" + file, GrayTiff({.width = width, .height = 1}, samples));
    planes.push_back({name, file, 0});
    if (name == "Gold") planes.back().ink = pages::InkColor{0, 0.5, 1, 0};
  }
  return DescribePage(root, "p", width, 1, pages::PageColor::Separations, std::move(planes));
}

Picture Draw(const ScratchDirectory& root, const pages::PageInfo& page,
             const PictureRequest& request) {
  const auto picture = DrawPart(root.Path("p"), page, request);
  EXPECT_TRUE(picture) << Describe(picture.Error());
  return picture.ValueOr({});
}

std::string WhyNot(const ScratchDirectory& root, const pages::PageInfo& page,
                   const PictureRequest& request) {
  const auto picture = DrawPart(root.Path("p"), page, request);
  return picture ? "drawn" : picture.Error().why;
}

std::string Samples(std::initializer_list<int> samples) {
  std::string text;
  for (const int sample : samples) text += static_cast<char>(sample);
  return text;
}

TEST(PagePicture, full_pixels_are_those_of_the_page) {
  const ScratchDirectory root;
  const auto page = WriteRgbPage(root, "p", 5, 3, CountingBytes(45));
  const Picture whole = Draw(root, page, {.width = 5, .height = 3});
  EXPECT_EQ(whole.width, 5U);
  EXPECT_EQ(whole.height, 3U);
  EXPECT_EQ(whole.samples, 3U);
  EXPECT_EQ(whole.bytes, CountingBytes(45));
  // Two pixels of the middle row, from the fourth column on: 15 + 3 * 3 = 24 samples before them.
  const Picture part = Draw(root, page, {.left = 3, .top = 1, .width = 2, .height = 1});
  EXPECT_EQ(part.bytes, CountingBytes(45).substr(24, 6));
}

TEST(PagePicture, a_pixel_is_the_mean_of_those_it_covers) {
  const ScratchDirectory root;
  const auto page = WriteGrayPage(root, "p", 4, 2, Samples({0, 10, 200, 201, 20, 31, 202, 204}));
  const Picture half = Draw(root, page, {.width = 4, .height = 2, .xStep = 2, .yStep = 2});
  // (0 + 10 + 20 + 31) / 4 = 15.25 and (200 + 201 + 202 + 204) / 4 = 201.75.
  EXPECT_EQ(half.bytes, Samples({15, 202}));
}

TEST(PagePicture, of_many_pixels_four_by_four_count) {
  const ScratchDirectory root;
  // Of eight in a row the first, third, fifth and seventh.
  const auto page = WriteGrayPage(root, "p", 8, 1, Samples({10, 99, 20, 99, 30, 99, 40, 99}));
  EXPECT_EQ(Draw(root, page, {.width = 8, .height = 1, .xStep = 8}).bytes, Samples({25}));
}

TEST(PagePicture, the_last_pixels_may_cover_fewer) {
  const ScratchDirectory root;
  const auto page = WriteGrayPage(root, "p", 3, 1, Samples({10, 20, 90}));
  EXPECT_EQ(Draw(root, page, {.width = 3, .height = 1, .xStep = 2}).bytes, Samples({15, 90}));
}

TEST(PagePicture, inks_take_their_share_of_the_light) {
  const ScratchDirectory root;
  // In columns: none, half cyan, full magenta below a fifth of black, half gold, full varnish.
  const auto page = WriteInks(root,
                              {{"Cyan", Samples({255, 127, 255, 255, 255})},
                               {"Magenta", Samples({255, 255, 0, 255, 255})},
                               {"Black", Samples({255, 255, 204, 255, 255})},
                               {"Gold", Samples({255, 255, 255, 127, 255})},
                               {"Varnish", Samples({255, 255, 255, 255, 0})}},
                              5);
  // Gold leaves all red, half of green (128 of 255) and no blue; at 128/255 of its strength it
  // takes 127 * 128/255 = 63.7 of green and 128 of blue. Varnish is gray.
  EXPECT_EQ(Draw(root, page, {.width = 5, .height = 1}).bytes,
            Samples({255, 255, 255, 127, 255, 255, 204, 0, 204, 255, 191, 127, 128, 128, 128}));
}

TEST(PagePicture, an_ink_by_itself_is_gray_or_has_its_color) {
  const ScratchDirectory root;
  const auto page = WriteInks(root, {{"Cyan", Samples({0, 127})}, {"Black", Samples({7, 9})}}, 2);
  const Picture gray = Draw(root, page, {.width = 2, .height = 1, .plane = 0});
  EXPECT_EQ(gray.samples, 1U);
  EXPECT_EQ(gray.bytes, Samples({0, 127}));
  const Picture cyan = Draw(root, page, {.width = 2, .height = 1, .plane = 0, .isTinted = true});
  EXPECT_EQ(cyan.bytes, Samples({0, 255, 255, 127, 255, 255}));
  EXPECT_EQ(Draw(root, page, {.width = 2, .height = 1, .plane = 1}).bytes, Samples({7, 9}));
}

TEST(PagePicture, a_channel_of_light_by_itself_is_gray_or_has_its_color) {
  const ScratchDirectory root;
  const auto page = WriteRgbPage(root, "p", 1, 1, Samples({10, 20, 30}));
  EXPECT_EQ(Draw(root, page, {.width = 1, .height = 1, .plane = 1}).bytes, Samples({20}));
  EXPECT_EQ(Draw(root, page, {.width = 1, .height = 1, .plane = 1, .isTinted = true}).bytes,
            Samples({0, 20, 0}));
}

TEST(PagePicture, a_part_that_leaves_the_page_is_refused) {
  const ScratchDirectory root;
  const auto page = WriteGrayPage(root, "p", 3, 2, CountingBytes(6));
  const std::string refused = "the part does not lie on the page";
  EXPECT_EQ(WhyNot(root, page, {.left = 1, .width = 2, .height = 2}), "drawn");
  EXPECT_EQ(WhyNot(root, page, {.left = 1, .width = 3, .height = 2}), refused);
  EXPECT_EQ(WhyNot(root, page, {.top = 1, .width = 3, .height = 2}), refused);
  EXPECT_EQ(WhyNot(root, page, {.left = 3, .width = 1, .height = 1}), refused);
  EXPECT_EQ(WhyNot(root, page, {.top = 4294967295U, .width = 1, .height = 2}), refused);
  EXPECT_EQ(WhyNot(root, page, {.width = 0, .height = 1}), refused);
  EXPECT_EQ(WhyNot(root, page, {.width = 1, .height = 0}), refused);
}

TEST(PagePicture, has_at_most_2048_pixels_a_side) {
  const ScratchDirectory root;
  const auto page = WriteGrayPage(root, "p", 2049, 1, CountingBytes(2049));
  EXPECT_EQ(WhyNot(root, page, {.width = 2047, .height = 1}), "drawn");
  EXPECT_EQ(WhyNot(root, page, {.width = 2048, .height = 1}), "drawn");
  EXPECT_NE(WhyNot(root, page, {.width = 2049, .height = 1}), "drawn");
  EXPECT_EQ(WhyNot(root, page, {.width = 2049, .height = 1, .xStep = 2}), "drawn");
  EXPECT_NE(WhyNot(root, page, {.width = 10, .height = 1, .xStep = 0.5}), "drawn");
}

TEST(PagePicture, planes_that_are_not_as_described_are_refused) {
  const ScratchDirectory root;
  auto page = WriteGrayPage(root, "p", 3, 2, CountingBytes(6));
  const PictureRequest whole{.width = 3, .height = 2};
  page.planes[0].channel = 1;
  EXPECT_EQ(WhyNot(root, page, whole), "the file of a plane has too few samples");
  page.planes[0] = {"Gray", "other.pgm", 0};
  EXPECT_EQ(WhyNot(root, page, whole), "the file of a plane is not listed");
  page.planes[0] = {"Gray", "page.pgm", 0};
  page.bits = 16;
  EXPECT_EQ(WhyNot(root, page, whole), "the page has not 8 bits a sample");
  page.bits = 8;
  EXPECT_EQ(WhyNot(root, page, {.width = 3, .height = 2, .plane = 1}), "the page has no such ink");
  page.width = 2;
  EXPECT_EQ(WhyNot(root, page, {.width = 2, .height = 2}), "a plane has not the page's size");
  page.width = 3;
  page.files[0].bytes = 5;
  EXPECT_NE(WhyNot(root, page, whole), "drawn");
}

TEST(PagePicture, a_whole_page_has_square_pixels_of_its_resolution) {
  pages::PageInfo page;
  page.width = 600;
  page.height = 300;
  page.xResolution = 300;
  page.yResolution = 150;  // two inches by two
  const PictureRequest request = WholePage(page, 100);
  EXPECT_DOUBLE_EQ(request.xStep, 6);
  EXPECT_DOUBLE_EQ(request.yStep, 3);
}

TEST(PagePicture, a_whole_page_is_never_larger_than_the_page_or_the_limit) {
  pages::PageInfo page;
  page.width = 10;
  page.height = 40;
  page.xResolution = page.yResolution = 72;
  EXPECT_DOUBLE_EQ(WholePage(page, 500).xStep, 1);
  EXPECT_DOUBLE_EQ(WholePage(page, 500).yStep, 1);
  page.width = 4096;
  page.height = 40960;  // 2048 pixels high, and a tenth of that wide: 204 whole ones
  EXPECT_DOUBLE_EQ(WholePage(page, 1000).xStep, 4096 / 204.0);
  EXPECT_LE(page.height / WholePage(page, 1000).yStep, 2048.001);
}

TEST(PagePicture, every_width_of_a_whole_page_can_be_drawn) {
  const ScratchDirectory root;
  const auto page = WriteGrayPage(root, "p", 97, 31, CountingBytes(97 * 31));
  for (unsigned width = 1; width <= 98; ++width) {
    const Picture picture = Draw(root, page, WholePage(page, width));
    EXPECT_EQ(picture.width, std::min(width, 97U));
    EXPECT_EQ(picture.bytes.size(), std::size_t{picture.width} * picture.height);
  }
}

TEST(PagePicture, tiles_cover_the_page_at_each_level) {
  pages::PageInfo page;
  page.width = 300;
  page.height = 260;
  EXPECT_EQ(TileLevels(page), 2U);
  const auto corner = Tile(page, 0, 1, 1);
  ASSERT_TRUE(corner);
  EXPECT_EQ(corner->left, 256U);
  EXPECT_EQ(corner->top, 256U);
  EXPECT_EQ(corner->width, 44U);
  EXPECT_EQ(corner->height, 4U);
  const auto all = Tile(page, 1, 0, 0);
  ASSERT_TRUE(all);
  EXPECT_EQ(all->width, 300U);
  EXPECT_EQ(all->height, 260U);
  EXPECT_DOUBLE_EQ(all->xStep, 2);
  EXPECT_FALSE(Tile(page, 0, 2, 0));
  EXPECT_FALSE(Tile(page, 0, 0, 2));
  EXPECT_FALSE(Tile(page, 1, 1, 0));
  EXPECT_FALSE(Tile(page, 2, 0, 0));
  EXPECT_FALSE(Tile(page, 0, 4294967295U, 0));
}

TEST(PagePicture, a_level_is_added_where_one_tile_no_longer_holds_the_page) {
  pages::PageInfo page;
  page.height = 1;
  for (const auto& [width, levels] : std::vector<std::pair<unsigned, unsigned>>{
           {255, 1}, {256, 1}, {257, 2}, {511, 2}, {512, 2}, {513, 3}}) {
    page.width = width;
    EXPECT_EQ(TileLevels(page), levels) << width;
  }
}

// The samples of a PNG file whose rows have the filter Sub, with its sides in front.
std::string Decoded(const std::string& file, std::size_t samples) {
  const auto number = [&](std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = at; i < at + 4; ++i)
      value = value << 8 | static_cast<std::uint8_t>(file[i]);
    return value;
  };
  EXPECT_EQ(file.substr(0, 8), "\x89PNG\r\n\x1a\n");
  EXPECT_EQ(file.substr(12, 4), "IHDR");
  const std::uint32_t width = number(16);
  const std::uint32_t height = number(20);
  EXPECT_EQ(file.substr(37, 4), "IDAT");
  uLongf size = (width * samples + 1) * height;
  std::string rows(size, '\0');
  uLong read = number(33);
  EXPECT_EQ(uncompress2(reinterpret_cast<Bytef*>(rows.data()), &size,
                        reinterpret_cast<const Bytef*>(file.data()) + 41, &read),
            Z_OK);
  EXPECT_EQ(read, number(33)) << "nothing follows the stream";
  std::string text = std::to_string(width) + "x" + std::to_string(height) + ":";
  for (std::size_t row = 0; row < height; ++row) {
    std::string line = rows.substr(row * (width * samples + 1) + 1, width * samples);
    for (std::size_t i = samples; i < line.size(); ++i) line[i] += line[i - samples];
    text += line;
  }
  EXPECT_EQ(crc32(0, reinterpret_cast<const Bytef*>(file.data()) + 12, 17), number(29));
  EXPECT_EQ(file.substr(file.size() - 12), std::string("\0\0\0\0IEND\xAE\x42\x60\x82", 12));
  return text;
}

TEST(PngBytes, hold_gray_and_colored_samples) {
  const auto gray = PngBytes({2, 3, 1, CountingBytes(6)});
  ASSERT_TRUE(gray);
  EXPECT_EQ(Decoded(*gray, 1), "2x3:" + CountingBytes(6));
  const std::string samples = Samples({255, 0, 1, 0, 255, 2, 7, 7, 7, 8, 9, 10});
  const auto color = PngBytes({2, 2, 3, samples});
  ASSERT_TRUE(color);
  EXPECT_EQ(Decoded(*color, 3), "2x2:" + samples);
}

}  // namespace
}  // namespace rastrel::server::web
