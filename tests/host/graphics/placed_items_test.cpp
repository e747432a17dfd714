#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "host/document/document_file.h"
#include "host/document_host.h"
#include "host/graphics/bmp_file.h"
#include "host/graphics/eps_parts.h"
#include "host/graphics/placed_file.h"
#include "host/render/document_images.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/values/stream.h"
#include "tests/host/graphics/graphic_files.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::graphics {
namespace {

using document::Document;
using document::DocumentHost;
using document::GraphicKind;
using document::GraphicShape;
using document::ObjectHandle;

constexpr double Point = 2.54 / 72;  // centimetres

// PostScript of one page of 30 by 40 points with a mark.
std::string PostScriptFile() {
  return "%!PS-Adobe-3.0\n%%EndComments\n<</PageSize [30 40]>> setpagedevice\n"
         "0 0 10 10 rectfill showpage\n";
}

std::string LittleEndian(std::uint32_t value, std::size_t count = 4) {
  std::string bytes;
  for (std::size_t i = 0; i < count; ++i) bytes += static_cast<char>(value >> 8 * i & 0xFF);
  return bytes;
}

// A file with a binary head, its PostScript, and a preview of 5 bytes after it.
std::string BinaryEps(const std::string& postScript) {
  const auto length = static_cast<std::uint32_t>(postScript.size());
  return "\xC5\xD0\xD3\xC6" + LittleEndian(30) + LittleEndian(length) + LittleEndian(0) +
         LittleEndian(0) + LittleEndian(30 + length) + LittleEndian(5) + "\xFF\xFF" + postScript +
         "image";
}

// 2 by 2 pixels, from the bottom: blue, green; red, white.
std::string BmpFile() {
  const std::string pixels(
      "\xFF\0\0\0\xFF\0\0\0"
      "\0\0\xFF\xFF\xFF\xFF\0\0",
      16);
  return "BM" + LittleEndian(70) + LittleEndian(0) + LittleEndian(54) + LittleEndian(40) +
         LittleEndian(2) + LittleEndian(2) + LittleEndian(1, 2) + LittleEndian(24, 2) +
         LittleEndian(0) + LittleEndian(16) + std::string(16, '\0') + pixels;
}

CPS2CutData Cut(int kind, int resolution, const CVKColor& color, const wchar_t* name = L"") {
  CPS2CutData cut;
  cut.enabled = 1;
  cut.colorKind = kind;
  cut.resolution = resolution;
  cut.color = CVKFullColor(color);
  cut.color.SetColorName(name);
  return cut;
}

class PlacedItems : public testing::Test {
 protected:
  ObjectHandle Place(const char* name, const std::string& bytes) {
    m_Scratch.Write(name, bytes);
    const auto placed = PlaceFile(m_Host.GetDocument(), m_Scratch.Wide(name));
    EXPECT_TRUE(placed) << Describe(placed.Error());
    return placed ? *placed : 0;
  }
  std::string WhyNot(const char* name, const std::string& bytes) {
    m_Scratch.Write(name, bytes);
    const auto placed = PlaceFile(m_Host.GetDocument(), m_Scratch.Wide(name));
    return placed ? "" : Describe(placed.Error());
  }
  template <typename Item>
  Item* ItemOf(ObjectHandle object) {
    return dynamic_cast<Item*>(
        m_Host.GetObjectStore()->DBGetObjectElement(object)->GetPlaceholderItem());
  }
  const GraphicShape& Shape(ObjectHandle object) {
    return std::get<GraphicShape>(m_Host.GetDocument().Find(object)->shape);
  }
  std::unique_ptr<CGenericEPS> OpenEps(const char* name, const std::string& bytes) {
    m_Scratch.Write(name, bytes);
    return m_Host.GetApplication()->NewGenericEPS(m_Scratch.Wide(name).c_str());
  }
  // The bytes that ConvertToPS writes.
  std::string Converted(CGenericEPS& eps) {
    CFile file;
    EXPECT_TRUE(
        file.Open(m_Scratch.Wide("converted").c_str(), CFile::modeCreate | CFile::modeWrite));
    CStream stream(&file);
    EXPECT_NE(eps.ConvertToPS(&stream), 0);
    file.Close();
    return m_Scratch.Read("converted");
  }

