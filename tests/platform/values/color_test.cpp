#include "rastrel/platform/values/color.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "rastrel/platform/values/stream.h"
#include "tests/support/archive_bytes.h"

using rastrel::test::Bytes;
using rastrel::test::Hex;

namespace {

using Four = std::array<double, 4>;

Four Channels(const CVKColor& color) {
  Four result{-1, -1, -1, -1};
  color.GetColorChannels(&result[0], &result[1], &result[2], &result[3]);
  return result;
}

Four Inks(const CVKColor& color) {
  Four result{-1, -1, -1, -1};
  color.GetCMYKcolor(&result[0], &result[1], &result[2], &result[3]);
  return result;
}

CVKColor Rgb(double r, double g, double b) {
  CVKColor color;
  color.SetColor(r, g, b, COLORSPACE_RGB);
  return color;
}

CVKColor Cmyk(double c, double m, double y, double k) {
  CVKColor color;
  color.SetColor(c, m, y, k, COLORSPACE_CMYK);
  return color;
}

Bytes Saved(const CVKFullColor& color) {
  CMemFile file;
  CStream stream(&file);
  EXPECT_EQ(color.Save(&stream), 1);
  stream.Flush();
  return file.Bytes();
}

TEST(CVKColor, a_reference_holds_red_lowest) {
  const CVKColor color(0x0A80FF, COLORSPACE_RGB, 0, 0);
  EXPECT_EQ(Channels(color), (Four{255, 128, 10, 0}));
  EXPECT_FALSE(color.IsInvisible());
}

TEST(CVKColor, reference_0_is_the_black_of_a_new_color) {
  EXPECT_EQ(CVKColor(0, 1, 0, 0), CVKColor());
  EXPECT_EQ(Channels(CVKColor()), (Four{0, 0, 0, 0}));
}

TEST(CVKColor, reference_minus_1_is_invisible_until_a_color_is_set) {
  CVKColor color(-1, 1, 0, 0);
  EXPECT_TRUE(color.IsInvisible());
  EXPECT_NE(color, CVKColor());
  color.SetColor(1.0, 2.0, 3.0, COLORSPACE_RGB);
  EXPECT_FALSE(color.IsInvisible());
}

TEST(CVKColor, channels_of_an_rgb_color_are_the_values_set) {
  EXPECT_EQ(Channels(Rgb(255, 127.5, -3)), (Four{255, 127.5, -3, 0}));
}

TEST(CVKColor, inks_of_a_cmyk_color_are_the_values_set) {
  EXPECT_EQ(Inks(Cmyk(0, 1, 1, 0)), (Four{0, 1, 1, 0}));
}

TEST(CVKColor, inks_become_channels) {
  EXPECT_EQ(Channels(Cmyk(0, 1, 1, 0)), (Four{255, 0, 0, 0}));
  EXPECT_EQ(Channels(Cmyk(0, 0, 0, 1)), (Four{0, 0, 0, 0}));
  EXPECT_EQ(Channels(Cmyk(0.5, 0, 0, 0.5)), (Four{63.75, 127.5, 127.5, 0}));
}

// Templates give inks as percents: 50 percent of magenta and yellow leave half of green and blue.
TEST(CVKColor, inks_are_percents_where_one_of_them_is_above_1) {
  EXPECT_EQ(Inks(Cmyk(0, 50, 50, 0)), (Four{0, 0.5, 0.5, 0}));
  EXPECT_EQ(Channels(Cmyk(0, 50, 50, 0)), (Four{255, 127.5, 127.5, 0}));
  EXPECT_EQ(Inks(Cmyk(1, 0, 0, 100)), (Four{0.01, 0, 0, 1}));
  EXPECT_EQ(Channels(Cmyk(0, 0, 0, 100)), (Four{0, 0, 0, 0}));
}

TEST(CVKColor, inks_of_exactly_1_are_whole_and_the_least_above_makes_percents) {
  EXPECT_EQ(Inks(Cmyk(1, 1, 1, 1)), (Four{1, 1, 1, 1}));
  EXPECT_EQ(Inks(Cmyk(2, 1, 0, 0)), (Four{0.02, 0.01, 0, 0}));
  const double least = std::nextafter(1.0, 2.0);
  EXPECT_EQ(Inks(Cmyk(0, 0, 0, least)), (Four{0, 0, 0, least / 100}));
}

TEST(CVKColor, percents_stay_as_they_were_set) {
  const CVKColor color = Cmyk(0, 50, 50, 0);
  EXPECT_EQ(color.GetComponents(), (Four{0, 50, 50, 0}));
  EXPECT_NE(color, Cmyk(0, 0.5, 0.5, 0));
}

TEST(CVKColor, channels_become_inks_with_gray_as_black_alone) {
  EXPECT_EQ(Inks(Rgb(255, 255, 255)), (Four{0, 0, 0, 0}));
  EXPECT_EQ(Inks(Rgb(0, 0, 0)), (Four{0, 0, 0, 1}));
  EXPECT_EQ(Inks(Rgb(255, 0, 0)), (Four{0, 1, 1, 0}));
  EXPECT_EQ(Inks(Rgb(127.5, 127.5, 127.5)), (Four{0, 0, 0, 0.5}));
}

TEST(CVKColor, components_that_nobody_asks_for_are_passed_over) {
  double green = 0;
  double magenta = 0;
  Rgb(255, 0, 0).GetColorChannels(nullptr, &green, nullptr, nullptr);
  Rgb(255, 0, 0).GetCMYKcolor(nullptr, &magenta, nullptr, nullptr);
  EXPECT_EQ(green, 0);
  EXPECT_EQ(magenta, 1);
}

TEST(CVKFullColor, a_name_comes_back_and_an_empty_one_is_none) {
  CVKFullColor color;
  std::wstring name = L"old";
  EXPECT_EQ(color.GetColorName(name), 0);
  EXPECT_EQ(name, L"");
  color.SetColorName(L"CutContour");
  EXPECT_NE(color.GetColorName(name), 0);
  EXPECT_EQ(name, L"CutContour");
  color.SetColorName(L"");
  EXPECT_EQ(color.GetColorName(name), 0);
}

TEST(CVKFullColor, is_saved_as_space_flags_two_numbers_four_components_and_the_name) {
  CVKFullColor color(Cmyk(0, 1, 0.5, 0));
  color.SetColorName(L"Cut");
  EXPECT_EQ(Saved(color), Hex("03 00 00 00  00 00 00 00  00 00 00 00  00 00 00 00 "
                              "00 00 00 00 00 00 00 00  00 00 00 00 00 00 F0 3F "
                              "00 00 00 00 00 00 E0 3F  00 00 00 00 00 00 00 00 "
                              "03 00 00 00  43 00 75 00 74 00"));
}

TEST(CVKFullColor, an_invisible_color_and_the_hosts_numbers_are_saved) {
  EXPECT_EQ(Saved(CVKFullColor(-1, 1, 2, 3)),
            Hex("01 00 00 00  01 00 00 00  02 00 00 00  03 00 00 00 "
                "00 00 00 00 00 00 00 00  00 00 00 00 00 00 00 00 "
                "00 00 00 00 00 00 00 00  00 00 00 00 00 00 00 00  00 00 00 00"));
}

TEST(CVKFullColor, comes_back_as_it_was_saved) {
  CVKFullColor named(Cmyk(0.1, 0.2, 0.3, 0.4));
  named.SetColorName(L"\u5207\U0001F600");
  for (const CVKFullColor& color : {named, CVKFullColor(), CVKFullColor(-1, 1, 4, -5)}) {
    CMemFile file(Saved(color));
    CStream stream(&file);
    CVKFullColor back(0x123456, 1, 9, 9);
    EXPECT_EQ(back.Load(&stream, 1), 1);
    EXPECT_EQ(back, color);
  }
}

TEST(CVKFullColor, of_an_unknown_space_or_layout_is_not_taken) {
  Bytes bytes = Saved(CVKFullColor(0x123456, 1, 0, 0));
  bytes[0] = 2;
  CMemFile file(bytes);
  CStream stream(&file);
  CVKFullColor color(0x010203, 1, 0, 0);
  EXPECT_EQ(color.Load(&stream, 2), 0) << "of an unknown layout nothing is read";
  EXPECT_EQ(color.Load(&stream, 1), 0);
  EXPECT_EQ(color, CVKFullColor(0x010203, 1, 0, 0));
}

TEST(CVKFullColor, cut_at_any_byte_raises_and_stays_as_it_was) {
  CVKFullColor saved(Cmyk(0.1, 0.2, 0.3, 0.4));
  saved.SetColorName(L"Cut");
  const Bytes whole = Saved(saved);
  for (std::size_t length = 0; length < whole.size(); ++length) {
    CMemFile file(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
    CStream stream(&file);
    CVKFullColor color;
    EXPECT_THROW(color.Load(&stream, 1), CStreamException) << length;
    EXPECT_EQ(color, CVKFullColor());
  }
}

}  // namespace
