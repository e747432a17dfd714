#include "host/text/text_check.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/host/text/text_shapes.h"

namespace rastrel::text {
namespace {

using test::Paragraph;
using test::Piece;

// 4 by 2 inches.
constexpr CWorldRect Frame{0, 2 * 2.54, 4 * 2.54, 0};

class TextCheck : public testing::Test {
 protected:
  // A paragraph of one line, with side margins of 22 percent.
  static document::TextShape Line(const std::wstring& text, double size) {
    return Paragraph(Frame, 220, JUSTIFY_CENTER, LINEFIT_EACH_LINE, {{Piece(text, size)}});
  }
  std::optional<std::wstring> Missing(const document::TextShape& shape) {
    return MissingLettersNotice(shape, TextLayout(shape, m_Fonts));
  }
  std::optional<std::wstring> Invisible(const document::TextShape& shape, double scale = 1) {
    return InvisibleTextNotice(shape, TextLayout(shape, m_Fonts), scale);
  }

  document::Notices m_Notices;
  FontCatalog m_Fonts{m_Notices};
};

// U+E000 is private and U+10FFFF no character: no font has a picture for them.
TEST_F(TextCheck, characters_that_no_font_has_are_named_with_their_text_and_font) {
  EXPECT_EQ(
      Missing(Line(L"Ada \xE000\xE000\x10FFFF", 200)).value_or(L""),
      L"the text \"Ada \xE000\xE000\x10FFFF\" has characters that neither \"DejaVu Sans\" nor "
      L"another font has, and boxes stand in for them: U+E000, U+10FFFF");
  EXPECT_EQ(Missing(Line(L"Ada L\x00F6velace", 200)), std::nullopt);
}

TEST_F(TextCheck, many_missing_characters_are_counted_and_a_long_text_is_cut) {
  std::wstring text(60, L'a');
  for (wchar_t character = 0x10FF00; character < 0x10FF0C; ++character) text += character;
  const std::wstring notice = Missing(Line(text, 10)).value_or(L"");
  EXPECT_NE(notice.find(L"U+10FF07 and 4 more"), std::wstring::npos);
  EXPECT_NE(notice.find(L"\"" + std::wstring(40, L'a') + L"...\""), std::wstring::npos);
}

TEST_F(TextCheck, letters_of_size_0_can_not_be_seen) {
  EXPECT_EQ(Invisible(Line(L"Ada", 0)).value_or(L""),
            L"the text \"Ada\" has letters of the size 0, which can't be seen");
  EXPECT_NE(Invisible(Line(L"Ada", -200)), std::nullopt);
  EXPECT_EQ(Invisible(Line(L"  ", 0)), std::nullopt) << "nothing was to be seen";
}

TEST_F(TextCheck, a_text_on_a_circle_is_checked_as_any_other) {
  document::ArcTextShape arc;
  arc.radius = 1;
  arc.run = Piece(L"Ada\xE000", 200);
  EXPECT_EQ(MissingLettersNotice(arc, ArcLayout(arc, m_Fonts)).value_or(L""),
            L"the text \"Ada\xE000\" has characters that neither \"DejaVu Sans\" nor another font "
            L"has, and boxes stand in for them: U+E000");
  EXPECT_EQ(InvisibleTextNotice(arc, ArcLayout(arc, m_Fonts), 1), std::nullopt);
  EXPECT_EQ(UnreadableFontNotice(arc, ArcLayout(arc, m_Fonts)), std::nullopt);
  arc.run = Piece(L"Ada", 0);
  EXPECT_EQ(InvisibleTextNotice(arc, ArcLayout(arc, m_Fonts), 1).value_or(L""),
            L"the text \"Ada\" has letters of the size 0, which can't be seen");
}

// 0.1 mm are 3.937 thousandths of an inch.
TEST_F(TextCheck, letters_count_as_seen_from_a_tenth_of_a_millimetre) {
  EXPECT_EQ(Invisible(Line(L"Ada", 3.94)), std::nullopt);
  EXPECT_NE(Invisible(Line(L"Ada", 3.93)), std::nullopt);
  EXPECT_EQ(Invisible(Line(L"Ada", 3.93), 1.01), std::nullopt) << "its matrix makes it larger";
}

TEST_F(TextCheck, a_text_without_room_between_its_margins_can_not_be_seen) {
  const auto squeezed = [](int perMille) {
    return Paragraph(Frame, perMille, JUSTIFY_CENTER, LINEFIT_EACH_LINE, {{Piece(L"Ada", 300)}});
  };
  EXPECT_NE(Invisible(squeezed(500)), std::nullopt);
  EXPECT_EQ(Invisible(squeezed(220)), std::nullopt);
}

}  // namespace
}  // namespace rastrel::text
