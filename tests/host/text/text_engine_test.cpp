#include "host/text/text_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "host/document/document_file.h"
#include "host/text/font_dialog.h"
#include "tests/support/scripted_views.h"

namespace rastrel::text {
namespace {

using document::Document;
using document::DocumentStore;
using document::TextShape;
using host::ObjectHandle;

class TextEngineTest : public testing::Test {
 protected:
  void Open() {
    ParagraphInfo info;
    m_Engine.SetOpenParagraphInfo(info, 0);
    ASSERT_EQ(m_Engine.OpenParagraph(4, info, {0, 2000}, {4000, 0}), 0);
    m_Engine.GetCurParagraph(m_Current);
  }

  void Paste(const std::wstring& text) {
    m_Engine.edPasteString(text.c_str(), static_cast<int>(text.size()), 0, nullptr, false);
  }

  // Closes the paragraph and returns its text.
  TextShape Close() {
    ParagraphInfo info;
    m_Engine.SetOpenParagraphInfo(info, 0);
    m_Engine.CloseParagraph(1, info);
    const ParagraphEle element{info.first, info.second};
    const ObjectHandle object =
        m_Store.DBInsertElement(nullptr, DBTYPE_PARAGRAPH, &element, 0, 0, 0, 1, false);
    const document::Object* found = m_Document.Find(object);
    return found ? std::get<TextShape>(found->shape) : TextShape();
  }

