#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "host/document/document_store.h"
#include "host/text/pango_letters.h"
#include "host/text/text_engine.h"
#include "host/text/text_layout.h"
#include "tests/host/text/text_shapes.h"

// Texts whose style, leading, side or direction changes on the way, as templates of spans make
// them.
namespace rastrel::text {
namespace {

using document::TextShape;
using test::Paragraph;
using test::Piece;

constexpr CWorldRect Frame{2.54, 3 * 2.54, 5 * 2.54, 2.54};
constexpr double Left = 72, Right = 5 * 72, Top = 3 * 72, PointsPerInch = 72;
constexpr double Exact = 1e-6;

class MixedText : public testing::Test {
 protected:
  // The order in which the runs of one line are seen, by their texts.
  std::vector<std::wstring> Seen(const std::vector<document::TextRun>& runs) {
    const TextLayout layout(Paragraph(Frame, 0, JUSTIFY_LEFT, LINEFIT_EACH_LINE, {runs}), m_Fonts);
    std::vector<PlacedRun> placed = layout.Runs();
    std::ranges::sort(placed, {}, &PlacedRun::left);
    std::vector<std::wstring> texts;
    double left = Left;
    for (const PlacedRun& run : placed) {
      EXPECT_NEAR(run.left, left, Exact) << "each begins where the one before it ends";
      left += run.width * run.scaleX;
      texts.push_back(run.text);
    }
    return texts;
  }

