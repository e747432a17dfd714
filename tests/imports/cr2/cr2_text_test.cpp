// The text frames of first generation templates, call by call, from records made by hand.

#include <gtest/gtest.h>

#include "rastrel/imports/cr2/cr2_font.h"
#include "rastrel/imports/cr2/text_frames.h"
#include "tests/imports/cr2/build_transcript.h"
#include "tests/imports/template_fixture.h"

namespace {

using namespace rastrel::imports;
using namespace rastrel::test;

const std::string RedText = "RGB(255 0 0)";

/// A pane of 10.16 by 5.08 cm at the blank's corner, and a frame in its lower left corner of 2 by
/// 1 inches, which are 2000 by 1000 text units.
class Cr2Text : public TemplateTest {
 protected:
  Cr2Text()
      : m_Import(BeginTemplateImport({m_Host.m_Store, m_Host.m_Text, m_Host.m_Application},
                                     L"Crown Trophy XML")) {
    Calls().Clear();
    m_Frames.resize(1);
    m_Frames.front().placement = {
        .origin = 7, .x = 0, .y = 0, .width = 2, .height = 1, .constrained = false};
  }

  void AddText() { AddTextToPane(m_Import, m_Pane, m_Template, OutputFilter(m_Filter), m_Frames); }

  static CR2_SPAN Span(const std::wstring& text, const std::wstring& face = L"Arial") {
    CR2_SPAN span;
    span.font.face = face;
    span.font.size = 0.25;
    span.text = text;
    return span;
  }
  /// A block of lines of one span each, of the size 0.5 inch and a leading of 1.5.
  static CR2_TEXT Block(const std::vector<std::wstring>& lines) {
    CR2_TEXT text;
    text.font.size = 0.5;
    text.font.lineHeight = 1.5;
    text.font.justification = 2;
    for (const std::wstring& line : lines) text.lines.push_back({.spans = {Span(line)}});
    return text;
  }
  void AddBlock(const CR2_TEXT& block) { m_Frames.front().texts.push_back(block); }

  static std::string Opened() { return OpenedText("(0 0)", Corner(5.08, 2.54)); }
  /// Arial is asked for; it is the engine's first font.
  static std::string Arial() { return "AddFont(0, 2, \"Arial\", 0, 0) -> F1\n"; }
  static std::string Pasted(const std::string& text, int length) {
    return "edPasteString(\"" + text + "\", " + std::to_string(length) + ", 0, null, false)\n";
  }
  /// The block's sizes, as they are written in front of the next call.
  static std::string BlockSizes() {
    return "line.size = 500\nline.leading = 750\nstyle.size = 500\n";
  }
  static std::string Justified(int side = 2) {
    return "SetTextLineJustification(paragraph, lines, " + std::to_string(side) + ")\n";
  }
  static std::string Terminated() { return "TerminateNewText(null, 1)\n"; }
  /// The setting of a span's font, the first, when none was set.
  static std::string FontSet() { return "style.font = F1\nstyle.fontId = 1\nstyle.size = 250\n"; }

