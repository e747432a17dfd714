// Whole imports of plate XML, call by call, as the host is asked.

#include <gtest/gtest.h>

#include "tests/imports/abb_fixture.h"
#include "tests/imports/abb_transcript.h"

namespace {

using namespace rastrel::test;

const std::string Red = "FindPaletteColor(\"Red\") -> 1\n";
const std::string NoColor = "FindPaletteColor(\"\") -> 0\n";
const std::string Black = "RGB(0 0 0)";

class AbbTranscript : public AbbTest {
 protected:
  /// A red plate of 4 by 2 inches, which are 10.16 by 5.08 cm, with white text.
  static std::string RedPlate(const std::string& inside) {
    return "<PLATE><COLOR>Red</COLOR><WIDTH>4</WIDTH><HEIGHT>2</HEIGHT>"
           "<TEXTCOLOR>White</TEXTCOLOR>" +
           inside + "</PLATE>";
  }
  /// The start of each import of such a plate, up to the pane.
  static std::string RedPane() {
    return "BeginWaitCursor()\n" + Red + NewPlate("P1", "#2", "10.16, 5.08", 1) +
           FoundPane("P1", "#2", "L1", "(0 5.08 10.16 0)", 1);
  }
  static std::string WhiteText() {
    return ClosedText("(1 101)", "#3", "\"White\") -> 1", "RGB(255 255 255)", 1);
  }
};

TEST_F(AbbTranscript, a_plate_with_text_and_a_drill_point) {
  EXPECT_EQ(Import(RedPlate("<TOOLNAME>T1</TOOLNAME>"
                            "<TEXT line='1' data='PUMP 1'><TOOLNAME>T2</TOOLNAME>"
                            "<FONT name='Arial.ttf' size='0.25'/></TEXT>"
                            "<TEXT line='2' data='MAIN'><FONT name='Roman.shx' size='0.5'/></TEXT>"
                            "<DRILLPOINT><COLOR>Green</COLOR><XLOC>0.5</XLOC><YLOC>0.25</YLOC>"
                            "<DIAMETER>0.125</DIAMETER></DRILLPOINT>")),
            1);
  // The frame is 4000 thousandths of an inch wide, of which 22 percent are 880. The hole is half an
  // inch from the left and a quarter down from 2 inches.
  EXPECT_EQ(Calls().Text(),
            RedPane() + OpenedText("(1 101)", "220", "880") +
                PastedLine("2, \"Arial\"", "F1", "250", "\"PUMP 1\\r\\n\", 8") +
                PastedLine("13, \"Roman\"", "F2", "500", "\"MAIN\", 4") + WhiteText() +
                DrillPoint("0.3175", "(500 1750)", "L2", "#4", "\"Green\") -> 1", "RGB(0 255 0)"));
}

TEST_F(AbbTranscript, several_plates_of_one_size_are_panes_of_one_object) {
  EXPECT_EQ(Import("<PLATE><COLOR>Red</COLOR><WIDTH>3</WIDTH><HEIGHT>1.5</HEIGHT></PLATE>"
                   "<PLATE><COLOR>Green</COLOR><WIDTH>3</WIDTH><HEIGHT>1.5</HEIGHT></PLATE>" +
                   Plate("3", "1.5")),
            1);
  EXPECT_EQ(Calls().Text(), "BeginWaitCursor()\n" + Red + NewPlate("P1", "#2", "7.62, 3.81", 1) +
                                FoundPane("P1", "#2", "L1", "(0 3.81 7.62 0)", 1) +
                                "FindPaletteColor(\"Green\") -> 1\n" + FurtherPane(2) +
                                FoundPane("P1", "#2", "L2", "(7.62 3.81 15.24 0)", 1) + NoColor +
                                FurtherPane(3) +
                                FoundPane("P1", "#2", "L3", "(15.24 3.81 22.86 0)", 1));
}

TEST_F(AbbTranscript, plates_of_two_sizes_are_an_object_each) {
  EXPECT_EQ(Import(Plate("3", "1.5") + RedPlate("")), 1);
  EXPECT_EQ(Calls().Text(), "BeginWaitCursor()\n" + NoColor +
                                NewPlate("P1", "#2", "7.62, 3.81", 1, Black) +
                                FoundPane("P1", "#2", "L1", "(0 3.81 7.62 0)", 1) + Red +
                                NewPlate("P2", "#3", "10.16, 5.08", 2) +
                                FoundPane("P2", "#3", "L2", "(0 5.08 10.16 0)", 2));
}

TEST_F(AbbTranscript, a_plate_without_text_is_a_pane_and_nothing_more) {
  EXPECT_EQ(Import(RedPlate("")), 1);
  EXPECT_EQ(Calls().Text(), RedPane());
}

TEST_F(AbbTranscript, a_plate_of_empty_lines_is_the_same) {
  EXPECT_EQ(Import(RedPlate(Text("") + Text(""))), 1);
  EXPECT_EQ(Calls().Text(), RedPane());
}

TEST_F(AbbTranscript, empty_lines_among_others_count_for_the_line_ends_only) {
  EXPECT_EQ(Import(RedPlate(Text("") + Text("A") + Text(""))), 1);
  EXPECT_EQ(Calls().Text(), RedPane() + OpenedText("(1 101)", "220", "880") +
                                PastedLine("2, \"Arial\"", "F1", "250", "\"A\\r\\n\", 3") +
                                WhiteText());
}

TEST_F(AbbTranscript, a_text_frame_of_0_is_a_margin_of_22_percent) {
  EXPECT_EQ(Import(RedPlate("<TEXTFRAME>0</TEXTFRAME>" + Text("A"))), 1);
  EXPECT_EQ(Calls().Text(), RedPane() + OpenedText("(1 101)", "220", "880") +
                                PastedLine("2, \"Arial\"", "F1", "250", "\"A\", 1") + WhiteText());
}

TEST_F(AbbTranscript, a_text_frame_of_5_is_a_margin_of_5_percent) {
  EXPECT_EQ(Import(RedPlate("<TEXTFRAME>5</TEXTFRAME>" + Text("A"))), 1);
  EXPECT_EQ(Calls().Text(), RedPane() + OpenedText("(1 101)", "50", "200") +
                                PastedLine("2, \"Arial\"", "F1", "250", "\"A\", 1") + WhiteText());
}

TEST_F(AbbTranscript, drill_points_with_and_without_a_diameter) {
  EXPECT_EQ(Import(RedPlate("<DRILLPOINT><COLOR>Red</COLOR><XLOC>1</XLOC><YLOC>1</YLOC>"
                            "<DIAMETER>0.5</DIAMETER></DRILLPOINT><DRILLPOINT/>")),
            1);
  EXPECT_EQ(Calls().Text(),
            RedPane() +
                DrillPoint("1.27", "(1000 1000)", "L2", "#3", "\"Red\") -> 1", "RGB(255 0 0)") +
                DrillPoint("0.40640000000000004", "(0 2000)", "L3", "#4", "\"\") -> 0", Black));
}

TEST_F(AbbTranscript, colors_that_are_not_in_the_palette_are_black) {
  EXPECT_EQ(Import("<PLATE><COLOR>Teal</COLOR><WIDTH>4</WIDTH><HEIGHT>2</HEIGHT>"
                   "<TEXTCOLOR>red</TEXTCOLOR>" +
                   Text("A") + "<DRILLPOINT><COLOR>Sand</COLOR></DRILLPOINT></PLATE>"),
            1);
  EXPECT_EQ(Calls().Text(),
            "BeginWaitCursor()\nFindPaletteColor(\"Teal\") -> 0\n" +
                NewPlate("P1", "#2", "10.16, 5.08", 1, Black) +
                FoundPane("P1", "#2", "L1", "(0 5.08 10.16 0)", 1) +
                OpenedText("(1 101)", "220", "880") +
                PastedLine("2, \"Arial\"", "F1", "250", "\"A\", 1") +
                ClosedText("(1 101)", "#3", "\"red\") -> 0", Black, 1) +
                DrillPoint("0.40640000000000004", "(0 2000)", "L2", "#4", "\"Sand\") -> 0", Black));
}

TEST_F(AbbTranscript, a_line_whose_font_cannot_be_had_is_dropped) {
  m_Host.m_Text.m_MissingFonts = {L"Gone"};
  EXPECT_EQ(Import(RedPlate(Text("A", "Gone.pfb") + Text("B"))), 1);
  EXPECT_EQ(Calls().Text(), RedPane() + OpenedText("(1 101)", "220", "880") +
                                "AddFont(0, 3, \"Gone\", -1, 1) -> none\n" +
                                PastedLine("2, \"Arial\"", "F1", "250", "\"B\", 1") + WhiteText());
}

TEST_F(AbbTranscript, a_paragraph_that_cannot_be_opened_drops_the_text_and_not_the_holes) {
  Calls().Next("OpenParagraph", {1});
  EXPECT_EQ(Import(RedPlate(Text("A") + "<DRILLPOINT/>")), 1);
  EXPECT_EQ(Calls().Text(),
            RedPane() +
                "SetOpenParagraphInfo(0) -> (1 101)\n"
                "OpenParagraph(4, (1 101), (0 2000), (4000 0)) -> 1\n" +
                DrillPoint("0.40640000000000004", "(0 2000)", "L2", "#3", "\"\") -> 0", Black));
}

TEST_F(AbbTranscript, a_second_run_adds_a_pane_to_the_object_of_the_first) {
  const std::wstring path =
      Write(Template("<PLATE><COLOR>Red</COLOR><WIDTH>3</WIDTH><HEIGHT>1.5</HEIGHT></PLATE>"));
  CXMLFileImport importer(path.c_str());
  EXPECT_EQ(importer.ImportXMLFile(), 1);
  Calls().Clear();
  EXPECT_EQ(importer.ImportXMLFile(), 1);
  EXPECT_EQ(Calls().Text(), "BeginWaitCursor()\n" + Red + FurtherPane(2) +
                                FoundPane("P1", "#2", "L2", "(7.62 3.81 15.24 0)", 1));
}

TEST_F(AbbTranscript, a_second_run_takes_every_font_for_truetype) {
  m_Host.m_Store.m_LastPaneBounds = {.left = 0, .top = 5.08, .right = 10.16, .bottom = 0};
  const std::wstring path = Write(Template(RedPlate(Text("A", "Roman.shx"))));
  CXMLFileImport importer(path.c_str());
  EXPECT_EQ(importer.ImportXMLFile(), 1);
  EXPECT_EQ(Calls().Text(), RedPane() + OpenedText("(1 101)", "220", "880") +
                                PastedLine("13, \"Roman\"", "F1", "250", "\"A\", 1") + WhiteText());
  Calls().Clear();
  EXPECT_EQ(importer.ImportXMLFile(), 1);
  const std::string text = Calls().Text();
  const std::string second = OpenedText("(2 102)", "220", "880") +
                             PastedLine("2, \"Roman\"", "F2", "250", "\"A\", 1") +
                             ClosedText("(2 102)", "#4", "\"White\") -> 1", "RGB(255 255 255)", 1);
  EXPECT_TRUE(text.ends_with(second)) << text;
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
