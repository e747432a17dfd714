#include <algorithm>
#include <cmath>

#include "tests/host/render/drawn_document.h"

namespace rastrel::render {
namespace {

using test::Blue;
using test::Colored;
using test::Gold;
using test::Numbers;
using test::Paragraph;
using test::Piece;
using test::Polygon;
using test::Red;

constexpr double Hundredth = 0.01;  // millimetres

using Svg = test::DrawnDocument;

TEST_F(Svg, the_page_is_as_large_as_the_blank) {
  m_Document.SetBlank({30.48, 2.54, 7});
  const auto size = Numbers(Measured("page").at(0));
  EXPECT_NEAR(size.at(0), 304.8, Hundredth);
  EXPECT_NEAR(size.at(1), 25.4, Hundredth);
}

TEST_F(Svg, drill_points_stand_to_a_hundredth_of_a_millimetre) {
  const std::vector<document::DrillShape> drills{
      {{0, 0}, 0.4064}, {{20, 12}, 0.1}, {{1.27, 11.43}, 0.635}, {{3.333333, 7.777777}, 2}};
  for (const auto& drill : drills) Add(drill, Colored(Red));
  const auto lines = Measured("drill-point");
  ASSERT_EQ(lines.size(), drills.size());
  for (std::size_t i = 0; i < drills.size(); ++i) {
    const auto measured = Numbers(lines[i]);
    EXPECT_NEAR(measured.at(0), drills[i].centre.x * 10, Hundredth);
    EXPECT_NEAR(measured.at(1), drills[i].centre.y * 10, Hundredth);
    EXPECT_NEAR(measured.at(2), drills[i].diameter * 10, Hundredth);
  }
}

TEST_F(Svg, a_bold_face_is_asked_for_by_its_weight) {
  Add(Paragraph({1, 10, 20, 1}, 220, JUSTIFY_LEFT, LINEFIT_EACH_LINE,
                {{Piece(L"bold", 300, L"DejaVuSans-Bold")}, {Piece(L"plain", 300)}}));
  const std::string svg = DrawSvg();
  const auto bold = svg.find("font-weight=\"700\"");
  ASSERT_NE(bold, std::string::npos);
  EXPECT_LT(bold, svg.find(">bold<"));
  EXPECT_EQ(svg.find("font-weight", bold + 1), std::string::npos) << "the usual weight is not told";
}

TEST_F(Svg, a_moved_and_mirrored_drill_point_keeps_its_circle) {
  document::Attributes attributes = Colored(Red);
  attributes.matrix = {-2, 0, 0, 2, 10, 1};
  Add(document::DrillShape{{1, 2}, 0.4}, attributes);
  const auto measured = Numbers(Measured("drill-point").at(0));
  EXPECT_NEAR(measured.at(0), 80, Hundredth);
  EXPECT_NEAR(measured.at(1), 50, Hundredth);
  EXPECT_NEAR(measured.at(2), 8, Hundredth);
}

TEST_F(Svg, a_stretched_drill_point_becomes_an_ellipse) {
  document::Attributes attributes = Colored(Red);
  attributes.matrix = {2, 0, 0, 1, 0, 0};
  Add(document::DrillShape{{1, 2}, 0.4}, attributes);
  EXPECT_TRUE(Measured("drill-point").empty()) << "no circle";
  EXPECT_NE(DrawSvg().find("C"), std::string::npos);
}

TEST_F(Svg, panes_stand_where_the_document_has_them_and_inside_the_blank) {
  AddUsual();
  const auto lines = Measured("plate");
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(Numbers(lines[0]), (std::vector<double>{10, 70, 90, 110}));
  EXPECT_EQ(Numbers(lines[1]), (std::vector<double>{100, 70, 180, 110}));
}

TEST_F(Svg, text_stays_text_inside_its_margins) {
  AddUsual();
  const auto lines = Measured("text");
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_NE(lines[0].find("'DejaVu Sans' | Mill & Son"), std::string::npos);
  EXPECT_NE(lines[1].find("| since 1890 <and before>"), std::string::npos);
  for (const std::string& line : lines) {
    const auto measured = Numbers(line);
    const double margin = 0.22 * 80;
    EXPECT_GE(measured.at(0), 10 + margin - Hundredth);
    EXPECT_LE(measured.at(0) + measured.at(2), 90 - margin + Hundredth);
    EXPECT_NEAR(measured.at(0) + measured.at(2) / 2, 50, Hundredth) << "centred";
  }
}

// Without it a reader orders the parts of such a line from the left: "12" before the Hebrew word.
TEST_F(Svg, text_from_right_to_left_says_so_and_keeps_its_place) {
  Add(Paragraph({1, 11, 19, 1}, 0, JUSTIFY_LEFT, LINEFIT_EACH_LINE,
                {{Piece(L"\x5E9\x5DC\x5D5\x5DD 12, abc!", 300)}, {Piece(L"plain 12", 300)}}),
      Colored(Blue));
  const std::string svg = DrawSvg();
  const auto right = svg.find(" direction=\"rtl\" unicode-bidi=\"embed\" text-anchor=\"end\"");
  ASSERT_NE(right, std::string::npos);
  EXPECT_LT(right, svg.find("plain 12"));
  EXPECT_EQ(svg.find("direction", right + 12), std::string::npos) << "the usual one is not named";
  const auto lines = Measured("text");
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_NEAR(Numbers(lines[0]).at(0), 10, Hundredth) << "the frame's left edge";
}

TEST_F(Svg, outlines_leave_no_text) {
  AddUsual();
  ImageOptions options;
  options.outlines = true;
  EXPECT_TRUE(Measured("text", options).empty());
  EXPECT_EQ(DrawSvg(options).find("<text"), std::string::npos);
}

TEST_F(Svg, any_text_makes_a_well_formed_file) {
  std::wstring hostile;
  for (wchar_t character = 1; character < 0x30; ++character) hostile += character;
  hostile += L"</text>]]>&#0;\"'\x85\xD800\xFFFE\xFFFF\x2028\x1F600";
  hostile += static_cast<wchar_t>(0x110000);
  Add(Paragraph({1, 11, 19, 1}, 0, JUSTIFY_LEFT, LINEFIT_EACH_LINE,
                {{Piece(hostile, 100)}, {Piece(L"a", 100, L"'\"><\\")}}),
      Colored(Blue));
  EXPECT_EQ(Measured("page").size(), 1U) << "the reader took the file";
  EXPECT_NE(DrawSvg().find("&lt;/text&gt;]]&gt;&amp;#0;&quot;"), std::string::npos);
}

TEST_F(Svg, a_cut_line_is_dashed_and_thin_in_its_own_color_whatever_its_style) {
  document::PathShape cut = Polygon({{1, 1}, {5, 1}, {5, 5}}, true);
  cut.cutLine = document::CutLine::Cut;
  document::Attributes attributes = Colored(Red);
  attributes.lineStyle = {0, LINESTYLE_NONE};
  attributes.layer = Gold;
  Add(cut, attributes);
  EXPECT_EQ(Measured("cut-line"), std::vector<std::string>{"cut-line #ff0000 1.4111 0.5292"});
  EXPECT_NE(DrawSvg().find("<g class=\"cut-line\" data-layer=\"Cut\">"), std::string::npos);
}

// Dashes of 6 points and dots of half a point, with gaps of one and a half.
TEST_F(Svg, a_line_that_is_cut_through_has_a_class_a_layer_and_dashes_of_its_own) {
  document::PathShape cut = Polygon({{1, 1}, {5, 1}, {5, 5}}, true);
  cut.cutLine = document::CutLine::Through;
  Add(cut, Colored(Red));
  EXPECT_EQ(Measured("cut-through-line"),
            std::vector<std::string>{"cut-through-line #ff0000 2.1167 0.5292 0.1764 0.5292"});
  EXPECT_TRUE(Measured("cut-line").empty());
  EXPECT_NE(DrawSvg().find("<g class=\"cut-through-line\" data-layer=\"Cut through\">"),
            std::string::npos);
}

TEST_F(Svg, an_endless_cut_line_is_drawn_whole) {
  document::PathShape cut = Polygon({{1, 1}, {1e7, 1}, {5, 5}}, false);
  cut.cutLine = document::CutLine::Cut;
  Add(cut, Colored(Red));
  EXPECT_EQ(Measured("cut-line"), std::vector<std::string>{"cut-line #ff0000 whole"});
}

TEST_F(Svg, lines_are_none_thin_or_as_wide_as_they_say) {
  const auto drawn = [&](const LINESTYLE& style) {
    document::Attributes attributes = Colored(Red);
    attributes.lineStyle = style;
    const auto path = Add(Polygon({{1, 1}, {5, 1}, {5, 5}}, true), attributes);
    const std::string line = Measured("path").at(0);
    m_Document.Remove(path);
    return line;
  };
  EXPECT_EQ(drawn({1, LINESTYLE_NONE}), "path #ff0000 None None");
  EXPECT_EQ(drawn({1, LINESTYLE_HAIRLINE}), "path #ff0000 #ff0000 0.0882");
  EXPECT_EQ(drawn({0.25, LINESTYLE_WIDTH}), "path #ff0000 #ff0000 2.5");
  EXPECT_EQ(drawn({0, LINESTYLE_WIDTH}), "path #ff0000 None None");
  EXPECT_EQ(drawn({LineStyleHairline, LINESTYLE_WIDTH}), "path #ff0000 #ff0000 0.0882");
}

TEST_F(Svg, only_closed_paths_are_filled) {
  Add(Polygon({{1, 1}, {5, 1}, {5, 5}}, false), Colored(Red));
  document::PathShape both = Polygon({{1, 1}, {5, 1}, {5, 5}}, false);
  both.subPaths.push_back(Polygon({{6, 1}, {9, 1}, {9, 5}}, true).subPaths[0]);
  Add(both, Colored(Blue));
  EXPECT_EQ(Measured("path"),
            (std::vector<std::string>{"path none #ff0000 0.0882", "path #0000ff None None",
                                      "path none #0000ff 0.0882"}));
}

TEST_F(Svg, a_path_that_fills_open_runs_is_one_shape) {
  document::PathShape path = Polygon({{1, 1}, {5, 1}, {5, 5}}, false);
  path.fillsOpen = true;
  Add(path, Colored(Red));
  EXPECT_EQ(Measured("path"), (std::vector<std::string>{"path #ff0000 #ff0000 0.0882"}));
}

TEST_F(Svg, a_path_is_filled_by_its_rule) {
  document::PathShape path = Polygon({{1, 1}, {5, 1}, {5, 5}}, true);
  Add(path, Colored(Red));
  path.fillRule = document::FillRule::NonZero;
  Add(path, Colored(Blue));
  const std::string svg = DrawSvg();
  EXPECT_NE(svg.find("fill-rule=\"evenodd\" fill=\"#ff0000\""), std::string::npos);
  EXPECT_NE(svg.find("fill-rule=\"nonzero\" fill=\"#0000ff\""), std::string::npos);
}

TEST_F(Svg, colors_of_inks_are_turned_into_those_of_light) {
  CVKColor color;
  color.SetColor(0, 1, 1, 0, COLORSPACE_CMYK);
  Add(Polygon({{1, 1}, {5, 1}, {5, 5}}, true), Colored(color));
  EXPECT_EQ(Measured("path").at(0), "path #ff0000 #ff0000 0.0882");
}

TEST_F(Svg, without_the_blank_only_objects_are_drawn) {
  ImageOptions options;
  options.blank = false;
  EXPECT_EQ(DrawSvg(options).find("class=\"blank\""), std::string::npos);
  EXPECT_NE(DrawSvg().find("class=\"blank\""), std::string::npos);
}

}  // namespace
}  // namespace rastrel::render
