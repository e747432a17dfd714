#include <memory>

#include "host/graphics/graphic_loader.h"
#include "tests/host/graphics/graphic_files.h"
#include "tests/host/render/drawn_document.h"

namespace rastrel::render {
namespace {

using document::GraphicKind;
using test::Numbers;
using test::Output;

class PlacedFile : public test::DrawnDocument {
 protected:
  // A file of 20 by 10 points as one that stays whole, moved and scaled.
  void Place(GraphicKind kind, const std::string& bytes, const TM& matrix) {
    document::GraphicShape shape;
    shape.kind = kind;
    shape.name = L"placed";
    shape.bytes = std::make_shared<const std::string>(bytes);
    shape.width = 20 * 2.54 / 72;
    shape.height = 10 * 2.54 / 72;
    document::Attributes attributes;
    attributes.matrix = matrix;
    Add(shape, attributes);
  }
  void PlaceAllKinds(const TM& matrix) {
    Place(GraphicKind::Pdf, test::PdfFile(), matrix);
    Place(GraphicKind::Eps, test::EpsFile(), matrix);
    Place(GraphicKind::Png, test::PngFile(2835, 2835, 1), matrix);
    Place(GraphicKind::Jpeg, test::JpegFile(1, 72), matrix);
    Place(GraphicKind::Tiff, test::TiffFile(2, 72), matrix);
    Place(GraphicKind::Svg, test::SvgFile("width=\"20pt\" height=\"10pt\""), matrix);
  }
};

// The file is 20 by 10 points: 7.056 by 3.528 mm.
TEST_F(PlacedFile, it_stands_where_its_matrix_puts_it) {
  PlaceAllKinds({2, 0, 0, 3, 5, 1});
  Place(GraphicKind::Pdf, test::PdfFile(), {0, 1, -1, 0, 10, 2});
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

// A page of 10 by 5 cm with a rectangle of 2 to 8 by 1 to 4 cm.
TEST_F(PlacedFile, colors_and_lines_that_are_set_on_a_loaded_drawing_show) {
  m_Directory.Write("a.svg",
                    "<svg xmlns='http://www.w3.org/2000/svg' width='10cm' height='5cm' "
                    "viewBox='0 0 10 5'><rect x='2' y='1' width='6' height='3'/></svg>");
  ASSERT_EQ(graphics::LoadGraphic(m_Document, m_Notices, m_Directory.Wide("a.svg")), 1);
  EXPECT_EQ(Measured("path"), std::vector<std::string>{"path #000000 None None"});
  document::Object& object = *m_Document.Edit(m_Document.Selection().at(0));
  object.attributes.layer = test::Gold;
  object.attributes.lineColor = test::Blue;
  object.attributes.lineStyle = {0.3, LINESTYLE_WIDTH};
  EXPECT_EQ(Measured("path"), std::vector<std::string>{"path #d4af37 #0000ff 3"});
  const auto box = Numbers(Measured("box-of-path").at(0));
  const double expected[] = {20, 10, 80, 40};
  for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(box.at(i), expected[i], 0.001);
  EXPECT_TRUE(Measured("graphic").empty());
}

TEST_F(PlacedFile, several_places_of_one_file_carry_it_once) {
  Place(GraphicKind::Png, test::PngFile(), {1, 0, 0, 1, 0, 0});
  const auto first = m_Document.Members(host::DocumentRoot).at(0);
  document::GraphicShape shape = std::get<document::GraphicShape>(m_Document.Find(first)->shape);
  for (int i = 1; i < 5; ++i) Add(shape);
  const std::string svg = DrawSvg();
  EXPECT_EQ(svg.find("<image"), svg.rfind("<image"));
  EXPECT_EQ(Measured("graphic").size(), 5U);
}

TEST_F(PlacedFile, letters_and_lines_of_a_document_stay_letters_and_lines_in_pdf) {
  Place(GraphicKind::Eps,
        test::EpsFile("/Helvetica findfont 4 scalefont setfont 101 202 moveto (Letters) show\n"),
        {1, 0, 0, 1, 2, 2});
  m_Directory.Write("page.pdf", Draw(ImageFormat::Pdf));
  EXPECT_NE(Output("pdftotext '" + m_Directory.Path("page.pdf") + "' -").find("Letters"),
            std::string::npos);
  EXPECT_EQ(Output("pdfimages -list '" + m_Directory.Path("page.pdf") + "' | tail -n +3"), "");
}

TEST_F(PlacedFile, an_image_is_carried_in_its_own_pixels_and_a_jpeg_in_its_own_bytes) {
  Place(GraphicKind::Png, test::PngFile(), {3, 0, 0, 3, 0, 0});
  Place(GraphicKind::Jpeg, test::JpegFile(1, 96), {5, 0, 0, 5, 0, 0});
  m_Directory.Write("page.pdf", Draw(ImageFormat::Pdf));
  const std::string images = Output("pdfimages -list '" + m_Directory.Path("page.pdf") +
                                    "' | tail -n +3 | awk "
                                    "'{print $4, $5, $9}'");
  EXPECT_EQ(images, "20 10 image\n20 10 jpeg\n");
}

TEST_F(PlacedFile, pictures_with_files_in_them_are_the_same_in_every_run) {
  PlaceAllKinds({2, 0, 0, 3, 5, 1});
  for (const ImageFormat format : {ImageFormat::Svg, ImageFormat::Pdf, ImageFormat::Png}) {
    const std::string first = Draw(format);
    EXPECT_EQ(Draw(format), first);
  }
}

}  // namespace
}  // namespace rastrel::render
