#include "rastrel/imports/cr2/line_style.h"

#include <gtest/gtest.h>

#include <bit>
#include <limits>

#include "rastrel/imports/cr2/output_filter.h"

static std::ostream& operator<<(std::ostream& out, const LINESTYLE& style) {
  return out << style.width << " style " << style.style;
}

namespace {

using namespace rastrel::imports;

LINESTYLE Styled(double stroke, std::uint32_t before = 0) {
  LINESTYLE style{.width = 9, .style = before};
  SetStroke(style, stroke);
  return style;
}

double OfBits(std::uint64_t bits) { return std::bit_cast<double>(bits); }

constexpr LINESTYLE NoLine{.width = 0, .style = 16};
constexpr LINESTYLE Hairline{.width = LineStyleHairline, .style = 32};

TEST(SetStroke, below_the_smallest_normal_number_there_is_no_line) {
  EXPECT_EQ(Styled(0.0), NoLine);
  EXPECT_EQ(Styled(-1.0), NoLine);
  EXPECT_EQ(Styled(OfBits(0x000FFFFFFFFFFFFF)), NoLine);
  EXPECT_EQ(Styled(OfBits(0x0010000000000000)), Hairline);
  EXPECT_EQ(Styled(OfBits(0x0010000000000001)), Hairline);
}

TEST(SetStroke, above_the_hairline_s_limit_a_width_is_kept) {
  EXPECT_EQ(Styled(OfBits(0x003FFFFFFFFFFFFF)), Hairline);
  EXPECT_EQ(Styled(OfBits(0x0040000000000000)), Hairline);
  const double above = OfBits(0x0040000000000001);
  EXPECT_EQ(Styled(above), (LINESTYLE{.width = above, .style = 48}));
  EXPECT_EQ(Styled(0.25), (LINESTYLE{.width = 0.25, .style = 48}));
}

TEST(SetStroke, a_hairline_in_inches_stays_one_after_the_conversion) {
  EXPECT_EQ(Styled(LineStyleHairline), Hairline);
  EXPECT_EQ(Styled(LineStyleHairline * 2.54), Hairline);
}

TEST(SetStroke, the_other_bits_of_the_style_stay) {
  EXPECT_EQ(Styled(0, 0xFFFFFFFF).style, 0xFFFFFFDFU);
  EXPECT_EQ(Styled(LineStyleHairline, 0xFFFFFFFF).style, 0xFFFFFFEFU);
  EXPECT_EQ(Styled(1, 0xF0F).style, 0xF3FU);
}

TEST(SetStroke, a_stroke_that_is_no_number_is_a_hairline) {
  EXPECT_EQ(Styled(std::numeric_limits<double>::quiet_NaN()), Hairline);
}

TEST(OutputFilter, holds_colors_of_the_same_space_and_components) {
  std::vector<std::unique_ptr<CVKColor>> colors;
  colors.push_back(std::make_unique<CVKColor>(0x0000FF, COLORSPACE_RGB, 0, 0));
  colors.push_back(std::make_unique<CVKColor>());
  colors.back()->SetColor(0, 100, 100, 0, COLORSPACE_CMYK);
  const OutputFilter filter(colors);
  const CVKColor red(0x0000FF, COLORSPACE_RGB, 0, 0);
  const CVKColor redOfAnotherCorrection(0x0000FF, COLORSPACE_RGB, 3, 4);
  const CVKColor green(0x00FF00, COLORSPACE_RGB, 0, 0);
  CVKColor redInInk;
  redInInk.SetColor(0, 1, 1, 0, COLORSPACE_CMYK);
  EXPECT_TRUE(filter.Holds(&red));
  EXPECT_TRUE(filter.Holds(&redOfAnotherCorrection));
  EXPECT_TRUE(filter.Holds(colors.back().get()));
  EXPECT_FALSE(filter.Holds(&green));
  EXPECT_FALSE(filter.Holds(&redInInk));
  EXPECT_FALSE(filter.Holds(nullptr));
}

TEST(OutputFilter, the_invisible_color_is_not_black) {
  std::vector<std::unique_ptr<CVKColor>> colors;
  colors.push_back(std::make_unique<CVKColor>(-1, COLORSPACE_RGB, 0, 0));
  const CVKColor black(0, COLORSPACE_RGB, 0, 0);
  EXPECT_FALSE(OutputFilter(colors).Holds(&black));
  EXPECT_TRUE(OutputFilter(colors).Holds(colors.front().get()));
}

}  // namespace
