// Whole imports of plate XML, call by call, as the host is asked.

#include <gtest/gtest.h>

#include "tests/imports/abb_fixture.h"

namespace {

using rastrel::test::AbbTest;

class AbbTranscript : public AbbTest {
 protected:
  /// What a new plate object of one pane is asked for, from its colour to the list that finds it.
  static std::string NewPlate(const std::string& name, const std::string& object,
                              const std::string& size, int layer) {
    const std::string sheet = std::to_string(layer);
    return "GetSignBlankSize() -> (60 30)\n"
           "GetOriginPosIndex() -> 7\n"
           "GetDisplayPage() -> 1\n"
           "NewGenericPlateObject(1, " +
           size + ", (0 0 0 0), 0, 0) -> " + name + "\n" + name +
           ".CreatePanesWithOriginBottomLeft((0 0), 60, 30) -> 1\n" + name + ".Add(1, 1, 0) -> " +
           object +
           "\n"
           "TString(\"(*v*)Create plate object\") -> \"Create plate object\"\n"
           "UNOpenStep(\"Create plate object\")\n"
           "DSAddObject(" +
           object +
           ") -> 1\n"
           "UNCloseStep()\n"
           "DBSetLayer(" +
           object +
           ", RGB(255 0 0))\n"
           "DBSetLineColor(" +
           object +
           ", RGB(255 0 0))\n"
           "DBGetLineStyle(" +
           object +
           ") -> (width 0 style 0)\n"
           "DBSetLineStyle(" +
           object +
           ", (width 0 style 16))\n"
           "GetNextEmptyLayer() -> " +
           sheet +
           "\n"
           "AddNewSheetLayer(" +
           sheet +
           ")\n"
           "DBSetSheetLayer(" +
           object + ", " + sheet +
           ")\n"
           "DBSetPageRange(" +
           object +
           ", 1..1)\n"
           "UpdatePageWindow(0)\n"
           "DBInvalidateBounds(" +
           object +
           ")\n"
           "DBValidateBounds(" +
           object +
           ")\n"
           "InvalidateObject(" +
           object +
           ", 1)\n"
           "WhatisMaxNumberofPages(0) -> 1\n"
           "SetPlateObjectParameters((0 0 0 0), 0, 0)\n"
           "AdjustPlateObjects(0, 0, 1) -> " +
           object + "\n";
  }
  static std::string FoundPlate(const std::string& name, const std::string& object,
                                const std::string& list, const std::string& bounds, int layer) {
    return "DBCreateList(1, 9, IsGenericPlate) -> " + list +
           "\n"
           "DBGetLastMember(" +
           list + ") -> " + object +
           "\n"
           "DBGetObjectElement(" +
           object + ")\n" + name + ".GetLastPaneBounds() -> " + bounds +
           "\n"
           "DBGetPageRange(" +
           object +
           ") -> 1..1\n"
           "DBGetSheetLayer(" +
           object + ") -> " + std::to_string(layer) +
           "\n"
           "DBDestroyList(" +
           list + ")\n";
  }
};

TEST_F(AbbTranscript, a_plate_with_text_and_a_drill_point) {
  EXPECT_EQ(Import("<PLATE><COLOR>Red</COLOR><TOOLNAME>T1</TOOLNAME><WIDTH>4</WIDTH>"
                   "<HEIGHT>2</HEIGHT><TEXTCOLOR>White</TEXTCOLOR>"
                   "<TEXT line='1' data='PUMP 1'><TOOLNAME>T2</TOOLNAME>"
                   "<FONT name='Arial.ttf' size='0.25'/></TEXT>"
                   "<TEXT line='2' data='MAIN'><FONT name='Roman.shx' size='0.5'/></TEXT>"
                   "<DRILLPOINT><COLOR>Green</COLOR><XLOC>0.5</XLOC><YLOC>0.25</YLOC>"
                   "<DIAMETER>0.125</DIAMETER></DRILLPOINT></PLATE>"),
            1);
  // 4 by 2 inches are 10.16 by 5.08 cm. The frame is 4000 thousandths of an inch wide, of which
  // 22 percent are 880. The hole is 0.5 inches from the left and 0.25 down from 2 inches.
  EXPECT_EQ(Calls().Text(),
            "BeginWaitCursor()\n"
            "FindPaletteColor(\"Red\") -> 1\n" +
                NewPlate("P1", "#2", "10.16, 5.08", 1) +
                FoundPlate("P1", "#2", "L1", "(0 5.08 10.16 0)", 1) +
                "SetOpenParagraphInfo(0) -> (1 101)\n"
                "OpenParagraph(4, (1 101), (0 2000), (4000 0)) -> 0\n"
                "GetCurParagraph()\n"
                "lines.mode = 4\n"
                "SetTextLineJustifyMode(paragraph, lines, 2)\n"
                "SetTextLineJustification(paragraph, lines, 2)\n"
                "paragraph.fit = 2\n"
                "paragraph.frameMode = 3\n"
                "paragraph.leftPercent = 220\n"
                "GetTextFrame(paragraph) -> (0 2000 4000 0)\n"
                "paragraph.leftMargin = 880\n"
                "FitTextToFrame(paragraph, lines)\n"
                "paragraph.rightPercent = 220\n"
                "GetTextFrame(paragraph) -> (0 2000 4000 0)\n"
                "paragraph.rightMargin = 880\n"
                "FitTextToFrame(paragraph, lines)\n"
                "AddFont(0, 2, \"Arial\", -1, 1) -> F1\n"
                "style.font = F1\n"
                "style.size = 250\n"
                "edPasteString(\"PUMP 1\\r\\n\", 8, 0, null, false)\n"
                "AddFont(0, 13, \"Roman\", -1, 1) -> F2\n"
                "style.font = F2\n"
                "style.size = 500\n"
                "edPasteString(\"MAIN\", 4, 0, null, false)\n"
                "SetOpenParagraphInfo(0) -> (1 101)\n"
                "CloseParagraph(1, (1 101))\n"
                "GetDefaultAttributes()\n"
                "DBInsertElement(attributes, 8192, paragraph (1 101), 0, 0, 0, 1, false) -> #3\n"
                "DBSetTrait(#3, 128, 1)\n"
                "TString(\"(*v*)Adding text\") -> \"Adding text\"\n"
                "UNOpenStep(\"Adding text\")\n"
                "DSAddSourceObject(#3, 2, #3) -> 1\n"
                "UNCloseStep()\n"
                "FindPaletteColor(\"White\") -> 1\n"
                "DBSetLayer(#3, RGB(255 255 255))\n"
                "DBSetLineColor(#3, RGB(255 255 255))\n"
                "DBSetPageRange(#3, 1..1)\n"
                "DBSetSheetLayer(#3, 1)\n"
                "DBInvalidateBounds(#3)\n"
                "DBValidateBounds(#3)\n"
                "InvalidateObject(#3, 1)\n"
                "DBDeselectAll()\n"
                "SetXMLDrillPoint(1, 0.3175)\n"
                "SetDrillPointObj((500 1750))\n"
                "SetXMLDrillPoint(0, 0)\n"
                "DSCreateSelectedList() -> L2\n"
                "DBGetFirstMember(L2) -> #4\n"
                "DBDestroyList(L2)\n"
                "FindPaletteColor(\"Green\") -> 1\n"
                "DBSetLayer(#4, RGB(0 255 0))\n"
                "DBSetLineColor(#4, RGB(0 255 0))\n"
                "DBSetSheetLayer(#4, 1)\n"
                "DBSetPageRange(#4, 1..1)\n"
                "DBDeselectAll()\n");
}

TEST_F(AbbTranscript, several_plates_of_one_size_are_panes_of_one_object) {
  EXPECT_EQ(Import("<PLATE><COLOR>Red</COLOR><WIDTH>3</WIDTH><HEIGHT>1.5</HEIGHT></PLATE>"
                   "<PLATE><COLOR>Green</COLOR><WIDTH>3</WIDTH><HEIGHT>1.5</HEIGHT></PLATE>"
                   "<PLATE><WIDTH>3</WIDTH><HEIGHT>1.5</HEIGHT></PLATE>"),
            1);
  const auto further = [](const std::string& color, const std::string& panes,
                          const std::string& panesNow) {
    return "FindPaletteColor(" + color +
           "\nDBGetObjectElement(#2)\n"
           "P1.GetPaneCount() -> " +
           panes +
           "\n"
           "P1.GetPaneWidth() -> 7.62\n"
           "P1.GetPaneHeight() -> 3.81\n"
           "P1.GetMargins() -> (0 0 0 0)\n"
           "P1.GetHorizontalGap() -> 0\n"
           "P1.GetVerticalGap() -> 0\n"
           "P1.ResetData(" +
           panesNow + ", 7.62, 3.81, (0 0 0 0), 0, 0, {}, 0)\n";
  };
  EXPECT_EQ(Calls().Text(),
            "BeginWaitCursor()\n"
            "FindPaletteColor(\"Red\") -> 1\n" +
                NewPlate("P1", "#2", "7.62, 3.81", 1) +
                FoundPlate("P1", "#2", "L1", "(0 3.81 7.62 0)", 1) +
                further("\"Green\") -> 1", "1", "2") +
                FoundPlate("P1", "#2", "L2", "(7.62 3.81 15.24 0)", 1) +
                further("\"\") -> 0", "2", "3") +
                FoundPlate("P1", "#2", "L3", "(15.24 3.81 22.86 0)", 1));
}

TEST_F(AbbTranscript, plates_of_two_sizes_are_an_object_each) {
  EXPECT_EQ(Import("<PLATE><COLOR>Red</COLOR><WIDTH>3</WIDTH><HEIGHT>1.5</HEIGHT></PLATE>"
                   "<PLATE><COLOR>Red</COLOR><WIDTH>4</WIDTH><HEIGHT>2</HEIGHT></PLATE>"),
            1);
  EXPECT_EQ(Calls().Text(),
            "BeginWaitCursor()\n"
            "FindPaletteColor(\"Red\") -> 1\n" +
                NewPlate("P1", "#2", "7.62, 3.81", 1) +
                FoundPlate("P1", "#2", "L1", "(0 3.81 7.62 0)", 1) +
                "FindPaletteColor(\"Red\") -> 1\n" + NewPlate("P2", "#3", "10.16, 5.08", 2) +
                FoundPlate("P2", "#3", "L2", "(0 5.08 10.16 0)", 2));
}

TEST_F(AbbTranscript, a_file_without_plates_is_not_imported_at_all) {
  CXMLFileImport importer(Write("<ABB><ENGRAVINGTEMPLATE/></ABB>").c_str());
  EXPECT_EQ(importer.ImportXMLFile(), 0);
  EXPECT_EQ(Calls().Text(), "");
}

TEST_F(AbbTranscript, a_list_of_no_plates_shows_the_wait_cursor_and_does_nothing) {
  EXPECT_EQ(Import(""), 1);
  EXPECT_EQ(Calls().Text(), "BeginWaitCursor()\n");
}

TEST_F(AbbTranscript, a_host_without_a_document_is_asked_nothing_and_the_log_says_so) {
  m_Host.m_HasDocument = false;
  EXPECT_EQ(Import(Plate("4", "2")), 0);
  EXPECT_EQ(Calls().Text(), "");
  EXPECT_EQ(Log(), "[Import] the host has no document to import into\r\n");
}

}  // namespace
