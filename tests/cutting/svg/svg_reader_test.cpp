#include "cutting/svg/svg_reader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <sstream>
#include <string>

#include "cutting/svg/svg_color.h"

namespace rastrel::cutting {
namespace {

// A page of 100 mm by 50 mm whose unit is a millimetre.
std::string Page(const std::string& content, const std::string& attributes = {}) {
  return "<svg xmlns='http://www.w3.org/2000/svg' xmlns:xlink='http://www.w3.org/1999/xlink' "
         "xmlns:inkscape='http://www.inkscape.org/namespaces/inkscape' width='100mm' height='50mm' "
         "viewBox='0 0 100 50' " +
         attributes + ">\n" + content + "\n</svg>\n";
}

Drawing Read(const std::string& text) {
  auto drawing = ReadSvg(text, "sign.svg");
  EXPECT_TRUE(drawing) << Describe(drawing.Error());
  return drawing ? *std::move(drawing) : Drawing{};
}

std::string FaultOf(const std::string& text) {
  const auto drawing = ReadSvg(text, "sign.svg");
  if (drawing) return "read";
  EXPECT_EQ(drawing.Error().code, FailureCode::BadInput);
  return Describe(drawing.Error());
}

// "line: text (times)" of each finding.
std::string FindingsOf(const Drawing& drawing) {
  std::string texts;
  for (const Finding& finding : drawing.findings)
    texts += std::to_string(finding.line) + ": " + finding.text + " (" +
             std::to_string(finding.times) + ")\n";
  return texts;
}

void ExpectNear(Point point, Point expected) {
  EXPECT_NEAR(point.x, expected.x, 1e-9);
  EXPECT_NEAR(point.y, expected.y, 1e-9);
}

TEST(SvgReader, the_page_is_in_millimetres_from_its_lower_left_corner) {
  const Drawing drawing = Read(Page("<path d='M10 20 L90 20' stroke='#f00' fill='none'/>"));
  EXPECT_NEAR(drawing.job.width, 100, 1e-9);
  EXPECT_NEAR(drawing.job.height, 50, 1e-9);
  ASSERT_EQ(drawing.job.paths.size(), 1U);
  const CutPath& path = drawing.job.paths[0];
  ExpectNear(path.contours[0].start, {10, 30});
  ExpectNear(path.contours[0].End(), {90, 30});
  EXPECT_EQ(path.paint.kind, Paint::Kind::Stroke);
  EXPECT_EQ(path.paint.color, (PaintColor{ColorModel::Rgb, {1, 0, 0}, {}}));
  EXPECT_NEAR(path.paint.lineWidth, 1, 1e-9);
  EXPECT_EQ(path.operation, Operation::Cut);
}

TEST(SvgReader, every_unit_of_length_has_its_size) {
  // 96 px, 25.4 mm, 2.54 cm, 72 pt, 6 pc and 101.6 Q are an inch.
  for (const char* length : {"96", "96px", "25.4mm", "2.54cm", "1in", "72pt", "6pc", "101.6Q"}) {
    const Drawing drawing = Read("<svg width='" + std::string(length) +
                                 "' height='1in'><path d='M0 0H1' stroke='red'/></svg>");
    EXPECT_NEAR(drawing.job.width, 25.4, 1e-9) << length;
  }
}

TEST(SvgReader, a_shape_with_fill_and_stroke_is_painted_by_both) {
  const Drawing drawing =
      Read(Page("<path d='M1 1h5v5' fill='blue' stroke='lime' fill-rule='evenodd'/>"));
  ASSERT_EQ(drawing.job.paths.size(), 2U);
  EXPECT_EQ(drawing.job.paths[0].paint.kind, Paint::Kind::EvenOddFill);
  EXPECT_EQ(drawing.job.paths[0].paint.color.components, (std::vector<double>{0, 0, 1}));
  EXPECT_TRUE(drawing.job.paths[0].contours[0].closed) << "an area's outline is closed";
  EXPECT_EQ(drawing.job.paths[1].paint.kind, Paint::Kind::Stroke);
  EXPECT_FALSE(drawing.job.paths[1].contours[0].closed);
}

TEST(SvgReader, without_any_paint_a_shape_is_filled_black) {
  const Drawing drawing = Read(Page("<rect width='5' height='5'/>"));
  ASSERT_EQ(drawing.job.paths.size(), 1U);
  EXPECT_EQ(drawing.job.paths[0].paint.kind, Paint::Kind::Fill);
  EXPECT_EQ(drawing.job.paths[0].paint.color.components, (std::vector<double>{0, 0, 0}));
}

TEST(SvgReader, sheets_go_before_attributes_and_the_style_attribute_before_sheets) {
  const Drawing drawing = Read(
      Page("<style>/* shop */ .cut, #x { stroke: #00f } path.cut{stroke:#0f0} @media print{.cut{}}"
           " g .cut{stroke:red}</style>"
           "<g fill='none'><path d='M0 0H1' class='other cut' stroke='#f00'/>"
           "<path id='x' d='M0 0H1' class='cut' stroke='#f00'/>"
           "<path d='M0 0H1' class='cut' style='stroke: #ff0 !important; stroke-width:2'/></g>"));
  ASSERT_EQ(drawing.job.paths.size(), 3U);
  EXPECT_EQ(drawing.job.paths[0].paint.color.components, (std::vector<double>{0, 1, 0}));
  EXPECT_EQ(drawing.job.paths[1].paint.color.components, (std::vector<double>{0, 0, 1}));
  EXPECT_EQ(drawing.job.paths[2].paint.color.components, (std::vector<double>{1, 1, 0}));
  EXPECT_NEAR(drawing.job.paths[2].paint.lineWidth, 2, 1e-9);
  EXPECT_EQ(FindingsOf(drawing),
            "2: rules of a style sheet that begin with '@' are not read (1)\n"
            "2: the selector 'g .cut' of a style sheet is not read (1)\n");
}

TEST(SvgReader, an_at_rule_without_an_end_ends_the_sheet) {
  for (const char* rule : {"@import url(shop.css)", "@media print { .cut { stroke: red }"}) {
    const Drawing drawing = Read(Page("<style>.cut { stroke: #00f } " + std::string(rule) +
                                      "</style><path d='M0 0H1' class='cut' fill='none'/>"));
    ASSERT_EQ(drawing.job.paths.size(), 1U);
    EXPECT_EQ(drawing.job.paths[0].paint.color.components, (std::vector<double>{0, 0, 1}));
    EXPECT_EQ(FindingsOf(drawing),
              "2: rules of a style sheet that begin with '@' are not read (1)\n");
  }
}

// The sum of "name=rrggbb" lines in the order of names, taken of the table of another program
// (Qt's).
TEST(SvgColor, each_name_of_the_standard_has_its_color) {
  std::istringstream names(
      "aliceblue antiquewhite aqua aquamarine azure beige bisque black blanchedalmond blue "
      "blueviolet brown burlywood cadetblue chartreuse chocolate coral cornflowerblue "
      "cornsilk crimson cyan darkblue darkcyan darkgoldenrod darkgray darkgreen darkgrey "
      "darkkhaki darkmagenta darkolivegreen darkorange darkorchid darkred darksalmon "
      "darkseagreen darkslateblue darkslategray darkslategrey darkturquoise darkviolet "
      "deeppink deepskyblue dimgray dimgrey dodgerblue firebrick floralwhite forestgreen "
      "fuchsia gainsboro ghostwhite gold goldenrod gray green greenyellow grey honeydew "
      "hotpink indianred indigo ivory khaki lavender lavenderblush lawngreen lemonchiffon "
      "lightblue lightcoral lightcyan lightgoldenrodyellow lightgray lightgreen lightgrey "
      "lightpink lightsalmon lightseagreen lightskyblue lightslategray lightslategrey "
      "lightsteelblue lightyellow lime limegreen linen magenta maroon mediumaquamarine "
      "mediumblue mediumorchid mediumpurple mediumseagreen mediumslateblue mediumspringgreen "
      "mediumturquoise mediumvioletred midnightblue mintcream mistyrose moccasin navajowhite "
      "navy oldlace olive olivedrab orange orangered orchid palegoldenrod palegreen "
      "paleturquoise palevioletred papayawhip peachpuff peru pink plum powderblue purple red "
      "rosybrown royalblue saddlebrown salmon sandybrown seagreen seashell sienna silver "
      "skyblue slateblue slategray slategrey snow springgreen steelblue tan teal thistle "
      "tomato turquoise violet wheat white whitesmoke yellow yellowgreen ");
  std::uint64_t sum = 1469598103934665603U;
  int count = 0;
  for (std::string name; names >> name; ++count) {
    const auto color = SvgColorOf(name);
    ASSERT_TRUE(color) << name;
    std::string line = name + "=";
    for (const double part : color->color.components) {
      const auto byte = static_cast<unsigned>(std::lround(part * 255));
      for (const unsigned digit : {byte / 16, byte % 16}) line += "0123456789abcdef"[digit];
    }
    for (const char letter : line + "\n")
      sum = (sum ^ static_cast<unsigned char>(letter)) * 1099511628211U;
  }
  EXPECT_EQ(count, 147);
  EXPECT_EQ(sum, 0x6bb44941641ce728U);
}

TEST(SvgReader, every_form_of_a_color_is_read) {
  const auto color = [](const std::string& text) {
    return Read(Page("<path d='M0 0H1' fill='none' color='#00f' stroke='" + text + "'/>"))
        .job.paths.at(0)
        .paint.color;
  };
  const PaintColor magenta{ColorModel::Rgb, {1, 0, 1}, {}};
  for (const char* text : {"magenta", "FUCHSIA", "#f0f", "#FF00FF", "#f0ff", "#ff00ffff",
                           "rgb(255,0,255)", "rgb(100% 0% 100%)", "rgba(255, 0, 255, .5)",
                           "hsl(300, 100%, 50%)", "#ff00ff icc-color(shop, 0, 1)"})
    EXPECT_EQ(color(text), magenta) << text;
  EXPECT_EQ(color("currentColor").components, (std::vector<double>{0, 0, 1}));
  EXPECT_EQ(color("device-cmyk(0% 100% 0 0.5)"),
            (PaintColor{ColorModel::Cmyk, {0, 1, 0, 0.5}, {}}));
}

TEST(SvgReader, the_layer_is_the_drawing_programs_or_the_innermost_named_group) {
  const Drawing drawing = Read(Page(
      "<g inkscape:groupmode='layer' inkscape:label='Cut lines' id='layer1'><g id='g17'>"
      "<path d='M0 0H1'/></g><g inkscape:groupmode='layer' id='layer2'><path d='M0 0H1'/></g></g>"
      "<g id='Thru'><g><path d='M0 0H1'/></g><g id='inner'><path d='M0 0H1'/></g></g>"
      "<path d='M0 0H1'/>"));
  ASSERT_EQ(drawing.job.paths.size(), 5U);
  const char* const expected[] = {"Cut lines", "layer2", "Thru", "inner", ""};
  for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(drawing.job.paths[i].paint.layer, expected[i]);
}

TEST(SvgReader, hidden_and_invisible_parts_are_not_cut) {
  const Drawing drawing = Read(
      Page("<g style='display:none'><path d='M0 0H1'/></g>"
           "<g visibility='hidden'><path d='M0 0H1'/><path d='M0 0H1' visibility='visible'/></g>"
           "<path d='M0 0H1' opacity='0'/><path d='M0 0H1' fill-opacity='0%'/>"
           "<path d='M0 0H1' fill='none'/><path d='M0 0H1' fill='none' stroke='red' "
           "stroke-width='0'/><defs><path d='M0 0H1'/></defs>"));
  EXPECT_EQ(drawing.job.paths.size(), 1U);
}

TEST(SvgReader, parts_that_are_not_read_are_told_with_their_lines) {
  const Drawing drawing =
      Read(Page("<text>Sign</text>\n<image/><text/>\n"
                "<path d='M0 0H1' fill='url(#g)' clip-path='url(#c)' filter='url(#f)' "
                "stroke-dasharray='1' marker-end='url(#m)'/>\n<use href='#nothing'/>"));
  EXPECT_EQ(FindingsOf(drawing),
            "2: text is not read; make it paths first (2)\n"
            "3: images are not read (1)\n"
            "4: clips and masks are not applied; paths are whole (1)\n"
            "4: filters are not applied (1)\n"
            "4: dashes are not applied (1)\n"
            "4: markers are not read (1)\n"
            "4: gradients and patterns are not read (1)\n"
            "5: elements that the drawing does not have are not used (1)\n");
}

TEST(SvgReader, a_switch_draws_its_first_child_that_is_known) {
  const Drawing drawing =
      Read(Page("<switch><foreignObject requiredExtensions='x'/><g id='a'><path d='M0 0H1'/></g>"
                "<g id='b'><path d='M0 0H1'/></g></switch>"));
  ASSERT_EQ(drawing.job.paths.size(), 1U);
  EXPECT_EQ(drawing.job.paths[0].paint.layer, "a");
}

TEST(SvgReader, a_drawing_without_a_size_says_so) {
  const Drawing by = Read("<svg viewBox='0 0 96 48'><path d='M0 0H96'/></svg>");
  EXPECT_NEAR(by.job.width, 25.4, 1e-9);
  EXPECT_EQ(FindingsOf(by),
            "1: the drawing names no size; 96 of its units are taken as an inch (1)\n");
  const Drawing none = Read("<svg><path d='M-96 0H96V48'/></svg>");
  EXPECT_NEAR(none.job.width, 50.8, 1e-9) << "its page is the box around the paths";
  EXPECT_NEAR(none.job.height, 12.7, 1e-9);
}

TEST(SvgReader, a_document_type_is_passed_over_and_lines_stay) {
  const std::string type =
      "<?xml version='1.0'?>\n<!-- shop -->\n<!DOCTYPE svg PUBLIC '-//W3C//DTD SVG 1.1//EN'\n "
      "'svg11.dtd'>\n";
  EXPECT_EQ(Read(type + Page("<path d='M0 0H1'/>")).job.paths.size(), 1U);
  EXPECT_EQ(FaultOf(type + "<svg>\n<path d='x'/></svg>"),
            "sign.svg:6:1: the path's data at character 1: a command is expected here");
  EXPECT_NE(FaultOf("<!DOCTYPE svg [<!ENTITY a 'b'>]><svg/>"), "read");
}

TEST(SvgReader, faults_have_their_line_and_reason) {
  const auto fault = [](const std::string& content) { return FaultOf(Page(content)); };
  const std::string at = "sign.svg:2:1: ";
  EXPECT_EQ(fault("<path d='M0 0 L1'/>"),
            at + "the path's data at character 8: a number is expected here");
  EXPECT_EQ(fault("<path d='L1 1'/>"),
            at + "the path's data at character 2: a path begins with 'M'");
  EXPECT_EQ(fault("<path d='M0 0z1'/>"),
            at + "the path's data at character 6: a command is expected here");
  EXPECT_EQ(fault("<path d='M0 0A1 1 0 2 0 1 1'/>"),
            at + "the path's data at character 12: a number is expected here");
  EXPECT_EQ(fault("<path d='M0 0h1e99'/>"),
            at + "the path's data at character 6: a number is expected here");
  EXPECT_EQ(fault("<rect width='5furlong' height='1'/>"),
            at + "the length '5furlong' of 'width' can't be read");
  EXPECT_EQ(fault("<g transform='turn(3)'/>"), at + "the transformation can't be read");
  EXPECT_EQ(fault("<g transform='rotate(1,2)'/>"), at + "the transformation can't be read");
  EXPECT_EQ(fault("<path d='M0 0H1' fill='reddish'/>"), at + "the colour 'reddish' can't be read");
  EXPECT_EQ(fault("<path d='M0 0H1' stroke-width='-1'/>"),
            at + "the line width '-1' can't be read");
  EXPECT_EQ(fault("<polygon points='1 2 3'/>"), at + "the list of points can't be read");
  EXPECT_EQ(FaultOf("<svg viewBox='0 0 0 5'/>"),
            "sign.svg:1:1: the width and the height of the viewBox have to be above 0");
  EXPECT_EQ(FaultOf("<html/>"),
            "sign.svg:1:1: the file is no SVG drawing: its outermost element is no 'svg'");
  EXPECT_EQ(fault("<path d='M0 0H1000000000'/>"), "sign.svg:1:1: the drawing is larger than 1 km");
  EXPECT_NE(FaultOf("<svg><g></svg>"), "read");
  EXPECT_NE(FaultOf(""), "read");
}

TEST(SvgReader, elements_that_use_themselves_are_refused) {
  EXPECT_EQ(
      FaultOf(Page("<g id='a'><use href='#a'/></g>")),
      "sign.svg:2:1: elements are used more than 16 deep within each other, or in themselves");
}

TEST(SvgReader, uses_within_uses_are_read_to_their_limit) {
  const auto nested = [](int depth) {
    std::string text = "<path id='u0' d='M0 0H1'/>";
    for (int i = 1; i <= depth; ++i)
      text += "<use id='u" + std::to_string(i) + "' href='#u" + std::to_string(i - 1) + "'/>";
    return FaultOf(Page(text));
  };
  EXPECT_EQ(nested(15), "read");
  EXPECT_EQ(nested(16), "read");
  EXPECT_NE(nested(17), "read");
}

// A file is at most 256 elements deep, and more only by uses. The root, the uses, and the path are
// five of the thousand here.
TEST(SvgReader, elements_within_elements_are_read_to_their_limit_through_uses) {
  const auto group = [](int number, int depth, const std::string& innermost) {
    std::string text = "<g id='u" + std::to_string(number) + "'>";
    for (int i = 1; i < depth; ++i) text += "<g>";
    text += innermost;
    for (int i = 0; i < depth; ++i) text += "</g>";
    return text;
  };
  const auto nested = [&](int groups) {
    return FaultOf(Page(group(0, 250, "<path d='M0 0H1'/>") + group(1, 250, "<use href='#u0'/>") +
                        group(2, 250, "<use href='#u1'/>") +
                        group(3, groups - 750, "<use href='#u2'/>") + "<use href='#u3'/>"));
  };
  EXPECT_EQ(nested(993), "read");
  EXPECT_EQ(nested(994), "read");
  EXPECT_NE(nested(995), "read");
}

TEST(SvgReader, a_small_file_makes_no_large_job) {
  // Ten levels of ten uses are ten thousand million paths.
  std::string text = "<defs><path id='u0' d='M0 0h1v1h1v1h1v1h1'/>";
  for (int level = 1; level <= 10; ++level) {
    text += "<g id='u" + std::to_string(level) + "'>";
    for (int i = 0; i < 10; ++i) text += "<use href='#u" + std::to_string(level - 1) + "'/>";
    text += "</g>";
  }
  EXPECT_NE(FaultOf(Page(text + "</defs><use href='#u10'/>")), "read");
}

TEST(SvgReader, a_dot_is_a_path_of_one_point) {
  const Drawing drawing = Read(Page("<path d='M5 5z' stroke='red' fill='none'/><path d='M5 5'/>"));
  ASSERT_EQ(drawing.job.paths.size(), 1U);
  EXPECT_TRUE(drawing.job.paths[0].contours[0].segments.empty());
}

TEST(SvgReader, shapes_without_a_size_are_not_drawn) {
  EXPECT_TRUE(Read(Page("<circle/><rect width='5'/><ellipse rx='1'/><polyline points='1 1'/>"
                        "<path/><circle r='-1'/>"))
                  .job.paths.empty());
}

}  // namespace
}  // namespace rastrel::cutting
