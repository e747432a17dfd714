#include "rastrel/conversion/dialogs/bitmap_size.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/support/comma_locale.h"
#include "tests/support/recording_host.h"

using rastrel::conversion::BitmapSizeText;
using rastrel::conversion::EstimatedBitmapBytes;
using rastrel::test::RecordingHost;

namespace {

TEST(BitmapSize, ten_centimetres_square_at_254_dpi_are_three_million_bytes) {
  RecordingHost host;
  // 10 / 2.54 x 254 are 1000 pixels, on both sides, of 3 bytes each.
  EXPECT_EQ(EstimatedBitmapBytes(10, 10, 254), 3'000'000U);
  EXPECT_EQ(BitmapSizeText(3'000'000), L"2.9 MB");
}

TEST(BitmapSize, one_centimetre_square_at_72_dpi_shows_in_kilobytes) {
  RecordingHost host;
  // (72 / 2.54) squared is 803.5, times 3.
  EXPECT_EQ(EstimatedBitmapBytes(1, 1, 72), 2410U);
  EXPECT_EQ(BitmapSizeText(2410), L"2.4 KB");
}

TEST(BitmapSize, turns_to_megabytes_at_one_mebibyte) {
  RecordingHost host;
  EXPECT_EQ(BitmapSizeText(0), L"0.0 KB");
  EXPECT_EQ(BitmapSizeText(0xFFFFF), L"1024.0 KB");
  EXPECT_EQ(BitmapSizeText(0x100000), L"1.0 MB");
  EXPECT_EQ(BitmapSizeText(0x100001), L"1.0 MB");
  EXPECT_EQ(BitmapSizeText(0xFFFFFFFF), L"4096.0 MB");
}

TEST(BitmapSize, is_truncated) {
  // One inch by a third of one, at 1 dpi: one byte exactly; a little less is none.
  EXPECT_EQ(EstimatedBitmapBytes(2.54, 2.54 / 3, 1), 1U);
  EXPECT_EQ(EstimatedBitmapBytes(2.54, 2.53 / 3, 1), 0U);
}

TEST(BitmapSize, is_kept_in_32_bits) {
  // 65,536 by 32,768 inches at 1 dpi are 2^31 pixels: 3 x 2^31 bytes, of which 2^31 remain.
  EXPECT_EQ(EstimatedBitmapBytes(65536 * 2.54, 32768 * 2.54, 1), 0x80000000U);
  EXPECT_EQ(EstimatedBitmapBytes(65536 * 2.54, 65536 * 2.54, 1), 0U);
}

TEST(BitmapSize, is_0_for_measures_that_are_none) {
  constexpr double Infinity = std::numeric_limits<double>::infinity();
  const double nan = std::nan("");
  EXPECT_EQ(EstimatedBitmapBytes(-1, 10, 72), 0U);
  EXPECT_EQ(EstimatedBitmapBytes(-1, -1, 72), 0U);
  EXPECT_EQ(EstimatedBitmapBytes(nan, 10, 72), 0U);
  EXPECT_EQ(EstimatedBitmapBytes(10, Infinity, 72), 0U);
  EXPECT_EQ(EstimatedBitmapBytes(1e300, 1e300, 72), 0U);
  EXPECT_EQ(EstimatedBitmapBytes(10, 10, 0), 0U);
  EXPECT_EQ(EstimatedBitmapBytes(10, 10, -1), 0U);
  EXPECT_EQ(EstimatedBitmapBytes(10, 10, std::numeric_limits<std::int32_t>::min()), 0U);
}

TEST(BitmapSize, has_a_point_in_every_locale) {
  RecordingHost host;
  const rastrel::test::CommaLocale locale;
  EXPECT_EQ(BitmapSizeText(2410), L"2.4 KB");
}

TEST(BitmapSize, is_translated) {
  RecordingHost host;
  host.m_Translations[L"(*v*)%.1f KB"] = L"%.1f kB grob";
  EXPECT_EQ(BitmapSizeText(2410), L"2.4 kB grob");
}

TEST(BitmapSize, reads_no_argument_that_a_wrong_translation_asks_for) {
  RecordingHost host;
  host.m_Translations[L"(*v*)%.1f KB"] = L"%s %n %.1f %s";
  EXPECT_FALSE(BitmapSizeText(2410).empty());
}

}  // namespace
