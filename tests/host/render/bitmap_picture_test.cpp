#include <cairo.h>

#include <cstring>
#include <memory>

#include "host/document/bitmap_png.h"
#include "host/document/document_file.h"
#include "tests/host/render/drawn_document.h"

namespace rastrel::render {
namespace {

using document::BitmapPixels;
using document::BitmapShape;
using test::Numbers;
using test::Output;

struct SurfaceEnd {
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};

// Pixels that are all different from their neighbors.
std::shared_ptr<const BitmapPixels> Pattern(int width, int height, bool gray) {
  auto pixels = std::make_shared<BitmapPixels>();
  pixels->width = width;
  pixels->height = height;
  pixels->gray = gray;
  pixels->bytes.resize(pixels->RowBytes() * static_cast<std::size_t>(height));
  for (int y = 0; y < height; ++y) {
    for (std::size_t i = 0; i < pixels->Row(y).size(); ++i) {
      pixels->bytes[static_cast<std::size_t>(y) * pixels->RowBytes() + i] =
          static_cast<std::byte>(i * 37 + static_cast<std::size_t>(y) * 101);
    }
  }
  return pixels;
}

class BitmapPicture : public test::DrawnDocument {
 protected:
  // The pixels of a PNG as a bitmap's: read by another program's code.
  BitmapPixels Decoded(const std::string& png) {
    m_Directory.Write("decoded.png", png);
    const std::unique_ptr<cairo_surface_t, SurfaceEnd> surface(
        cairo_image_surface_create_from_png(m_Directory.Path("decoded.png").c_str()));
    EXPECT_EQ(cairo_surface_status(surface.get()), CAIRO_STATUS_SUCCESS);
    BitmapPixels pixels;
    pixels.width = cairo_image_surface_get_width(surface.get());
    pixels.height = cairo_image_surface_get_height(surface.get());
    pixels.bytes.resize(pixels.RowBytes() * static_cast<std::size_t>(pixels.height));
    for (int y = 0; y < pixels.height; ++y) {
      const unsigned char* row = cairo_image_surface_get_data(surface.get()) +
                                 y * cairo_image_surface_get_stride(surface.get());
      std::byte* target = pixels.bytes.data() + static_cast<std::size_t>(y) * pixels.RowBytes();
      for (int x = 0; x < pixels.width; ++x) std::memcpy(target + x * 3, row + x * 4, 3);
    }
    return pixels;
  }
  // As three bytes a pixel.
  static BitmapPixels InColor(const BitmapPixels& pixels) {
    if (!pixels.gray) return pixels;
    BitmapPixels colored = pixels;
    colored.gray = false;
    colored.bytes.assign(colored.RowBytes() * static_cast<std::size_t>(pixels.height), {});
    for (int y = 0; y < pixels.height; ++y) {
      std::byte* target = colored.bytes.data() + static_cast<std::size_t>(y) * colored.RowBytes();
      for (const std::byte level : pixels.Row(y)) {
        for (int part = 0; part < 3; ++part) *target++ = level;
      }
    }
    return colored;
  }
};

TEST_F(BitmapPicture, a_png_of_a_bitmap_has_its_pixels) {
  for (const bool gray : {false, true}) {
    for (const auto& [width, height] : {std::pair(1, 1), {2, 3}, {5, 4}, {301, 77}}) {
      const auto pixels = Pattern(width, height, gray);
      const std::string png = document::PngOfBitmap(*pixels);
      EXPECT_TRUE(Decoded(png) == InColor(*pixels)) << width << " by " << height;
      EXPECT_EQ(png, document::PngOfBitmap(*pixels));
    }
  }
}

// 300 dpi are 11811 pixels to the metre.
TEST_F(BitmapPicture, a_png_of_a_bitmap_names_its_resolution) {
  const std::string png = document::PngOfBitmap(*Pattern(2, 2, false), {300, 150});
  const auto at = png.find("pHYs");
  ASSERT_NE(at, std::string::npos);
  EXPECT_EQ(png.substr(at + 4, 9), std::string("\0\0\x2E\x23\0\0\x17\x12\1", 9));
  EXPECT_EQ(document::PngOfBitmap(*Pattern(2, 2, false)).find("pHYs"), std::string::npos);
}

TEST_F(BitmapPicture, its_compressed_data_may_be_larger_than_a_chunk) {
  auto pixels = std::make_shared<BitmapPixels>(*Pattern(700, 700, false));
  std::uint32_t state = 1;
  for (std::byte& byte : pixels->bytes) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<std::byte>(state >> 24);
  }
  for (int y = 0; y < pixels->height; ++y) {
    for (std::size_t i = pixels->Row(y).size(); i < pixels->RowBytes(); ++i) {
      pixels->bytes[static_cast<std::size_t>(y) * pixels->RowBytes() + i] = {};
    }
  }
  const std::string png = document::PngOfBitmap(*pixels);
  EXPECT_GT(png.size(), std::size_t{1} << 20);
  EXPECT_TRUE(Decoded(png) == *pixels);
}

// A page of 2 by 1 inch at 100 dpi that is the bitmap and nothing else.
TEST_F(BitmapPicture, at_its_own_resolution_the_page_is_the_bitmap) {
  m_Document.SetBlank({5.08, 2.54, 7});
  for (const bool gray : {false, true}) {
    const auto pixels = Pattern(200, 100, gray);
    const auto object = Add(BitmapShape{pixels, 5.08, 2.54});
    ImageOptions options;
    options.dpi = 100;
    options.blank = false;
    EXPECT_TRUE(Decoded(Draw(ImageFormat::Png, options)) == InColor(*pixels));
    m_Document.Destroy(object);
  }
}

// The saved document has the bitmap as a placed file, which the drawing program opens.
TEST_F(BitmapPicture, a_saved_document_has_the_same_picture) {
  document::Attributes attributes;
  attributes.matrix = {0, 1, -1, 0, 9, 2};
  Add(BitmapShape{Pattern(40, 20, false), 8, 4}, attributes);
  Add(BitmapShape{Pattern(40, 20, true), 2, 1});
  const auto back = document::ReadDocumentText(document::DocumentText(m_Document));
  ASSERT_TRUE(back) << Describe(back.Error());
  const auto& graphic = std::get<document::GraphicShape>((*back)->Find(2)->shape);
  EXPECT_EQ(graphic.kind, document::GraphicKind::Png);
  EXPECT_EQ(graphic.width, 8);
  EXPECT_TRUE(Decoded(*graphic.bytes) == *Pattern(40, 20, false));
  const auto drawn = DrawDocument({**back, m_Fonts, m_Notices}, ImageFormat::Png, {});
  ASSERT_TRUE(drawn) << Describe(drawn.Error());
  EXPECT_TRUE(Decoded(drawn->front()) == Decoded(Draw(ImageFormat::Png)));
  EXPECT_EQ(document::DocumentText(**back), document::DocumentText(m_Document));
}

TEST_F(BitmapPicture, an_svg_has_it_where_its_matrix_puts_it_and_its_pixels_once) {
  const auto pixels = Pattern(3000, 20, false);
  document::Attributes attributes;
  attributes.matrix = {2, 0, 0, 3, 5, 1};
  Add(BitmapShape{pixels, 4, 2}, attributes);
  Add(BitmapShape{pixels, 1.5, 0.25});
  const auto lines = Measured("graphic");
  ASSERT_EQ(lines.size(), 2U);
  const auto box = Numbers(lines[0]);
  EXPECT_NEAR(box.at(0), 50, 0.001);
  EXPECT_NEAR(box.at(1), 10, 0.001);
  EXPECT_NEAR(box.at(2), 130, 0.001);
  EXPECT_NEAR(box.at(3), 70, 0.001);
  const auto other = Numbers(lines[1]);
  EXPECT_NEAR(other.at(2), 15, 0.001);
  EXPECT_NEAR(other.at(3), 2.5, 0.001);
  const std::string svg = DrawSvg();
  EXPECT_EQ(svg.find("<image", svg.find("<image") + 1), std::string::npos);
}

TEST_F(BitmapPicture, a_pdf_keeps_its_pixels) {
  Add(BitmapShape{Pattern(40, 20, false), 8, 4});
  m_Directory.Write("a.pdf", Draw(ImageFormat::Pdf));
  const std::string listed = Output("pdfimages -list '" + m_Directory.Path("a.pdf") + "'");
  EXPECT_NE(listed.find(" 40    20 "), std::string::npos) << listed;
  Output("cd '" + m_Directory.Path("") + "' && pdfimages -png a.pdf image");
  EXPECT_TRUE(Decoded(m_Directory.Read("image-000.png")) == *Pattern(40, 20, false));
}

TEST_F(BitmapPicture, one_that_is_too_large_for_a_png_of_the_page_is_a_crossed_box_with_a_notice) {
  for (const int width : {32'767, 32'768}) {
    const auto object = Add(BitmapShape{Pattern(width, 1, true), 10, 1});
    const bool drawn = width == 32'767;
    EXPECT_FALSE(Draw(ImageFormat::Png).empty());
    EXPECT_EQ(m_Notices.Texts().empty(), drawn) << width;
    m_Document.Destroy(object);
  }
  EXPECT_EQ(m_Notices.Texts().at(0),
            L"a bitmap can't be drawn: it has 32768 by 1 pixels; 100000000, and 32767 a side, are "
            L"the most");
  Add(BitmapShape{Pattern(32'768, 1, true), 10, 1});
  EXPECT_EQ(Measured("graphic").size(), 1U) << "an SVG takes any";
}

}  // namespace
}  // namespace rastrel::render
