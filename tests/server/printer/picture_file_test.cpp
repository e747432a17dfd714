#include "server/printer/picture_file.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "tests/server/printer/printer_test_support.h"

namespace rastrel::server {
namespace {

using std::string_literals::operator""s;

using PngTest = PictureTest;
using JpegTest = PictureTest;

TEST_F(PngTest, TheCompressedBytesGoIntoThePdfAsTheyAre) {
  const std::string rows = "\0abcdef\1ghijkl"s;
  ASSERT_TRUE(PdfFromPng(Source(Png(2, 2, 8, 2, rows)), Target()));
  const std::string text = TargetBytes();
  EXPECT_EQ(StreamOf(text, 3), Deflated(rows));
  EXPECT_NE(text.find("/Predictor 15 /Colors 3 /BitsPerComponent 8 /Columns 2"), text.npos);
  EXPECT_NE(text.find("/MediaBox [0 0 2 2]"), text.npos);  // a pixel is a point
}

TEST_F(PngTest, TheSizeIsThatOfItsDensity) {
  const std::string density = Chunk("pHYs", Big(11811, 4) + Big(5906, 4) + "\1");
  ASSERT_TRUE(
      PdfFromPng(Source(Png(300, 150, 1, 0, std::string(150 * 39, '\0'), density)), Target()));
  // 11811 and 5906 pixels a meter are 299.9994 and 150.0124 an inch.
  EXPECT_NE(TargetBytes().find("/MediaBox [0 0 72.000144 71.994048]"), std::string::npos);
}

TEST_F(PngTest, APaletteStaysOne) {
  const std::string png = Png(2, 1, 1, 3, "\0\x40"s, Chunk("PLTE", "\xFF\x00\x80\x01\x02\x03"s));
  ASSERT_TRUE(PdfFromPng(Source(png), Target()));
  EXPECT_NE(TargetBytes().find("/ColorSpace [/Indexed /DeviceRGB 1 <ff0080010203>]"),
            std::string::npos);
}

TEST_F(PngTest, TransparentPixelsLieOnWhite) {
  // Opaque, half and clear. Half of 100 on white: (100 * 128 + 255 * 127) / 255, rounded.
  const std::string row = "\0"s + "\x64\xFF"s + "\x64\x80"s + "\x64\x00"s;
  ASSERT_TRUE(PdfFromPng(Source(Png(3, 1, 8, 4, row)), Target()));
  EXPECT_EQ(Inflated(StreamOf(TargetBytes(), 3)), "\x64\xB1\xFF"s);
}

TEST_F(PngTest, AClearColorLiesOnWhite) {
  const std::string png =
      Png(2, 1, 8, 2, "\0\1\2\3\4\5\6"s, Chunk("tRNS", Big(1, 2) + Big(2, 2) + Big(3, 2)));
  ASSERT_TRUE(PdfFromPng(Source(png), Target()));
  EXPECT_EQ(Inflated(StreamOf(TargetBytes(), 3)), "\xFF\xFF\xFF\4\5\6"s);
}

TEST_F(PngTest, APaletteWithClearColorsBecomesRgbOnWhite) {
  const std::string png =
      Png(3, 1, 2, 3, "\0\x18"s, Chunk("PLTE", "\1\2\3\4\5\6\7\x8\x9"s) + Chunk("tRNS", "\xFF\0"s));
  ASSERT_TRUE(PdfFromPng(Source(png), Target()));
  EXPECT_EQ(Inflated(StreamOf(TargetBytes(), 3)), "\1\2\3\xFF\xFF\xFF\7\x8\x9"s);
}

TEST_F(PngTest, SixteenBitsStaySixteenOnWhite) {
  ASSERT_TRUE(PdfFromPng(Source(Png(1, 1, 16, 4, "\0\x12\x34\xFF\xFF"s)), Target()));
  EXPECT_EQ(Inflated(StreamOf(TargetBytes(), 3)), "\x12\x34"s);
  EXPECT_NE(TargetBytes().find("/BitsPerComponent 16"), std::string::npos);
}

TEST_F(PngTest, EachFilterIsUndone) {
  // Gray with alpha, so two bytes a pixel; alpha stays 255. By hand: 10 20, then each row's
  // differences to the left, above, their mean and the nearest make 11 22, 12 24, 13 26, 14 28.
  const std::string rows =
      "\0\x0A\xFF\x14\xFF"s   // 10 20
      "\1\x0B\xFF\x0B\x00"s   // left: 11, 22
      "\2\x01\x00\x02\x00"s   // above: 12, 24
      "\3\x07\x80\x08\x00"s   // mean: 13 - 12 / 2 = 7; 26 - (13 + 24) / 2 = 8
      "\4\x01\x00\x02\x00"s;  // nearest of 14, 26 and 13 to 27: 26
  ASSERT_TRUE(PdfFromPng(Source(Png(2, 5, 8, 4, rows)), Target()));
  EXPECT_EQ(Inflated(StreamOf(TargetBytes(), 3)), "\x0A\x14\x0B\x16\x0C\x18\x0D\x1A\x0E\x1C"s);
}

// A chunk is read in pieces of 64 KiB.
TEST_F(PngTest, AChunkOfOnePieceMoreAndOneLessByteIsReadWhole) {
  for (const unsigned size : {65535U, 65536U, 65537U, 131073U}) {
    std::mt19937 random(size);
    std::string row(1, '\0');
    for (unsigned i = 0; i < size; ++i) row += static_cast<char>(random());
    ASSERT_TRUE(PdfFromPng(Source(Png(size, 1, 8, 0, row)), Target())) << size;
    EXPECT_TRUE(Inflated(StreamOf(TargetBytes(), 3)) == row) << size;
  }
}

TEST_F(PngTest, RefusesAnInterlacedFile) {
  const std::string png = PngHeader(1, 1, 8, 0, 1) + Chunk("IEND", "");
  EXPECT_EQ(WhyOf(PdfFromPng(Source(png), Target())),
            "the PNG file is interlaced; save it without, or print it as PDF");
}

TEST_F(PngTest, RefusesDamage) {
  const auto why = [this](const std::string& png) {
    return WhyOf(PdfFromPng(Source(png), Target()));
  };
  EXPECT_EQ(why(Png(2, 2, 8, 0, "\0ab\0c"s)), "the PNG file's data is damaged");  // short
  EXPECT_EQ(why(Png(2, 1, 8, 0, "\0ab\0"s)), "the PNG file's data is damaged");   // long
  EXPECT_EQ(why(Png(2, 1, 8, 0, "\5ab"s)), "the PNG file's data is damaged");     // filter
  EXPECT_EQ(why(Png(2, 1, 3, 0, "\0ab"s)), "the PNG file has a damaged header");  // bits
  EXPECT_EQ(why(Png(2, 1, 8, 5, "\0ab"s)), "the PNG file has a damaged header");  // type
  EXPECT_EQ(why(Png(2, 1, 8, 3, "\0ab"s)), "the PNG file has no palette");
  EXPECT_EQ(why(Png(2, 1, 8, 0, "\0ab"s, Chunk("ABCD", ""))),
            "the PNG file has a part of an unknown kind");
  EXPECT_EQ(why(Png(2, 1, 8, 0, "\0ab"s, Chunk("abcd", "x"))), "");
  std::string sum = Png(2, 1, 8, 0, "\0ab"s);
  sum[sum.size() - 20] ^= 1;
  EXPECT_NE(why(sum), "");
  EXPECT_EQ(why(PngHeader(1000001, 1, 8, 0)),
            "the PNG file is larger than 1000000 pixels, or empty");
}

TEST_F(PngTest, IsRefusedWhereverItIsCut) {
  const std::string png = Png(2, 2, 8, 6, "\0abcdefgh\1ijklmnop"s);
  ASSERT_TRUE(PdfFromPng(Source(png), Target()));
  for (std::size_t size = 0; size < png.size(); ++size)
    EXPECT_FALSE(PdfFromPng(Source(png.substr(0, size)), Target())) << size;
}

// A gray JPEG file's markers, without meaning in its data: nothing here draws it.
std::string Jpeg(const std::string& before, const std::string& frame) {
  return "\xFF\xD8"s + before + frame + "\xFF\xDA\x00\x08\x01\x01\x00\x00\x3F\x00"s +
         "data\xFF\xD9";
}
std::string Frame(unsigned marker, unsigned width, unsigned height, unsigned channels) {
  return "\xFF"s + static_cast<char>(marker) + Big(8 + 3 * channels, 2) + "\x08" + Big(height, 2) +
         Big(width, 2) + Big(channels, 1) + std::string(3 * channels, '\1');
}
std::string Jfif(unsigned units, unsigned horizontal, unsigned vertical) {
  return "\xFF\xE0\x00\x10JFIF\x00\x01\x02"s + Big(units, 1) + Big(horizontal, 2) +
         Big(vertical, 2) + "\0\0"s;
}

TEST_F(JpegTest, TheFileGoesIntoThePdfAsItIs) {
  for (const unsigned marker : {0xC0u, 0xC1u, 0xC2u}) {
    const std::string jpeg = Jpeg(Jfif(1, 300, 150), Frame(marker, 600, 300, 3));
    ASSERT_TRUE(PdfFromJpeg(Source(jpeg), Target()));
    const std::string text = TargetBytes();
    EXPECT_EQ(StreamOf(text, 3), jpeg);
    EXPECT_NE(text.find("/MediaBox [0 0 144 144]"), text.npos);
    EXPECT_NE(text.find("/ColorSpace /DeviceRGB /Filter /DCTDecode /Length"), text.npos);
  }
}

TEST_F(JpegTest, ADensityMayBePerCentimeterOrMissing) {
  ASSERT_TRUE(PdfFromJpeg(Source(Jpeg(Jfif(2, 100, 50), Frame(0xC0, 254, 127, 1))), Target()));
  EXPECT_NE(TargetBytes().find("/MediaBox [0 0 72 72]"), std::string::npos);
  ASSERT_TRUE(PdfFromJpeg(Source(Jpeg(Jfif(0, 1, 1), Frame(0xC0, 30, 20, 1))), Target()));
  EXPECT_NE(TargetBytes().find("/MediaBox [0 0 30 20]"), std::string::npos);
}

TEST_F(JpegTest, FourInksOfAnAdobeFileAreInverted) {
  const std::string adobe = "\xFF\xEE\x00\x0E"s + "Adobe\0\x64\0\0\0\0\2"s;
  ASSERT_TRUE(PdfFromJpeg(Source(Jpeg(adobe, Frame(0xC0, 1, 1, 4))), Target()));
  EXPECT_NE(
      TargetBytes().find("/ColorSpace /DeviceCMYK /Filter /DCTDecode /Decode [1 0 1 0 1 0 1 0]"),
      std::string::npos);
  ASSERT_TRUE(PdfFromJpeg(Source(Jpeg("", Frame(0xC0, 1, 1, 4))), Target()));
  EXPECT_EQ(TargetBytes().find("/Decode"), std::string::npos);
}

TEST_F(JpegTest, RefusesOtherKindsAndDamage) {
  const auto why = [this](const std::string& jpeg) {
    return WhyOf(PdfFromJpeg(Source(jpeg), Target()));
  };
  EXPECT_EQ(why(Jpeg("", Frame(0xC3, 1, 1, 1))),
            "the JPEG file is of a kind that is not printed (lossless or arithmetic)");
  EXPECT_EQ(why(Jpeg("", Frame(0xC0, 1, 1, 1) + Frame(0xC0, 1, 1, 1))),
            "the JPEG file has two pictures");
  EXPECT_EQ(why(Jpeg("", "")), "the JPEG file has a damaged header");
  EXPECT_EQ(why(Jpeg("", Frame(0xC0, 0, 1, 1))), "the picture has no pixels");
  EXPECT_EQ(why(Jpeg("", Frame(0xC0, 1, 1, 2))), "the picture has 2 samples a pixel");
  std::string deep = Frame(0xC0, 1, 1, 1);
  deep[4] = 12;
  EXPECT_EQ(why(Jpeg("", deep)), "the JPEG file has not 8 bits a sample");
}

TEST_F(JpegTest, IsRefusedWhereverItIsCut) {
  const std::string jpeg = Jpeg(Jfif(1, 300, 300), Frame(0xC0, 2, 2, 1));
  for (std::size_t size = 0; size < jpeg.size(); ++size)
    EXPECT_FALSE(PdfFromJpeg(Source(jpeg.substr(0, size)), Target())) << size;
}

}  // namespace
}  // namespace rastrel::server
