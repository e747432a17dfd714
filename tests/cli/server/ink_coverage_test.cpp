#include "cli/server/ink_coverage.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>

#include "pages/page_info.h"
#include "rastrel/platform/os/private_directory.h"

namespace rastrel::cli {
namespace {

class InkCoverage : public testing::Test {
 protected:
  InkCoverage() : m_Place(*os::PrivateDirectory::Make("rastrel-ink-")) {}

  /// A page of one netpbm file. `samples` are those of all pixels.
  void MakePage(unsigned width, unsigned height, pages::PageColor color,
                const std::string& samples) {
    const bool isRgb = color == pages::PageColor::Rgb;
    Write("page.pnm", std::string(isRgb ? "P6" : "P5") + "\n" + std::to_string(width) + " " +
                          std::to_string(height) + "\n255\n" + samples);
    pages::PageInfo page;
    page.width = width;
    page.height = height;
    page.xResolution = page.yResolution = 72;
    page.color = color;
    if (isRgb) {
      page.planes = {{"Red", "page.pnm", 0}, {"Green", "page.pnm", 1}, {"Blue", "page.pnm", 2}};
    } else {
      page.planes = {{"Gray", "page.pnm", 0}};
    }
    page.files = {*pages::DescribeFile(m_Place.Path(), "page.pnm")};
    Write(pages::PageInfoName, pages::FormatPageInfo(page));
  }
  void Write(const std::string& name, const std::string& bytes) {
    std::ofstream(m_Place.Path() + "/" + name, std::ios::binary) << bytes;
  }

  os::PrivateDirectory m_Place;
};

TEST_F(InkCoverage, white_of_a_gray_page_has_no_black) {
  MakePage(2, 2, pages::PageColor::Gray, std::string("\xff\xff\xff\x00", 4));
  const auto ink = MeasureInk(m_Place.Path());
  ASSERT_TRUE(ink) << Describe(ink.Error());
  EXPECT_EQ(*ink, (PageInk{{"Black", 0.25}}));
}

TEST_F(InkCoverage, a_page_in_rgb_has_the_complements_of_its_channels) {
  // Of four pixels one is red, one is white, and two are black.
  MakePage(4, 1, pages::PageColor::Rgb,
           std::string("\xff\x00\x00"
                       "\xff\xff\xff"
                       "\x00\x00\x00\x00\x00\x00",
                       12));
  const auto ink = MeasureInk(m_Place.Path());
  ASSERT_TRUE(ink) << Describe(ink.Error());
  EXPECT_EQ(*ink, (PageInk{{"Cyan", 0.5}, {"Magenta", 0.75}, {"Yellow", 0.75}}));
}

// The sums are made in turns of lanes: each number of samples around them counts to the last one.
TEST_F(InkCoverage, every_sample_counts_around_the_size_of_a_turn_and_of_a_piece) {
  constexpr unsigned Turn = 48 * 256;
  for (const unsigned whole : {48U, Turn, Turn * 16, Turn * 17})
    for (const unsigned width : {whole - 1, whole, whole + 1})
      for (const unsigned black : {0U, width / 2, width - 1}) {
        std::string samples(width, '\xff');
        samples[black] = '\0';
        MakePage(width, 1, pages::PageColor::Gray, samples);
        const auto ink = MeasureInk(m_Place.Path());
        ASSERT_TRUE(ink) << Describe(ink.Error());
        EXPECT_NEAR(ink->front().second * width, 1.0, 1e-6) << width << " " << black;
      }
}

TEST_F(InkCoverage, full_lanes_do_not_overflow) {
  MakePage(4800, 100, pages::PageColor::Gray, std::string(480'000, '\xff'));
  EXPECT_EQ(MeasureInk(m_Place.Path()).ValueOr({}), (PageInk{{"Black", 0.0}}));
}

TEST_F(InkCoverage, a_page_that_is_cut_short_is_a_failure) {
  MakePage(4, 4, pages::PageColor::Gray, std::string(16, '\0'));
  std::filesystem::resize_file(m_Place.Path() + "/page.pnm", 20);
  EXPECT_FALSE(MeasureInk(m_Place.Path()));
}

TEST_F(InkCoverage, a_directory_without_a_description_is_a_failure) {
  EXPECT_FALSE(MeasureInk(m_Place.Path()));
}

}  // namespace
}  // namespace rastrel::cli
