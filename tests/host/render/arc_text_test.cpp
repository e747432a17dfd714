#include <algorithm>
#include <cmath>
#include <numbers>

#include "tests/host/render/drawn_document.h"

namespace rastrel::render {
namespace {

using test::Blue;
using test::Colored;
using test::Numbers;
using test::Output;
using test::Piece;
using test::Red;

// Millimetres.
constexpr double Hundredth = 0.01;
constexpr double MillimetresPerTextUnit = 0.0254;
// The letter I of DejaVu Sans is a rectangle from 201 to 403 of an advance width of 604 units, so
// that its middle is that of its width. It is 1493 high; 2048 units are the size.
constexpr double UnitsPerSize = 2048;
constexpr double WidthOfI = 604 / UnitsPerSize;
constexpr double HeightOfI = 1493 / UnitsPerSize;

constexpr CWorldPoint Center{10, 6};  // of a page of 20 by 12 cm
constexpr double Radius = 3;
constexpr double Size = 400;  // text units: 1.016 cm

document::ArcTextShape Arc(const std::wstring& text, double rotation, int justification) {
  document::ArcTextShape arc;
  arc.center = Center;
  arc.radius = Radius;
  arc.rotation = rotation;
  arc.justification = justification;
  arc.run = Piece(text, Size);
  return arc;
}

// A point of the page in millimetres from its lower left corner, or a direction.
struct Vector {
  double x = 0, y = 0;
  [[nodiscard]] double Length() const { return std::hypot(x, y); }
  Vector operator-(const Vector& other) const { return {x - other.x, y - other.y}; }
};
Vector Middle(const Vector& a, const Vector& b) { return {(a.x + b.x) / 2, (a.y + b.y) / 2}; }

// Degrees counter-clockwise from the top, 0 to 360.
double AngleOf(const Vector& direction) {
  const double angle = std::atan2(-direction.x, direction.y) * 180 / std::numbers::pi;
  return angle < 0 ? angle + 360 : angle;
}

class ArcText : public test::DrawnDocument {
 protected:
  // The corners of each rectangle that the text's outlines are, in millimetres from the page's
  // lower left corner.
  std::vector<std::vector<Vector>> Rectangles() {
    ImageOptions options;
    options.outlines = true;
    const std::string svg = DrawSvg(options);
    const auto text = svg.find("<g class=\"text\">");
    const auto begin = svg.find("d=\"", text) + 3;
    std::istringstream path(svg.substr(begin, svg.find('"', begin) - begin));
    std::vector<std::vector<Vector>> rectangles;
    for (std::string part; std::getline(path, part, 'Z');) {
      if (part.find('L') == std::string::npos) continue;
      part.erase(0, part.rfind('M'));  // after the move that ends the letter before
      std::ranges::replace_if(
          part, [](char c) { return c == 'M' || c == 'L'; }, ' ');
      std::istringstream numbers(part);
      std::vector<Vector>& corners = rectangles.emplace_back();
      for (double x = 0, y = 0; numbers >> x >> y;) corners.push_back({x, 120 - y});
    }
    return rectangles;
  }

  // The middles of the feet of the letters I on a circle, in millimetres from its center. Each
  // letter is held against its radius: its foot touches the circle there, and it points outward.
  std::vector<Vector> FeetOnCircle(double squeeze = 1, const Vector& center = {100, 60},
                                   double radius = Radius * 10) {
    std::vector<Vector> feet;
    for (const auto& corners : Rectangles()) {
      EXPECT_GE(corners.size(), 4U);
      // Side by side, and then the two ends: the foot is the side nearer to the center.
      std::vector<Vector> ordered(corners.begin(), corners.begin() + 4);
      const auto distance = [&](const Vector& corner) { return (corner - center).Length(); };
      std::ranges::sort(ordered, {}, distance);
      const Vector foot = Middle(ordered[0], ordered[1]) - center;
      const Vector head = Middle(ordered[2], ordered[3]) - center;
      EXPECT_NEAR(foot.Length(), radius, Hundredth);
      EXPECT_NEAR((head - foot).Length(), HeightOfI * Size * MillimetresPerTextUnit, Hundredth);
      EXPECT_NEAR(AngleOf(head), AngleOf(foot), 0.02) << "upright on its radius";
      EXPECT_NEAR((ordered[0] - ordered[1]).Length(),
                  squeeze * (403 - 201) / UnitsPerSize * Size * MillimetresPerTextUnit, Hundredth);
      feet.push_back(foot);
    }
    return feet;
  }

