#include "host/render/document_images.h"

#include <cairo.h>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "host/document/document_file.h"
#include "host/drawing/open_picture.h"
#include "rastrel/platform/os/system_calls.h"
#include "tests/host/render/drawn_document.h"

namespace rastrel::render {
namespace {

using test::Blue;
using test::Colored;
using test::Gold;
using test::Output;
using test::Paragraph;
using test::Piece;
using test::Red;

struct SurfaceEnd {
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};

// The pixels of a PNG.
class Pixels {
 public:
  explicit Pixels(const std::string& file) {
    m_Surface.reset(cairo_image_surface_create_from_png(file.c_str()));
    EXPECT_EQ(cairo_surface_status(m_Surface.get()), CAIRO_STATUS_SUCCESS) << file;
  }
  [[nodiscard]] int Width() const { return cairo_image_surface_get_width(m_Surface.get()); }
  [[nodiscard]] int Height() const { return cairo_image_surface_get_height(m_Surface.get()); }
  // Red, green and blue as one number.
  [[nodiscard]] unsigned At(int x, int y) const {
    const unsigned char* row = cairo_image_surface_get_data(m_Surface.get()) +
                               y * cairo_image_surface_get_stride(m_Surface.get());
    unsigned pixel = 0;
    std::memcpy(&pixel, row + x * 4, sizeof pixel);
    return pixel & 0xFFFFFF;
  }

