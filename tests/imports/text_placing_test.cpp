// Text placing of the importers' base, and its use by the importer of plates.

#include "rastrel/imports/text_placing.h"

#include <gtest/gtest.h>

#include "rastrel/imports/xml_file_import.h"
#include "rastrel/imports/xml_import.h"
#include "tests/support/checked_host.h"
#include "tests/support/library_fixture.h"

namespace {

using rastrel::test::CheckedHost;
using Lines = rastrel::test::HostCalls::Lines;

/// An importer that has nothing of its own.
class Importer : public CXMLImport {
 public:
  Importer() : CXMLImport(nullptr) {}
  int ImportXMLFile() override { return 0; }
  void ClearPlates() override {}
  void* GetFirstPlate() override { return nullptr; }
  void* GetNextPlate() override { return nullptr; }
  bool IsTextOpen() const { return m_Text.isOpen; }
  void ForgetText() { m_Text.isOpen = false; }

 protected:
  bool ParseFile(const wchar_t*) override { return false; }
};

class TextPlacing : public ::testing::Test {
 protected:
  static constexpr NewWorldPt First{.x = 100, .y = 900};
  static constexpr NewWorldPt Second{.x = 2100, .y = 400};

  /// Opens a text, closes it again, and returns the calls to the host up to the closing.
  std::string Opening(const wchar_t* justification, const wchar_t* lineFit) {
    Importer importer;
    Calls().Clear();
    EXPECT_EQ(importer.StartAddText(First, Second, justification, lineFit), 1);
    std::string text = Calls().Text();
    EXPECT_NE(importer.StopAddText(), 0U);
    return text;
  }
  int LineFitOf(const wchar_t* lineFit) {
    const std::string text = Opening(nullptr, lineFit);
    const std::string field = "paragraph.lineFit = ";
    const std::size_t at = text.find(field);
    return at == std::string::npos ? LINEFIT_ALL_LINES : text[at + field.size()] - '0';
  }
  std::string JustificationOf(const wchar_t* justification) {
    Opening(justification, nullptr);
    return Calls().Of({"SetTextLineJustification"}).at(0);
  }
  rastrel::test::HostCalls& Calls() { return m_Host.m_Calls; }

