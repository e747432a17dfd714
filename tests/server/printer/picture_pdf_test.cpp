#include "server/printer/picture_pdf.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include "tests/server/printer/printer_test_support.h"

namespace rastrel::server {
namespace {

PictureForm Form(std::uint32_t width, std::uint32_t height, unsigned channels) {
  PictureForm form;
  form.width = width;
  form.height = height;
  form.channels = channels;
  form.horizontalDensity = 72;
  form.verticalDensity = 144;
  return form;
}

using PicturePdfTest = PictureTest;

TEST_F(PicturePdfTest, WritesPagesWhoseRowsAreThoseGiven) {
  auto pdf = *PicturePdf::Create(Target());
  ASSERT_TRUE(pdf->BeginPage(Form(2, 2, 3)));
  ASSERT_TRUE(pdf->Add("abcdefg"));
  ASSERT_TRUE(pdf->Add("hijkl"));
  ASSERT_TRUE(pdf->EndPage());
  ASSERT_TRUE(pdf->BeginPage(Form(3, 1, 1)));
  ASSERT_TRUE(pdf->Add("xyz"));
  ASSERT_TRUE(pdf->EndPage());
  ASSERT_TRUE(pdf->Finish());

  const std::string text = TargetBytes();
  EXPECT_EQ(Inflated(StreamOf(text, 3)), "abcdefghijkl");
  EXPECT_EQ(Inflated(StreamOf(text, 7)), "xyz");
  EXPECT_NE(text.find("/MediaBox [0 0 2 1]"), text.npos);
  EXPECT_NE(text.find("/MediaBox [0 0 3 0.5]"), text.npos);
  EXPECT_NE(text.find("/Count 2 /Kids [ 6 0 R 10 0 R ]"), text.npos);
}

TEST_F(PicturePdfTest, EveryOffsetOfTheTableIsThatOfItsObject) {
  auto pdf = *PicturePdf::Create(Target());
  ASSERT_TRUE(pdf->BeginPage(Form(1, 1, 1)));
  ASSERT_TRUE(pdf->Add("x"));
  ASSERT_TRUE(pdf->EndPage());
  ASSERT_TRUE(pdf->Finish());

  const std::string text = TargetBytes();
  const std::size_t table = text.find("xref\n0 7\n");
  ASSERT_NE(table, text.npos);
  for (int object = 1; object <= 6; ++object) {
    const std::size_t offset = std::stoul(text.substr(table + 9 + 20 * object, 10));
    EXPECT_EQ(text.substr(offset, 8), std::to_string(object) + " 0 obj\n");
  }
}

TEST_F(PicturePdfTest, RefusesRowsTooManyAndTooFew) {
  auto more = *PicturePdf::Create(Target());
  ASSERT_TRUE(more->BeginPage(Form(2, 1, 1)));
  EXPECT_EQ(WhyOf(more->Add("abc")), "the picture has more rows than it says");

  auto fewer = *PicturePdf::Create(Target());
  ASSERT_TRUE(fewer->BeginPage(Form(2, 1, 1)));
  ASSERT_TRUE(fewer->Add("a"));
  EXPECT_EQ(WhyOf(fewer->EndPage()), "the picture has fewer rows than it says");
}

TEST_F(PicturePdfTest, RefusesFormsOutOfTheirRanges) {
  const auto why = [this](const PictureForm& form) {
    return WhyOf((*PicturePdf::Create(Target()))->BeginPage(form));
  };
  EXPECT_EQ(why(Form(0, 1, 1)), "the picture has no pixels");
  EXPECT_EQ(why(Form(1, 0, 1)), "the picture has no pixels");
  EXPECT_EQ(why(Form(PictureSideLimit - 1, 1, 1)), "");
  EXPECT_EQ(why(Form(PictureSideLimit, 1, 1)), "");
  EXPECT_EQ(why(Form(PictureSideLimit + 1, 1, 1)), "the picture is larger than 1000000 pixels");
  EXPECT_EQ(why(Form(1, PictureSideLimit + 1, 1)), "the picture is larger than 1000000 pixels");
  EXPECT_EQ(why(Form(1, 1, 2)), "the picture has 2 samples a pixel");
  PictureForm form = Form(1, 1, 1);
  form.bits = 3;
  EXPECT_EQ(why(form), "the picture has 3 bits a sample");
  form = Form(1, 1, 1);
  form.verticalDensity = 0.5;
  EXPECT_EQ(why(form), "the picture has no density from 1 to 100000 pixels per inch");
}

TEST_F(PicturePdfTest, RefusesAFileWithoutAPageAndOnePageTooMany) {
  auto none = *PicturePdf::Create(Target());
  EXPECT_EQ(WhyOf(none->Finish()), "there is no page");

  auto many = *PicturePdf::Create(Target());
  for (std::size_t page = 0; page < PicturePageLimit; ++page) {
    ASSERT_TRUE(many->BeginPage(Form(1, 1, 1)));
    ASSERT_TRUE(many->Add("x"));
    ASSERT_TRUE(many->EndPage());
  }
  EXPECT_EQ(many->Pages(), PicturePageLimit);
  EXPECT_EQ(WhyOf(many->BeginPage(Form(1, 1, 1))), "there are more than 10000 pages");
}

TEST_F(PicturePdfTest, AFileThatCantBeMadeIsNamed) {
  const auto pdf = PicturePdf::Create(Target() + "/none/x.pdf");
  ASSERT_FALSE(pdf);
  EXPECT_EQ(pdf.Error().error, ENOENT);
}

}  // namespace
}  // namespace rastrel::server