 private:
  std::unique_ptr<cairo_surface_t, SurfaceEnd> m_Surface;
};

// The box around the pixels of a color; no width if there are none.
struct Box {
  int left = std::numeric_limits<int>::max(), right = -1;
  int top = std::numeric_limits<int>::max(), bottom = -1;
};
Box BoxOf(const Pixels& pixels, unsigned color) {
  Box box;
  for (int y = 0; y < pixels.Height(); ++y) {
    for (int x = 0; x < pixels.Width(); ++x) {
      if (pixels.At(x, y) != color) continue;
      box = {std::min(box.left, x), std::max(box.right, x), std::min(box.top, y),
             std::max(box.bottom, y)};
    }
  }
  return box;
}

// The mean difference of two pictures' channels, 0 to 1.
double Difference(const Pixels& one, const Pixels& other) {
  if (one.Width() != other.Width() || one.Height() != other.Height()) return 1;
  double sum = 0;
  for (int y = 0; y < one.Height(); ++y) {
    for (int x = 0; x < one.Width(); ++x) {
      for (const int shift : {0, 8, 16}) {
        const auto channel = [&](const Pixels& pixels) {
          return static_cast<int>(pixels.At(x, y) >> shift & 0xFF);
        };
        sum += std::abs(channel(one) - channel(other)) / 255.0;
      }
    }
  }
  return sum / (3.0 * one.Width() * one.Height());
}

class Images : public test::DrawnDocument {
 protected:
  // Draws as PNG with 100 pixels to the centimetre.
  Pixels DrawPixels(bool outlines = false) {
    ImageOptions options;
    options.dpi = 254;
    options.outlines = outlines;
    m_Directory.Write("page.png", Draw(ImageFormat::Png, options));
    return Pixels(m_Directory.Path("page.png"));
  }
  std::string PdfTool(const std::string& tool) {
    m_Directory.Write("page.pdf", Draw(ImageFormat::Pdf));
    return Output(tool + " '" + m_Directory.Path("page.pdf") + "' -");
  }
};

// --- PNG ---

TEST_F(Images, a_png_has_the_pixels_and_names_the_resolution_of_its_blank) {
  AddUsual();
  const Pixels pixels = DrawPixels();
  EXPECT_EQ(pixels.Width(), 2000);
  EXPECT_EQ(pixels.Height(), 1200);
  const std::string png = m_Directory.Read("page.png");
  // 254 dpi are 10,000 pixels to the metre, 0x2710, in both directions, in unit 1.
  EXPECT_NE(png.find(std::string("pHYs\0\0\x27\x10\0\0\x27\x10\1", 13)), std::string::npos);
}

TEST_F(Images, panes_are_filled_to_the_pixel) {
  AddUsual();
  const Pixels pixels = DrawPixels();
  const Box gold = BoxOf(pixels, 0xD4AF37);
  // From 1 to 18 cm, and from 11 to 7 cm above the lower edge of 12 cm; the edge is drawn over it.
  EXPECT_NEAR(gold.left, 100, 2);
  EXPECT_NEAR(gold.right, 1800, 2);
  EXPECT_NEAR(gold.top, 100, 2);
  EXPECT_NEAR(gold.bottom, 500, 2);
  EXPECT_EQ(pixels.At(950, 300), 0xFFFFFFU) << "the gap between the panes";
}

TEST_F(Images, text_stands_within_its_margins_in_every_fit_and_justification) {
  for (const int fit : {LINEFIT_EACH_LINE, LINEFIT_ALL_LINES, LINEFIT_EQUAL_HEIGHT}) {
    for (const int justification : {JUSTIFY_LEFT, JUSTIFY_RIGHT, JUSTIFY_CENTER}) {
      for (const bool outlines : {false, true}) {
        const auto text =
            Add(Paragraph({2, 10, 18, 4}, 100, justification, fit,
                          {{Piece(L"HHHHHHHHHHHHHHHHHHHHHHHH", 900)}, {Piece(L"H", 400)}}),
                Colored(Blue));
        const Box box = BoxOf(DrawPixels(outlines), 0x0000FF);
        // The frame less a tenth of its width on either side. H is a tenth of its height from
        // where its room begins, squeezed as it is.
        EXPECT_GE(box.left, 360);
        EXPECT_LE(box.right, 1640);
        EXPECT_GE(box.top, 200);
        EXPECT_LE(box.bottom, 800);
        EXPECT_NEAR(box.left, 360, 15) << "the first line fills its room";
        EXPECT_NEAR(box.right, 1640, 15);
        m_Document.Remove(text);
      }
    }
  }
}

TEST_F(Images, a_short_line_stands_left_right_or_in_the_middle) {
  const auto boxOf = [&](int justification) {
    const auto text = Add(
        Paragraph({2, 10, 18, 4}, 100, justification, LINEFIT_EACH_LINE, {{Piece(L"HHH", 400)}}),
        Colored(Blue));
    const Box box = BoxOf(DrawPixels(), 0x0000FF);
    m_Document.Remove(text);
    return box;
  };
  EXPECT_NEAR(boxOf(JUSTIFY_LEFT).left, 360, 15);
  EXPECT_NEAR(boxOf(JUSTIFY_RIGHT).right, 1640, 15);
  const Box centred = boxOf(JUSTIFY_CENTER);
  EXPECT_NEAR(centred.left + centred.right, 2000, 3);
  EXPECT_NEAR(centred.top + centred.bottom, 1000, 60) << "its line is in the middle of the frame";
}

TEST_F(Images, a_drill_point_is_a_circle_in_true_size) {
  document::Attributes attributes = Colored(Red);
  Add(document::DrillShape{{10, 6}, 2}, attributes);
  const Pixels pixels = DrawPixels();
  // Where a circle of 100 pixels round 1000, 600 crosses rows and columns beside the cross's arms.
  const auto drawn = [&](int x, int y) { return pixels.At(x, y) != 0xFFFFFF; };
  for (const int side : {-1, 1}) {
    EXPECT_TRUE(drawn(1000 + 80 * side, 660) || drawn(1000 + 80 * side - 1, 660)) << side;
    EXPECT_TRUE(drawn(1060, 600 + 80 * side) || drawn(1060, 600 + 80 * side - 1)) << side;
    EXPECT_FALSE(drawn(1000 + 77 * side, 660) || drawn(1000 + 83 * side, 660)) << side;
  }
  EXPECT_EQ(pixels.At(1050, 620), 0xFFFFFFU) << "a hole is not filled";
  EXPECT_NE(pixels.At(1000, 600), 0xFFFFFFU) << "the cross";
}

TEST_F(Images, resolutions_beyond_the_limits_are_refused_with_a_message) {
  ImageOptions options;
  for (const double dpi : {0.0, -1.0, 0.999, 10'001.0, std::nan(""), HUGE_VAL}) {
    options.dpi = dpi;
    EXPECT_NE(Refusal(ImageFormat::Png, options).find(" dpi: a picture has 1 to 10000"),
              std::string::npos)
        << dpi;
  }
  m_Document.SetBlank({0.1, 0.1, 7});
  for (const double dpi : {LowestDpi, HighestDpi}) {
    options.dpi = dpi;
    EXPECT_EQ(Refusal(ImageFormat::Png, options), "");
  }
}

TEST_F(Images, a_side_has_as_many_pixels_as_the_limit_says_and_no_more) {
  ImageOptions options;
  options.dpi = 254;  // a pixel is a tenth of a millimetre
  m_Document.SetBlank({MaximumPixelSide / 100.0 - 0.001, 0.1, 7});
  EXPECT_EQ(Refusal(ImageFormat::Png, options), "");
  m_Document.SetBlank({0.1, MaximumPixelSide / 100.0 + 0.01, 7});
  EXPECT_EQ(Refusal(ImageFormat::Png, options),
            "a picture of 10 by 32768 pixels is too large: 100000000 pixels, and 32767 a side, "
            "are the most; 254 dpi are too many");
}

TEST_F(Images, more_pixels_than_the_limit_are_refused_before_there_is_memory_for_them) {
  ImageOptions options;
  options.dpi = 254;
  m_Document.SetBlank({100, 100.01, 7});
  EXPECT_NE(Refusal(ImageFormat::Png, options).find("10000 by 10001 pixels is too large"),
            std::string::npos);
}

// --- PDF ---

TEST_F(Images, a_pdf_is_as_large_as_the_blank_and_has_all_pages) {
  m_Document.SetBlank({21, 29.7, 7});
  document::Attributes attributes = Colored(Red);
  attributes.pages = {1, 3};
  Add(document::DrillShape{{5, 5}, 1}, attributes);
  m_Directory.Write("page.pdf", Draw(ImageFormat::Pdf));
  const std::string info = Output("pdfinfo '" + m_Directory.Path("page.pdf") + "'");
  EXPECT_NE(info.find("595.276 x 841.89 pts (A4)"), std::string::npos) << info;
  EXPECT_NE(info.find("Pages:           3"), std::string::npos) << info;
  EXPECT_EQ(info.find("CreationDate"), std::string::npos) << info;
}

TEST_F(Images, text_of_a_pdf_can_be_searched) {
  AddUsual();
  Add(Paragraph({1, 6, 19, 5}, 0, JUSTIFY_LEFT, LINEFIT_EACH_LINE,
                {{Piece(L"Stra\xDF"
                        L"e \x20AC 5 \x3A9",
                        200)}}),
      Colored(Blue));
  const std::string text = PdfTool("pdftotext -enc UTF-8");
  EXPECT_NE(text.find("Mill & Son"), std::string::npos) << text;
  EXPECT_NE(text.find("since 1890 <and before>"), std::string::npos) << text;
  EXPECT_NE(text.find("Stra\xC3\x9F"
                      "e \xE2\x82\xAC 5 \xCE\xA9"),
            std::string::npos)
      << text;
}

TEST_F(Images, a_pdf_of_outlines_has_neither_text_nor_fonts) {
  AddUsual();
  ImageOptions options;
  options.outlines = true;
  m_Directory.Write("page.pdf", Draw(ImageFormat::Pdf, options));
  EXPECT_EQ(Output("pdftotext '" + m_Directory.Path("page.pdf") + "' -"), "\f");
  EXPECT_EQ(Output("pdffonts '" + m_Directory.Path("page.pdf") + "' | tail -n +3"), "");
}

TEST_F(Images, one_page_of_a_pdf_can_be_had) {
  document::Attributes attributes = Colored(Red);
  attributes.pages = {3, 3};
  Add(document::DrillShape{{5, 5}, 1}, attributes);
  ImageOptions options;
  options.page = 2;
  m_Directory.Write("page.pdf", Draw(ImageFormat::Pdf, options));
  EXPECT_NE(Output("pdfinfo '" + m_Directory.Path("page.pdf") + "'").find("Pages:           1\n"),
            std::string::npos);
}

// --- All of them ---

// Three renderers of three makers must show the same picture.
TEST_F(Images, svg_pdf_and_png_show_the_same) {
  AddUsual();
  ImageOptions options;
  options.dpi = 127;
  m_Directory.Write("page.png", Draw(ImageFormat::Png, options));
  m_Directory.Write("page.svg", DrawSvg());
  m_Directory.Write("page.pdf", Draw(ImageFormat::Pdf));
  const std::string base = m_Directory.Path();
  Output("cd '" + base +
         "' && pdftoppm -scale-to-x 1000 -scale-to-y 600 -png -singlefile page.pdf from-pdf");
  auto svg = std::make_shared<const std::string>(m_Directory.Read("page.svg"));
  const auto picture = drawing::OpenPicture(document::GraphicKind::Svg, svg);
  ASSERT_TRUE(picture);
  const std::unique_ptr<cairo_surface_t, SurfaceEnd> surface(
      cairo_image_surface_create(CAIRO_FORMAT_RGB24, 1000, 600));
  cairo_t* context = cairo_create(surface.get());
  cairo_scale(context, 127 / 72.0, 127 / 72.0);
  EXPECT_TRUE((*picture)->Draw(context));
  cairo_destroy(context);
  cairo_surface_write_to_png(surface.get(), m_Directory.Path("from-svg.png").c_str());
  const Pixels png(m_Directory.Path("page.png"));
  for (const char* name : {"from-pdf.png", "from-svg.png"}) {
    // Edges are smoothed each in its own way.
    EXPECT_LT(Difference(png, Pixels(m_Directory.Path(name))), 0.01) << name;
  }
}

constexpr ImageFormat Formats[] = {ImageFormat::Svg, ImageFormat::Pdf, ImageFormat::Png};

TEST_F(Images, the_same_document_gives_the_same_bytes) {
  AddUsual();
  for (const ImageFormat format : Formats) {
    for (const bool outlines : {false, true}) {
      ImageOptions options;
      options.outlines = outlines;
      const std::string first = Draw(format, options);
      EXPECT_EQ(Draw(format, options), first);
    }
  }
}

TEST_F(Images, a_saved_and_loaded_document_gives_the_same_picture) {
  AddUsual();
  auto loaded = document::ReadDocumentText(document::DocumentText(m_Document));
  ASSERT_TRUE(loaded);
  for (const ImageFormat format : Formats) {
    const auto images = DrawDocument({**loaded, m_Fonts, m_Notices}, format, {});
    ASSERT_TRUE(images);
    EXPECT_EQ(images->front(), Draw(format));
  }
}

TEST_F(Images, another_process_in_another_place_gives_the_same_picture) {
  AddUsual();
  ASSERT_TRUE(document::SaveDocument(m_Document, m_Directory.Wide("a.rdoc")));
  const char* const names[] = {"other.svg", "other.pdf", "other.png"};
  for (int i = 0; i < 3; ++i) {
    Output("cd / && LC_ALL=C TZ=Asia/Tokyo LANG=ja_JP '" RASTREL_TEST_CHILDREN "/draw_document' '" +
           m_Directory.Path("a.rdoc") + "' '" + m_Directory.Path(names[i]) + "'");
    EXPECT_EQ(m_Directory.Read(names[i]), Draw(Formats[i])) << names[i];
  }
}

// --- Files ---

TEST_F(Images, one_page_is_written_under_the_name_and_several_under_numbers) {
  const auto drill = Add(document::DrillShape{{5, 5}, 1}, Colored(Red));
  const auto save = [&](ImageFormat format, const std::string& name) {
    return SaveImages(Source(), format, {}, m_Directory.Path(name));
  };
  auto written = save(ImageFormat::Svg, "page.svg");
  ASSERT_TRUE(written);
  EXPECT_EQ(*written, std::vector<std::string>{m_Directory.Path("page.svg")});
  m_Document.SetPages(drill, {2, 2});
  written = save(ImageFormat::Png, "page.a.png");
  ASSERT_TRUE(written);
  EXPECT_EQ(*written, (std::vector<std::string>{m_Directory.Path("page.a-1.png"),
                                                m_Directory.Path("page.a-2.png")}));
  written = save(ImageFormat::Pdf, "page.pdf");
  ASSERT_TRUE(written);
  EXPECT_EQ(written->size(), 1U);
  EXPECT_TRUE(m_Directory.Has("page.a-2.png"));
  EXPECT_FALSE(m_Directory.Has("page.a.png"));
}

TEST_F(Images, numbered_files_replace_others_only_if_asked_and_are_all_written_or_none) {
  const auto drill = Add(document::DrillShape{{5, 5}, 1}, Colored(Red));
  m_Document.SetPages(drill, {2, 2});
  m_Directory.Write("page-2.svg", "mine");
  const std::string path = m_Directory.Path("page.svg");
  const auto refused = SaveImages(Source(), ImageFormat::Svg, {}, path);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.Error().error, EEXIST);
  EXPECT_EQ(refused.Error().where, m_Directory.Path("page-2.svg"));
  EXPECT_EQ(m_Directory.Read("page-2.svg"), "mine");
  EXPECT_FALSE(m_Directory.Has("page-1.svg"));
  ASSERT_TRUE(SaveImages(Source(), ImageFormat::Svg, {}, path, os::Existing::Replaced));
  EXPECT_TRUE(m_Directory.Has("page-1.svg"));
  EXPECT_NE(m_Directory.Read("page-2.svg"), "mine");
}

TEST_F(Images, a_file_whose_name_differs_in_case_alone_is_another_one) {
  AddUsual();
  m_Directory.Write("page.svg", "mine");
  ASSERT_TRUE(SaveImages(Source(), ImageFormat::Svg, {}, m_Directory.Path("PAGE.svg")));
  EXPECT_EQ(m_Directory.Read("page.svg"), "mine");
  EXPECT_TRUE(m_Directory.Has("PAGE.svg"));
}

TEST_F(Images, a_file_that_can_not_be_written_is_reported_and_the_old_one_stays) {
  AddUsual();
  const auto missing =
      SaveImages(Source(), ImageFormat::Svg, {}, m_Directory.Path("no/such/page.svg"));
  ASSERT_FALSE(missing);
  EXPECT_NE(Describe(missing.Error()).find("No such file or directory"), std::string::npos);
  m_Directory.Write("page.svg", "old");
  const os::SystemCallsGuard guard;
  os::Calls().write = [](int, const void*, std::size_t) -> ssize_t {
    errno = ENOSPC;
    return -1;
  };
  const auto full = SaveImages(Source(), ImageFormat::Svg, {}, m_Directory.Path("page.svg"));
  ASSERT_FALSE(full);
  EXPECT_NE(Describe(full.Error()).find("No space left on device"), std::string::npos);
  EXPECT_EQ(m_Directory.Read("page.svg"), "old");
}

}  // namespace
}  // namespace rastrel::render