  rastrel::test::LibraryRoot m_Library;
  std::size_t m_LogMark = m_Library.LogMark();
  CheckedHost m_Host;
};

TEST_F(TextPlacing, opens_a_paragraph_in_the_frame_without_margins) {
  EXPECT_EQ(Opening(nullptr, nullptr),
            "SetOpenParagraphInfo(0) -> (1 101)\n"
            "OpenParagraph(4, (1 101), (100 900), (2100 400)) -> 0\n"
            "GetCurParagraph()\n"
            "lines.mode = 4\n"
            "SetTextLineJustifyMode(paragraph, lines, 2)\n"
            "SetTextLineJustification(paragraph, lines, 0)\n"
            "paragraph.fit = 2\n"
            "paragraph.frameMode = 3\n");
}

TEST_F(TextPlacing, justification_is_one_of_three_words_spelled_exactly_so) {
  EXPECT_EQ(JustificationOf(L"Left"), "SetTextLineJustification(paragraph, lines, 0)");
  EXPECT_EQ(JustificationOf(L"Right"), "SetTextLineJustification(paragraph, lines, 1)");
  EXPECT_EQ(JustificationOf(L"Center"), "SetTextLineJustification(paragraph, lines, 2)");
  for (const wchar_t* other : {L"right", L"CENTER", L"Right ", L"", L"Middle"})
    EXPECT_EQ(JustificationOf(other), "SetTextLineJustification(paragraph, lines, 0)");
}

TEST_F(TextPlacing, line_fit_is_one_of_three_texts_and_all_lines_otherwise) {
  EXPECT_EQ(LineFitOf(L"Each Line Individually"), 0);
  EXPECT_EQ(LineFitOf(L"All Lines Equally"), 1);
  EXPECT_EQ(LineFitOf(L"Equal Height Lines"), 2);
  for (const wchar_t* other : {L"equal height lines", L"", L"Equal"})
    EXPECT_EQ(LineFitOf(other), 1);
  EXPECT_EQ(LineFitOf(nullptr), 1);
}

TEST_F(TextPlacing, a_paragraph_that_cannot_be_opened_leaves_no_text_open) {
  Calls().Next("OpenParagraph", {5});
  Importer importer;
  EXPECT_EQ(importer.StartAddText(First, Second, nullptr, nullptr), 0);
  EXPECT_FALSE(importer.IsTextOpen());
  wchar_t font[] = L"Arial.ttf";
  importer.AddText(font, 1, L"A");
  EXPECT_EQ(importer.StopAddText(), 0U);
  EXPECT_EQ(Calls().All().size(), 2U);
  EXPECT_STREQ(font, L"Arial.ttf");
}

TEST_F(TextPlacing, adds_text_in_a_font_and_cuts_its_name) {
  Importer importer;
  ASSERT_EQ(importer.StartAddText(First, Second, nullptr, nullptr), 1);
  Calls().Clear();
  wchar_t font[] = L"Script.fnt";
  importer.AddText(font, 0.3, L"Caf\u00E9");
  EXPECT_STREQ(font, L"Script");
  EXPECT_EQ(Calls().Text(),
            "AddFont(0, 5, \"Script\", -1, 1) -> F1\n"
            "style.font = F1\n"
            "style.size = 300\n"
            "edPasteString(\"Caf\xC3\xA9\", 4, 0, null, false)\n");
  importer.StopAddText();
}

TEST_F(TextPlacing, the_flag_stays_set_behind_the_end_until_the_caller_takes_it_back) {
  Importer importer;
  ASSERT_EQ(importer.StartAddText(First, Second, nullptr, nullptr), 1);
  EXPECT_EQ(importer.StopAddText(), 2U);
  EXPECT_TRUE(importer.IsTextOpen());
  importer.ForgetText();
  EXPECT_EQ(importer.StopAddText(), 0U);
}

TEST_F(TextPlacing, nothing_is_pasted_into_a_paragraph_that_has_ended) {
  Importer importer;
  ASSERT_EQ(importer.StartAddText(First, Second, nullptr, nullptr), 1);
  importer.StopAddText();
  Calls().Clear();
  wchar_t font[] = L"Arial.ttf";
  importer.AddText(font, 1, L"A");
  EXPECT_EQ(Calls().Text(), "");
  EXPECT_EQ(importer.CalcAbsoluteFromPercentLeftMargin(500), 0.0);
}

TEST_F(TextPlacing, margins_are_per_mille_of_the_frames_width) {
  Importer importer;
  ASSERT_EQ(importer.StartAddText(First, Second, nullptr, nullptr), 1);
  EXPECT_EQ(importer.CalcAbsoluteFromPercentLeftMargin(220), 440.0);
  EXPECT_EQ(importer.CalcAbsoluteFromPercentRightMargin(50), 100.0);
  EXPECT_EQ(importer.CalcAbsoluteFromPercentLeftMargin(0), 0.0);
  EXPECT_EQ(importer.CalcAbsoluteFromPercentLeftMargin(-50), -100.0);
  EXPECT_EQ(importer.CalcAbsoluteFromPercentRightMargin(1500), 2000.0);
  importer.StopAddText();
}

TEST_F(TextPlacing, a_margin_yields_to_the_one_on_the_other_side) {
  CXMLFileImport importer(nullptr);
  ASSERT_EQ(importer.StartAddText(First, Second, 40), 1);
  EXPECT_EQ(importer.CalcAbsoluteFromPercentLeftMargin(700), 1200.0);
  EXPECT_EQ(importer.CalcAbsoluteFromPercentRightMargin(700), 1200.0);
  EXPECT_EQ(importer.CalcAbsoluteFromPercentRightMargin(100), 200.0);
  EXPECT_NE(importer.StopAddText(), 0U);
}

TEST_F(TextPlacing, without_an_open_text_only_the_right_margin_asks_for_the_frame) {
  Importer importer;
  EXPECT_EQ(importer.CalcAbsoluteFromPercentLeftMargin(220), 0.0);
  EXPECT_EQ(Calls().Text(), "");
  EXPECT_EQ(importer.CalcAbsoluteFromPercentRightMargin(220), 0.0);
  EXPECT_EQ(Calls().Text(), "GetTextFrame(null) -> (0 0 0 0)\n");
}

TEST_F(TextPlacing, everything_fails_without_harm_when_the_host_has_no_text_engine) {
  m_Host.m_HasDocument = false;
  Importer importer;
  CXMLFileImport plates(nullptr);
  EXPECT_EQ(importer.StartAddText(First, Second, nullptr, nullptr), 0);
  EXPECT_EQ(plates.StartAddText(First, Second, 0), 0);
  EXPECT_EQ(importer.StopAddText(), 0U);
  EXPECT_EQ(importer.CalcAbsoluteFromPercentRightMargin(220), 0.0);
  EXPECT_EQ(Calls().Text(), "");
}

TEST_F(TextPlacing, a_font_type_cuts_the_callers_name) {
  Importer importer;
  CXMLFileImport plates(nullptr);
  wchar_t first[] = L"a.cff";
  wchar_t second[] = L"b.ft9";
  wchar_t* name = first;
  EXPECT_EQ(importer.GetFontType(&name), 9);
  EXPECT_STREQ(first, L"a");
  EXPECT_EQ(importer.GetFontType(&name), 2);
  name = second;
  EXPECT_EQ(plates.GetFontType(&name), 10);
  EXPECT_STREQ(second, L"b");
}

TEST_F(TextPlacing, the_importer_of_plates_centres_and_keeps_the_line_fit_of_the_engine) {
  CXMLFileImport importer(nullptr);
  ASSERT_EQ(importer.StartAddText(First, Second, 10), 1);
  EXPECT_TRUE(Calls().Has("SetTextLineJustification(paragraph, lines, 2)"));
  EXPECT_EQ(Calls().Text().find("lineFit"), std::string::npos);
  wchar_t font[] = L"Arial.ttf";
  importer.AddText(font, 0.5, L"A");
  EXPECT_EQ(importer.StopAddText(), 2U);
  EXPECT_EQ(Calls().Of({"edPasteString"}), (Lines{"edPasteString(\"A\", 1, 0, null, false)"}));
}

}  // namespace
