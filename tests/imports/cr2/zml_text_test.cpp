// The text and the variables of second generation templates, call by call.

#include <gtest/gtest.h>

#include "rastrel/imports/cr2/load_graphic.h"
#include "rastrel/imports/cr2/text_frames.h"
#include "rastrel/imports/cr2/text_variables.h"
#include "tests/imports/cr2/zml_fixture.h"

namespace {

using namespace rastrel::imports;
using namespace rastrel::test;

/// A text frame of 2 by 1 cm on the pane.
class ZmlText : public ZmlBuild {
 protected:
  ZmlText() : m_Import(Begin()) {
    m_Pane = {.edges = {.left = 0, .top = 4, .right = 8, .bottom = 0},
              .plate = m_Host.m_Store.Make(0, false)};
    m_Host.m_Store.Find(2)->pages = {.first = 2, .last = 3};
    m_Host.m_Store.Find(2)->sheetLayer = 7;
    m_Frames.resize(1);
    m_Frames.front().placement = Place(7, 0, 0, 2, 1);
    Calls().Clear();
  }
  void AddText() { AddTextToPane(m_Import, m_Pane, m_Records.plateTemplate, m_Frames); }
  /// One block of one span, 2.54 cm high.
  CR2_SPAN& AddSpan(const std::wstring& text) {
    auto& texts = m_Frames.front().texts;
    texts.emplace_back();
    texts.back().font.size = 2.54;
    texts.back().font.lineHeight = 1.5;
    texts.back().lines.resize(1);
    texts.back().lines.front().spans.emplace_back();
    CR2_SPAN& span = texts.back().lines.front().spans.back();
    span.font.face = L"Arial";
    span.font.size = 2.54;
    span.text = text;
    return span;
  }
  static std::string Opened() { return OpenedText("(0 0)", Corner(2, 1)); }

  TemplateImport m_Import;
  PanePlace m_Pane;
  std::vector<CR2_TEXT_FRAME> m_Frames;
};

TEST_F(ZmlText, is_set_in_one_pass_and_goes_to_the_plate_s_pages_and_layer) {
  AddSpan(L"A").font.colors.fill = std::make_unique<CVKColor>(Red);
  Calls().Always("GetWindowHandle", 0);
  AddText();
  EXPECT_EQ(Calls().Text(),
            "DBGetPageRange(#2) -> 2..3\nDBGetSheetLayer(#2) -> 7\n" + Opened() + LaidOutText() +
                "line.size = 1000\nline.leading = 1500\nstyle.size = 1000\n"
                "SetTextLineJustification(paragraph, lines, 0)\n"
                "AddFont(0, 2, \"Arial\", 0, 0) -> F1\n"
                // The size of a span is 2.54 times that of its line.
                "style.font = F1\nstyle.fontId = 1\nstyle.size = 2540\nSetTextColor(" +
                RedText +
                ")\nedPasteString(\"A\", 1, 0, null, false)\nGetWindowHandle(2)\n"
                "TerminateNewText(null, 1)\nGetTerminateTextEditHI() -> #3\n"
                "DBSetPageRange(#3, 2..3)\nDBSetSheetLayer(#3, 7)\n");
}

TEST_F(ZmlText, sizes_are_not_rounded_but_the_leading_is) {
  AddSpan(L"A").font.size = 0.1234567;
  m_Frames.front().texts.front().font.size = 0.7654321;
  m_Frames.front().texts.front().font.lineHeight = 1.1;
  AddText();
  EXPECT_TRUE(Calls().Has("line.size = " + TextOf(0.7654321 / 2.54 * 1000.0)));
  EXPECT_TRUE(Calls().Has("style.size = " + TextOf(0.1234567 * 1000.0)));
  EXPECT_TRUE(
      Calls().Has("line.leading = " + TextOf(1.100000023841858 * (0.7654321 / 2.54 * 1000.0))));
}

TEST_F(ZmlText, in_a_template_of_origin_9_counts_both_axes_by_x) {
  m_Records.plateTemplate.placement.origin = 9;
  m_Frames.front().placement = Place(9, -1, 2, 2, 1);
  AddText();
  // The point is at 8 - 1 = 7 and 0 - 1 = -1, and the frame to its left and above.
  EXPECT_EQ(Calls().Of({"InitNewText"}), (HostCalls::Lines{"InitNewText(null, " + Corner(5, -1) +
                                                           ", " + Corner(7, 0) + ", 1)"}));
}

TEST_F(ZmlText, without_frames_the_page_and_the_layer_are_read_alone) {
  m_Frames.clear();
  AddText();
  EXPECT_EQ(Calls().Text(), "DBGetPageRange(#2) -> 2..3\nDBGetSheetLayer(#2) -> 7\n");
}

TEST_F(ZmlText, that_becomes_no_object_is_given_no_page) {
  m_Host.m_Text.m_MakeText = [] { return 0; };
  AddText();
  EXPECT_EQ(Calls().Count("DBSetPageRange"), 0U);
}

TEST_F(ZmlText, a_missing_font_is_asked_for_at_the_span_that_uses_it) {
  AddSpan(L"A");
  AddSpan(L"B").font.face = L"Gone";
  m_Host.m_Text.m_MissingFonts = {L"Gone"};
  Calls().Always("ChooseReplacementFont", 1);
  AddText();
  EXPECT_EQ(
      Calls().Of({"AddFont", "ChooseReplacementFont", "edPasteString"}),
      (HostCalls::Lines{
          "AddFont(0, 2, \"Arial\", 0, 0) -> F1", "edPasteString(\"A\", 1, 0, null, false)",
          "edPasteString(\"\\r\\n\", 2, 0, null, false)", "AddFont(0, 2, \"Gone\", 0, 0) -> none",
          "ChooseReplacementFont(\"Gone\", -1, -1) -> F901",
          "edPasteString(\"B\", 1, 0, null, false)"}));
}

TEST_F(ZmlText, references_go_by_way_of_the_code_page) {
  AddSpan(L"&#65;&#8482;&eacute;");
  AddText();
  EXPECT_TRUE(Calls().Has("edPasteString(\"AA\uFFE9\", 3, 0, null, false)"));
  EXPECT_FALSE(m_Import.unicodeLost);
}

/// Loaded objects with texts that have replaceable items.
class ZmlVariables : public ZmlBuild {
 protected:
  ZmlVariables() {
    m_Frame.variables = {L"zero", L"", L"two"};
    m_Frame.isVariablePresent = {true, false, true};
    m_Host.m_Store.Find(m_Host.m_Store.Make(DBTYPE_PARAGRAPH, true))->paragraph = {.first = 4,
                                                                                   .second = 5};
    m_Host.m_Store.Make(128, true);
  }
  void Replace() {
    const ObjectList objects(m_Host.m_Store, m_Host.m_Store.DSCreateSelectedList());
    Calls().Clear();
    ReplaceVariables({m_Host.m_Store, m_Host.m_Text, m_Host.m_Application}, objects, m_Frame);
  }
  HostCalls::Lines Replaced() { return Calls().Of({"ReplaceTextParagraphEle"}); }

