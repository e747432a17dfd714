#include <memory>

#include "host/graphics/graphic_loader.h"
#include "tests/host/graphics/graphic_files.h"
#include "tests/host/render/drawn_document.h"

namespace rastrel::render {
namespace {

using test::Numbers;
using test::Output;

class PlacedFile : public test::DrawnDocument {
 protected:
  // Places a file, moved and scaled.
  void Place(const std::string& bytes, const TM& matrix) {
    m_Directory.Write("placed", bytes);
    ASSERT_EQ(graphics::LoadGraphic(m_Document, m_Notices, m_Directory.Wide("placed")), 1);
    m_Document.Edit(m_Document.Selection().at(0))->attributes.matrix = matrix;
  }
};

// The file is 20 by 10 points: 7.056 by 3.528 mm.
TEST_F(PlacedFile, it_stands_where_its_matrix_puts_it) {
  for (const std::string& bytes :
       {test::PdfFile(), test::EpsFile(), test::PngFile(2835, 2835, 1), test::JpegFile(1, 72),
        test::TiffFile(2, 72), test::SvgFile("width=\"20pt\" height=\"10pt\"")}) {
    Place(bytes, {2, 0, 0, 3, 5, 1});
  }
  Place(test::PdfFile(), {0, 1, -1, 0, 10, 2});
  const auto lines = Measured("graphic");
  ASSERT_EQ(lines.size(), 7U);
  for (int i = 0; i < 6; ++i) {
    const auto box = Numbers(lines[static_cast<std::size_t>(i)]);
    EXPECT_NEAR(box.at(0), 50, 0.01) << i;
    EXPECT_NEAR(box.at(1), 10, 0.01) << i;
    EXPECT_NEAR(box.at(2), 50 + 2 * 7.0556, 0.01) << i;
    EXPECT_NEAR(box.at(3), 10 + 3 * 3.5278, 0.01) << i;
  }
  const auto turned = Numbers(lines[6]);
  EXPECT_NEAR(turned.at(0), 100 - 3.5278, 0.01);
  EXPECT_NEAR(turned.at(2), 100, 0.01);
  EXPECT_NEAR(turned.at(1), 20, 0.01);
  EXPECT_NEAR(turned.at(3), 20 + 7.0556, 0.01);
}

TEST_F(PlacedFile, several_places_of_one_file_carry_it_once) {
  Place(test::PngFile(), {1, 0, 0, 1, 0, 0});
  const auto first = m_Document.Selection().at(0);
  document::GraphicShape shape = std::get<document::GraphicShape>(m_Document.Find(first)->shape);
  for (int i = 1; i < 5; ++i) Add(shape);
  const std::string svg = DrawSvg();
  EXPECT_EQ(svg.find("<image"), svg.rfind("<image"));
  EXPECT_EQ(Measured("graphic").size(), 5U);
}

TEST_F(PlacedFile, letters_and_lines_of_a_document_stay_letters_and_lines_in_pdf) {
  Place(test::EpsFile("/Helvetica findfont 4 scalefont setfont 101 202 moveto (Letters) show\n"),
        {1, 0, 0, 1, 2, 2});
  m_Directory.Write("page.pdf", Draw(ImageFormat::Pdf));
  EXPECT_NE(Output("pdftotext '" + m_Directory.Path("page.pdf") + "' -").find("Letters"),
            std::string::npos);
  EXPECT_EQ(Output("pdfimages -list '" + m_Directory.Path("page.pdf") + "' | tail -n +3"), "");
}

TEST_F(PlacedFile, an_image_is_carried_in_its_own_pixels_and_a_jpeg_in_its_own_bytes) {
  Place(test::PngFile(), {3, 0, 0, 3, 0, 0});
  Place(test::JpegFile(1, 96), {5, 0, 0, 5, 0, 0});
  m_Directory.Write("page.pdf", Draw(ImageFormat::Pdf));
  const std::string images = Output("pdfimages -list '" + m_Directory.Path("page.pdf") +
                                    "' | tail -n +3 | awk "
                                    "'{print $4, $5, $9}'");
  EXPECT_EQ(images, "20 10 image\n20 10 jpeg\n");
}

TEST_F(PlacedFile, pictures_with_files_in_them_are_the_same_in_every_run) {
  for (const std::string& bytes :
       {test::PdfFile(), test::EpsFile(), test::PngFile(), test::JpegFile(1, 72),
        test::TiffFile(2, 72), test::SvgFile("width=\"20pt\" height=\"10pt\"")}) {
    Place(bytes, {2, 0, 0, 3, 5, 1});
  }
  for (const ImageFormat format : {ImageFormat::Svg, ImageFormat::Pdf, ImageFormat::Png}) {
    const std::string first = Draw(format);
    EXPECT_EQ(Draw(format), first);
  }
}

}  // namespace
}  // namespace rastrel::render
