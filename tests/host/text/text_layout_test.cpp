#include "host/text/text_layout.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <string>

#include "tests/host/text/text_shapes.h"

namespace rastrel::text {
namespace {

using test::Paragraph;
using test::Piece;

constexpr double PointsPerInch = 72;

// A frame of 4 by 2 inches, whose lower left corner lies 1 inch from the page's.
constexpr CWorldRect Frame{2.54, 3 * 2.54, 5 * 2.54, 2.54};
constexpr double Left = 72, Right = 5 * 72, Top = 3 * 72, Bottom = 72;
// Sums of rounded letters differ from the whole in the last digits.
constexpr double Exact = 1e-6;

class TextLayoutTest : public testing::Test {
 protected:
  document::Notices m_Notices;
  FontCatalog m_Fonts{m_Notices};
};

double RightOf(const PlacedLine& line) { return line.left + line.width; }

TEST_F(TextLayoutTest, a_text_that_fits_stays_as_it_is) {
  const TextLayout layout(
      Paragraph(Frame, 0, JUSTIFY_LEFT, LINEFIT_EACH_LINE, {{Piece(L"Mill", 500)}}), m_Fonts);
  ASSERT_EQ(layout.Lines().size(), 1U);
  const PlacedLine& line = layout.Lines()[0];
  EXPECT_FALSE(layout.IsSqueezed());
  EXPECT_NEAR(line.left, Left, Exact);
  EXPECT_NEAR(line.width, line.natural, Exact);
  EXPECT_GT(line.baseline - line.descent, Bottom);
  EXPECT_LT(line.baseline + line.ascent, Top);
}

// The advance widths of M, i, l in DejaVu Sans are 1767, 569 and 569 of 2048 units.
TEST_F(TextLayoutTest, letters_are_as_wide_as_the_font_says) {
  const TextLayout layout(
      Paragraph(Frame, 0, JUSTIFY_LEFT, LINEFIT_EACH_LINE, {{Piece(L"Mill", 500)}}), m_Fonts);
  const double expected = (1767 + 3 * 569) / 2048.0 * 36;  // 500 thousandths of an inch are 36 pt
  EXPECT_NEAR(layout.Lines()[0].natural, expected, 0.01);
}

TEST_F(TextLayoutTest, the_size_scales_letters_and_nothing_else) {
  const auto widthAt = [&](double size) {
    return TextLayout(
               Paragraph(Frame, 0, JUSTIFY_LEFT, LINEFIT_EACH_LINE, {{Piece(L"Mill", size)}}),
               m_Fonts)
        .Lines()[0]
        .natural;
  };
  EXPECT_NEAR(widthAt(1) * 500, widthAt(500), Exact);
  EXPECT_NEAR(widthAt(500) * 500, widthAt(250'000), 1e-3);
}

TEST_F(TextLayoutTest, lines_stand_left_right_and_in_the_middle_between_the_margins) {
  const auto placed = [&](int justification) {
    return TextLayout(
               Paragraph(Frame, 220, justification, LINEFIT_EACH_LINE, {{Piece(L"Mill", 300)}}),
               m_Fonts)
        .Lines()[0];
  };
  const double margin = 0.22 * (Right - Left);
  EXPECT_NEAR(placed(JUSTIFY_LEFT).left, Left + margin, Exact);
  EXPECT_NEAR(RightOf(placed(JUSTIFY_RIGHT)), Right - margin, Exact);
  const PlacedLine centred = placed(JUSTIFY_CENTER);
  EXPECT_NEAR((centred.left + RightOf(centred)) / 2, (Left + Right) / 2, Exact);
}

TEST_F(TextLayoutTest, margins_count_only_where_lines_are_justified_within_them) {
  document::TextShape text =
      Paragraph(Frame, 220, JUSTIFY_LEFT, LINEFIT_EACH_LINE, {{Piece(L"Mill", 300)}});
  text.justifyMode = 0;
  EXPECT_NEAR(TextLayout(text, m_Fonts).Lines()[0].left, Left, Exact);
}

const std::vector<std::vector<document::TextRun>> WideAndNarrow{
    {Piece(L"a line that is far too wide for its frame", 500)}, {Piece(L"narrow", 300)}};

TEST_F(TextLayoutTest, each_line_is_squeezed_for_itself) {
  const TextLayout layout(Paragraph(Frame, 50, JUSTIFY_CENTER, LINEFIT_EACH_LINE, WideAndNarrow),
                          m_Fonts);
  const double room = 0.9 * (Right - Left);
  EXPECT_NEAR(layout.Lines()[0].width, room, Exact);
  EXPECT_LT(layout.Lines()[0].scaleX, 1);
  EXPECT_EQ(layout.Lines()[0].scaleY, 1);
  EXPECT_EQ(layout.Lines()[1].scaleX, 1);
  EXPECT_TRUE(layout.IsSqueezed());
}

TEST_F(TextLayoutTest, all_lines_are_squeezed_by_the_factor_of_the_widest) {
  const TextLayout layout(Paragraph(Frame, 50, JUSTIFY_CENTER, LINEFIT_ALL_LINES, WideAndNarrow),
                          m_Fonts);
  EXPECT_NEAR(layout.Lines()[0].width, 0.9 * (Right - Left), Exact);
  EXPECT_EQ(layout.Lines()[1].scaleX, layout.Lines()[0].scaleX);
  EXPECT_LT(layout.Lines()[1].width, layout.Lines()[1].natural);
}

TEST_F(TextLayoutTest, lines_of_equal_height_are_set_in_the_largest_size_and_squeezed_alike) {
  const TextLayout layout(Paragraph(Frame, 50, JUSTIFY_CENTER, LINEFIT_EQUAL_HEIGHT, WideAndNarrow),
                          m_Fonts);
  const PlacedLine& wide = layout.Lines()[0];
  const PlacedLine& narrow = layout.Lines()[1];
  EXPECT_NEAR(wide.ascent, narrow.ascent, Exact);
  EXPECT_EQ(wide.scaleX, narrow.scaleX);
  EXPECT_NEAR(layout.Runs()[1].size, 36, Exact) << "300 became 500 thousandths of an inch";
  EXPECT_NEAR(wide.width, 0.9 * (Right - Left), Exact);
}

TEST_F(TextLayoutTest, text_that_is_too_high_becomes_smaller_until_it_fits) {
  std::vector<std::vector<document::TextRun>> lines(12, std::vector{Piece(L"line", 500)});
  for (const int fit : {LINEFIT_EACH_LINE, LINEFIT_ALL_LINES, LINEFIT_EQUAL_HEIGHT}) {
    const TextLayout layout(Paragraph(Frame, 0, JUSTIFY_LEFT, fit, lines), m_Fonts);
    const PlacedLine& first = layout.Lines().front();
    const PlacedLine& last = layout.Lines().back();
    EXPECT_NEAR(first.baseline + first.ascent, Top, 1e-3);
    EXPECT_NEAR(last.baseline - last.descent, Bottom, 1e-3);
    EXPECT_NEAR(first.scaleX, first.scaleY, Exact) << "letters keep their shape";
  }
}

TEST_F(TextLayoutTest, without_a_fit_text_stands_as_it_is_and_may_leave_the_frame) {
  document::TextShape text = Paragraph(Frame, 0, JUSTIFY_CENTER, LINEFIT_EACH_LINE, WideAndNarrow);
  text.paragraph.fit = 0;
  const TextLayout layout(text, m_Fonts);
  EXPECT_LT(layout.Lines()[0].left, Left);
  EXPECT_FALSE(layout.IsSqueezed());
}

TEST_F(TextLayoutTest, a_block_stands_in_the_middle_and_single_lines_begin_at_the_top) {
  document::TextShape text = Paragraph(Frame, 0, JUSTIFY_LEFT, LINEFIT_EACH_LINE,
                                       {{Piece(L"a", 300)}, {Piece(L"b", 300)}});
  const TextLayout block(text, m_Fonts);
  const double upper = Top - (block.Lines()[0].baseline + block.Lines()[0].ascent);
  const double lower = block.Lines()[1].baseline - block.Lines()[1].descent - Bottom;
  EXPECT_NEAR(upper, lower, Exact);
  EXPECT_GT(upper, 0);
  text.lineMode = 1;
  const TextLayout single(text, m_Fonts);
  EXPECT_NEAR(single.Lines()[0].baseline + single.Lines()[0].ascent, Top, Exact);
}

TEST_F(TextLayoutTest, lines_stand_one_leading_apart) {
  document::TextShape text = Paragraph(Frame, 0, JUSTIFY_LEFT, LINEFIT_EACH_LINE,
                                       {{Piece(L"a", 300)}, {Piece(L"b", 300)}});
  for (document::TextLine& line : text.lines) line.leading = 720;
  const TextLayout layout(text, m_Fonts);
  EXPECT_NEAR(layout.Lines()[0].baseline - layout.Lines()[1].baseline, 0.72 * PointsPerInch, Exact);
}

TEST_F(TextLayoutTest, runs_of_a_line_follow_each_other_on_one_base_line) {
  const TextLayout layout(Paragraph(Frame, 0, JUSTIFY_LEFT, LINEFIT_EACH_LINE,
                                    {{Piece(L"large", 500), Piece(L"small", 100)}}),
                          m_Fonts);
  ASSERT_EQ(layout.Runs().size(), 2U);
  EXPECT_NEAR(layout.Runs()[1].left, layout.Runs()[0].left + layout.Runs()[0].width, Exact);
  EXPECT_EQ(layout.Runs()[0].baseline, layout.Runs()[1].baseline);
}

TEST_F(TextLayoutTest, an_empty_line_is_as_high_as_the_one_before_it) {
  const TextLayout layout(Paragraph(Frame, 0, JUSTIFY_LEFT, LINEFIT_EACH_LINE,
                                    {{}, {Piece(L"a", 300)}, {}, {Piece(L"b", 300)}}),
                          m_Fonts);
  ASSERT_EQ(layout.Lines().size(), 4U);
  const auto distance = [&](std::size_t upper) {
    return layout.Lines()[upper].baseline - layout.Lines()[upper + 1].baseline;
  };
  EXPECT_GT(distance(0), 0);
  EXPECT_NEAR(distance(0), distance(1), Exact);
  EXPECT_NEAR(distance(1), distance(2), Exact);
}

TEST_F(TextLayoutTest, no_frame_and_no_size_leave_numbers) {
  for (const CWorldRect& frame :
       {CWorldRect{}, CWorldRect{5, 1, 1, 5}, CWorldRect{-1e308, 1e308, 1e308, -1e308},
        CWorldRect{1e300, 1e301, 1e302, 1e299}}) {
    for (const double size : {0.0, -1.0, 1e-300, 1e300}) {
      document::TextShape text =
          Paragraph(frame, 0, JUSTIFY_CENTER, LINEFIT_EACH_LINE, {{Piece(L"Mill", size)}});
      text.paragraph.leftMargin = 1e300;
      text.paragraph.topMargin = -1e300;
      const TextLayout layout(text, m_Fonts);
      const PlacedLine& line = layout.Lines()[0];
      for (const double value : {line.left, line.baseline, line.width, line.scaleX, line.scaleY}) {
        EXPECT_TRUE(std::isfinite(value)) << size;
      }
    }
  }
}

// Letters are counted in 32 bits of 1/1024 points by the layout library.
TEST_F(TextLayoutTest, a_line_of_very_many_or_very_large_letters_has_its_true_width) {
  const double one =
      TextLayout(Paragraph(Frame, 0, JUSTIFY_LEFT, LINEFIT_EACH_LINE, {{Piece(L"W", 500)}}),
                 m_Fonts)
          .Lines()[0]
          .natural;
  const std::wstring many(100'000, L'W');
  const TextLayout layout(
      Paragraph(Frame, 0, JUSTIFY_LEFT, LINEFIT_EACH_LINE, {{Piece(many, 500)}}), m_Fonts);
  EXPECT_NEAR(layout.Lines()[0].natural / one, 100'000, 1);
  EXPECT_NEAR(layout.Lines()[0].width, Right - Left, 1e-3);
  const TextLayout huge(
      Paragraph(Frame, 0, JUSTIFY_LEFT, LINEFIT_EACH_LINE, {{Piece(std::wstring(100, L'W'), 1e6)}}),
      m_Fonts);
  EXPECT_NEAR(huge.Lines()[0].natural / one, 100 * 1e6 / 500, 10);
}

TEST_F(TextLayoutTest, a_missing_font_is_laid_out_in_the_one_that_stands_in) {
  const TextLayout missing(Paragraph(Frame, 0, JUSTIFY_LEFT, LINEFIT_EACH_LINE,
                                     {{Piece(L"Mill", 500, L"No Such Font")}}),
                           m_Fonts);
  EXPECT_TRUE(missing.Runs()[0].face.replaced);
  EXPECT_EQ(missing.Runs()[0].face.family, "DejaVu Sans");
}

}  // namespace
}  // namespace rastrel::text