  TemplateImport m_Import;
  PanePlace m_Pane{.edges = {.left = 0, .top = 5.08, .right = 10.16, .bottom = 0}, .plate = 2};
  CR2_TEMPLATE m_Template;
  std::vector<std::unique_ptr<CVKColor>> m_Filter;
  std::vector<CR2_TEXT_FRAME> m_Frames;
};

TEST_F(Cr2Text, is_set_in_two_passes_fonts_first) {
  AddBlock(Block({L"PUMP 1", L"MAIN"}));
  AddText();
  EXPECT_EQ(Calls().Text(),
            Opened() + "lines.mode = 1\nparagraph.fit = 1\nparagraph.flags = 256\n" + BlockSizes() +
                Arial() + Arial() + Justified() + Arial() + FontSet() + Pasted("PUMP 1", 6) +
                Pasted("\\r\\n", 2) + Arial() + Pasted("MAIN", 4) + Terminated());
}

TEST_F(Cr2Text, a_further_block_begins_on_a_line_of_its_own_with_its_own_size_and_side) {
  AddBlock(Block({L"A"}));
  CR2_TEXT second = Block({L"B"});
  second.font.size = 1;
  second.font.lineHeight = 2;
  second.font.justification = 1;
  AddBlock(second);
  AddText();
  const std::string secondSizes = "line.size = 1000\nline.leading = 2000\nstyle.size = 1000\n";
  EXPECT_EQ(Calls().Text(), Opened() + LaidOutText() + BlockSizes() + Arial() + secondSizes +
                                Arial() + BlockSizes() + Justified() + Arial() + FontSet() +
                                Pasted("A", 1) + Pasted("\\r\\n", 2) + secondSizes + Justified(1) +
                                Arial() + "style.size = 250\n" + Pasted("B", 1) + Terminated());
}

TEST_F(Cr2Text, sizes_and_leadings_go_through_single_precision) {
  CR2_TEXT block = Block({L"A"});
  block.font.size = 0.1234567;
  block.font.lineHeight = 1.1;
  block.lines.front().spans.front().font.size = 0.0123456789;
  AddBlock(block);
  AddText();
  // The single precision numbers next to 123.4567, 1.1 and 12.3456789.
  EXPECT_TRUE(Calls().Has("line.size = 123.45670318603516"));
  EXPECT_TRUE(Calls().Has("line.leading = " + TextOf(123.45670318603516 * 1.100000023841858)));
  EXPECT_TRUE(Calls().Has("style.size = " + TextOf(12.34567928314209)));
}

TEST_F(Cr2Text, several_spans_of_a_line_follow_each_other) {
  CR2_TEXT block = Block({L"A"});
  block.lines.front().spans.push_back(Span(L"B", L"Times"));
  block.lines.front().spans.back().font.style = L"Bold";
  AddBlock(block);
  AddText();
  const std::string times = "AddFont(0, 2, \"Times Bold\", 0, 0) -> F2\n";
  EXPECT_EQ(Calls().Text(), Opened() + LaidOutText() + BlockSizes() + Arial() + times +
                                Justified() + Arial() + FontSet() + Pasted("A", 1) + times +
                                "style.font = F2\nstyle.fontId = 2\n" + Pasted("B", 1) +
                                Terminated());
}

TEST_F(Cr2Text, an_empty_span_pastes_one_blank) {
  AddBlock(Block({L"", L"&#65536;x"}));
  AddText();
  EXPECT_EQ(Calls().Of({"edPasteString"}),
            (HostCalls::Lines{"edPasteString(\" \", 1, 0, null, false)",
                              "edPasteString(\"\\r\\n\", 2, 0, null, false)",
                              "edPasteString(\" \", 1, 0, null, false)"}));
}

TEST_F(Cr2Text, references_are_replaced_and_pairs_of_surrogates_joined) {
  AddBlock(Block({L"&#65; &amp; &#x41;", L"&#55357;&#56832;", L"&#55357;!"}));
  AddText();
  EXPECT_TRUE(Calls().Has("edPasteString(\"A & A\", 5, 0, null, false)"));
  EXPECT_TRUE(Calls().Has("edPasteString(\"\U0001F600\", 1, 0, null, false)"));
  EXPECT_TRUE(Calls().Has("edPasteString(\"\uFFFD!\", 2, 0, null, false)"));
}

TEST_F(Cr2Text, long_spans_and_faces_are_taken_whole) {
  for (const std::size_t length : {127U, 128U, 129U, 255U, 256U, 257U, 100'000U}) {
    Calls().Clear();
    m_Frames.front().texts = {Block({std::wstring(length, L'x')})};
    m_Frames.front().texts[0].lines[0].spans[0].font.face = std::wstring(length, L'f');
    AddText();
    EXPECT_TRUE(Calls().Has("edPasteString(\"" + std::string(length, 'x') + "\", " +
                            std::to_string(length) + ", 0, null, false)"))
        << length;
    EXPECT_EQ(Calls().Of({"AddFont"}).front().find(std::string(length, 'f')),
              std::string("AddFont(0, 2, \"").size())
        << length;
  }
}

TEST_F(Cr2Text, a_span_with_a_fill_color_sets_it_after_the_palette_has_it) {
  CR2_TEXT block = Block({L"A"});
  block.lines.front().spans.front().font.colors.fill =
      std::make_unique<CVKColor>(0x0000FF, COLORSPACE_RGB, 0, 0);
  AddBlock(block);
  AddText();
  const std::string calls = Calls().Text();
  EXPECT_NE(calls.find(Arial() + FontSet() + "IsColorInPalette(" + RedText +
                       ") -> 0\nAddColorToPalette(" + RedText + ") -> 1\nSetTextColor(" + RedText +
                       ")\n" + Pasted("A", 1)),
            std::string::npos)
      << calls;
}

TEST_F(Cr2Text, a_span_whose_fill_is_filtered_out_is_skipped_and_its_line_stays) {
  CR2_TEXT block = Block({L"A", L"B"});
  block.lines.front().spans.front().font.colors.fill =
      std::make_unique<CVKColor>(0x0000FF, COLORSPACE_RGB, 0, 0);
  m_Filter.push_back(std::make_unique<CVKColor>(0x0000FF, COLORSPACE_RGB, 0, 0));
  AddBlock(block);
  AddText();
  EXPECT_EQ(Calls().Count("AddFont"), 3U) << "two set up, one used";
  EXPECT_EQ(Calls().Of({"edPasteString", "SetTextColor"}),
            (HostCalls::Lines{"edPasteString(\"\\r\\n\", 2, 0, null, false)",
                              "edPasteString(\"B\", 1, 0, null, false)"}));
}

TEST_F(Cr2Text, a_missing_font_is_replaced_by_the_one_chosen_before) {
  m_Host.m_Text.m_MissingFonts = {L"Arial"};
  Calls().Always("GetReplacementFont", 1);
  AddBlock(Block({L"A"}));
  AddText();
  const std::string asked =
      "AddFont(0, 2, \"Arial\", 0, 0) -> none\nGetReplacementFont(\"Arial\", -1, -1) -> F900\n";
  EXPECT_EQ(Calls().Text(), Opened() + LaidOutText() + BlockSizes() + asked + Justified() + asked +
                                "style.font = F900\nstyle.fontId = 900\nstyle.size = 250\n" +
                                Pasted("A", 1) + Terminated());
  EXPECT_FALSE(m_Import.cancelled);
}

TEST_F(Cr2Text, a_missing_font_without_a_replacement_is_asked_for) {
  m_Host.m_Text.m_MissingFonts = {L"Arial"};
  Calls().Always("ChooseReplacementFont", 1);
  AddBlock(Block({L"A"}));
  AddText();
  EXPECT_EQ(
      Calls().Of({"AddFont", "GetReplacementFont", "ChooseReplacementFont"}),
      (HostCalls::Lines{
          "AddFont(0, 2, \"Arial\", 0, 0) -> none", "GetReplacementFont(\"Arial\", -1, -1) -> none",
          "ChooseReplacementFont(\"Arial\", -1, -1) -> F901",
          "AddFont(0, 2, \"Arial\", 0, 0) -> none", "GetReplacementFont(\"Arial\", -1, -1) -> none",
          "ChooseReplacementFont(\"Arial\", -1, -1) -> F901"}));
  EXPECT_TRUE(Calls().Has("style.font = F901"));
}

TEST_F(Cr2Text, a_span_without_a_face_goes_to_the_replacement_road) {
  m_Host.m_Text.m_MissingFonts = {L""};
  Calls().Always("GetReplacementFont", 1);
  CR2_TEXT block = Block({L"A"});
  block.font.face = L"Arial";
  block.lines.front().spans.front().font.face = L"";
  AddBlock(block);
  AddText();
  EXPECT_EQ(Calls().Of({"AddFont", "GetReplacementFont"}).front(),
            "AddFont(0, 2, \"\", 0, 0) -> none");
  EXPECT_TRUE(Calls().Has("GetReplacementFont(\"\", -1, -1) -> F900"));
}

TEST_F(Cr2Text, a_frame_that_the_host_opens_no_text_in_is_passed_over) {
  AddBlock(Block({L"A"}));
  m_Frames.push_back(m_Frames.front());
  Calls().Next("InitNewText", {0});
  AddText();
  EXPECT_EQ(Calls().Of({"InitNewText", "GetCurParagraph", "edPasteString", "TerminateNewText"}),
            (HostCalls::Lines{
                "InitNewText(null, (0 0), " + Corner(5.08, 2.54) + ", 1)", "GetCurParagraph()",
                "InitNewText(null, (0 0), " + Corner(5.08, 2.54) + ", 1)", "GetCurParagraph()",
                "edPasteString(\"A\", 1, 0, null, false)", "TerminateNewText(null, 1)"}));
}

TEST_F(Cr2Text, a_frame_whose_text_lacks_a_record_is_passed_over) {
  using Current = CurrentParagraph;
  AddBlock(Block({L"A"}));
  for (const std::function<void(Current&)>& withhold : {
           std::function<void(Current&)>([](Current& now) { now.paragraph = nullptr; }),
           std::function<void(Current&)>([](Current& now) { now.lines = nullptr; }),
           std::function<void(Current&)>([](Current& now) { now.line = nullptr; }),
           std::function<void(Current&)>([](Current& now) { now.style = nullptr; }),
       }) {
    m_Host.m_Text.m_Withhold = withhold;
    AddText();
    EXPECT_FALSE(Calls().Has("edPasteString(\"A\", 1, 0, null, false)"));
  }
  m_Host.m_Text.m_Withhold = nullptr;
  AddText();
  EXPECT_TRUE(Calls().Has("edPasteString(\"A\", 1, 0, null, false)"));
}

TEST_F(Cr2Text, a_frame_without_blocks_is_an_empty_text) {
  AddText();
  EXPECT_EQ(Calls().Text(), Opened() + LaidOutText() + Terminated());
}

TEST_F(Cr2Text, a_block_without_lines_sets_no_size) {
  AddBlock(Block({}));
  AddBlock(Block({}));
  AddText();
  EXPECT_EQ(Calls().Text(), Opened() + LaidOutText() + Pasted("\\r\\n", 2) + Terminated());
}

TEST_F(Cr2Text, a_frame_without_a_placement_asks_for_the_document_s_origin) {
  m_Frames.front().placement = {};
  Calls().Always("GetOrigin", 1);
  AddText();
  const std::string calls = Calls().Text();
  EXPECT_TRUE(calls.starts_with("GetOrigin() -> 1\nInitNewText(null, " + Corner(0, 5.08) + ", " +
                                Corner(0, 5.08) + ", 1)\n"))
      << calls;
}

TEST_F(Cr2Text, without_a_view_such_a_frame_is_at_the_blank_s_corner) {
  m_Frames.front().placement = {};
  m_Host.m_Application.m_HasView = false;
  m_Template.margins = {.left = 1, .top = 2, .right = 0, .bottom = 0};
  AddText();
  EXPECT_EQ(Calls().Of({"InitNewText"}),
            (HostCalls::Lines{"InitNewText(null, " + Corner(2.54, 5.08) + ", " +
                              Corner(2.54, 5.08) + ", 1)"}));
}

TEST_F(Cr2Text, of_a_pane_on_a_further_page_is_moved_there) {
  m_Pane = {.edges = m_Pane.edges, .plate = m_Host.m_Store.Make(0, false), .isNamed = true};
  m_Host.m_Store.Find(m_Pane.plate)->pages = {.first = 3, .last = 3};
  AddText();
  const std::string calls = Calls().Text();
  EXPECT_TRUE(
      calls.ends_with("TerminateNewText(null, 1)\nGetTerminateTextEditHI() -> #3\n"
                      "DBGetPageRange(#2) -> 3..3\nDBSetPageRange(#3, 3..3)\n"))
      << calls;
}

/// A host whose text a cancelled import leaves open.
class CancelledText : public ::testing::Test {
 protected:
  LibraryRoot m_Library;
  std::size_t m_LogMark = m_Library.LogMark();
  RecordingHost m_Host;
};

TEST_F(CancelledText, ends_at_the_font_that_is_refused_and_closes_nothing) {
  TemplateImport import = BeginTemplateImport({m_Host.m_Store, m_Host.m_Text, m_Host.m_Application},
                                              L"Crown Trophy XML");
  m_Host.m_Text.m_MissingFonts = {L"Gone"};
  CR2_TEXT_FRAME frame;
  frame.placement = {.origin = 7, .x = 0, .y = 0, .width = 2, .height = 1, .constrained = false};
  frame.texts.resize(1);
  CR2_SPAN span;
  span.font.face = L"Gone";
  frame.texts.front().lines.push_back({.spans = {span, span}});
  m_Host.m_Calls.Clear();
  AddTextToPane(import, {}, {}, OutputFilter(), {frame, frame});
  EXPECT_TRUE(import.cancelled);
  EXPECT_EQ(m_Host.m_Calls.Of({"InitNewText", "AddFont", "GetReplacementFont",
                               "ChooseReplacementFont", "edPasteString", "TerminateNewText"}),
            (HostCalls::Lines{"InitNewText(null, (0 0), " + Corner(5.08, 2.54) + ", 1)",
                              "AddFont(0, 2, \"Gone\", 0, 0) -> none",
                              "GetReplacementFont(\"Gone\", -1, -1) -> none",
                              "ChooseReplacementFont(\"Gone\", -1, -1) -> none"}));
  EXPECT_EQ(m_Host.LeftOpen(), (std::vector<std::string>{"new text"}));
}

TEST_F(CancelledText, ends_too_on_a_host_that_replaces_no_fonts_and_the_log_says_so_once) {
  m_Host.m_Calls.Always("NewFontReplacement", 0);
  TemplateImport import = BeginTemplateImport({m_Host.m_Store, m_Host.m_Text, m_Host.m_Application},
                                              L"Crown Trophy XML");
  m_Host.m_Text.m_MissingFonts = {L"Gone"};
  CR2_FONT_SPEC font;
  font.face = L"Gone";
  EXPECT_EQ(ResolveFont(import, font, FontTable::Cr2), nullptr);
  EXPECT_EQ(ResolveFont(import, font, FontTable::Cr2), nullptr);
  EXPECT_TRUE(import.cancelled);
  EXPECT_EQ(m_Library.LogTextsBehind(m_LogMark), "[Import] the host replaces no fonts\r\n");
}

FontRequest Request(const std::wstring& face, const std::wstring& style = {},
                    FontTable table = FontTable::Cr2) {
  CR2_FONT_SPEC font;
  font.face = face;
  font.style = style;
  return FontOf(font, table);
}

TEST(FontOf, a_family_has_its_style_after_a_blank) {
  EXPECT_EQ(Request(L"Arial").name, L"Arial");
  EXPECT_EQ(Request(L"Arial", L"Bold Italic").name, L"Arial Bold Italic");
  EXPECT_EQ(Request(L"Arial", L"Bold").type, 2);
  EXPECT_EQ(Request(L"", L"Bold").name, L" Bold");
}

TEST(FontOf, a_face_of_5_characters_with_a_dot_before_three_is_a_file) {
  EXPECT_EQ(Request(L".shx", L"Bold").name, L".shx Bold") << "too short";
  EXPECT_EQ(Request(L"a.shx", L"Bold").name, L"a");
  EXPECT_EQ(Request(L"a.shx").type, 13);
  EXPECT_EQ(Request(L"ab.SHX").type, 13);
  EXPECT_EQ(Request(L"abc.1c", L"x").name, L"abc.1c x") << "the dot is not before three";
  EXPECT_EQ(Request(L"abc.ttfx", L"x").name, L"abc.ttfx x");
}

TEST(FontOf, a_file_is_cut_at_its_last_dot) {
  EXPECT_EQ(Request(L"a.b.x").name, L"a.b") << "two dots";
  EXPECT_EQ(Request(L"Roman.chr").type, 15);
  EXPECT_EQ(Request(L"Roman.CHR").type, 2);
  EXPECT_EQ(Request(L"Roman.chr", {}, FontTable::Zml).type, 2);
  EXPECT_EQ(Request(L"Roman.cff", {}, FontTable::Zml).type, 14);
}

}  // namespace
