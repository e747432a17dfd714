#include "host/render/page_renderer.h"

#include <chrono>

#include "tests/host/render/drawn_document.h"

namespace rastrel::render {
namespace {

using test::Blue;
using test::Colored;
using test::Gold;
using test::Invisible;
using test::Paragraph;
using test::Piece;
using test::Polygon;
using test::Red;

class Page : public test::DrawnDocument {
 protected:
  // How many drill points a page shows.
  std::size_t Drills(int page) {
    ImageOptions options;
    options.page = page;
    return Measured("drill-point", options).size();
  }
};

const document::DrillShape Drill{{5, 5}, 0.4};

document::Attributes OnPages(int first, int last) {
  document::Attributes attributes = Colored(Red);
  attributes.pages = {first, last};
  return attributes;
}

TEST_F(Page, objects_stand_on_the_pages_of_their_range) {
  Add(Drill, OnPages(1, 1));
  Add(Drill, OnPages(2, 3));
  Add(Drill, OnPages(3, 3));
  EXPECT_EQ(Drills(1), 1U);
  EXPECT_EQ(Drills(2), 1U);
  EXPECT_EQ(Drills(3), 2U);
}

TEST_F(Page, a_page_that_is_not_there_is_refused_with_a_message) {
  Add(Drill, OnPages(2, 2));
  ImageOptions options;
  for (const int page : {-1, 0, 3}) {
    options.page = page;
    EXPECT_EQ(Refusal(ImageFormat::Svg, options),
              "there is no page " + std::to_string(page) + ": the document has 2");
  }
}

TEST_F(Page, an_empty_document_is_one_page_with_its_blank) {
  EXPECT_EQ(Measured(), std::vector<std::string>{"page 200.0000 120.0000"});
}

TEST_F(Page, invisible_objects_are_not_drawn_nor_are_their_members) {
  document::Attributes hidden = Colored(Red);
  hidden.traits &= ~DBTRAIT_VISIBLE;
  Add(Drill, hidden);
  Add(Drill, Colored(Red), Add(document::GroupShape(), hidden));
  EXPECT_EQ(Drills(1), 0U);
}

TEST_F(Page, members_of_a_group_stand_on_the_groups_pages) {
  const auto group = Add(document::GroupShape(), OnPages(2, 2));
  Add(Drill, OnPages(1, 1), group);
  EXPECT_EQ(Drills(1), 0U);
  EXPECT_EQ(Drills(2), 1U);
}

TEST_F(Page, objects_in_the_deepest_groups_are_drawn) {
  document::ObjectHandle parent = host::DocumentRoot;
  for (int i = 0; i < document::DeepestGroup; ++i) {
    const document::ObjectHandle group = m_Document.Create(document::GroupShape());
    ASSERT_TRUE(m_Document.Insert(group, parent));
    parent = group;
  }
  ASSERT_TRUE(m_Document.Insert(m_Document.Create(Drill, Colored(Red)), parent));
  const std::string svg = DrawSvg();
  EXPECT_NE(svg.find("drill-point"), std::string::npos);
  EXPECT_NE(svg.find("</g>\n</svg>"), std::string::npos);
}

TEST_F(Page, the_invisible_color_draws_nothing) {
  Add(Drill, Colored(Invisible));
  Add(Polygon({{1, 1}, {5, 1}, {5, 5}}, true), Colored(Invisible));
  Add(Paragraph({1, 11, 19, 1}, 0, JUSTIFY_LEFT, LINEFIT_EACH_LINE, {{Piece(L"text", 300)}}),
      Colored(Invisible));
  EXPECT_EQ(Measured().size(), 1U) << "the page alone";
}

TEST_F(Page, a_run_has_its_own_color_before_that_of_its_text) {
  document::TextShape text = Paragraph({1, 11, 19, 1}, 0, JUSTIFY_LEFT, LINEFIT_EACH_LINE,
                                       {{Piece(L"red", 300), Piece(L"none", 300)}});
  text.lines[0].runs[0].colored = text.lines[0].runs[1].colored = true;
  text.lines[0].runs[0].color = CVKFullColor(Red);
  text.lines[0].runs[1].color = CVKFullColor(Invisible);
  Add(text, Colored(Blue));
  const std::string svg = DrawSvg();
  EXPECT_NE(svg.find("fill=\"#ff0000\">red</text>"), std::string::npos);
  EXPECT_EQ(svg.find("none</text>"), std::string::npos);
}

TEST_F(Page, plates_are_filled_unless_their_sheet_layer_has_no_material) {
  document::PlateShape plate;
  plate.panes = {{1, 11, 9, 7}};
  document::Attributes attributes = Colored(Gold);
  attributes.lineStyle = {0, LINESTYLE_NONE};
  attributes.sheetLayer = 3;
  m_Document.AddSheetLayer({3, L"Film", 0, true});
  Add(plate, attributes);
  EXPECT_NE(DrawSvg().find("fill=\"#d4af37\" stroke=\"#808080\""), std::string::npos);
  m_Document.RemoveSheetLayer(3);
  m_Document.AddSheetLayer({3, L"Film", 0, false});
  EXPECT_NE(DrawSvg().find("fill=\"none\" stroke=\"#808080\""), std::string::npos);
}

TEST_F(Page, a_font_that_is_missing_is_reported_once_when_it_is_drawn) {
  for (int i = 0; i < 3; ++i) {
    Add(Paragraph({1, 11, 19, 1}, 0, JUSTIFY_LEFT, LINEFIT_EACH_LINE,
                  {{Piece(L"text", 300, L"No Such Font"), Piece(L"text", 300)}}));
  }
  EXPECT_FALSE(DrawSvg().empty());
  EXPECT_FALSE(Draw(ImageFormat::Pdf).empty());
  EXPECT_EQ(m_Notices.Texts(),
            std::vector<std::wstring>{
                L"the font \"No Such Font\" can't be had; DejaVu Sans stands in for it"});
}

TEST_F(Page, a_placed_file_that_can_not_be_drawn_is_a_crossed_box_and_is_reported_once) {
  document::GraphicShape graphic;
  graphic.name = L"broken.png";
  graphic.bytes = std::make_shared<const std::string>("no picture");
  graphic.width = graphic.height = 2;
  Add(graphic);
  Add(graphic);
  EXPECT_NE(DrawSvg().find("class=\"graphic\""), std::string::npos);
  EXPECT_FALSE(Draw(ImageFormat::Png).empty());
  ASSERT_EQ(m_Notices.Texts().size(), 1U);
  EXPECT_EQ(m_Notices.Texts()[0].find(L"the placed file \"broken.png\" can't be drawn: "), 0U);
}

// --- Limits ---

TEST_F(Page, a_blank_may_be_as_large_as_a_page_can_be_and_no_larger) {
  const double largest = LargestPage * 2.54 / 72;
  m_Document.SetBlank({largest * 0.999999, 1, 7});
  EXPECT_EQ(Refusal(ImageFormat::Svg), "");
  m_Document.SetBlank({1, largest * 1.000001, 7});
  EXPECT_NE(Refusal(ImageFormat::Svg).find("at most 35277.8 cm"), std::string::npos);
  m_Document.SetBlank({1e-300, 1, 7});
  EXPECT_EQ(Refusal(ImageFormat::Svg), "");
}

TEST_F(Page, as_many_pages_are_drawn_as_the_limit_says_and_no_more) {
  const auto last = Add(Drill, OnPages(MaximumPages, MaximumPages));
  EXPECT_EQ(Drills(MaximumPages), 1U);
  m_Document.SetPages(last, {1, MaximumPages + 1});
  EXPECT_EQ(Refusal(ImageFormat::Pdf), "the document has 10001 pages; at most 10000 can be drawn");
}

TEST_F(Page, as_many_objects_are_drawn_as_the_limit_says_and_no_more) {
  for (std::size_t i = 0; i < MaximumObjects / MaximumPages; ++i)
    Add(Drill, OnPages(1, MaximumPages));
  EXPECT_EQ(Drills(1), MaximumObjects / MaximumPages);
  Add(Drill, OnPages(1, 1));
  EXPECT_NE(Refusal(ImageFormat::Svg).find("more than 5000000 objects"), std::string::npos);
}

// --- Hostile documents ---

class HostilePage : public test::DrawnDocument {
 protected:
  // Seconds to draw one of each kind. Every one must be a picture.
  double DrawAll() {
    const auto begin = std::chrono::steady_clock::now();
    for (const ImageFormat format : {ImageFormat::Svg, ImageFormat::Pdf, ImageFormat::Png}) {
      for (const bool outlines : {false, true}) {
        ImageOptions options;
        options.outlines = outlines;
        EXPECT_FALSE(Draw(format, options).empty());
      }
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  }
};

TEST_F(HostilePage, coordinates_without_measure_are_drawn_where_the_page_ends) {
  for (const double far : {1e5, 1e9, 1e38, 1e300, 1.7e308}) {
    Add(Polygon({{-far, -far}, {far, -far}, {5, far}}, true), Colored(Red));
    document::PathShape cut = Polygon({{-far, 3}, {far, 4}, {far, -far}}, false);
    cut.cutLine = document::CutLine::Cut;
    cut.subPaths[0].segments[0] = {true, {CWorldPoint{far, far}, {-far, far}, {far, far}}};
    Add(cut, Colored(Blue));
    Add(document::DrillShape{{5, 5}, far}, Colored(Red));
    Add(document::DrillShape{{far, -far}, 1}, Colored(Red));
    document::PlateShape plate;
    plate.panes = {{-far, far, far, -far}};
    Add(plate, Colored(Gold));
    Add(Paragraph({-far, far, far, -far}, 100, JUSTIFY_CENTER, LINEFIT_EACH_LINE,
                  {{Piece(L"text", far)}}),
        Colored(Blue));
    document::Attributes wide = Colored(Red);
    wide.lineStyle = {far, LINESTYLE_WIDTH};
    Add(Polygon({{1, 1}, {5, 1}, {5, 5}}, true), wide);
  }
  EXPECT_LT(DrawAll(), 20);
}

TEST_F(HostilePage, letters_of_any_size_are_drawn) {
  for (double size = 1e-3; size < 1e9; size *= 10) {
    document::TextShape text =
        Paragraph({1, 11, 19, 1}, 0, JUSTIFY_LEFT, LINEFIT_EACH_LINE, {{Piece(L"text", size)}});
    Add(text, Colored(Red));
    text.paragraph.fit = 0;
    document::Attributes attributes = Colored(Blue);
    Add(text, attributes);
    attributes.matrix = {7, 0, 0, 0.01, 0, 0};
    Add(text, attributes);
  }
  EXPECT_LT(DrawAll(), 20);
}

TEST_F(HostilePage, matrices_that_make_nothing_or_too_much_of_an_object_leave_it_out) {
  document::GraphicShape graphic;
  graphic.kind = document::GraphicKind::Svg;
  graphic.bytes = std::make_shared<const std::string>(
      "<svg xmlns='http://www.w3.org/2000/svg' width='10' height='10'/>");
  graphic.width = graphic.height = 1;
  for (const TM& matrix :
       {TM{0, 0, 0, 0, 0, 0}, TM{1, 1, 1, 1, 0, 0}, TM{1e-300, 0, 0, 1e-300, 5, 5},
        TM{1e300, 0, 0, 1e300, 0, 0}, TM{1, 0, 0, 1, 1e308, -1e308}, TM{1e9, 0, 0, 1e-9, 0, 0}}) {
    document::Attributes attributes = Colored(Red);
    attributes.matrix = matrix;
    attributes.lineStyle = {0.1, LINESTYLE_WIDTH};
    Add(document::DrillShape{{5, 5}, 1}, attributes);
    Add(Polygon({{1, 1}, {5, 1}, {5, 5}}, true), attributes);
    Add(Paragraph({1, 11, 19, 1}, 100, JUSTIFY_CENTER, LINEFIT_ALL_LINES, {{Piece(L"text", 300)}}),
        attributes);
    Add(graphic, attributes);
  }
  EXPECT_LT(DrawAll(), 20);
}

TEST_F(HostilePage, shapes_of_no_size_and_of_no_points_are_drawn) {
  Add(document::DrillShape{{5, 5}, 0}, Colored(Red));
  Add(document::PathShape(), Colored(Red));
  Add(Polygon({{5, 5}}, true), Colored(Red));
  Add(Polygon({{5, 5}, {5, 5}}, true), Colored(Red));
  Add(document::PlateShape(), Colored(Red));
  Add(document::TextShape(), Colored(Red));
  Add(Paragraph({5, 5, 5, 5}, 0, JUSTIFY_LEFT, LINEFIT_ALL_LINES, {{Piece(L"text", 0)}}));
  Add(Paragraph({1, 11, 19, 1}, 1000, JUSTIFY_LEFT, LINEFIT_ALL_LINES, {{Piece(L"text", 300)}}));
  Add(document::GroupShape());
  EXPECT_LT(DrawAll(), 20);
}

TEST_F(HostilePage, a_hundred_thousand_objects_take_seconds) {
  for (int i = 0; i < 100'000; ++i) {
    const double x = i % 1000 * 0.02;
    const double y = i / 1000 * 0.12;
    switch (i % 4) {
      case 0: Add(document::DrillShape{{x, y}, 0.05}, Colored(Red)); break;
      case 1: Add(Polygon({{x, y}, {x + 0.1, y}, {x, y + 0.1}}, true), Colored(Blue)); break;
      case 2:
        Add(Paragraph({x, y + 0.1, x + 0.1, y}, 0, JUSTIFY_LEFT, LINEFIT_EACH_LINE,
                      {{Piece(L"a", 30)}}),
            Colored(Blue));
        break;
      default: {
        document::PlateShape plate;
        plate.panes = {{x, y + 0.1, x + 0.1, y}};
        Add(plate, Colored(Gold));
      }
    }
  }
  EXPECT_LT(DrawAll(), 120);
}

TEST_F(HostilePage, ten_million_letters_take_seconds) {
  const std::wstring text(10'000'000, L'x');
  Add(Paragraph({1, 11, 19, 1}, 50, JUSTIFY_CENTER, LINEFIT_EACH_LINE, {{Piece(text, 300)}}),
      Colored(Blue));
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_FALSE(Draw(ImageFormat::Png).empty());
  EXPECT_FALSE(DrawSvg().empty());
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(120));
}

}  // namespace
}  // namespace rastrel::render