  document::Notices m_Notices;
  FontCatalog m_Fonts{m_Notices};
};

// A block with spans as a template builds it: fonts, sizes and colors change within the first line,
// side and leading with the second block.
TEST_F(MixedText, a_new_text_keeps_each_change_of_style_from_where_it_is_made) {
  document::Document document;
  document::DocumentStore store(document);
  TextEngine engine(store, m_Fonts, m_Notices);
  engine.InitNewText(nullptr, {0, 0}, {4000, 2000}, 1);
  CurrentParagraph now;
  engine.GetCurParagraph(now);
  const auto paste = [&](const wchar_t* font, double size, const std::wstring& text) {
    now.style->font = engine.AddFont(0, host::FONTTYPE_TRUETYPE, font, 0, 0);
    now.style->size = size;
    engine.edPasteString(text.c_str(), static_cast<int>(text.size()), 0, nullptr, false);
  };
  engine.SetTextLineJustifyMode(now.paragraph, now.lines, 2);
  now.line->size = 500;
  now.line->leading = 600;
  engine.SetTextLineJustification(now.paragraph, now.lines, JUSTIFY_LEFT);
  paste(L"DejaVuSans", 500, L"plain ");
  engine.SetTextColor(CVKColor(0x0000FF, COLORSPACE_RGB, 0, 0));
  paste(L"DejaVuSerif-Bold", 250, L"bold");
  paste(L"DejaVuSans", 500, L"\r\n");
  paste(L"DejaVuSans", 500, L"second");
  paste(L"DejaVuSans", 500, L"\r\n");
  now.line->size = 300;
  now.line->leading = 900;
  engine.SetTextLineJustification(now.paragraph, now.lines, JUSTIFY_RIGHT);
  paste(L"DejaVuSans", 300, L"right");
  engine.TerminateNewText(nullptr, 1);

  const auto& text = std::get<TextShape>(document.Find(engine.GetTerminateTextEditHI())->shape);
  ASSERT_EQ(text.lines.size(), 3U);
  ASSERT_EQ(text.lines[0].runs.size(), 2U);
  EXPECT_FALSE(text.lines[0].runs[0].colored);
  EXPECT_EQ(text.lines[0].runs[1].font, L"DejaVuSerif-Bold");
  EXPECT_EQ(text.lines[0].runs[1].size, 250);
  EXPECT_TRUE(text.lines[0].runs[1].colored);
  EXPECT_TRUE(text.lines[1].runs.at(0).colored) << "the color stays until another is set";
  EXPECT_EQ(text.lines[0].justification, JUSTIFY_LEFT);
  EXPECT_EQ(text.lines[1].justification, JUSTIFY_LEFT);
  EXPECT_EQ(text.lines[2].justification, JUSTIFY_RIGHT);
  EXPECT_EQ(text.lines[1].leading, 600);
  EXPECT_EQ(text.lines[2].leading, 900);
  EXPECT_EQ(text.lines[2].size, 300);

  const TextLayout layout(text, m_Fonts);
  EXPECT_NEAR(layout.Lines()[0].left, 0, Exact);
  EXPECT_NEAR(layout.Lines()[2].left + layout.Lines()[2].width, 4 * PointsPerInch, Exact);
}

TEST_F(MixedText, a_color_is_not_kept_for_the_next_text) {
  document::Document document;
  document::DocumentStore store(document);
  TextEngine engine(store, m_Fonts, m_Notices);
  for (const bool colored : {true, false}) {
    engine.InitNewText(nullptr, {0, 0}, {4000, 2000}, 1);
    if (colored) engine.SetTextColor(CVKColor(0x0000FF, COLORSPACE_RGB, 0, 0));
    engine.edPasteString(L"a", 1, 0, nullptr, false);
    engine.TerminateNewText(nullptr, 1);
    const auto& text = std::get<TextShape>(document.Find(engine.GetTerminateTextEditHI())->shape);
    EXPECT_EQ(text.lines.at(0).runs.at(0).colored, colored);
  }
}

// A leading is a length from base line to base line: 1.2 times a size of 500, or 600 as it is. The
// letters of a larger span do not move the lines.
TEST_F(MixedText, a_leading_is_kept_whatever_the_size_of_the_letters) {
  TextShape text = Paragraph(Frame, 0, JUSTIFY_LEFT, LINEFIT_EACH_LINE,
                             {{Piece(L"a", 200)},
                              {Piece(L"b", 200), Piece(L"c", 500)},
                              {Piece(L"d", 100, L"DejaVuSerif")}});
  text.lineMode = 1;
  text.lines[0].leading = 5000;
  text.lines[1].leading = 600;
  text.lines[2].leading = 450;
  const TextLayout layout(text, m_Fonts);
  const auto& lines = layout.Lines();
  EXPECT_NEAR(lines[0].baseline + lines[0].ascent, Top, Exact) << "the first line is at the top";
  EXPECT_NEAR(lines[0].baseline - lines[1].baseline, 0.6 * PointsPerInch, Exact);
  EXPECT_NEAR(lines[1].baseline - lines[2].baseline, 0.45 * PointsPerInch, Exact);
}

TEST_F(MixedText, lines_without_a_leading_follow_without_a_gap) {
  TextShape text = Paragraph(Frame, 0, JUSTIFY_LEFT, LINEFIT_EACH_LINE,
                             {{Piece(L"a", 200)}, {Piece(L"b", 500)}, {Piece(L"c", 100)}});
  text.lines[1].leading = -600;
  text.lines[2].leading = 600;
  text.lines[2].spacingKind = 1;  // not a length
  const TextLayout layout(text, m_Fonts);
  const auto& lines = layout.Lines();
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_NEAR(lines[i].baseline - lines[i].descent, lines[i + 1].baseline + lines[i + 1].ascent,
                Exact);
  }
}

TEST_F(MixedText, a_text_that_its_leading_makes_too_high_becomes_smaller_with_it) {
  TextShape text = Paragraph(Frame, 0, JUSTIFY_LEFT, LINEFIT_EACH_LINE,
                             {{Piece(L"a", 300)}, {Piece(L"b", 300)}, {Piece(L"c", 300)}});
  for (auto& line : text.lines) line.leading = 1500;
  const TextLayout layout(text, m_Fonts);
  const auto& lines = layout.Lines();
  EXPECT_NEAR(lines[0].baseline + lines[0].ascent - lines[2].baseline + lines[2].descent,
              2 * PointsPerInch, Exact)
      << "as high as the frame";
  EXPECT_NEAR(lines[0].baseline - lines[1].baseline, 1.5 * PointsPerInch * lines[0].scaleY, Exact);
}

TEST_F(MixedText, each_line_is_on_its_own_side) {
  TextShape text = Paragraph(Frame, 0, JUSTIFY_LEFT, LINEFIT_EACH_LINE,
                             {{Piece(L"left", 200)}, {Piece(L"right", 200)}, {Piece(L"mid", 200)}});
  text.lines[1].justification = JUSTIFY_RIGHT;
  text.lines[2].justification = JUSTIFY_CENTER;
  const TextLayout layout(text, m_Fonts);
  const auto& lines = layout.Lines();
  EXPECT_NEAR(lines[0].left, Left, Exact);
  EXPECT_NEAR(lines[1].left + lines[1].width, Right, Exact);
  EXPECT_NEAR(lines[2].left + lines[2].width / 2, (Left + Right) / 2, Exact);
}

const std::wstring Shalom = L"\x5E9\x5DC\x5D5\x5DD";
const std::wstring Tov = L"\x5D8\x5D5\x5D1";

// By hand: runs to be read from the right are seen from the left in the other order.
TEST_F(MixedText, runs_that_are_read_from_the_right_are_seen_from_the_right) {
  const auto run = [](const std::wstring& text) { return Piece(text, 100); };
  EXPECT_EQ(Seen({run(Shalom), run(Tov)}), (std::vector{Tov, Shalom}));
  EXPECT_EQ(Seen({run(L"one "), run(Shalom), run(Tov), run(L" two")}),
            (std::vector<std::wstring>{L"one ", Tov, Shalom, L" two"}));
  EXPECT_EQ(Seen({run(Shalom), run(L"one "), run(L"two"), run(Tov)}),
            (std::vector<std::wstring>{Tov, L"one ", L"two", Shalom}));
}

TEST_F(MixedText, runs_without_a_direction_follow_those_round_them_or_the_line) {
  const auto run = [](const std::wstring& text) { return Piece(text, 100); };
  EXPECT_EQ(Seen({run(L"one "), run(Shalom), run(L" - "), run(Tov)}),
            (std::vector<std::wstring>{L"one ", Tov, L" - ", Shalom}));
  EXPECT_EQ(Seen({run(L"one "), run(Shalom), run(L" !")}),
            (std::vector<std::wstring>{L"one ", Shalom, L" !"}));
  EXPECT_EQ(Seen({run(Shalom), run(L" !")}), (std::vector<std::wstring>{L" !", Shalom}));
  EXPECT_EQ(Seen({run(L"- "), run(Shalom)}), (std::vector<std::wstring>{Shalom, L"- "}));
}

TEST_F(MixedText, runs_that_are_read_from_the_left_stay_in_their_order) {
  const auto run = [](const std::wstring& text) { return Piece(text, 100); };
  EXPECT_EQ(Seen({run(L"one"), run(L" - "), run(L"two")}),
            (std::vector<std::wstring>{L"one", L" - ", L"two"}));
  EXPECT_EQ(Seen({run(L" - "), run(L"12")}), (std::vector<std::wstring>{L" - ", L"12"}));
}

TEST_F(MixedText, the_direction_of_a_text_is_that_of_its_first_letter_with_one) {
  EXPECT_EQ(DirectionOf(L"one"), Direction::LeftToRight);
  EXPECT_EQ(DirectionOf(L" - one " + Shalom), Direction::LeftToRight);
  EXPECT_EQ(DirectionOf(L"12 " + Shalom), Direction::RightToLeft);
  EXPECT_EQ(DirectionOf(L" -12."), Direction::None);
  EXPECT_EQ(DirectionOf(L""), Direction::None);
}

}  // namespace
}  // namespace rastrel::text
