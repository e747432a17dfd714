// Separated planes on a page: one over the other they look like the composite.

#include <cairo.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

#include "host/document/plane_pixels.h"
#include "host/render/plane_picture.h"
#include "tests/host/render/drawn_document.h"

namespace rastrel::render {
namespace {

using test::Output;

struct SurfaceEnd {
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};

// A pixel of a PNG file as 0xRRGGBB.
std::uint32_t PixelOf(const std::string& file, int x, int y) {
  const std::unique_ptr<cairo_surface_t, SurfaceEnd> surface(
      cairo_image_surface_create_from_png(file.c_str()));
  EXPECT_EQ(cairo_surface_status(surface.get()), CAIRO_STATUS_SUCCESS) << file;
  const auto* line = cairo_image_surface_get_data(surface.get()) +
                     static_cast<std::ptrdiff_t>(y) * cairo_image_surface_get_stride(surface.get());
  return reinterpret_cast<const std::uint32_t*>(line)[x] & 0xFFFFFFU;
}

struct Inks {
  int cyan, magenta, yellow, black;  // 0 to 255 full ink
};

// The composite as light, by the formula that the output engine has for a page in CMYK.
std::uint32_t LightOf(const Inks& inks) {
  const auto part = [&](int ink) {
    return static_cast<std::uint32_t>(std::lround((255 - ink) * (255 - inks.black) / 255.0));
  };
  return part(inks.cyan) << 16U | part(inks.magenta) << 8U | part(inks.yellow);
}

void ExpectNear(std::uint32_t pixel, std::uint32_t expected, int tolerance) {
  for (const unsigned shift : {0U, 8U, 16U})
    EXPECT_NEAR(static_cast<int>(pixel >> shift & 255U), static_cast<int>(expected >> shift & 255U),
                tolerance)
        << std::hex << pixel << " for " << expected;
}

class SeparationPicture : public test::DrawnDocument {
 protected:
  /// A page of an inch square: four planes of 100 by 100 pixels, whose left half has these inks.
  void AddPlanes(const Inks& inks) {
    m_Document.SetBlank({2.54, 2.54, 7});
    const int covers[] = {inks.cyan, inks.magenta, inks.yellow, inks.black};
    const wchar_t* names[] = {L"Cyan", L"Magenta", L"Yellow", L"Black"};
    for (int ink = 0; ink < 4; ++ink) {
      document::SeparationShape plane;
      plane.ink.SetColor(ink == 0, ink == 1, ink == 2, ink == 3, COLORSPACE_CMYK);
      plane.ink.SetColorName(names[ink]);
      plane.pixelWidth = plane.pixelHeight = 100;
      plane.xResolution = plane.yResolution = 100;
      document::PlaneBytes pixels(10'000, 255);
      for (std::size_t i = 0; i < pixels.size(); ++i)
        if (i % 100 < 50) pixels[i] = static_cast<std::uint8_t>(255 - covers[ink]);
      plane.pixels = document::KeptPixels::Of(pixels);
      Add(plane);
    }
  }
  [[nodiscard]] std::string Png() {
    ImageOptions options;
    options.dpi = 100;
    options.blank = false;
    m_Directory.Write("page.png", Draw(ImageFormat::Png, options));
    return m_Directory.Path("page.png");
  }
};

TEST_F(SeparationPicture, of_all_planes_is_the_composite) {
  for (const Inks& inks : {Inks{255, 0, 0, 0}, Inks{0, 255, 255, 0}, Inks{0, 0, 0, 255},
                           Inks{200, 100, 30, 60}, Inks{128, 128, 128, 128}}) {
    m_Document.Clear();
    AddPlanes(inks);
    const std::string png = Png();
    ExpectNear(PixelOf(png, 10, 50), LightOf(inks), 2);
    EXPECT_EQ(PixelOf(png, 90, 50), 0xFFFFFFU) << "no ink on the right";
  }
}

TEST_F(SeparationPicture, in_svg_has_a_named_layer_for_each_plane_that_mixes_as_ink) {
  AddPlanes({200, 100, 30, 60});
  const std::string svg = DrawSvg();
  std::size_t at = 0;
  for (const char* name : {"Cyan", "Magenta", "Yellow", "Black"}) {
    const std::size_t found =
        svg.find("<g class=\"separation\" data-layer=\"" + std::string(name) +
                 "\" data-page=\"1\" style=\"mix-blend-mode:multiply\">\n<image width=");
    ASSERT_NE(found, std::string::npos) << name;
    EXPECT_GT(found, at) << "the planes' order";
    at = found;
  }
}

// A viewer of SVG is the library that draws placed SVG files.
TEST_F(SeparationPicture, in_svg_drawn_by_a_viewer_is_the_composite) {
  const Inks inks{200, 100, 30, 60};
  AddPlanes(inks);
  document::GraphicShape shown;
  shown.kind = document::GraphicKind::Svg;
  shown.name = L"page.svg";
  shown.width = shown.height = 2.54;
  shown.bytes = std::make_shared<const std::string>(DrawSvg());
  m_Document.Clear();
  Add(shown);
  ExpectNear(PixelOf(Png(), 10, 50), LightOf(inks), 3);
}

TEST_F(SeparationPicture, in_pdf_drawn_by_a_viewer_is_the_composite) {
  const Inks inks{200, 100, 30, 60};
  AddPlanes(inks);
  m_Directory.Write("page.pdf", Draw(ImageFormat::Pdf));
  static_cast<void>(Output("pdftocairo -png -singlefile -r 100 '" + m_Directory.Path("page.pdf") +
                           "' '" + m_Directory.Path("pdf") + "'"));
  ExpectNear(PixelOf(m_Directory.Path("pdf.png"), 10, 50), LightOf(inks), 3);
}

class LostPixels : public document::PlanePixels {
 public:
  Expected<document::PlaneBytes> Read() const override { return FailureOf("it is gone"); }
};

TEST_F(SeparationPicture, of_a_plane_that_is_gone_is_a_crossed_box_and_a_loss) {
  document::SeparationShape plane;
  plane.ink.SetColorName(L"Gold");
  plane.pixels = std::make_shared<LostPixels>();
  Add(plane);
  EXPECT_NE(DrawSvg().find("<g class=\"separation\">\n<path"), std::string::npos);
  ASSERT_EQ(m_Notices.Losses().size(), 1U);
  EXPECT_EQ(m_Notices.Losses().front(), L"the plane \"Gold\" can't be drawn: it is gone");
}

TEST(PlanePicture, larger_than_the_drawing_library_takes_is_made_smaller_by_means) {
  std::vector<std::uint8_t> pixels(std::size_t{64'001} * 2, 255);
  pixels[0] = 0;  // one of the three in its row that become the first
  SeparationPlane plane;
  plane.width = 64'001;
  plane.height = 2;
  plane.pixels = pixels;
  const PlanePicture picture = CoverOf(plane);
  ASSERT_TRUE(picture.surface);
  EXPECT_EQ(picture.width, 21'334);  // a third, rounded up
  EXPECT_EQ(picture.height, 2);
  const unsigned char* data = cairo_image_surface_get_data(picture.surface.get());
  EXPECT_EQ(data[0], 85);  // 255 / 3, in one of two rows
  EXPECT_EQ(data[1], 0);
}

TEST(PlanePicture, keeps_its_pixels_up_to_the_limit) {
  for (const int width : {31'999, 32'000, 32'001}) {
    const std::vector<std::uint8_t> pixels(static_cast<std::size_t>(width), 0);
    SeparationPlane plane;
    plane.width = width;
    plane.pixels = pixels;
    EXPECT_EQ(CoverOf(plane).width, width <= 32'000 ? width : 16'001) << width;
  }
}

}  // namespace
}  // namespace rastrel::render