  CR2_GRAPHIC_FRAME m_Frame;
};

TEST_F(ZmlVariables, replace_the_items_of_texts_whose_text_is_their_number) {
  m_Host.m_Text.m_ReplaceableItems = {L"2", L"name"};
  Calls().Always("XCGetOwnedOperation", 6);
  Replace();
  EXPECT_EQ(Calls().Text(), "DBFilterList(L1, IsText) -> L2\n" + Walk("L2", {"#2"}) +
                                "XCGetBaseObject(#2) -> #2\nDBGetObjectElement(#2)\n"
                                "MakeReplaceableItemsListForParagraphEle((4 5))\n"
                                "GetTextParagraphEle((4 5), 0) -> \"2\"\n"
                                "ReplaceTextParagraphEle((4 5), 0, \"two\") -> 1\n"
                                "GetTextParagraphEle((4 5), 1) -> \"name\"\n"
                                "XCGetOwnedOperation(#2) -> 6\nSetProductListValid(6, 0)\n"
                                "RecalculateOperations()\nDBDestroyList(L2)\nDBDestroyList(L1)\n");
}

TEST_F(ZmlVariables, that_the_frame_does_not_have_leave_the_item) {
  m_Host.m_Text.m_ReplaceableItems = {L"1", L"3", L"-1", L"99999999999999999999", L"", L"x2"};
  Replace();
  EXPECT_EQ(Replaced(), HostCalls::Lines());
}

TEST_F(ZmlVariables, are_found_by_the_number_at_the_start_of_the_item) {
  m_Host.m_Text.m_ReplaceableItems = {L" 2", L"+2", L"2nd", L"02", L"0"};
  Replace();
  EXPECT_EQ(Replaced().size(), 5U);
  EXPECT_EQ(Replaced().back(), "ReplaceTextParagraphEle((4 5), 4, \"zero\") -> 1");
}

TEST_F(ZmlVariables, an_item_s_text_counts_up_to_128_characters) {
  for (const std::size_t blanks : {126U, 127U, 128U, 129U})
    m_Host.m_Text.m_ReplaceableItems.push_back(std::wstring(blanks, L' ') + L"2");
  Replace();
  EXPECT_EQ(Replaced().size(), 2U);
}

TEST_F(ZmlVariables, of_a_load_are_replaced_before_the_objects_are_measured) {
  m_Host.m_Text.m_ReplaceableItems = {L"2"};
  m_Host.m_Store.m_MakeLoaded = [this] { m_Host.m_Store.Make(DBTYPE_PARAGRAPH, true); };
  TemplateImport import = Begin();
  Calls().Clear();
  {
    const std::wstring path = L"a.svg";
    const ObjectList objects = LoadGraphic(import,
                                           {.path = path,
                                            .purpose = LoadPurpose::Graphic,
                                            .pane = {},
                                            .placement = Place(7, 0, 0, 2, 1)},
                                           m_Records.plateTemplate, -1, &m_Frame);
    EXPECT_EQ(objects.Members(), (std::vector<rastrel::host::ObjectHandle>{4}));
  }
  EXPECT_EQ(Calls().Of({"DSCreateSelectedList", "DBFilterList", "ReplaceTextParagraphEle",
                        "DBGetSelectedListBounds", "ExpectCutLine"}),
            (HostCalls::Lines{"DSCreateSelectedList() -> L4", "DBFilterList(L4, IsText) -> L5",
                              "ReplaceTextParagraphEle((0 0), 0, \"two\") -> 1",
                              "DSCreateSelectedList() -> L6",
                              "DBGetSelectedListBounds(L6) -> (0 2 0 1)"}));
}

}  // namespace
