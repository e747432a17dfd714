#include "interpreter/separations.h"

#include <gtest/gtest.h>
#include <png.h>
#include <tiffio.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/scratch_directory.h"

namespace rastrel::interpreter {
namespace {

TEST(PlaneName, stands_between_the_first_parenthesis_and_the_end) {
  EXPECT_EQ(PlaneName("0001(Cyan).tif"), "Cyan");
  EXPECT_EQ(PlaneName("12345(PANTONE 485 C).tif"), "PANTONE 485 C");
  EXPECT_EQ(PlaneName("0001(a (b) ).c).tif"), "a (b) ).c");
}

TEST(PlaneName, has_its_escapes_resolved) {
  EXPECT_EQ(PlaneName("0001(50%25 Gold%2FSilver).tif"), "50% Gold/Silver");
  EXPECT_EQ(PlaneName("0001(5%).tif"), "5%");
  EXPECT_EQ(PlaneName("0001(5%zz).tif"), "5%zz");
}

TEST(PlaneName, is_utf8_whatever_the_bytes) {
  EXPECT_EQ(PlaneName("0001(Gr\xC3\xBCn).tif"), "Gr\xC3\xBCn");
  EXPECT_EQ(PlaneName("0001(Gr\xFCn).tif"), "Gr\xC3\xBCn");
  EXPECT_EQ(PlaneName("0001(Gr%FCn).tif"), "Gr\xC3\xBCn");
}

TEST(PlaneName, is_empty_for_another_file_name) {
  for (const char* const name : {"", "0001.tif", "0001(Cyan)", "0001(Cyan.tif", "0001().tif",
                                 ").tif", "(", "0001Cyan).tif"}) {
    EXPECT_EQ(PlaneName(name), "") << name;
  }
}

TEST(Separations, that_are_no_pictures_are_refused) {
  const test::ScratchDirectory directory;
  EXPECT_FALSE(HasSeparations(directory.Path(), 1));
  for (const char* const name : {"", "(Cyan)", "(Magenta)", "(Yellow)", "(Black)"}) {
    directory.Write("work/0001" + std::string(name) + ".tif", "II*\0garbage");
  }
  EXPECT_TRUE(HasSeparations(directory.Path("work"), 1));
  EXPECT_FALSE(HasSeparations(directory.Path("work"), 2));
  const auto made = MakeSeparationPage(directory.Path("work"), directory.Path(), 1, {}, 1000);
  ASSERT_FALSE(made);
  EXPECT_EQ(made.Error().error, EINVAL);
}

TEST(Separations, without_a_process_color_are_refused) {
  const test::ScratchDirectory directory;
  for (const char* const name : {"", "(Cyan)", "(Magenta)", "(Yellow)", "(Spot)"}) {
    directory.Write("work/0001" + std::string(name) + ".tif", "x");
  }
  EXPECT_FALSE(MakeSeparationPage(directory.Path("work"), directory.Path(), 1, {}, 1000));
  EXPECT_FALSE(directory.Has("p0001"));
}

// A TIFF file of a row of pixels with so many samples each.
void WriteRow(const std::string& path, std::vector<std::uint8_t> samples, unsigned perPixel) {
  const std::unique_ptr<TIFF, decltype(&TIFFClose)> file(TIFFOpen(path.c_str(), "w"), TIFFClose);
  ASSERT_TRUE(file);
  const auto width = static_cast<std::uint32_t>(samples.size() / perPixel);
  TIFFSetField(file.get(), TIFFTAG_IMAGEWIDTH, width);
  TIFFSetField(file.get(), TIFFTAG_IMAGELENGTH, 1);
  TIFFSetField(file.get(), TIFFTAG_BITSPERSAMPLE, 8);
  TIFFSetField(file.get(), TIFFTAG_SAMPLESPERPIXEL, perPixel);
  TIFFSetField(file.get(), TIFFTAG_PHOTOMETRIC,
               perPixel == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_SEPARATED);
  TIFFSetField(file.get(), TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  ASSERT_EQ(TIFFWriteScanline(file.get(), samples.data(), 0), 1);
}

// Pixels of no ink, of black alone in three strengths, and of cyan with half of black. Light is
// 255 less the ink, times 255 less the black, by 255.
TEST(Separations, the_preview_of_black_is_gray) {
  const test::ScratchDirectory directory;
  directory.Write("work/kept", "");
  for (const char* const name : {"(Cyan)", "(Magenta)", "(Yellow)", "(Black)"}) {
    WriteRow(directory.Path("work/0001" + std::string(name) + ".tif"), {255, 255, 255, 255, 255},
             1);
  }
  WriteRow(directory.Path("work/0001.tif"),
           {0, 0, 0, 0, 0, 0, 0, 255, 0, 0, 0, 55, 0, 0, 0, 1, 255, 0, 0, 155}, 4);
  const auto made = MakeSeparationPage(directory.Path("work"), directory.Path(), 1, {}, 1000);
  ASSERT_TRUE(made) << Describe(made.Error());
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  ASSERT_NE(png_image_begin_read_from_file(&image, directory.Path("p0001/preview.png").c_str()), 0);
  image.format = PNG_FORMAT_RGB;
  ASSERT_EQ(image.width, 5U);
  std::vector<int> light(15);
  std::vector<std::uint8_t> bytes(15);
  ASSERT_NE(png_image_finish_read(&image, nullptr, bytes.data(), 0, nullptr), 0);
  std::ranges::copy(bytes, light.begin());
  EXPECT_EQ(light,
            (std::vector<int>{255, 255, 255, 0, 0, 0, 200, 200, 200, 254, 254, 254, 0, 100, 100}));
}

}  // namespace
}  // namespace rastrel::interpreter
