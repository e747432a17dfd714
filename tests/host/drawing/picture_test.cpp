#include "host/drawing/open_picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "host/graphics/drawing_process.h"
#include "tests/host/graphics/graphic_files.h"

namespace rastrel::drawing {
namespace {

using document::GraphicKind;
using graphics::DrawableOf;
using graphics::IsDocumentFile;
using graphics::KindOf;
using graphics::LargestGraphicFile;
using graphics::MaximumGraphicPixels;
using graphics::PathFileKind;
using graphics::PathFileKindOf;
using graphics::Picture;
using test::EpsFile;
using test::JpegFile;
using test::PdfFile;
using test::PngFile;
using test::PngHead;
using test::SvgFile;
using test::TiffFile;

using Opened = Expected<std::unique_ptr<Picture>>;

// As a caller and the drawing program do it between them.
Opened Open(const std::string& bytes) {
  const auto kind = KindOf(bytes);
  if (!kind) return FailureOf("of no kind");
  const auto drawable = DrawableOf(*kind, std::make_shared<const std::string>(bytes));
  if (!drawable) return drawable.Error();
  return OpenPicture(drawable->kind, drawable->bytes);
}

std::string Refusal(const std::string& bytes) {
  const Opened opened = Open(bytes);
  return opened ? "" : Describe(opened.Error());
}

// Sides in points, or 0.
std::array<double, 2> SizeOf(const std::string& bytes) {
  const Opened opened = Open(bytes);
  EXPECT_TRUE(opened) << (opened ? "" : Describe(opened.Error()));
  if (!opened) return {0, 0};
  return {(*opened)->Width(), (*opened)->Height()};
}

void ExpectSize(const std::string& bytes, double width, double height) {
  const auto size = SizeOf(bytes);
  EXPECT_NEAR(size[0], width, 0.01);
  EXPECT_NEAR(size[1], height, 0.01);
}

// The colors in the middle of the upper and the lower half.
std::array<unsigned, 2> Halves(const Picture& picture) {
  cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, 200, 100);
  cairo_t* context = cairo_create(surface);
  cairo_scale(context, 200 / picture.Width(), 100 / picture.Height());
  static_cast<void>(picture.Draw(context));  // of a damaged file a part
  EXPECT_EQ(cairo_status(context), CAIRO_STATUS_SUCCESS);
  cairo_destroy(context);
  cairo_surface_flush(surface);
  std::array<unsigned, 2> colors{};
  for (std::size_t half = 0; half < 2; ++half) {
    const unsigned char* row = cairo_image_surface_get_data(surface) +
                               (half == 0 ? 25 : 75) * cairo_image_surface_get_stride(surface);
    std::memcpy(&colors[half], row + 400, 4);
    colors[half] &= 0xFFFFFF;
  }
  cairo_surface_destroy(surface);
  return colors;
}

const std::vector<std::pair<GraphicKind, std::string>>& Files() {
  static const std::vector<std::pair<GraphicKind, std::string>> files{
      {GraphicKind::Svg, SvgFile("width=\"20\" height=\"10\"")},
      {GraphicKind::Png, PngFile()},
      {GraphicKind::Jpeg, JpegFile(1, 96)},
      {GraphicKind::Tiff, TiffFile(2, 96)},
      {GraphicKind::Pdf, PdfFile()},
      {GraphicKind::Eps, EpsFile()}};
  return files;
}

TEST(GraphicFile, every_kind_is_known_by_its_content) {
  for (const auto& [kind, bytes] : Files()) EXPECT_EQ(KindOf(bytes), kind);
}

TEST(GraphicFile, every_kind_is_drawn_the_right_way_up) {
  for (const auto& [kind, bytes] : Files()) {
    const Opened opened = Open(bytes);
    ASSERT_TRUE(opened) << static_cast<int>(kind);
    const auto halves = Halves(**opened);
    // JPEG rounds colors.
    EXPECT_EQ(halves[0] & 0xF0F0F0, 0xF00000U) << static_cast<int>(kind);
    EXPECT_EQ(halves[1] & 0xF0F0F0, 0x0000F0U) << static_cast<int>(kind);
  }
}

TEST(GraphicFile, a_file_of_no_kind_is_not_guessed_at) {
  for (const std::string bytes : {"", "GIF89a", "<html><svg/></html>", "{}", "<", "<!--",
                                  "<?xml version=\"1.0\"?>", "<svgx/>", "\xFF\xD8", "II", "BM"}) {
    EXPECT_FALSE(KindOf(bytes).has_value()) << bytes;
  }
}

TEST(GraphicFile, an_svg_is_known_behind_its_prolog) {
  for (const std::string bytes :
       {"\xEF\xBB\xBF<svg/>", "<?xml version=\"1.0\"?>\n<!-- <html> -->\n<svg width=\"1\">",
        "<!DOCTYPE svg PUBLIC \"a\" \"b\">\r\n<svg>",
        "<!DOCTYPE svg [<!ENTITY a \"b\"> <!ENTITY c '>'> ]>\n<svg>", "<s:svg xmlns:s=\"\">"}) {
    EXPECT_EQ(KindOf(bytes), GraphicKind::Svg) << bytes;
  }
}

TEST(GraphicFile, an_eps_with_a_binary_head_is_known) {
  EXPECT_EQ(KindOf("\xC5\xD0\xD3\xC6\x1E"), GraphicKind::Eps);
}

TEST(GraphicFile, postscript_that_is_not_encapsulated_is_read_as_eps) {
  EXPECT_EQ(KindOf("%!PS-Adobe-3.0\n%%Pages: 1\n"), GraphicKind::Eps);
  EXPECT_EQ(KindOf("%!\n"), GraphicKind::Eps);
  EXPECT_EQ(KindOf("\x04%!PS\n"), GraphicKind::Eps);
}

TEST(GraphicFile, a_dxf_is_known_by_its_first_section) {
  for (const std::string bytes :
       {"0\nSECTION\n", "  0\r\nSECTION\r\n2\r\nENTITIES\r\n", "999\nby hand\n0\nSECTION\n"}) {
    EXPECT_EQ(PathFileKindOf(bytes), PathFileKind::Dxf) << bytes;
  }
}

TEST(GraphicFile, a_plotter_file_is_known_by_its_first_instructions) {
  for (const std::string bytes : {"IN;SP1;PU0,0;PD100,100;", "PU 0 0PD 5 5", "\x1B%-1BIN;SP1;PU;",
                                  "\x1B.@;1:IN;", "IN", " DF;\nPA0,0"}) {
    EXPECT_EQ(PathFileKindOf(bytes), PathFileKind::Hpgl) << bytes;
  }
}

TEST(GraphicFile, text_is_neither_dxf_nor_a_plotter_file) {
  for (const std::string bytes :
       {"", "0", "0\n", "1\nSECTION\n", "999\n", "IN the beginning", "INTRO", "SPACE", "some words",
        "PUD", "COnstants", "\x1B", "\x1B%"}) {
    EXPECT_FALSE(PathFileKindOf(bytes).has_value()) << bytes;
  }
}

TEST(GraphicFile, a_document_is_known_by_its_format) {
  EXPECT_TRUE(IsDocumentFile("{\n \"format\": \"rastrel-document\","));
  EXPECT_FALSE(IsDocumentFile("\"rastrel-document\""));
  EXPECT_FALSE(IsDocumentFile("{\"format\": \"another\"}"));
  EXPECT_FALSE(IsDocumentFile(""));
}

// --- True size ---

TEST(GraphicSize, an_svg_has_the_size_of_its_units) {
  ExpectSize(SvgFile("width=\"20\" height=\"10\""), 15, 7.5);
  ExpectSize(SvgFile("width=\"96px\" height=\"48px\""), 72, 36);
  ExpectSize(SvgFile("width=\"2in\" height=\"72pt\""), 144, 72);
  ExpectSize(SvgFile("width=\"2.54cm\" height=\"50.8mm\""), 72, 144);
  ExpectSize(SvgFile("width=\"20mm\" height=\"10mm\" viewBox=\"0 0 20 10\""), 56.693, 28.346);
}

TEST(GraphicSize, an_svg_without_a_size_has_that_of_its_view_box_or_of_its_drawing) {
  ExpectSize(SvgFile("viewBox=\"0 0 192 96\""), 144, 72);
  ExpectSize(SvgFile("width=\"100%\" height=\"100%\" viewBox=\"0 0 192 96\""), 144, 72);
  ExpectSize(SvgFile(""), 15, 7.5);
}

TEST(GraphicSize, a_png_has_the_size_of_its_resolution_or_of_96_dpi) {
  ExpectSize(PngFile(), 15, 7.5);
  ExpectSize(PngFile(2835, 2835, 1), 20, 10);  // 72 dpi
  ExpectSize(PngFile(11811, 5906, 1), 4.8, 4.8);
  ExpectSize(PngFile(3, 4, 0), 15, 7.5);  // a ratio alone
  ExpectSize(PngFile(0, 0, 1), 15, 7.5);
  ExpectSize(PngFile(0xFFFFFFFF, 1, 1), 15, 7.5);
}

TEST(GraphicSize, a_jpeg_has_the_size_of_its_resolution_or_of_96_dpi) {
  ExpectSize(JpegFile(1, 72), 20, 10);
  ExpectSize(JpegFile(2, 100), 20 * 72 / 254.0, 10 * 72 / 254.0);
  ExpectSize(JpegFile(0, 1), 15, 7.5);
  ExpectSize(JpegFile(1, 0), 15, 7.5);
  ExpectSize(JpegFile(7, 72), 15, 7.5);
}

TEST(GraphicSize, a_tiff_has_the_size_of_its_resolution_or_of_96_dpi) {
  ExpectSize(TiffFile(2, 72), 20, 10);
  ExpectSize(TiffFile(3, 100), 20 * 72 / 254.0, 10 * 72 / 254.0);
  ExpectSize(TiffFile(1, 72), 15, 7.5);
  ExpectSize(TiffFile(2, 0), 15, 7.5);
}

TEST(GraphicSize, pdf_and_eps_are_as_large_as_their_boxes) {
  ExpectSize(PdfFile(), 20, 10);
  ExpectSize(EpsFile(), 20, 10);
}

TEST(GraphicSize, an_eps_that_says_its_box_at_its_end_has_that_box) {
  const std::string file = EpsFile(
      "1 0 0 setrgbcolor 100 205 20 5 rectfill 0 0 1 setrgbcolor 100 200 20 5 rectfill\n"
      "%%Trailer\n%%BoundingBox: 0 0 400 300\n%%BoundingBox: 100 200 120 210\n",
      "(atend)");
  ExpectSize(file, 20, 10);
  const Opened opened = Open(file);
  ASSERT_TRUE(opened);
  EXPECT_EQ(Halves(**opened), (std::array<unsigned, 2>{0xFF0000, 0x0000FF}));
}

// --- Limits and faults ---

TEST(GraphicLimits, images_of_too_many_pixels_are_refused_by_their_heads) {
  for (const auto& [width, height] :
       {std::pair{32'768U, 1U}, {1U, 32'768U}, {10'000U, 10'001U}, {0xFFFFFFFFU, 0xFFFFFFFFU}}) {
    EXPECT_NE(Refusal(PngHead(width, height)).find("a side, are the most"), std::string::npos);
  }
  EXPECT_EQ(Refusal(PngHead(0, 10)), "it has no pixels");
  EXPECT_NE(Refusal(PngHead(32'767, 1)).find("no whole PNG"), std::string::npos)
      << "not too large, and cut off";
}

TEST(GraphicLimits, sizes_that_no_page_could_hold_are_refused) {
  EXPECT_EQ(Refusal(SvgFile("width=\"9999cm\" height=\"1cm\"")), "");
  EXPECT_NE(Refusal(SvgFile("width=\"10001cm\" height=\"1cm\"")).find("at most 10000 cm"),
            std::string::npos);
  EXPECT_NE(Refusal(SvgFile("width=\"0\" height=\"1cm\"")), "");
}

TEST(GraphicFaults, an_image_that_is_cut_off_anywhere_is_a_picture_or_refused_with_a_message) {
  for (const auto& [kind, bytes] : Files()) {
    if (kind == GraphicKind::Eps) continue;
    for (std::size_t length = 0; length < bytes.size(); ++length) {
      const auto opened =
          OpenPicture(kind, std::make_shared<const std::string>(bytes.substr(0, length)));
      if (!opened) {
        EXPECT_FALSE(opened.Error().why.empty());
      } else {
        Halves(**opened);
      }
      if (length < bytes.size() / 4) {
        EXPECT_FALSE(opened) << static_cast<int>(kind) << " of " << length;
      }
    }
  }
}

TEST(GraphicFaults, an_image_with_one_wrong_byte_does_no_harm) {
  for (const auto& [kind, bytes] : Files()) {
    if (kind == GraphicKind::Eps) continue;
    for (std::size_t place = 0; place < std::min<std::size_t>(bytes.size(), 600); ++place) {
      std::string changed = bytes;
      changed[place] = static_cast<char>(changed[place] ^ 0xFF);
      const auto opened = OpenPicture(kind, std::make_shared<const std::string>(changed));
      if (opened) Halves(**opened);
    }
  }
}

TEST(GraphicFaults, an_svg_reads_no_file_beside_itself) {
  const test::ScratchDirectory directory;
  directory.Write("beside.svg", SvgFile("width=\"20\" height=\"10\""));
  const std::string link = "file://" + directory.Path("beside.svg");
  const std::string file =
      "<!DOCTYPE svg [<!ENTITY other SYSTEM \"" + link +
      "\">]><svg xmlns=\"http://www.w3.org/2000/svg\" "
      "xmlns:xlink=\"http://www.w3.org/1999/xlink\" width=\"20\" height=\"10\"><image "
      "width=\"20\" height=\"10\" xlink:href=\"" +
      link + "\"/></svg>";
  const Opened opened = Open(file);
  if (!opened) return;  // refused is as good
  EXPECT_EQ(Halves(**opened), (std::array<unsigned, 2>{0, 0}));
}

TEST(GraphicFaults, an_svg_of_entities_within_entities_ends) {
  std::string entities = "<!ENTITY a0 \"lol\">";
  for (int i = 1; i < 10; ++i) {
    entities += "<!ENTITY a" + std::to_string(i) + " \"";
    for (int j = 0; j < 10; ++j) entities += "&a" + std::to_string(i - 1) + ";";
    entities += "\">";
  }
  const Opened opened = Open("<!DOCTYPE svg [" + entities +
                             "]><svg xmlns=\"http://www.w3.org/2000/svg\" width=\"20\" "
                             "height=\"10\"><text>&a9;</text></svg>");
  if (opened) Halves(**opened);
}

TEST(GraphicKinds, images_that_viewers_of_svg_can_show_are_carried_as_they_are) {
  const auto mime = [](const std::string& bytes) {
    const Opened opened = Open(bytes);
    const char* type = (*opened)->MimeType();
    return std::string(type ? type : "none");
  };
  EXPECT_EQ(mime(PngFile()), "image/png");
  EXPECT_EQ(mime(JpegFile(1, 96)), "image/jpeg");
  EXPECT_EQ(mime(SvgFile("width=\"20\" height=\"10\"")), "image/svg+xml");
  EXPECT_EQ(mime(TiffFile(2, 96)), "none");
  EXPECT_EQ(mime(PdfFile()), "none");
}

}  // namespace
}  // namespace rastrel::drawing