  test::ScratchDirectory m_Scratch;
  DocumentHost m_Host;
};

TEST_F(PlacedItems, a_placed_file_has_its_own_size_and_the_item_of_its_kind) {
  const ObjectHandle eps = Place("a.eps", test::EpsFile());
  const ObjectHandle ps = Place("b.ps", PostScriptFile());
  const ObjectHandle pdf = Place("c.pdf", test::PdfFile());
  EXPECT_EQ(Shape(eps).kind, GraphicKind::Eps);
  EXPECT_EQ(Shape(ps).kind, GraphicKind::PostScript);
  EXPECT_EQ(Shape(pdf).kind, GraphicKind::Pdf);
  EXPECT_EQ(Shape(ps).name, L"b.ps");
  EXPECT_EQ(*Shape(ps).bytes, PostScriptFile());
  ASSERT_NE(ItemOf<CGenericEPS>(eps), nullptr);
  EXPECT_NEAR(ItemOf<CGenericEPS>(eps)->GetWidth(), 20 * Point, 1e-9);
  EXPECT_NEAR(ItemOf<CGenericEPS>(eps)->GetHeight(), 10 * Point, 1e-9);
  ASSERT_NE(ItemOf<CGenericPS>(ps), nullptr);
  const BOUNDS sheet = ItemOf<CGenericPS>(ps)->GetBounds();
  EXPECT_EQ(sheet.xmin, 0);
  EXPECT_EQ(sheet.ymin, 0);
  EXPECT_NEAR(sheet.xmax, 30 * Point, 1e-9);
  EXPECT_NEAR(sheet.ymax, 40 * Point, 1e-9);
  ASSERT_NE(ItemOf<CGenericPDF>(pdf), nullptr);
  EXPECT_NEAR(ItemOf<CGenericPDF>(pdf)->GetBounds().xmax, 20 * Point, 1e-9);
  EXPECT_TRUE(m_Host.GetDocument().Holds(eps));
  EXPECT_EQ(ItemOf<CGenericEPS>(eps), ItemOf<CGenericEPS>(eps)) << "one item, the document's";
}

// The area that a conversion makes its picture of: not the finer box, and of PostScript the box
// that its comments declare, the sheet that it sets, or the box around its marks.
TEST_F(PlacedItems, a_placed_file_is_as_large_as_the_picture_that_a_conversion_makes_of_it) {
  const auto expect = [&](const char* name, const std::string& bytes, double width, double height) {
    const ObjectHandle object = Place(name, bytes);
    ASSERT_NE(object, 0U);
    // A measure is exact to 1/2400 inch on each side.
    EXPECT_NEAR(Shape(object).width, width * Point, 0.07 * Point) << name;
    EXPECT_NEAR(Shape(object).height, height * Point, 0.07 * Point) << name;
  };
  const std::string mark = "100 200 30 40 rectfill\n";
  expect("fine.eps",
         "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 99 199 131 241\n"
         "%%HiResBoundingBox: 99.5 199.5 130.5 240.5\n%%EndComments\n" +
             mark,
         32, 42);
  expect("binary.eps", BinaryEps(test::EpsFile()), 20, 10);
  expect("end.eps",
         "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: (atend)\n%%EndComments\n" + mark +
             "%%Trailer\n%%BoundingBox: 100 200 130 240\n",
         30, 40);
  expect("declared.ps", "%!PS\n%%BoundingBox: 90 190 150 250\n%%EndComments\n" + mark + "showpage",
         60, 60);
  expect("sheet.ps", PostScriptFile(), 30, 40);
  expect("marks.ps", "%!PS\n" + mark + "showpage\n", 30, 40);
  expect("open.ps", "%!PS\n" + mark, 30, 40);
}

// A page of the file's area, 40 by 20 points, with a red rectangle in it.
TEST_F(PlacedItems, a_placed_file_is_drawn_in_its_area) {
  m_Host.GetDocument().SetBlank({40 * Point, 20 * Point, 7});
  const ObjectHandle object =
      Place("fine.eps",
            "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 90 190 130 210\n"
            "%%HiResBoundingBox: 100 200 110 205\n%%EndComments\n1 0 0 setrgbcolor\n"
            "100 200 10 5 rectfill\n");
  ASSERT_NE(object, 0U);
  render::ImageOptions options;
  options.dpi = 72;
  options.blank = false;
  const auto images =
      render::DrawDocument({m_Host.GetDocument(), m_Host.GetFonts(), m_Host.GetNotices()},
                           render::ImageFormat::Png, options);
  ASSERT_TRUE(images) << Describe(images.Error());
  m_Scratch.Write("drawn.png", images->front());
  cairo_surface_t* surface =
      cairo_image_surface_create_from_png(m_Scratch.Path("drawn.png").c_str());
  ASSERT_EQ(cairo_image_surface_get_width(surface), 40);
  const auto at = [&](int x, int y) {
    std::uint32_t pixel = 0;
    std::memcpy(
        &pixel,
        cairo_image_surface_get_data(surface) + y * cairo_image_surface_get_stride(surface) + x * 4,
        sizeof pixel);
    return pixel & 0xFFFFFF;
  };
  EXPECT_EQ(at(15, 7), 0xFF0000U) << "10 to 20 from the left, 10 to 15 from below";
  for (const auto& [x, y] : {std::pair(8, 7), {22, 7}, {15, 3}, {15, 12}}) {
    EXPECT_EQ(at(x, y), 0xFFFFFFU) << x << " " << y;
  }
  cairo_surface_destroy(surface);
}

TEST_F(PlacedItems, bounds_of_pdf_are_those_in_the_document_and_of_postscript_before_its_matrix) {
  const ObjectHandle ps = Place("b.ps", PostScriptFile());
  const ObjectHandle pdf = Place("c.pdf", test::PdfFile());
  const TM matrix{0, 2, -2, 0, 5, 7};  // a quarter turn, twice the size
  for (const ObjectHandle object : {ps, pdf}) m_Host.GetObjectStore()->DBApplyTM(object, matrix);
  EXPECT_EQ(ItemOf<CGenericPS>(ps)->GetMatrix(), matrix);
  EXPECT_NEAR(ItemOf<CGenericPS>(ps)->GetBounds().xmax, 30 * Point, 1e-9);
  const BOUNDS turned = ItemOf<CGenericPDF>(pdf)->GetBounds();
  EXPECT_NEAR(turned.xmin, 5 - 2 * 10 * Point, 1e-9);
  EXPECT_NEAR(turned.xmax, 5, 1e-9);
  EXPECT_NEAR(turned.ymin, 7, 1e-9);
  EXPECT_NEAR(turned.ymax, 7 + 2 * 20 * Point, 1e-9);
}

TEST_F(PlacedItems, files_that_can_t_be_placed_say_why_and_place_nothing) {
  EXPECT_EQ(WhyNot("a.png", test::PngFile()), "it is neither PDF, EPS nor PostScript");
  EXPECT_EQ(WhyNot("empty", ""), "it is neither PDF, EPS nor PostScript");
  EXPECT_NE(WhyNot("bad.pdf", "%PDF-1.4\nnothing"), "");
  EXPECT_NE(WhyNot("bad.ps", "%!PS\nnosuchoperator"), "");
  EXPECT_EQ(WhyNot("cut.eps", BinaryEps(test::EpsFile()).substr(0, 20)),
            "its PostScript is not all there");
  EXPECT_EQ(WhyNot("short.eps", BinaryEps(test::EpsFile()).substr(0, 60)),
            "its PostScript is not all there");
  const auto missing = PlaceFile(m_Host.GetDocument(), m_Scratch.Wide("missing.eps"));
  ASSERT_FALSE(missing);
  EXPECT_EQ(missing.Error().error, ENOENT);
  EXPECT_EQ(m_Host.GetDocument().ObjectCount(), 0U);
}

TEST_F(PlacedItems, other_objects_have_no_item) {
  const ObjectHandle group = m_Host.GetObjectStore()->DBCreateObject(DBTYPE_GROUP);
  EXPECT_EQ(ItemOf<CGenericItem>(group), nullptr);
  GraphicShape image;
  image.kind = GraphicKind::Png;
  image.bytes = std::make_shared<const std::string>(test::PngFile());
  image.width = image.height = 1;
  EXPECT_EQ(ItemOf<CGenericItem>(m_Host.GetDocument().Create(image)), nullptr);
}

TEST_F(PlacedItems, cut_lines_are_those_that_were_set_and_a_saved_document_keeps_them) {
  for (const auto& [name, bytes] :
       {std::pair("a.eps", test::EpsFile()), std::pair("b.ps", PostScriptFile()),
        std::pair("c.pdf", test::PdfFile())}) {
    const ObjectHandle object = Place(name, bytes);
    CVKColor cmyk;
    cmyk.SetColor(0, 1, 0.5, 0.25, COLORSPACE_CMYK);
    const PlacedCuts cuts{Cut(CutColorNamed, 300, CVKColor(0x0000FF, COLORSPACE_RGB, 0, 0), L"Cut"),
                          Cut(CutColorCmyk, 1, cmyk)};
    ASSERT_TRUE(SetPlacedCuts(m_Host.GetDocument(), object, cuts));
  }
  auto back = document::ReadDocumentText(document::DocumentText(m_Host.GetDocument()));
  ASSERT_TRUE(back) << Describe(back.Error());
  const auto expect = [](auto& item) {
    const CPS2CutData cut = item.GetCutData();
    EXPECT_EQ(cut.enabled, 1);
    EXPECT_EQ(cut.colorKind, CutColorNamed);
    EXPECT_EQ(cut.resolution, 300);
    std::wstring name;
    EXPECT_NE(cut.color.GetColorName(name), 0);
    EXPECT_EQ(name, L"Cut");
    const CPS2CutData half = item.GetHalfCutData();
    EXPECT_EQ(half.resolution, 1);
    EXPECT_TRUE(half.IsColorMatchKVI(CString(L"CMYK: 0.0000  1.0000  0.5000  0.2500")));
  };
  DocumentHost second(*std::move(back));
  for (DocumentHost* host : {&m_Host, &second}) {
    const auto members = host->GetDocument().Members(host::DocumentRoot);
    const auto item = [&](std::size_t number) {
      return host->GetObjectStore()->DBGetObjectElement(members.at(number))->GetPlaceholderItem();
    };
    expect(dynamic_cast<CGenericEPS&>(*item(0)));
    expect(dynamic_cast<CGenericPS&>(*item(1)));
    expect(dynamic_cast<CGenericPDF&>(*item(2)));
  }
}

TEST_F(PlacedItems, a_file_without_cut_lines_has_the_usual_records) {
  auto* eps = ItemOf<CGenericEPS>(Place("a.eps", test::EpsFile()));
  for (const CPS2CutData& cut : {eps->GetCutData(), eps->GetHalfCutData()}) {
    EXPECT_EQ(cut.enabled, 0);
    EXPECT_EQ(cut.resolution, CPS2CutData().resolution);
    EXPECT_EQ(cut.colorKind, CPS2CutData().colorKind);
    EXPECT_EQ(cut.color, CPS2CutData().color);
  }
}

TEST_F(PlacedItems, cut_lines_out_of_range_are_refused) {
  const ObjectHandle object = Place("a.eps", test::EpsFile());
  const auto set = [&](ObjectHandle to, int kind, int resolution, bool half) {
    PlacedCuts cuts;
    (half ? cuts.halfCut : cuts.cut) = Cut(kind, resolution, CVKColor());
    const auto done = SetPlacedCuts(m_Host.GetDocument(), to, cuts);
    return done ? "" : Describe(done.Error());
  };
  EXPECT_EQ(set(object, 0, 1, false), "");
  EXPECT_EQ(set(object, 2, 100'000, true), "");
  EXPECT_EQ(set(object, 0, 0, false),
            "the resolution of the cut line, 0 dpi, is not between 1 and 100000");
  EXPECT_EQ(set(object, 0, 100'001, true),
            "the resolution of the half-cut line, 100001 dpi, is not between 1 and 100000");
  EXPECT_EQ(set(object, 3, 72, false), "the colour of the cut line is of the unknown kind 3");
  EXPECT_EQ(set(object, -1, 72, true), "the colour of the half-cut line is of the unknown kind -1");
  EXPECT_EQ(set(0, 0, 72, false), "the object is no placed file");
  EXPECT_EQ(Shape(object).halfCut.resolution, 100'000) << "a refused record changes nothing";
}

TEST_F(PlacedItems, eps_is_written_as_its_postscript_alone) {
  const std::string postScript = test::EpsFile();
  const auto plain = OpenEps("a.eps", postScript);
  const auto binary = OpenEps("b.eps", BinaryEps(postScript));
  ASSERT_NE(plain, nullptr);
  ASSERT_NE(binary, nullptr);
  EXPECT_EQ(Converted(*plain), postScript);
  EXPECT_EQ(Converted(*binary), postScript);
  EXPECT_EQ(plain->ConvertToPS(nullptr), 0);
  auto* placed = ItemOf<CGenericEPS>(Place("c.eps", BinaryEps(postScript)));
  EXPECT_EQ(Converted(*placed), postScript);
}

TEST_F(PlacedItems, eps_on_a_full_disk_is_not_written) {
  const auto eps = OpenEps("a.eps", test::EpsFile());
  CFile full;
  ASSERT_TRUE(full.Open(L"/dev/full", CFile::modeWrite));
  CStream stream(&full);
  EXPECT_EQ(eps->ConvertToPS(&stream), 0);
}

TEST_F(PlacedItems, eps_that_can_t_be_opened_is_none_and_the_user_is_told) {
  host::Application& application = *m_Host.GetApplication();
  EXPECT_EQ(application.NewGenericEPS(nullptr), nullptr);
  EXPECT_EQ(application.NewGenericEPS(m_Scratch.Wide("missing").c_str()), nullptr);
  EXPECT_EQ(OpenEps("a.pdf", test::PdfFile()), nullptr);
  const std::string file = BinaryEps(test::EpsFile());
  EXPECT_EQ(OpenEps("short.eps", file.substr(0, 29)), nullptr);
  EXPECT_EQ(OpenEps("cut.eps", file.substr(0, 60)), nullptr) << "its PostScript is not all there";
  EXPECT_EQ(m_Host.GetNotices().Losses().size(), 4U);
  m_Host.SetReadPolicy([](const std::wstring&) { return Expected<void>(FailureOf("not here")); });
  EXPECT_EQ(OpenEps("a.eps", test::EpsFile()), nullptr);
}

TEST_F(PlacedItems, eps_of_separations_in_files_of_their_own_is_known_by_its_head) {
  const auto isDcs = [&](const std::string& head) {
    const auto eps = OpenEps("a.eps", "%!PS-Adobe-3.0 EPSF-3.0" + head);
    return eps->IsDCSObject();
  };
  EXPECT_FALSE(OpenEps("b.eps", test::EpsFile())->IsDCSObject());
  for (const char* comment : {"%%CyanPlate: a.c", "%%MagentaPlate: a.m", "%%YellowPlate: a.y",
                              "%%BlackPlate: a.k", "%%PlateFile: (Cyan) EPS #100 200"}) {
    for (const char* end : {"\n", "\r", "\r\n"}) {
      EXPECT_TRUE(
          isDcs(end + std::string("%%Title: a") + end + comment + end + "%%EndComments" + end))
          << comment;
      EXPECT_FALSE(isDcs(end + std::string("%%EndComments") + end + comment + end)) << comment;
      EXPECT_FALSE(isDcs(end + std::string("gsave") + end + comment + end)) << comment;
    }
  }
  EXPECT_FALSE(isDcs("\n%%PlateFiles\n%%CyanPlates: none\n"));
  EXPECT_TRUE(
      OpenEps("c.eps", BinaryEps("%!PS-Adobe-3.0 EPSF-3.0\n%%CyanPlate: a\n"))->IsDCSObject());
}

TEST_F(PlacedItems, an_opened_eps_has_the_size_of_its_comment_until_it_is_added_and_measured) {
  auto eps = OpenEps("a.eps", test::EpsFile());
  EXPECT_NEAR(eps->GetWidth(), 20 * Point, 1e-9);
  EXPECT_NEAR(eps->GetHeight(), 10 * Point, 1e-9);
  EXPECT_EQ(OpenEps("b.eps", "%!PS-Adobe-3.0 EPSF-3.0\n")->GetWidth(), 0);
  CGenericEPS* item = eps.get();
  ObjectHandle object = 0;
  ASSERT_EQ(item->Add(1, 1, 0, object), 1);
  static_cast<void>(eps.release());  // the document's now
  EXPECT_EQ(ItemOf<CGenericEPS>(object), item);
  EXPECT_FALSE(m_Host.GetDocument().Holds(object));
  EXPECT_NEAR(Shape(object).width, 20 * Point, 1e-9);
  ObjectHandle again = 77;
  EXPECT_EQ(item->Add(1, 1, 0, again), 0);
  EXPECT_EQ(again, 77U);
}

TEST_F(PlacedItems, an_eps_that_can_t_be_measured_is_not_added) {
  const auto eps = OpenEps("a.eps", test::EpsFile("nosuchoperator"));
  ObjectHandle object = 77;
  EXPECT_EQ(eps->Add(1, 1, 0, object), 0);
  EXPECT_EQ(object, 77U);
  EXPECT_EQ(m_Host.GetNotices().Losses().size(), 1U);
}

TEST_F(PlacedItems, a_preview_is_drawn_in_place_of_the_file_whose_bytes_stay) {
  m_Scratch.Write("p.bmp", BmpFile());
  for (const auto& [name, bytes] :
       {std::pair("a.eps", test::EpsFile()), std::pair("b.ps", PostScriptFile()),
        std::pair("c.pdf", test::PdfFile())}) {
    const ObjectHandle object = Place(name, bytes);
    CGenericItem* item = ItemOf<CGenericItem>(object);
    ASSERT_NE(item->CreatePreviewBmp(m_Scratch.Wide("p.bmp").c_str()), 0);
    EXPECT_EQ(*Shape(object).bytes, bytes);
    ASSERT_NE(Shape(object).preview, nullptr);
    EXPECT_TRUE(Shape(object).preview->starts_with("\x89PNG"));
  }
  const auto images = render::DrawDocument(
      {m_Host.GetDocument(), m_Host.GetFonts(), m_Host.GetNotices()}, render::ImageFormat::Svg, {});
  ASSERT_TRUE(images) << Describe(images.Error());
  EXPECT_TRUE(m_Host.GetNotices().Texts().empty());
  const std::string& svg = images->front();
  EXPECT_NE(svg.find("data:image/png"), std::string::npos);
  const auto back = document::ReadDocumentText(document::DocumentText(m_Host.GetDocument()));
  ASSERT_TRUE(back) << Describe(back.Error());
  for (const ObjectHandle object : m_Host.GetDocument().Members(host::DocumentRoot)) {
    EXPECT_EQ((*back)->Find(object)->shape, m_Host.GetDocument().Find(object)->shape);
  }
}

TEST_F(PlacedItems, a_preview_that_is_none_leaves_the_picture_and_the_user_is_told) {
  const ObjectHandle object = Place("a.eps", test::EpsFile());
  CGenericItem* item = ItemOf<CGenericItem>(object);
  EXPECT_EQ(item->CreatePreviewBmp(nullptr), 0);
  EXPECT_EQ(item->CreatePreviewBmp(m_Scratch.Wide("missing.bmp").c_str()), 0);
  m_Scratch.Write("p.bmp", test::PngFile());
  EXPECT_EQ(item->CreatePreviewBmp(m_Scratch.Wide("p.bmp").c_str()), 0);
  EXPECT_EQ(Shape(object).preview, nullptr);
  EXPECT_EQ(m_Host.GetNotices().Texts().size(), 2U);
}

TEST(BmpFiles, the_pixels_come_from_the_bottom_up) {
  const auto pixels = PixelsOfBmp(BmpFile());
  ASSERT_TRUE(pixels) << Describe(pixels.Error());
  EXPECT_EQ((*pixels)->width, 2);
  EXPECT_EQ((*pixels)->Row(0)[2], std::byte{255}) << "red in the upper left";
  EXPECT_EQ((*pixels)->Row(1)[0], std::byte{255}) << "blue in the lower left";
}

TEST(BmpFiles, other_forms_and_damaged_files_are_refused) {
  const std::string file = BmpFile();
  for (std::size_t length = 0; length < file.size(); ++length) {
    EXPECT_FALSE(PixelsOfBmp(file.substr(0, length))) << length;
  }
  EXPECT_FALSE(PixelsOfBmp(file + '\0'));
  const auto with = [&](std::size_t place, const std::string& bytes) {
    return Describe(PixelsOfBmp(std::string(file).replace(place, bytes.size(), bytes)).Error());
  };
  const std::string form = "it is no Windows bitmap of 24 bits a pixel without colours of its own";
  const std::string disagrees = "its head does not agree with its pixels";
  EXPECT_EQ(with(0, "BA"), "it is no Windows bitmap");
  EXPECT_EQ(with(2, LittleEndian(69)), "it is not as long as its head says");
  EXPECT_EQ(with(10, LittleEndian(58)), form);
  EXPECT_EQ(with(28, LittleEndian(32, 2)), form);
  EXPECT_EQ(with(14, LittleEndian(108)), disagrees);
  EXPECT_EQ(with(18, LittleEndian(3)), disagrees);
  EXPECT_EQ(with(18, LittleEndian(0)), disagrees);
  EXPECT_EQ(with(18, LittleEndian(0xFFFFFFFF)), disagrees);
  EXPECT_EQ(with(22, LittleEndian(0x80000000)),
            "it has 2 by 2147483648 pixels; 100000000 are the most");
  EXPECT_EQ(with(26, LittleEndian(2, 2)), disagrees);
  EXPECT_EQ(with(30, LittleEndian(1)), disagrees);
  EXPECT_EQ(with(34, LittleEndian(15)), disagrees);
}

TEST(PlacedKinds, postscript_is_eps_where_it_says_so) {
  EXPECT_EQ(PlacedKindOf("%!PS-Adobe-3.0 EPSF-3.0\n"), GraphicKind::Eps);
  EXPECT_EQ(PlacedKindOf("\x04%!PS-Adobe-3.0 EPSF-1.2\r"), GraphicKind::Eps);
  EXPECT_EQ(PlacedKindOf("%!PS-Adobe-3.0\n% EPSF-3.0"), GraphicKind::PostScript);
  EXPECT_EQ(PlacedKindOf("%!"), GraphicKind::PostScript);
  EXPECT_EQ(PlacedKindOf(BinaryEps("%!PS\n")), GraphicKind::Eps);
  EXPECT_EQ(PlacedKindOf("%PDF-1.7"), GraphicKind::Pdf);
  EXPECT_EQ(PlacedKindOf(test::PngFile()), std::nullopt);
  EXPECT_EQ(PlacedKindOf(""), std::nullopt);
}

// A line from the artwork's upper left corner, as the RIP counts: 1 to the right and 2 down.
TEST_F(PlacedItems, cut_lines_of_eps_and_pdf_are_put_where_the_file_is) {
  host::ObjectStore& store = *m_Host.GetObjectStore();
  for (const auto& [name, bytes] :
       {std::pair("a.eps", test::EpsFile()), std::pair("c.pdf", test::PdfFile())}) {
    const ObjectHandle file = Place(name, bytes);
    store.DBApplyTM(file, {0, 2, -2, 0, 5, 7});
    const auto arc = store.PA_NewPolyArc();
    store.PA_NewSubPoly(*arc);
    store.PA_AddVertice(*arc, 0, 0, {0, 0});
    store.PA_AddVertice(*arc, 0, 1, {20 * Point, -10 * Point});
    const POLYARC* element = arc.get();
    const ObjectHandle line =
        store.DBInsertElement(nullptr, DBTYPE_POLYARC, element, 0, 1, 0, 1, false);
    const ObjectHandle group = store.DBCreateObject(DBTYPE_GROUP);
    ASSERT_EQ(store.DBInsertObject(line, group), 1);
    PlaceCutResult(dynamic_cast<document::DocumentStore&>(store), file, group);
    const BOUNDS lines = m_Host.GetDocument().Bounds(group);
    const BOUNDS artwork = m_Host.GetDocument().Bounds(file);
    EXPECT_NEAR(lines.xmin, artwork.xmin, 1e-9) << name;
    EXPECT_NEAR(lines.xmax, artwork.xmax, 1e-9) << name;
    EXPECT_NEAR(lines.ymin, artwork.ymin, 1e-9) << name;
    EXPECT_NEAR(lines.ymax, artwork.ymax, 1e-9) << name;
  }
}

TEST_F(PlacedItems, cut_lines_of_postscript_and_of_objects_that_are_no_files_stay) {
  host::ObjectStore& store = *m_Host.GetObjectStore();
  const ObjectHandle file = Place("b.ps", PostScriptFile());
  store.DBApplyTM(file, {1, 0, 0, 1, 5, 7});
  const ObjectHandle drill = m_Host.GetDocument().Create(document::DrillShape{{1, 1}, 0.5});
  auto& own = dynamic_cast<document::DocumentStore&>(store);
  for (const ObjectHandle none : {file, drill, ObjectHandle{0}}) PlaceCutResult(own, none, drill);
  EXPECT_EQ(m_Host.GetDocument().Find(drill)->attributes.matrix, TM());
  PlaceCutResult(own, Place("c.pdf", test::PdfFile()), 0);
}

}  // namespace
}  // namespace rastrel::graphics