  Document m_Document;
  DocumentStore m_Store{m_Document};
  document::Notices m_Notices;
  FontCatalog m_Fonts{m_Notices};
  TextEngine m_Engine{m_Store, m_Fonts, m_Notices};
  CurrentParagraph m_Current;
};

TEST_F(TextEngineTest, a_paragraph_opens_once_at_a_time) {
  Open();
  ParagraphInfo info;
  EXPECT_NE(m_Engine.OpenParagraph(4, info, {0, 2000}, {4000, 0}), 0);
  EXPECT_TRUE(m_Engine.IsOpen());
  m_Engine.CloseParagraph(0, info);
  EXPECT_FALSE(m_Engine.IsOpen());
  Open();
  EXPECT_TRUE(m_Engine.IsOpen());
}

TEST_F(TextEngineTest, corners_that_make_no_frame_open_nothing) {
  ParagraphInfo info;
  for (const auto& [first, second] : {std::pair{NewWorldPt{0, 0}, NewWorldPt{0, 100}},
                                      {{0, 0}, {100, 0}},
                                      {{NAN, 0}, {100, 100}},
                                      {{0, 0}, {INFINITY, 100}}}) {
    EXPECT_NE(m_Engine.OpenParagraph(4, info, first, second), 0);
    EXPECT_FALSE(m_Engine.IsOpen());
  }
}

TEST_F(TextEngineTest, the_frame_is_in_text_units_whichever_corners_were_given) {
  ParagraphInfo info;
  ASSERT_EQ(m_Engine.OpenParagraph(4, info, {4000, 100}, {1000, 2000}), 0);
  m_Engine.GetCurParagraph(m_Current);
  EXPECT_EQ(m_Engine.GetTextFrame(m_Current.paragraph), (CWorldRect{1000, 2000, 4000, 100}));
  EXPECT_EQ(m_Engine.GetTextFrame(nullptr), CWorldRect());
}

TEST_F(TextEngineTest, carriage_return_and_line_feed_begin_one_line) {
  Open();
  Paste(L"one\r\n");
  Paste(L"two\r\nthree");
  const TextShape text = Close();
  ASSERT_EQ(text.lines.size(), 3U);
  EXPECT_EQ(text.lines[0].runs.at(0).text, L"one");
  EXPECT_EQ(text.lines[2].runs.at(0).text, L"three");
}

TEST_F(TextEngineTest, a_closing_line_end_leaves_an_empty_line) {
  Open();
  Paste(L"one\r\n");
  const TextShape text = Close();
  ASSERT_EQ(text.lines.size(), 2U);
  EXPECT_TRUE(text.lines[1].runs.empty());
}

TEST_F(TextEngineTest, text_takes_the_style_that_is_current_when_it_is_pasted) {
  Open();
  m_Current.style->font = m_Engine.AddFont(0, host::FONTTYPE_TRUETYPE, L"DejaVuSans", -1, 1);
  m_Current.style->size = 500;
  m_Engine.SetTextColor(CVKColor(0x0000FF, COLORSPACE_RGB, 0, 0));
  Paste(L"red");
  m_Current.style->font = m_Engine.AddFont(0, host::FONTTYPE_TRUETYPE, L"No Such Font", -1, 1);
  m_Current.style->size = 250;
  Paste(L"other");
  const TextShape text = Close();
  ASSERT_EQ(text.lines.at(0).runs.size(), 2U);
  EXPECT_EQ(text.lines[0].runs[0].font, L"DejaVuSans");
  EXPECT_EQ(text.lines[0].runs[0].replacement, L"");
  EXPECT_TRUE(text.lines[0].runs[0].colored);
  EXPECT_EQ(text.lines[0].runs[1].size, 250);
  EXPECT_EQ(text.lines[0].runs[1].replacement, L"DejaVu Sans");
}

TEST_F(TextEngineTest, margins_that_the_library_writes_are_kept) {
  Open();
  m_Engine.SetTextLineJustifyMode(m_Current.paragraph, m_Current.lines, 2);
  m_Engine.SetTextLineJustification(m_Current.paragraph, m_Current.lines, JUSTIFY_CENTER);
  m_Current.paragraph->leftPercent = 220;
  m_Current.paragraph->leftMargin = 880;
  m_Engine.FitTextToFrame(m_Current.paragraph, m_Current.lines);
  Paste(L"one\r\ntwo");
  const TextShape text = Close();
  EXPECT_EQ(text.paragraph.leftPercent, 220);
  EXPECT_EQ(text.paragraph.leftMargin, 880);
  EXPECT_EQ(text.justifyMode, 2);
  for (const auto& line : text.lines) EXPECT_EQ(line.justification, JUSTIFY_CENTER);
}

TEST_F(TextEngineTest, a_value_that_is_no_number_becomes_none_in_the_document) {
  Open();
  m_Current.paragraph->leftMargin = NAN;
  m_Current.paragraph->topMargin = INFINITY;
  m_Current.line->leading = -INFINITY;
  m_Current.line->size = NAN;
  m_Current.style->size = NAN;
  Paste(L"text");
  const TextShape text = Close();
  EXPECT_EQ(text.paragraph.leftMargin, 0);
  EXPECT_EQ(text.paragraph.topMargin, 0);
  EXPECT_EQ(text.lines.at(0).leading, 0);
  EXPECT_EQ(text.lines[0].size, 0);
  EXPECT_EQ(text.lines[0].runs.at(0).size, 0);
  EXPECT_TRUE(document::ReadDocumentText(document::DocumentText(m_Document)));
}

TEST_F(TextEngineTest, a_paragraph_takes_its_limit_and_leaves_the_rest_out_with_one_message) {
  for (const std::size_t excess : {std::size_t{0}, std::size_t{1}}) {
    Open();
    Paste(std::wstring(MaximumParagraph - 1, L'x'));
    Paste(std::wstring(1 + excess, L'y'));
    const TextShape text = Close();
    std::size_t letters = 0;
    for (const auto& run : text.lines.at(0).runs) letters += run.text.size();
    EXPECT_EQ(letters, MaximumParagraph);
    EXPECT_EQ(m_Notices.Losses().size(), excess);
  }
}

TEST_F(TextEngineTest, a_paragraph_that_is_not_kept_leaves_nothing) {
  Open();
  Paste(L"text");
  ParagraphInfo info;
  m_Engine.SetOpenParagraphInfo(info, 0);
  m_Engine.CloseParagraph(0, info);
  const ParagraphEle element{info.first, info.second};
  EXPECT_EQ(m_Store.DBInsertElement(nullptr, DBTYPE_PARAGRAPH, &element, 0, 0, 0, 1, false), 0U);
}

TEST_F(TextEngineTest, new_text_goes_into_the_document_by_itself) {
  m_Engine.InitNewText(nullptr, {0, 0}, {4000, 2000}, 1);
  Paste(L"text");
  m_Engine.TerminateNewText(nullptr, 1);
  EXPECT_EQ(m_Document.Members(host::DocumentRoot),
            std::vector<ObjectHandle>{m_Engine.GetTerminateTextEditHI()});
  m_Engine.InitNewText(nullptr, {0, 0}, {4000, 2000}, 1);
  m_Engine.TerminateNewText(nullptr, 0);
  EXPECT_EQ(m_Engine.GetTerminateTextEditHI(), 0U);
  EXPECT_EQ(m_Document.ObjectCount(), 1U);
}

// Weight and italic as plate XML passes them (-1, 1), which has no replacement of its own.
TEST_F(TextEngineTest, a_missing_font_is_replaced_where_the_text_would_be_dropped) {
  const FontRecord* font = m_Engine.AddFont(0, host::FONTTYPE_TRUETYPE, L"No Such Font", -1, 1);
  ASSERT_NE(font, nullptr);
  EXPECT_EQ(static_cast<const Font*>(font)->replacement, L"DejaVu Sans");
  EXPECT_EQ(m_Engine.AddFont(0, host::FONTTYPE_TRUETYPE, L"", -1, 1), nullptr);
  EXPECT_EQ(m_Engine.AddFont(0, host::FONTTYPE_TRUETYPE, nullptr, -1, 1), nullptr);
  EXPECT_EQ(m_Notices.Texts().size(), 1U);
  EXPECT_EQ(m_Notices.Losses(), std::vector<std::wstring>{L"a text that names no font"});
}

TEST_F(TextEngineTest, a_missing_font_is_null_where_a_replacement_is_asked_for_next) {
  EXPECT_EQ(m_Engine.AddFont(0, host::FONTTYPE_TRUETYPE, L"No Such Font", 0, 0), nullptr);
  EXPECT_EQ(m_Engine.AddFont(0, host::FONTTYPE_TRUETYPE, L"", 0, 0), nullptr);
  EXPECT_NE(m_Engine.AddFont(0, host::FONTTYPE_TRUETYPE, L"DejaVuSans", 0, 0), nullptr);
  EXPECT_TRUE(m_Notices.Texts().empty());
}

TEST_F(TextEngineTest, without_anybody_to_ask_the_usual_font_is_chosen_with_a_note) {
  const auto replacement = m_Engine.NewFontReplacement(L"cr2");
  ASSERT_NE(replacement, nullptr);
  for (const wchar_t* name : {L"No Such Font", L""}) {
    EXPECT_EQ(replacement->GetReplacementFont(name, -1, -1), nullptr) << "nothing was chosen";
    const FontRecord* font = m_Engine.ChooseReplacementFont(*replacement, name, -1, -1);
    ASSERT_NE(font, nullptr);
    EXPECT_EQ(static_cast<const Font*>(font)->name, name);
    EXPECT_EQ(static_cast<const Font*>(font)->replacement, L"DejaVu Sans");
  }
  EXPECT_EQ(m_Notices.Texts(),
            (std::vector<std::wstring>{
                L"the font \"No Such Font\" can't be had; DejaVu Sans stands in for it",
                L"a text names no font; it is set in DejaVu Sans"}));
}

TEST_F(TextEngineTest, a_font_that_was_chosen_before_is_used_without_a_question) {
  ASSERT_TRUE(m_Fonts.Replace(L"No Such Font", L"DejaVu Serif Bold"));
  test::ScriptedViews views;
  m_Engine.SetDialogViews([&] { return &views; });
  const auto replacement = m_Engine.NewFontReplacement(L"cr2");
  EXPECT_EQ(m_Engine.AddFont(0, host::FONTTYPE_TRUETYPE, L"nosuchfont", 0, 0), nullptr);
  const FontRecord* font = replacement->GetReplacementFont(L"nosuchfont", -1, -1);
  ASSERT_NE(font, nullptr);
  EXPECT_EQ(static_cast<const Font*>(font)->replacement, L"DejaVu Serif Bold");
  EXPECT_EQ(m_Engine.ChooseReplacementFont(*replacement, L"nosuchfont", -1, -1), font);
  EXPECT_EQ(
      static_cast<const Font*>(m_Engine.AddFont(0, host::FONTTYPE_TRUETYPE, L"No Such Font", -1, 1))
          ->replacement,
      L"DejaVu Serif Bold");
  EXPECT_TRUE(views.m_Told.empty());
}

TEST_F(TextEngineTest, the_user_is_asked_once_for_a_font_and_the_answer_is_kept) {
  test::ScriptedViews views;
  m_Engine.SetDialogViews([&] { return &views; });
  const auto families = m_Fonts.Families();
  const auto serif = std::ranges::find(families, L"DejaVu Serif");
  ASSERT_NE(serif, families.end());
  views.m_OnTurn = [&](host::DialogLogic& dialog) {
    EXPECT_EQ(dialog.GetEntries(FontDialog::List), families);
    EXPECT_EQ(families.at(dialog.GetChosen(FontDialog::List)), L"DejaVu Sans");
    dialog.Choose(FontDialog::List, static_cast<std::size_t>(serif - families.begin()));
    dialog.Command(host::OkCommand);
  };
  const auto replacement = m_Engine.NewFontReplacement(L"cr2");
  const FontRecord* font = m_Engine.ChooseReplacementFont(*replacement, L"No Such Font", -1, -1);
  ASSERT_NE(font, nullptr);
  EXPECT_EQ(static_cast<const Font*>(font)->replacement, L"DejaVu Serif");
  EXPECT_EQ(replacement->GetReplacementFont(L"No Such Font", -1, -1), font);
  EXPECT_EQ(views.m_Told,
            (std::vector<std::string>{"make 1101",
                                      "text 1104 The font \"No Such Font\" is not on this machine.",
                                      "run", "end"}));
}

TEST_F(TextEngineTest, a_user_who_cancels_the_question_gets_no_font_and_it_is_reported) {
  test::ScriptedViews views;
  m_Engine.SetDialogViews([&] { return &views; });
  views.PressAt("run", host::CancelCommand);
  const auto replacement = m_Engine.NewFontReplacement(L"cr2");
  EXPECT_EQ(m_Engine.ChooseReplacementFont(*replacement, L"No Such Font", -1, -1), nullptr);
  views.m_Refuses = true;
  EXPECT_EQ(m_Engine.ChooseReplacementFont(*replacement, L"", -1, -1), nullptr);
  EXPECT_EQ(m_Notices.Losses(),
            (std::vector<std::wstring>{L"the font \"No Such Font\" can't be had",
                                       L"a text that names no font"}));
}

TEST_F(TextEngineTest, views_without_a_person_are_not_asked) {
  test::ScriptedViews views;
  views.m_CanAsk = false;
  m_Engine.SetDialogViews([&] { return &views; });
  const auto replacement = m_Engine.NewFontReplacement(L"cr2");
  EXPECT_NE(m_Engine.ChooseReplacementFont(*replacement, L"No Such Font", -1, -1), nullptr);
  EXPECT_TRUE(views.m_Told.empty());
}

TEST_F(TextEngineTest, missing_fonts_that_cancel_are_null_on_both_roads_unless_one_was_chosen) {
  ASSERT_TRUE(m_Fonts.Replace(L"Chosen Font", L"DejaVu Serif"));
  m_Engine.CancelMissingFonts(true);
  const auto replacement = m_Engine.NewFontReplacement(L"cr2");
  EXPECT_EQ(m_Engine.ChooseReplacementFont(*replacement, L"No Such Font", -1, -1), nullptr);
  EXPECT_EQ(m_Engine.AddFont(0, host::FONTTYPE_TRUETYPE, L"No Such Font", -1, 1), nullptr);
  EXPECT_NE(m_Engine.AddFont(0, host::FONTTYPE_TRUETYPE, L"Chosen Font", -1, 1), nullptr);
  EXPECT_NE(replacement->GetReplacementFont(L"Chosen Font", -1, -1), nullptr);
  EXPECT_EQ(m_Notices.Losses(),
            std::vector<std::wstring>{L"the font \"No Such Font\" can't be had"});
}

// An engraving font may have an outline font's name.
TEST_F(TextEngineTest, a_missing_engraving_font_stays_one_when_it_is_replaced) {
  EXPECT_EQ(m_Engine.AddFont(0, host::FONTTYPE_SHX, L"DejaVuSans", 0, 0), nullptr);
  const auto replacement = m_Engine.NewFontReplacement(L"cr2");
  const auto* font =
      static_cast<const Font*>(m_Engine.ChooseReplacementFont(*replacement, L"DejaVuSans", -1, -1));
  ASSERT_NE(font, nullptr);
  EXPECT_EQ(font->type, host::FONTTYPE_SHX);
  EXPECT_EQ(font->replacement, L"DejaVu Sans");
}

// "%d" of a piece has to name one value: a number and nothing else.
TEST_F(TextEngineTest, pieces_that_are_a_number_are_replaceable_and_nothing_else_is) {
  m_Engine.InitNewText(nullptr, {0, 0}, {4000, 2000}, 1);
  for (const wchar_t* piece :
       {L"1", L"2 Mill Lane", L"12\r\n", L"x", L"-1", L"123456789", L"1234567890", L" 3"}) {
    Paste(piece);
  }
  m_Engine.TerminateNewText(nullptr, 1);
  const ObjectHandle object = m_Engine.GetTerminateTextEditHI();
  ParagraphEle& paragraph = *m_Store.DBGetObjectElement(object)->GetParagraph();
  EXPECT_EQ(m_Engine.MakeReplaceableItemsListForParagraphEle(paragraph),
            (std::vector<int>{0, 2, 5}));
  EXPECT_EQ(m_Engine.GetTextParagraphEle(paragraph, 2), L"12");
  EXPECT_EQ(m_Engine.ReplaceTextParagraphEle(paragraph, 2, L"Ada\r\nLovelace"), 1);
  EXPECT_EQ(m_Engine.GetTextParagraphEle(paragraph, 2), L"Ada  Lovelace");
  EXPECT_EQ(m_Engine.MakeReplaceableItemsListForParagraphEle(paragraph), (std::vector<int>{0, 5}));
  EXPECT_EQ(std::get<TextShape>(m_Document.Find(object)->shape).lines.at(0).runs.at(2).text,
            L"Ada  Lovelace");
}

TEST_F(TextEngineTest, items_that_are_not_there_have_no_text_and_can_not_be_replaced) {
  m_Engine.InitNewText(nullptr, {0, 0}, {4000, 2000}, 1);
  Paste(L"1");
  m_Engine.TerminateNewText(nullptr, 1);
  ParagraphEle& paragraph =
      *m_Store.DBGetObjectElement(m_Engine.GetTerminateTextEditHI())->GetParagraph();
  for (const int item : {-1, 1, 1000}) {
    EXPECT_EQ(m_Engine.GetTextParagraphEle(paragraph, item), L"");
    EXPECT_EQ(m_Engine.ReplaceTextParagraphEle(paragraph, item, L"x"), 0);
  }
  EXPECT_EQ(m_Engine.ReplaceTextParagraphEle(paragraph, 0, nullptr), 0);
  ParagraphEle unknown{99, 1};
  EXPECT_TRUE(m_Engine.MakeReplaceableItemsListForParagraphEle(unknown).empty());
  EXPECT_EQ(m_Engine.ReplaceTextParagraphEle(unknown, 0, L"x"), 0);
  unknown = {99, 0};
  EXPECT_TRUE(m_Engine.MakeReplaceableItemsListForParagraphEle(unknown).empty());
}

TEST_F(TextEngineTest, the_text_of_an_item_is_at_most_128_characters) {
  for (const std::size_t length : {127U, 128U, 129U}) {
    m_Engine.InitNewText(nullptr, {0, 0}, {4000, 2000}, 1);
    Paste(std::wstring(length, L'x'));
    m_Engine.TerminateNewText(nullptr, 1);
    const ParagraphEle& paragraph =
        *m_Store.DBGetObjectElement(m_Engine.GetTerminateTextEditHI())->GetParagraph();
    EXPECT_EQ(m_Engine.GetTextParagraphEle(paragraph, 0).size(),
              std::min<std::size_t>(length, 128));
  }
}

TEST_F(TextEngineTest, the_paragraph_of_an_object_makes_no_second_object) {
  m_Engine.InitNewText(nullptr, {0, 0}, {4000, 2000}, 1);
  m_Engine.TerminateNewText(nullptr, 1);
  const ParagraphEle element =
      *m_Store.DBGetObjectElement(m_Engine.GetTerminateTextEditHI())->GetParagraph();
  EXPECT_EQ(m_Store.DBInsertElement(nullptr, DBTYPE_PARAGRAPH, &element, 0, 0, 0, 1, false), 0U);
}

TEST_F(TextEngineTest, new_text_is_on_the_page_on_show) {
  for (const int shown : {3, 0}) {
    m_Document.SetDisplayPage(shown);
    const int page = shown == 0 ? 1 : shown;
    m_Engine.InitNewText(nullptr, {0, 0}, {4000, 2000}, 1);
    m_Engine.TerminateNewText(nullptr, 1);
    EXPECT_EQ(m_Store.DBGetPageRange(m_Engine.GetTerminateTextEditHI()),
              (VK_PAGE_RANGE{page, page}));
    Open();
    Paste(L"text");
    ParagraphInfo info;
    m_Engine.SetOpenParagraphInfo(info, 0);
    m_Engine.CloseParagraph(1, info);
    const ParagraphEle element{info.first, info.second};
    EXPECT_EQ(m_Store.DBGetPageRange(
                  m_Store.DBInsertElement(nullptr, DBTYPE_PARAGRAPH, &element, 0, 0, 0, 1, false)),
              (VK_PAGE_RANGE{page, page}));
  }
}

TEST_F(TextEngineTest, new_text_in_a_frame_without_area_opens_nothing_and_says_so_once) {
  for (const auto& [first, second] : {std::pair{NewWorldPt{0, 0}, NewWorldPt{0, 100}},
                                      {{0, 0}, {100, 0}},
                                      {{0, 0}, {0, 0}},
                                      {{0, NAN}, {100, 100}}}) {
    m_Engine.InitNewText(nullptr, first, second, 1);
    m_Engine.GetCurParagraph(m_Current);
    EXPECT_EQ(m_Current.paragraph, nullptr);
    EXPECT_EQ(m_Current.lines, nullptr);
    EXPECT_EQ(m_Current.line, nullptr);
    EXPECT_EQ(m_Current.style, nullptr);
    Paste(L"text");
    m_Engine.TerminateNewText(nullptr, 1);
    EXPECT_EQ(m_Engine.GetTerminateTextEditHI(), 0U);
  }
  EXPECT_EQ(m_Notices.Losses(),
            std::vector<std::wstring>{L"a text frame without area holds no text"});
  EXPECT_EQ(m_Document.ObjectCount(), 0U);
}

TEST_F(TextEngineTest, a_text_that_a_cancelled_import_left_open_is_dropped_by_the_next) {
  m_Engine.InitNewText(nullptr, {0, 0}, {4000, 2000}, 1);
  Paste(L"given up");
  m_Engine.InitNewText(nullptr, {0, 0}, {1000, 500}, 1);
  Paste(L"next");
  m_Engine.TerminateNewText(nullptr, 1);
  const auto& text = std::get<TextShape>(m_Document.Find(m_Engine.GetTerminateTextEditHI())->shape);
  ASSERT_EQ(text.lines.at(0).runs.size(), 1U);
  EXPECT_EQ(text.lines[0].runs[0].text, L"next");

  m_Engine.InitNewText(nullptr, {0, 0}, {4000, 2000}, 1);
  Paste(L"given up");
  Open();
  Paste(L"paragraph");
  EXPECT_EQ(Close().lines.at(0).runs.at(0).text, L"paragraph");

  m_Engine.InitNewText(nullptr, {0, 0}, {4000, 2000}, 1);
  m_Engine.InitNewText(nullptr, {0, 0}, {0, 0}, 1);
  EXPECT_FALSE(m_Engine.IsOpen()) << "a frame without area ends the text before it, too";
  EXPECT_EQ(m_Document.ObjectCount(), 1U);
}

TEST_F(TextEngineTest, a_paragraph_that_is_open_keeps_new_text_from_opening) {
  Open();
  Paste(L"one");
  m_Engine.InitNewText(nullptr, {0, 0}, {1000, 500}, 1);
  Paste(L" and two");
  EXPECT_TRUE(m_Notices.Losses().empty());
  EXPECT_EQ(Close().lines.at(0).runs.size(), 2U);
}

TEST_F(TextEngineTest, nothing_of_a_text_is_left_in_a_new_document) {
  Open();
  Paste(L"closed");
  ParagraphInfo info;
  m_Engine.SetOpenParagraphInfo(info, 0);
  m_Engine.CloseParagraph(1, info);
  m_Engine.InitNewText(nullptr, {0, 0}, {4000, 2000}, 1);
  m_Engine.TerminateNewText(nullptr, 1);
  m_Engine.InitNewText(nullptr, {0, 0}, {4000, 2000}, 1);
  m_Engine.Clear();
  EXPECT_FALSE(m_Engine.IsOpen());
  EXPECT_EQ(m_Engine.GetTerminateTextEditHI(), 0U);
  const ParagraphEle element{info.first, info.second};
  EXPECT_EQ(m_Store.DBInsertElement(nullptr, DBTYPE_PARAGRAPH, &element, 0, 0, 0, 1, false), 0U);
}

TEST_F(TextEngineTest, nothing_happens_without_an_open_paragraph) {
  Paste(L"text");
  m_Engine.CloseParagraph(1, {});
  m_Engine.TerminateNewText(nullptr, 1);
  m_Engine.SetTextColor({});
  m_Engine.GetCurParagraph(m_Current);
  EXPECT_EQ(m_Current.paragraph, nullptr);
  EXPECT_EQ(m_Current.style, nullptr);
  EXPECT_EQ(m_Document.ObjectCount(), 0U);
}

}  // namespace
}  // namespace rastrel::text
