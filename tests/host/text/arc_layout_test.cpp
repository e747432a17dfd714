#include "host/text/arc_layout.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "tests/host/text/text_shapes.h"

namespace rastrel::text {
namespace {

using test::Piece;

constexpr double Exact = 1e-6;
constexpr double Turn = 2 * std::numbers::pi;
// 1 inch, so that the radius is 72 points.
constexpr double Inch = 2.54;
// The advance widths of letters in DejaVu Sans, of 2048 units.
constexpr double WidthOfM = 1767, WidthOfI = 569, WidthOfSpace = 651;

class ArcLayoutTest : public testing::Test {
 protected:
  static document::ArcTextShape Arc(const std::wstring& text, int justification = JUSTIFY_LEFT,
                                    double rotation = 0, double size = 500) {
    document::ArcTextShape arc;
    arc.radius = Inch;
    arc.rotation = rotation;
    arc.justification = justification;
    arc.run = Piece(text, size);
    return arc;
  }

  document::Notices m_Notices;
  FontCatalog m_Fonts{m_Notices};
};

// 500 thousandths of an inch are 36 points.
double PointsOf(double units) { return units / 2048 * 36; }

TEST_F(ArcLayoutTest, advance_widths_follow_each_other_on_the_circle) {
  const ArcLayout layout(Arc(L"M i"), m_Fonts);
  EXPECT_NEAR(layout.Radius(), 72, Exact);
  ASSERT_EQ(layout.Letters().size(), 3U);
  const double widths[] = {PointsOf(WidthOfM), PointsOf(WidthOfSpace), PointsOf(WidthOfI)};
  double along = 0;
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_NEAR(layout.Letters()[i].width, widths[i], 0.01);
    EXPECT_NEAR(layout.Letters()[i].angle, (along + widths[i] / 2) / 72, 1e-3);
    along += widths[i];
  }
  EXPECT_NEAR(layout.Run().width, along, 0.02);
  EXPECT_EQ(layout.Begin(), 0);
  EXPECT_NEAR(layout.End(), along / 72, 1e-3);
  EXPECT_FALSE(layout.IsSqueezed());
}

TEST_F(ArcLayoutTest, a_letter_is_turned_about_the_middle_of_its_foot) {
  const ArcLayout layout(Arc(L"Mill", JUSTIFY_CENTER, 40), m_Fonts);
  for (std::size_t i = 0; i < layout.Letters().size(); ++i) {
    const ArcLetter& letter = layout.Letters()[i];
    const TM place = layout.PlaceOf(i);
    // The middle of the foot, and the point 10 above it; y is downward.
    const double x = place.a * letter.width / 2 + place.tx;
    const double y = place.b * letter.width / 2 + place.ty;
    EXPECT_NEAR(x, 72 * std::sin(letter.angle), Exact);
    EXPECT_NEAR(y, -72 * std::cos(letter.angle), Exact);
    EXPECT_NEAR(x + place.c * -10, 82 * std::sin(letter.angle), Exact);
    EXPECT_NEAR(y + place.d * -10, -82 * std::cos(letter.angle), Exact);
  }
}

TEST_F(ArcLayoutTest, a_text_that_just_fits_is_not_squeezed_and_a_longer_one_is) {
  // Letters M of 36 points, 31.06 points wide, on a circle of 452.39 points.
  for (const auto& [count, squeezed] : {std::pair(14, false), std::pair(15, true)}) {
    const ArcLayout layout(Arc(std::wstring(static_cast<std::size_t>(count), L'M')), m_Fonts);
    EXPECT_EQ(layout.IsSqueezed(), squeezed) << count;
    const double length = count * PointsOf(WidthOfM);
    EXPECT_NEAR(layout.Run().scaleX, std::min(1.0, Turn * 72 / length), 1e-4);
    EXPECT_LE(layout.End() - layout.Begin(), Turn + Exact);
  }
}

TEST_F(ArcLayoutTest, letters_from_the_right_are_in_the_order_in_which_they_are_seen) {
  const ArcLayout layout(Arc(L"\x5D0\x5D1\x5D2"), m_Fonts);
  ASSERT_EQ(layout.Letters().size(), 3U);
  EXPECT_TRUE(layout.Run().rightToLeft);
  EXPECT_EQ(layout.Letters()[0].text, L"\x5D2");
  EXPECT_EQ(layout.Letters()[2].text, L"\x5D0");
  EXPECT_LT(layout.Letters()[0].angle, layout.Letters()[1].angle);
}

TEST_F(ArcLayoutTest, a_mark_stays_with_its_letter_and_ligatures_fall_apart) {
  const ArcLayout marked(Arc(L"e\x301x"), m_Fonts);
  EXPECT_EQ(marked.Letters().size(), 2U);
  const ArcLayout apart(Arc(L"ffi"), m_Fonts);
  EXPECT_EQ(apart.Letters().size(), 3U);
}

TEST_F(ArcLayoutTest, line_ends_and_tabs_are_spaces) {
  const ArcLayout layout(Arc(L"a\r\n\tb"), m_Fonts);
  EXPECT_EQ(layout.Run().text, L"a   b");
  EXPECT_EQ(layout.Letters().size(), 5U);
}

TEST_F(ArcLayoutTest, no_more_characters_than_the_maximum_are_laid_out) {
  using document::MaximumArcText;
  for (const std::size_t count : {MaximumArcText - 1, MaximumArcText, MaximumArcText + 1}) {
    const ArcLayout layout(Arc(std::wstring(count, L'i')), m_Fonts);
    EXPECT_EQ(layout.Letters().size(), std::min(count, MaximumArcText));
  }
}

TEST_F(ArcLayoutTest, an_empty_text_has_no_letters) {
  const ArcLayout layout(Arc(L""), m_Fonts);
  EXPECT_TRUE(layout.Letters().empty());
  EXPECT_FALSE(layout.IsSqueezed());
  EXPECT_EQ(layout.Begin(), layout.End());
}

TEST_F(ArcLayoutTest, any_numbers_give_finite_places) {
  for (const double value : {0.0, -5.0, 1e300, -1e300, 1e-300, std::nan(""), HUGE_VAL}) {
    SCOPED_TRACE(value);
    for (document::ArcTextShape arc :
         {Arc(L"ab"), Arc(L"ab", JUSTIFY_RIGHT, value), Arc(L"ab", 0, 0, value)}) {
      for (const bool radius : {false, true}) {
        if (radius) arc.radius = value;
        const ArcLayout layout(arc, m_Fonts);
        for (std::size_t i = 0; i < 2; ++i) {
          const TM place = layout.PlaceOf(i);
          EXPECT_TRUE(std::isfinite(place.tx) && std::isfinite(place.ty) && std::isfinite(place.a));
        }
      }
    }
  }
}

}  // namespace
}  // namespace rastrel::text
