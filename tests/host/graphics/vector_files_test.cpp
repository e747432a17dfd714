#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cmath>
#include <filesystem>
#include <numbers>

#include "host/document_host.h"
#include "host/graphics/graphic_loader.h"
#include "host/graphics/picture.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/generic_item.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/os/text.h"
#include "tests/host/graphics/graphic_files.h"
#include "tests/host/graphics/vector_file.h"
#include "tests/host/render/hostile_files.h"

namespace rastrel::graphics {
namespace {

using document::FillRule;
using document::GraphicShape;
using document::Object;
using document::PathShape;
using testing::HasSubstr;

// --- Geometry and attributes ---

TEST_F(VectorFile, a_filled_rectangle_of_each_format_is_one_path_with_its_own_bounds) {
  const std::string page = "<< /PageSize [283.5 142] >> setpagedevice\n";
  const std::string body = "1 0 0 setrgbcolor 2 1 6 3 rectfill\n";
  for (const std::string& bytes :
       {Svg("<rect x='2' y='1' width='6' height='3' fill='red'/>"), Eps(body + "showpage\n"),
        "%!PS\n" + page + "28.346456692913385 dup scale\n" + body + "showpage\n"}) {
    const auto objects = Loaded(bytes);
    ASSERT_EQ(objects.size(), 1U);
    EXPECT_TRUE(std::holds_alternative<PathShape>(objects[0].shape));
    // A distiller writes hundredths of points.
    ExpectBounds(objects[0], 2, 1, 8, 4, bytes[0] == '<' ? Near : 2e-3);
    EXPECT_EQ(ColorOf(objects[0].attributes.layer), 0xFF0000);
    EXPECT_EQ(LineKind(objects[0]), LINESTYLE_NONE);
  }
}

// The file's page is 20 by 10 points, red above blue.
TEST_F(VectorFile, a_pdf_is_paths_in_painting_order) {
  const auto objects = Loaded(test::PdfFile());
  ASSERT_EQ(objects.size(), 2U);
  constexpr double unit = 2.54 / 72;
  ExpectBounds(objects[0], 0, 5 * unit, 20 * unit, 10 * unit);
  ExpectBounds(objects[1], 0, 0, 20 * unit, 5 * unit);
  EXPECT_EQ(ColorOf(objects[0].attributes.layer), 0xFF0000);
  EXPECT_EQ(ColorOf(objects[1].attributes.layer), 0x0000FF);
}

TEST_F(VectorFile, objects_stand_on_the_page_on_show) {
  m_Document.SetDisplayPage(4);
  const auto objects = Loaded(Svg("<rect width='1' height='1'/><rect width='2' height='1'/>"));
  ASSERT_EQ(objects.size(), 2U);
  for (const Object& object : objects) {
    EXPECT_EQ(object.attributes.pages, (VK_PAGE_RANGE{4, 4}));
    EXPECT_EQ(object.parent, host::DocumentRoot);
  }
}

TEST_F(VectorFile, fill_and_stroke_of_one_path_are_one_object_with_both) {
  const auto objects =
      Loaded(Svg("<rect x='2' y='1' width='6' height='3' fill='#102030' stroke='#405060' "
                 "stroke-width='0.3'/>"));
  ASSERT_EQ(objects.size(), 1U);
  ExpectBounds(objects[0], 2, 1, 8, 4);
  EXPECT_EQ(ColorOf(objects[0].attributes.layer), 0x102030);
  EXPECT_EQ(ColorOf(objects[0].attributes.lineColor), 0x405060);
  EXPECT_EQ(LineKind(objects[0]), LINESTYLE_WIDTH);
  EXPECT_NEAR(objects[0].attributes.lineStyle.width, 0.3, Near);
}

TEST_F(VectorFile, a_line_below_its_fill_is_an_object_of_its_own) {
  const auto objects =
      Loaded(Svg("<rect x='2' y='1' width='6' height='3' fill='#102030' stroke='#405060' "
                 "stroke-width='0.3' paint-order='stroke'/>"));
  ASSERT_EQ(objects.size(), 2U);
  EXPECT_EQ(LineKind(objects[0]), LINESTYLE_WIDTH);
  EXPECT_EQ(ColorOf(objects[0].attributes.layer), -1);
  EXPECT_EQ(LineKind(objects[1]), LINESTYLE_NONE);
}

TEST_F(VectorFile, a_line_without_a_fill_has_an_invisible_layer) {
  const auto objects =
      Loaded(Svg("<path d='M1 1L9 1' fill='none' stroke='#0f0' stroke-width='0.1'/>"));
  ASSERT_EQ(objects.size(), 1U);
  EXPECT_EQ(ColorOf(objects[0].attributes.layer), -1);
  EXPECT_EQ(ColorOf(objects[0].attributes.lineColor), 0x00FF00);
  ExpectBounds(objects[0], 1, 4, 9, 4);
}

TEST_F(VectorFile, a_line_of_a_pdf_without_width_is_a_hairline_where_it_is) {
  const auto objects = Loaded(Eps("0 setlinewidth newpath 1 1.234 moveto 9 1.234 lineto stroke\n"));
  ASSERT_EQ(objects.size(), 1U);
  EXPECT_EQ(LineKind(objects[0]), LINESTYLE_HAIRLINE);
  EXPECT_EQ(objects[0].attributes.lineStyle.width, LineStyleHairline);
  ExpectBounds(objects[0], 1, 1.234, 9, 1.234, 2e-3);
}

TEST_F(VectorFile, groups_transforms_and_nested_pages_are_honoured) {
  const auto objects =
      Loaded(Svg("<g transform='translate(2 1)'><g transform='scale(2)'>"
                 "<rect width='1' height='0.5' transform='rotate(90)'/></g></g>"
                 "<svg x='5' y='2' width='4' height='2' viewBox='0 0 40 20'>"
                 "<rect x='10' y='10' width='10' height='10'/></svg>"));
  ASSERT_EQ(objects.size(), 2U);
  // Turned by 90 degrees: x from -0.5 to 0, y from 0 to 1; twice as large, at 2, 1 from above.
  ExpectBounds(objects[0], 1, 2, 2, 4);
  ExpectBounds(objects[1], 6, 1, 7, 2);
}

TEST_F(VectorFile, the_width_of_a_line_grows_with_its_group) {
  const auto objects =
      Loaded(Svg("<path d='M1 1L2 1' transform='scale(3)' stroke='red' stroke-width='0.1'/>"));
  ASSERT_EQ(objects.size(), 1U);
  EXPECT_NEAR(objects[0].attributes.lineStyle.width, 0.3, Near);
}

TEST_F(VectorFile, curves_stay_curves_and_bounds_are_those_of_the_curve) {
  // A curve of two control points reaches three quarters of their height.
  const auto curve = Loaded(Svg("<path d='M1 4C1 0 5 0 5 4'/>"));
  ASSERT_EQ(curve.size(), 1U);
  const auto& run = std::get<PathShape>(curve[0].shape).subPaths.at(0);
  EXPECT_TRUE(run.segments.at(0).curve);
  ExpectBounds(curve[0], 1, 1, 5, 4);
  const auto circle = Loaded(Svg("<circle cx='5' cy='2' r='1.5'/>"));
  ASSERT_EQ(circle.size(), 1U);
  ExpectBounds(circle[0], 3.5, 1.5, 6.5, 4.5);
  // An ellipse turned by 30 degrees: half its width is the root of (a cos)^2 + (b sin)^2.
  const auto ellipse =
      Loaded(Svg("<ellipse rx='2' ry='1' transform='translate(5 2.5) rotate(30)'/>"));
  ASSERT_EQ(ellipse.size(), 1U);
  const double width =
      std::hypot(2 * std::cos(std::numbers::pi / 6), std::sin(std::numbers::pi / 6));
  const double height =
      std::hypot(2 * std::sin(std::numbers::pi / 6), std::cos(std::numbers::pi / 6));
  // A quarter of an ellipse as one curve is off by 2.7e-4 of its size.
  ExpectBounds(ellipse[0], 5 - width, 2.5 - height, 5 + width, 2.5 + height, 6e-4);
}

// The drawing library itself can't write them as they are.
TEST_F(VectorFile, shapes_of_upright_lines_are_paths_with_upright_lines) {
  for (const char* shape : {"M1 1H4V2H2V4H1Z", "M1 1H4V4H1V2", "M1 1H4M1 2H4V4H1Z"}) {
    const auto objects = Loaded(Svg(std::string("<path d='") + shape + "'/>"));
    ASSERT_EQ(objects.size(), 1U);
    ExpectBounds(objects[0], 1, 1, 4, 4);
    for (const auto& run : std::get<PathShape>(objects[0].shape).subPaths) {
      CWorldPoint from = run.start;
      for (const auto& segment : run.segments) {
        const CWorldPoint to = segment.points[2];
        EXPECT_TRUE(std::abs(to.x - from.x) < 1e-9 || std::abs(to.y - from.y) < 1e-9);
        from = to;
      }
    }
  }
}

TEST_F(VectorFile, the_fill_rule_is_the_files) {
  const auto objects =
      Loaded(Svg("<path d='M1 1H4V4H1ZM2 2H3V3H2Z' fill-rule='evenodd'/>"
                 "<path d='M1 1H4V4H1ZM2 2H3V3H2Z'/>"));
  ASSERT_EQ(objects.size(), 2U);
  EXPECT_EQ(std::get<PathShape>(objects[0].shape).fillRule, FillRule::EvenOdd);
  EXPECT_EQ(std::get<PathShape>(objects[1].shape).fillRule, FillRule::NonZero);
  EXPECT_EQ(std::get<PathShape>(objects[0].shape).subPaths.size(), 2U);
}

TEST_F(VectorFile, letters_of_svg_and_eps_become_paths) {
  EXPECT_EQ(KeptBecause(Svg("<text x='1' y='3' font-size='2'>Sign</text>")), "");
  EXPECT_EQ(KeptBecause(Eps("/Helvetica findfont 2 scalefont setfont 1 1 moveto (Sign) show\n")),
            "");
}

TEST_F(VectorFile, an_svg_without_a_size_is_as_large_as_its_drawing) {
  const auto objects = Loaded(
      "<svg xmlns='http://www.w3.org/2000/svg'><rect x='-96' y='192' width='96' "
      "height='48'/></svg>");
  ASSERT_EQ(objects.size(), 1U);
  ExpectBounds(objects[0], 0, 0, 2.54, 1.27);
}

// --- Clips ---

TEST_F(VectorFile, a_clip_that_holds_a_whole_path_changes_nothing) {
  const auto objects =
      Loaded(Eps("newpath 1 1 moveto 9 1 lineto 9 4 lineto 1 4 lineto closepath clip newpath\n"
                 "2 2 3 1 rectfill 2 4.5 1 0.3 rectfill\n"));
  ASSERT_EQ(objects.size(), 1U) << "the second does not show";
  ExpectBounds(objects[0], 2, 2, 5, 3, 2e-3);
}

TEST_F(VectorFile, one_that_a_clip_cuts_stays_a_picture) {
  EXPECT_EQ(KeptBecause(Eps("1 1 3 3 rectclip newpath 2 2 moveto 8 2 lineto 5 3 lineto fill\n")),
            "a clip with straight edges cuts off a part of it");
  EXPECT_EQ(KeptBecause(Svg("<rect x='8' y='1' width='6' height='1'/>")),
            "the edge of its page cuts off a part of it");
  EXPECT_EQ(KeptBecause(Svg("<clipPath id='c'><circle cx='5' cy='2' r='1'/></clipPath>"
                            "<rect x='2' y='1' width='6' height='3' clip-path='url(#c)'/>")),
            "a path cuts out a part of it");
}

TEST_F(VectorFile, a_line_at_the_edge_of_the_page_is_a_path) {
  const auto objects =
      Loaded(Svg("<rect width='10' height='5' fill='none' stroke='red' stroke-width='0.2'/>"
                 "<rect x='20' width='3' height='3'/>"));
  ASSERT_EQ(objects.size(), 1U) << "what is beside the page does not show";
  ExpectBounds(objects[0], 0, 0, 10, 5);
}

TEST_F(VectorFile, a_line_on_the_bounding_box_of_an_eps_stays_a_path) {
  const auto objects =
      Loaded(test::EpsFile("5 setlinewidth 0 0 100 50 rectstroke\n", "0 0 100 50"), {true, false});
  ASSERT_EQ(objects.size(), 1U);
  ExpectBounds(objects[0], 0, 0, 100 * 2.54 / 72, 50 * 2.54 / 72, 0.02 * 2.54 / 72);
  EXPECT_NEAR(objects[0].attributes.lineStyle.width, 5 * 2.54 / 72, 0.02 * 2.54 / 72);
}

// --- Drawings that stay pictures ---

TEST_F(VectorFile, a_picture_has_the_extent_of_its_marks_from_edge_to_edge) {
  const std::string gradient =
      "<linearGradient id='g'><stop offset='0' stop-color='red'/>"
      "<stop offset='1' stop-color='blue'/></linearGradient>";
  const auto objects =
      Loaded(Svg(gradient + "<rect x='0' y='0' width='4' height='2' fill='url(#g)'/>"));
  ASSERT_EQ(objects.size(), 1U);
  const auto extent = std::get<document::GraphicShape>(objects[0].shape).extent;
  ASSERT_TRUE(extent);
  // An edge may be one of a point's pixels too far.
  constexpr double Pixel = 2.54 / 72;
  EXPECT_NEAR(extent->left, 0, 1e-6);
  EXPECT_NEAR(extent->top, 5, 1e-6);
  EXPECT_NEAR(extent->right, 4, Pixel);
  EXPECT_NEAR(extent->bottom, 3, Pixel);
}

TEST_F(VectorFile, what_paths_can_not_express_stays_a_picture_with_its_reason) {
  const std::string rect = "<rect x='2' y='1' width='6' height='3' ";
  const std::string mixed = "it has opacity, a mask, a filter or a pattern";
  EXPECT_EQ(KeptBecause(Svg("<linearGradient id='g'><stop offset='0' stop-color='red'/>"
                            "<stop offset='1' stop-color='blue'/></linearGradient>" +
                            rect + "fill='url(#g)'/>")),
            "it has a gradient");
  EXPECT_EQ(KeptBecause(Svg("<pattern id='p' width='.1' height='.1'><rect width='1' height='1'/>"
                            "</pattern>" +
                            rect + "fill='url(#p)'/>")),
            mixed);
  EXPECT_EQ(KeptBecause(Svg("<mask id='m'><rect width='9' height='9' fill='white'/></mask>" + rect +
                            "mask='url(#m)'/>")),
            mixed);
  EXPECT_EQ(KeptBecause(Svg(rect + "opacity='.5'/>")), mixed);
  EXPECT_EQ(KeptBecause(Svg(rect + "style='mix-blend-mode:multiply'/>")), mixed);
  EXPECT_EQ(KeptBecause(Svg(rect + "fill-opacity='.5'/>")), "it is translucent");
  EXPECT_EQ(KeptBecause(Svg("<path d='M1 1L9 1' stroke='red' stroke-dasharray='1'/>")),
            "it has dashed lines");
  EXPECT_EQ(KeptBecause(Eps("gsave 3 3 scale 2 2 8 [2 0 0 2 0 0] (abcd) image grestore\n")),
            "it has an image");
  EXPECT_NE(KeptBecause(Svg("<filter id='f'><feGaussianBlur stdDeviation='.2'/></filter>" + rect +
                            "filter='url(#f)'/>")),
            "");
}

TEST_F(VectorFile, a_pdf_with_letters_in_a_font_stays_a_picture) {
  const std::string page =
      test::PdfOf({"<</Type /Catalog /Pages 2 0 R>>", "<</Type /Pages /Kids [3 0 R] /Count 1>>",
                   "<</Type /Page /Parent 2 0 R /MediaBox [0 0 400 400] /Contents 4 0 R /Resources "
                   "<</Font <</F <</Type /Font /Subtype /Type1 /BaseFont /Helvetica>>>>>>>>",
                   test::PdfStream("", "BT /F 40 Tf 50 50 Td (Sign) Tj ET")});
  EXPECT_EQ(KeptBecause(page), "it has letters in a font");
}

TEST_F(VectorFile, a_picture_has_the_bounds_of_its_drawn_part) {
  const auto objects =
      Loaded(Svg("<linearGradient id='g'><stop offset='0' stop-color='red'/></linearGradient>"
                 "<rect x='2' y='1' width='6' height='2' fill='url(#g)' fill-opacity='.9'/>"));
  ASSERT_EQ(objects.size(), 1U);
  // To whole pixels of 1/96 inch or points.
  ExpectBounds(objects[0], 2, 2, 8, 4, 0.04);
  const auto& shape = std::get<GraphicShape>(objects[0].shape);
  EXPECT_NEAR(shape.width, 10, 1e-9);
  EXPECT_NEAR(shape.height, 5, 1e-9);
}

TEST_F(VectorFile, coloring_a_picture_is_told_once_and_coloring_paths_is_not) {
  document::DocumentHost host;
  m_Directory.Write("half.svg", Svg("<rect width='1' height='1' opacity='.5'/>"));
  m_Directory.Write("whole.svg", Svg("<rect width='1' height='1'/>"));
  host::ObjectStore& store = *host.GetObjectStore();
  for (const char* name : {"whole.svg", "half.svg", "half.svg"}) {
    ASSERT_EQ(
        host.GetApplication()->LoadTHZ(nullptr, nullptr, m_Directory.Wide(name).c_str(), 1, 0), 1);
    const auto object = host.GetDocument().Selection().at(0);
    store.DBSetLayer(object, CVKColor(0xFF, COLORSPACE_RGB, 0, 0));
    store.DBSetLineColor(object, CVKColor(0xFF, COLORSPACE_RGB, 0, 0));
    store.DBSetLineStyle(object, {0.1, LINESTYLE_WIDTH});
    EXPECT_EQ(store.DBGetObjectElement(object)->IsFilled(), std::string(name) == "whole.svg");
  }
  EXPECT_THAT(host.GetNotices().Texts(),
              testing::ElementsAre(L"the placed file \"half.svg\" keeps its own colours and lines: "
                                   L"it has opacity, a mask, a filter or a pattern"));
}

// --- Cut lines ---

class CutLine : public VectorFile {
 protected:
  // Fill of the path of a cut line, with these attributes, in this root and style sheet.
  int FillOf(const std::string& attributes, const std::string& root = "",
             const std::string& css = "") {
    const auto objects = Loaded(Svg("<style>" + css +
                                        "</style><g class='group'><rect class='line' "
                                        "x='1' y='1' width='2' height='2' " +
                                        attributes + "/></g>",
                                    root),
                                {true, false});
    EXPECT_EQ(objects.size(), 1U);
    return objects.empty() ? -2 : ColorOf(objects[0].attributes.layer);
  }
};

TEST_F(CutLine, a_path_whose_file_names_no_fill_is_not_filled) {
  EXPECT_EQ(FillOf(""), -1);
  EXPECT_EQ(FillOf("stroke='red'"), -1);
  EXPECT_EQ(FillOf("fill='inherit'"), -1);
}

TEST_F(CutLine, a_fill_that_is_named_stays_wherever_that_is) {
  EXPECT_EQ(FillOf("fill='black'"), 0);
  EXPECT_EQ(FillOf("style='fill:#000'"), 0);
  EXPECT_EQ(FillOf("", "fill='black'"), 0);
  EXPECT_EQ(FillOf("", "style='fill:lime'"), 0x00FF00);
  EXPECT_EQ(FillOf("", "", ".line{fill:#010203}"), 0x010203);
  EXPECT_EQ(FillOf("", "", "g{fill:black}"), 0);
  EXPECT_EQ(FillOf("", "", "svg{fill:blue}"), 0x0000FF);
  EXPECT_EQ(FillOf("fill='#1a2b3c'"), 0x1A2B3C);
}

TEST_F(CutLine, a_path_without_fill_and_stroke_is_loaded_without_a_line) {
  const auto objects = Loaded(Svg("<circle cx='5' cy='2' r='1' fill='none'/>"), {true, false});
  ASSERT_EQ(objects.size(), 1U);
  EXPECT_EQ(LineKind(objects[0]), LINESTYLE_NONE);
  EXPECT_EQ(ColorOf(objects[0].attributes.lineColor), 0) << "black where it gets a line alone";
  ExpectBounds(objects[0], 4, 2, 6, 4);
}

TEST_F(CutLine, a_stroke_that_is_named_stays_and_dashes_are_whole_lines) {
  const auto objects =
      Loaded(Svg("<path d='M1 1L9 1L9 4' stroke='#00f' stroke-width='.2' stroke-dasharray='1'/>"),
             {true, false});
  ASSERT_EQ(objects.size(), 1U);
  EXPECT_EQ(ColorOf(objects[0].attributes.layer), -1);
  EXPECT_EQ(ColorOf(objects[0].attributes.lineColor), 0x0000FF);
  EXPECT_NEAR(objects[0].attributes.lineStyle.width, 0.2, Near);
}

TEST_F(CutLine, the_application_expects_one_until_it_does_not) {
  document::DocumentHost host;
  m_Directory.Write("cut.svg", Svg("<rect width='1' height='1'/>"));
  const auto fill = [&] {
    host.GetApplication()->LoadTHZ(nullptr, nullptr, m_Directory.Wide("cut.svg").c_str(), 1, 0);
    const auto object = host.GetDocument().Selection().at(0);
    return ColorOf(host.GetDocument().Find(object)->attributes.layer);
  };
  EXPECT_EQ(fill(), 0);
  host.GetApplication()->ExpectCutLine(true);
  EXPECT_EQ(fill(), -1);
  host.GetApplication()->ExpectCutLine(false);
  EXPECT_EQ(fill(), 0);
}

// --- Drawings without a page ---

TEST_F(VectorFile, dxf_and_plotter_files_are_paths) {
  const auto dxf =
      Loaded("0\nSECTION\n2\nENTITIES\n0\nCIRCLE\n10\n50\n20\n30\n40\n10\n0\nENDSEC\n0\nEOF\n");
  ASSERT_EQ(dxf.size(), 1U);
  ExpectBounds(dxf[0], 4, 2, 6, 4);
  EXPECT_EQ(ColorOf(dxf[0].attributes.layer), -1);
  EXPECT_EQ(LineKind(dxf[0]), LINESTYLE_HAIRLINE);
  const auto plot = Loaded("IN;SP2;PU400,400;PD800,400,800,800;PU;");
  ASSERT_EQ(plot.size(), 1U);
  ExpectBounds(plot[0], 1, 1, 2, 2);
  EXPECT_EQ(ColorOf(plot[0].attributes.lineColor), 0xFF0000);
}

TEST_F(VectorFile, parts_of_a_dxf_that_are_left_out_are_told) {
  Loaded(
      "0\nSECTION\n2\nENTITIES\n0\nTEXT\n1\nhello\n0\nLINE\n10\n0\n20\n0\n11\n5\n21\n5\n0\nEOF\n");
  EXPECT_THAT(Losses(), HasSubstr("drawing: entities that are no lines are left out: TEXT"));
}

// --- Hostile files ---

TEST_F(VectorFile, a_drawing_that_shows_nothing_is_refused) {
  for (const std::string& bytes :
       {Svg(""), Svg("<rect width='3' height='3' fill='none'/>"), Eps(""),
        std::string("IN;SP1;PU;"), std::string("0\nSECTION\n2\nENTITIES\n0\nENDSEC\n0\nEOF\n")}) {
    EXPECT_THAT(Refusal(bytes), HasSubstr("can't be placed: it draws nothing"));
  }
}

TEST_F(VectorFile, a_use_bomb_is_refused) {
  EXPECT_THAT(Refusal(test::SvgUseBomb()), HasSubstr("it is no SVG that can be drawn"));
}

TEST_F(VectorFile, a_directory_a_pipe_a_device_and_a_vast_file_are_refused) {
  std::filesystem::create_directory(m_Directory.Path("folder"));
  ASSERT_EQ(mkfifo(m_Directory.Path("pipe").c_str(), 0600), 0);
  std::filesystem::create_symlink("/dev/zero", m_Directory.Path("device"));
  m_Directory.Write("vast", "IN;");
  std::filesystem::resize_file(m_Directory.Path("vast"), std::uintmax_t{1} << 30);
  GraphicLoader loader(m_Document, m_Notices);
  for (const char* name : {"folder", "pipe", "device", "vast", "missing"}) {
    EXPECT_EQ(loader.Load(m_Directory.Wide(name)), 0) << name;
    EXPECT_THAT(os::Utf8FromWide(m_Notices.Losses().back()),
                HasSubstr(std::string(name) + " can't be placed: "));
  }
  EXPECT_EQ(m_Document.ObjectCount(), 0U);
}

// At every fifth byte: each is a process.
TEST_F(VectorFile, a_drawing_that_is_cut_off_is_refused_or_is_the_paths_that_are_there) {
  const std::string files[] = {
      Svg("<rect x='2' y='1' width='6' height='3'/>"),
      "0\nSECTION\n2\nENTITIES\n0\nLWPOLYLINE\n70\n1\n10\n1\n20\n1\n42\n1\n10\n5\n20\n1\n0\nEOF\n",
      "IN;SP1;PU10,10;PD20,20,30,10;CI5;AA3,3,90;"};
  for (const std::string& whole : files) {
    for (std::size_t length = 0; length < whole.size(); length += 5) {
      const std::size_t before = m_Document.ObjectCount();
      const bool loaded = Load(whole.substr(0, length)) != 0;
      EXPECT_EQ(m_Document.ObjectCount() > before, loaded) << whole.substr(0, length);
    }
  }
}

}  // namespace
}  // namespace rastrel::graphics