  // The angle that a letter I takes on the circle, in degrees.
  static double Turn() {
    return WidthOfI * Size * MillimetresPerTextUnit / (Radius * 10) * 180 / std::numbers::pi;
  }
};

// Angles in degrees: within 0.01 mm on a radius of 30 mm.
constexpr double OnCircle = 0.02;

TEST_F(ArcText, letters_stand_on_their_circle_and_read_clockwise) {
  Add(Arc(L"IIIII", 0, JUSTIFY_CENTER), Colored(Red));
  const auto feet = FeetOnCircle();
  ASSERT_EQ(feet.size(), 5U);
  for (int i = 0; i < 5; ++i) {
    const double expected = (2 - i) * Turn();
    EXPECT_NEAR(std::remainder(AngleOf(feet[static_cast<std::size_t>(i)]) - expected, 360), 0,
                OnCircle);
  }
}

TEST_F(ArcText, the_rotation_turns_it_counter_clockwise_from_the_top) {
  for (const double rotation : {0.0, 30.0, 90.0, 180.0, 270.0, 359.0, -45.0, 765.0}) {
    SCOPED_TRACE(rotation);
    const auto handle = Add(Arc(L"I", rotation, JUSTIFY_CENTER), Colored(Red));
    const auto feet = FeetOnCircle();
    ASSERT_EQ(feet.size(), 1U);
    EXPECT_NEAR(std::remainder(AngleOf(feet[0]) - rotation, 360), 0, OnCircle);
    m_Document.Remove(handle);
  }
}

TEST_F(ArcText, the_justification_says_which_end_of_the_text_the_mark_is_at) {
  for (const int justification : {JUSTIFY_LEFT, JUSTIFY_RIGHT, JUSTIFY_CENTER}) {
    SCOPED_TRACE(justification);
    const auto handle = Add(Arc(L"III", 90, justification), Colored(Red));
    const auto feet = FeetOnCircle();
    ASSERT_EQ(feet.size(), 3U);
    const double begin = justification == JUSTIFY_LEFT    ? 90
                         : justification == JUSTIFY_RIGHT ? 90 + 3 * Turn()
                                                          : 90 + 1.5 * Turn();
    for (int i = 0; i < 3; ++i) {
      EXPECT_NEAR(AngleOf(feet[static_cast<std::size_t>(i)]), begin - (i + 0.5) * Turn(), OnCircle);
    }
    m_Document.Remove(handle);
  }
}

TEST_F(ArcText, a_text_longer_than_its_circle_is_squeezed_to_it) {
  const std::wstring text(80, L'I');  // 240 mm of letters on 188 mm of circle
  Add(Arc(text, 0, JUSTIFY_LEFT), Colored(Red));
  const double squeeze = 360 / (80 * Turn());
  ASSERT_LT(squeeze, 1);
  const auto feet = FeetOnCircle(squeeze);
  ASSERT_EQ(feet.size(), 80U);
  for (std::size_t i = 0; i < feet.size(); ++i) {
    EXPECT_NEAR(AngleOf(feet[i]), 360 - (static_cast<double>(i) + 0.5) * 360 / 80, OnCircle);
  }
}

TEST_F(ArcText, a_matrix_turns_and_moves_circle_and_letters_together) {
  document::Attributes attributes = Colored(Red);
  // A quarter turn about the circle's center, and 2 cm to the right.
  attributes.matrix = {0, 1, -1, 0, 16 + 2, -4};
  Add(Arc(L"I", 0, JUSTIFY_CENTER), attributes);
  const auto feet = FeetOnCircle(1, {120, 60});
  ASSERT_EQ(feet.size(), 1U);
  EXPECT_NEAR(AngleOf(feet[0]), 90, OnCircle);
}

TEST_F(ArcText, svg_keeps_it_as_one_text_along_a_circle_that_begins_where_it_does) {
  Add(Arc(L"I & II", 90, JUSTIFY_LEFT), Colored(Red));
  const std::string svg = DrawSvg();
  // Clockwise from the left of the circle to its right, and back.
  EXPECT_NE(svg.find("<path id=\"circle-1\" d=\"M70 60A30 30 0 1 1 130 60A30 30 0 1 1 70 60\"/>"),
            std::string::npos)
      << svg;
  EXPECT_NE(svg.find("><textPath xlink:href=\"#circle-1\">I &amp; II</textPath></text>"),
            std::string::npos)
      << svg;
  EXPECT_NE(svg.find("fill=\"#ff0000\""), std::string::npos);
}

TEST_F(ArcText, svg_names_the_length_that_it_takes_on_the_circle) {
  Add(Arc(std::wstring(80, L'I'), 0, JUSTIFY_LEFT), Colored(Red));
  const std::string svg = DrawSvg();
  const auto place = svg.find("textLength=\"") + 12;
  EXPECT_NEAR(std::stod(svg.substr(place)), 2 * std::numbers::pi * Radius * 10, Hundredth);
}

TEST_F(ArcText, each_circle_of_a_page_has_a_name_of_its_own) {
  Add(Arc(L"one", 0, JUSTIFY_CENTER), Colored(Red));
  Add(Arc(L"two", 180, JUSTIFY_CENTER), Colored(Blue));
  const std::string svg = DrawSvg();
  EXPECT_NE(svg.find("#circle-1\">one<"), std::string::npos);
  EXPECT_NE(svg.find("#circle-2\">two<"), std::string::npos);
}

TEST_F(ArcText, svg_keeps_letters_apart_as_they_are_here) {
  Add(Arc(L"fi", 0, JUSTIFY_CENTER), Colored(Red));
  EXPECT_NE(DrawSvg().find("style=\"font-variant-ligatures:none\""), std::string::npos);
}

TEST_F(ArcText, pdf_keeps_its_letters_as_text_in_their_order) {
  Add(Arc(L"Yacht Club", 0, JUSTIFY_CENTER), Colored(Red));
  m_Directory.Write("page.pdf", Draw(ImageFormat::Pdf));
  std::string text = Output("pdftotext -raw '" + m_Directory.Path("page.pdf") + "' -");
  std::erase_if(text, [](char c) { return c == '\n' || c == ' ' || c == '\f'; });
  EXPECT_EQ(text, "YachtClub");
}

TEST_F(ArcText, pdf_has_no_letters_of_outlines) {
  Add(Arc(L"Yacht Club", 0, JUSTIFY_CENTER), Colored(Red));
  ImageOptions options;
  options.outlines = true;
  m_Directory.Write("page.pdf", Draw(ImageFormat::Pdf, options));
  EXPECT_EQ(Output("pdftotext '" + m_Directory.Path("page.pdf") + "' -"), "\f");
}

TEST_F(ArcText, each_of_pdf_and_png_shows_the_same_letters_with_outlines_and_without) {
  Add(Arc(L"Yacht Club", 30, JUSTIFY_CENTER), Colored(Red));
  ImageOptions outlines;
  outlines.outlines = true;
  m_Directory.Write("text.pdf", Draw(ImageFormat::Pdf));
  m_Directory.Write("outlines.pdf", Draw(ImageFormat::Pdf, outlines));
  const auto dark = [&](const std::string& name) {
    const std::string path = m_Directory.Path(name);
    // One gray byte a pixel; the letters' are those that are not white.
    const std::string pixels = Output("pdftoppm -gray -r 72 '" + path + "' | tail -c +16");
    return std::ranges::count_if(pixels, [](char pixel) { return pixel != '\xff'; });
  };
  const auto whole = dark("text.pdf");
  EXPECT_GT(whole, 1000);
  EXPECT_NEAR(static_cast<double>(dark("outlines.pdf")), static_cast<double>(whole), 60);
}

TEST_F(ArcText, one_that_is_beside_the_page_is_left_out) {
  document::ArcTextShape arc = Arc(L"III", 0, JUSTIFY_CENTER);
  arc.center = {100, 6};
  Add(arc, Colored(Red));
  EXPECT_EQ(DrawSvg().find("textPath"), std::string::npos);
}

TEST_F(ArcText, one_on_a_circle_far_larger_than_the_page_shows_where_it_meets_it) {
  document::ArcTextShape arc = Arc(L"III", 0, JUSTIFY_CENTER);
  arc.center = {10, 6 - 1000};
  arc.radius = 1000;
  Add(arc, Colored(Red));
  const auto feet = FeetOnCircle(1, {100, -9940}, 10'000);
  EXPECT_EQ(feet.size(), 3U);
}

TEST_F(ArcText, one_that_paints_in_the_invisible_color_is_left_out) {
  Add(Arc(L"III", 0, JUSTIFY_CENTER), Colored(test::Invisible));
  EXPECT_EQ(DrawSvg().find("textPath"), std::string::npos);
}

TEST_F(ArcText, a_run_of_its_own_color_is_painted_in_it) {
  document::ArcTextShape arc = Arc(L"III", 0, JUSTIFY_CENTER);
  arc.run.colored = true;
  arc.run.color = CVKFullColor(Blue);
  Add(arc, Colored(Red));
  EXPECT_NE(DrawSvg().find("fill=\"#0000ff\""), std::string::npos);
}

TEST_F(ArcText, letters_squeezed_until_nothing_is_seen_are_reported) {
  document::ArcTextShape arc = Arc(std::wstring(4000, L'm'), 0, JUSTIFY_CENTER);
  arc.radius = 0.5;
  Add(arc, Colored(Red));
  (void)DrawSvg();
  ASSERT_EQ(m_Notices.Losses().size(), 1U);
  EXPECT_EQ(
      m_Notices.Losses()[0],
      L"the text \"" + std::wstring(40, L'm') +
          L"...\" can't be seen: its letters are narrower or lower than 0.1 mm on its circle");
}

TEST_F(ArcText, a_missing_font_and_a_missing_letter_are_reported) {
  document::ArcTextShape arc = Arc(L"a\xE000", 0, JUSTIFY_CENTER);
  arc.run.font = L"NoSuchFont";
  Add(arc, Colored(Red));
  (void)DrawSvg();
  ASSERT_EQ(m_Notices.Texts().size(), 2U);
  EXPECT_EQ(m_Notices.Texts()[0],
            L"the font \"NoSuchFont\" can't be had; DejaVu Sans stands in for it");
  EXPECT_NE(m_Notices.Texts()[1].find(L"U+E000"), std::wstring::npos);
}

TEST_F(ArcText, numbers_beyond_all_pages_draw_nothing_and_end) {
  const double huge = 1e300;
  for (const double value : {0.0, -1.0, huge, -huge, std::nan(""), HUGE_VAL}) {
    SCOPED_TRACE(value);
    document::ArcTextShape arc = Arc(L"III", 0, JUSTIFY_CENTER);
    arc.radius = value;
    Add(arc, Colored(Red));
    arc = Arc(L"III", value, JUSTIFY_CENTER);
    arc.center = {value, value};
    Add(arc, Colored(Red));
    arc = Arc(L"III", 0, JUSTIFY_CENTER);
    arc.run.size = value;
    Add(arc, Colored(Red));
  }
  for (const ImageFormat format : {ImageFormat::Svg, ImageFormat::Pdf, ImageFormat::Png}) {
    EXPECT_FALSE(Draw(format).empty());
  }
}

}  // namespace
}  // namespace rastrel::render
