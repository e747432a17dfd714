// Sizes, colors, texts and drill points in an import of plate XML.

#include <gtest/gtest.h>

#include <chrono>

#include "tests/imports/abb_fixture.h"

namespace {

using rastrel::test::AbbTest;

class AbbImport : public AbbTest {
 protected:
  std::size_t NewObjects() { return Calls().Count("NewGenericPlateObject"); }
  Lines Pasted() { return Calls().Of({"AddFont", "edPasteString"}); }
};

// --- Sizes ---

TEST_F(AbbImport, sizes_that_agree_in_truncated_thousandths_after_one_half_share_an_object) {
  EXPECT_EQ(Import(Plate("4.000", "2.0000") + Plate("4.000", "2.0004")), 1);
  EXPECT_EQ(NewObjects(), 1U);
  EXPECT_EQ(Calls().Of({"ResetData"}),
            (Lines{"P1.ResetData(2, 10.16, 5.08, (0 0 0 0), 0, 0, {}, 0)"}));
}

TEST_F(AbbImport, sizes_that_differ_by_a_thousandth_are_two_objects) {
  EXPECT_EQ(Import(Plate("4", "2") + Plate("4", "2.001") + Plate("4.001", "2.001")), 1);
  EXPECT_EQ(NewObjects(), 3U);
}

TEST_F(AbbImport, only_the_size_of_the_plate_before_counts) {
  EXPECT_EQ(Import(Plate("4", "2") + Plate("3", "2") + Plate("4", "2")), 1);
  EXPECT_EQ(NewObjects(), 3U);
}

TEST_F(AbbImport, the_first_plate_makes_an_object_also_in_a_document_that_has_plates) {
  EXPECT_EQ(Import(Plate("4", "2")), 1);
  Calls().Clear();
  EXPECT_EQ(Import(Plate("4", "2", Text("A"))), 1);
  EXPECT_EQ(NewObjects(), 1U);
  // The pane is that of the document's last plate object, which is the new one.
  EXPECT_EQ(Calls().Of({"DBGetLastMember"}), (Lines{"DBGetLastMember(L2) -> #3"}));
}

TEST_F(AbbImport, the_pane_is_the_last_one_of_the_documents_last_plate_object) {
  m_Host.m_Store.m_LastPaneBounds = {.left = 2.54, .top = 25.4, .right = 12.7, .bottom = 20.32};
  EXPECT_EQ(Import(Plate("4", "2", Text("A"))), 1);
  EXPECT_EQ(Calls().Of({"OpenParagraph"}),
            (Lines{"OpenParagraph(4, (1 101), (1000 10000), (5000 8000)) -> 0"}));
}

TEST_F(AbbImport, a_second_run_adds_to_the_object_that_the_first_one_used_last) {
  const std::wstring path = Write(Template(Plate("4", "2")));
  CXMLFileImport importer(path.c_str());
  EXPECT_EQ(importer.ImportXMLFile(), 1);
  EXPECT_EQ(importer.ImportXMLFile(), 1);
  EXPECT_EQ(NewObjects(), 1U);
  EXPECT_EQ(Calls().Count("ResetData"), 1U);
}

TEST_F(AbbImport, a_plate_object_that_is_gone_is_not_extended) {
  const std::wstring path = Write(Template(Plate("4", "2")));
  CXMLFileImport importer(path.c_str());
  EXPECT_EQ(importer.ImportXMLFile(), 1);
  m_Host.m_Store.DBDestroyObject(2);
  EXPECT_EQ(importer.ImportXMLFile(), 1);
  EXPECT_EQ(NewObjects(), 2U);
}

TEST_F(AbbImport, a_pane_that_the_blank_has_no_room_for_is_left_out_with_all_that_is_on_it) {
  const std::string inside = Text("A") + "<DRILLPOINT/>";
  EXPECT_EQ(Import(Plate("24", "2", inside) + Plate("4", "2")), 1);
  // The blank is 60 by 30 cm; 24 inches are 60.96 cm.
  EXPECT_EQ(Calls().Of({"NewGenericPlateObject", "OpenParagraph", "SetDrillPointObj"}),
            (Lines{"NewGenericPlateObject(1, 60.96, 5.08, (0 0 0 0), 0, 0) -> none",
                   "NewGenericPlateObject(1, 10.16, 5.08, (0 0 0 0), 0, 0) -> P1"}));
  EXPECT_EQ(Log(),
            "[Import] the host refuses a plate of 60.96 by 5.08 cm, which does not fit the "
            "sign blank\r\n");
}

TEST_F(AbbImport, sizes_that_are_no_positive_numbers_add_nothing) {
  for (const char* size : {"0", "-4", "1e999", "-1e999", "1e300", "abc", ""}) {
    EXPECT_EQ(Import(Plate(size, "2", Text("A"))), 1) << size;
    EXPECT_EQ(Import(Plate("4", size, "<DRILLPOINT/>")), 1) << size;
  }
  EXPECT_EQ(Calls().Count("Add") + Calls().Count("OpenParagraph") + Calls().Count("DBDeselectAll"),
            0U);
}

// --- Text ---

TEST_F(AbbImport, a_plate_without_text_opens_no_paragraph) {
  EXPECT_EQ(Import(Plate("4", "2")), 1);
  EXPECT_EQ(Calls().Count("OpenParagraph"), 0U);
}

TEST_F(AbbImport, a_plate_whose_lines_are_all_empty_opens_no_paragraph) {
  EXPECT_EQ(Import(Plate("4", "2", Text("") + Text(""))), 1);
  EXPECT_EQ(Calls().Count("OpenParagraph"), 0U);
}

TEST_F(AbbImport, an_empty_line_counts_and_pastes_nothing) {
  EXPECT_EQ(Import(Plate("4", "2", Text("A") + Text("") + Text("B"))), 1);
  EXPECT_EQ(Calls().Of({"edPasteString"}), (Lines{"edPasteString(\"A\\r\\n\", 3, 0, null, false)",
                                                  "edPasteString(\"B\", 1, 0, null, false)"}));
}

TEST_F(AbbImport, an_empty_last_line_leaves_a_line_end_behind_the_one_before) {
  EXPECT_EQ(Import(Plate("4", "2", Text("A") + Text(""))), 1);
  EXPECT_EQ(Calls().Of({"edPasteString"}),
            (Lines{"edPasteString(\"A\\r\\n\", 3, 0, null, false)"}));
}

TEST_F(AbbImport, line_numbers_do_not_order_the_lines) {
  EXPECT_EQ(Import(Plate("4", "2", "<TEXT line='2' data='B'/><TEXT line='1' data='A'/>")), 1);
  EXPECT_EQ(Calls().Of({"edPasteString"}), (Lines{"edPasteString(\"B\\r\\n\", 3, 0, null, false)",
                                                  "edPasteString(\"A\", 1, 0, null, false)"}));
}

TEST_F(AbbImport, a_text_frame_of_0_and_none_are_margins_of_22_percent) {
  for (const char* frame : {"", "<TEXTFRAME>0</TEXTFRAME>", "<TEXTFRAME/>"}) {
    Calls().Clear();
    EXPECT_EQ(Import(Plate("4", "2", frame + Text("A"))), 1);
    EXPECT_TRUE(Calls().Has("paragraph.leftPercent = 220"));
    EXPECT_TRUE(Calls().Has("paragraph.leftMargin = 880"));
    EXPECT_TRUE(Calls().Has("paragraph.rightPercent = 220"));
    EXPECT_TRUE(Calls().Has("paragraph.rightMargin = 880"));
  }
}

TEST_F(AbbImport, a_text_frame_of_5_is_margins_of_5_percent) {
  EXPECT_EQ(Import(Plate("4", "2", "<TEXTFRAME>5</TEXTFRAME>" + Text("A"))), 1);
  EXPECT_TRUE(Calls().Has("paragraph.leftPercent = 50"));
  EXPECT_TRUE(Calls().Has("paragraph.leftMargin = 200"));
  EXPECT_TRUE(Calls().Has("paragraph.rightPercent = 50"));
  EXPECT_TRUE(Calls().Has("paragraph.rightMargin = 200"));
}

TEST_F(AbbImport, margins_never_overlap_since_the_right_one_yields) {
  EXPECT_EQ(Import(Plate("4", "2", "<TEXTFRAME>60</TEXTFRAME>" + Text("A"))), 1);
  // 60 percent of 4000 are 2400; 1600 are left for the other side.
  EXPECT_TRUE(Calls().Has("paragraph.leftMargin = 2400"));
  EXPECT_TRUE(Calls().Has("paragraph.rightMargin = 1600"));
}

TEST_F(AbbImport, a_text_frame_beyond_all_measure_ends_in_margins_within_the_frame) {
  EXPECT_EQ(Import(Plate("4", "2", "<TEXTFRAME>2147483647</TEXTFRAME>" + Text("A"))), 1);
  EXPECT_EQ(Import(Plate("4", "2", "<TEXTFRAME>-2147483648</TEXTFRAME>" + Text("A"))), 1);
  EXPECT_EQ(Calls().Count("CloseParagraph"), 2U);
}

TEST_F(AbbImport, a_line_whose_font_cannot_be_had_is_dropped_in_silence) {
  m_Host.m_Text.m_MissingFonts = {L"Gone"};
  EXPECT_EQ(Import(Plate("4", "2", Text("A", "Gone.pfb") + Text("B", "Arial.ttf"))), 1);
  EXPECT_EQ(Pasted(), (Lines{"AddFont(0, 3, \"Gone\", -1, 1) -> none",
                             "AddFont(0, 2, \"Arial\", -1, 1) -> F1",
                             "edPasteString(\"B\", 1, 0, null, false)"}));
  EXPECT_EQ(Log(), "");
}

TEST_F(AbbImport, a_text_of_no_font_is_an_empty_object_all_the_same) {
  m_Host.m_Text.m_MissingFonts = {L"Gone"};
  EXPECT_EQ(Import(Plate("4", "2", Text("A", "Gone.pfb"))), 1);
  EXPECT_EQ(Calls().Count("DSAddSourceObject"), 1U);
}

TEST_F(AbbImport, a_font_name_without_a_dot_is_used_whole_with_type_2) {
  EXPECT_EQ(Import(Plate("4", "2", Text("A", "Roman shx"))), 1);
  EXPECT_EQ(Calls().Of({"AddFont"}), (Lines{"AddFont(0, 2, \"Roman shx\", -1, 1) -> F1"}));
}

TEST_F(AbbImport, a_second_run_finds_every_font_name_cut_and_gives_type_2) {
  const std::wstring path = Write(Template(Plate("4", "2", Text("A", "Roman.shx"))));
  CXMLFileImport importer(path.c_str());
  EXPECT_EQ(importer.ImportXMLFile(), 1);
  EXPECT_EQ(importer.GetFirstPlate()->texts.front()->fontName, L"Roman");
  EXPECT_EQ(importer.ImportXMLFile(), 1);
  EXPECT_EQ(Calls().Of({"AddFont"}), (Lines{"AddFont(0, 13, \"Roman\", -1, 1) -> F1",
                                            "AddFont(0, 2, \"Roman\", -1, 1) -> F2"}));
}

TEST_F(AbbImport, a_size_goes_through_a_single_precision_number) {
  EXPECT_EQ(Import(Plate("4", "2", Text("A", "Arial.ttf", "0.1234"))), 1);
  // The single precision number nearest to 123.4.
  EXPECT_TRUE(Calls().Has("style.size = 123.4000015258789"));
}

TEST_F(AbbImport, a_paragraph_that_cannot_be_opened_drops_the_text_and_keeps_the_holes) {
  Calls().Next("OpenParagraph", {1});
  const std::string inside = Text("A") + Text("B") + "<DRILLPOINT/>";
  EXPECT_EQ(Import(Plate("4", "2", inside) + Plate("4", "2", Text("C"))), 1);
  EXPECT_EQ(
      Calls().Of({"OpenParagraph", "edPasteString", "SetDrillPointObj"}),
      (Lines{"OpenParagraph(4, (1 101), (0 2000), (4000 0)) -> 1", "SetDrillPointObj((0 2000))",
             "OpenParagraph(4, (2 102), (4000 2000), (8000 0)) -> 0",
             "edPasteString(\"C\", 1, 0, null, false)"}));
}

TEST_F(AbbImport, a_text_that_the_host_makes_no_object_of_is_logged) {
  Calls().Next("DBInsertElement", {0});
  EXPECT_EQ(Import(Plate("4", "2", Text("A"))), 1);
  EXPECT_EQ(Log(), "[Import] the host made no object of a text\r\n");
  EXPECT_EQ(Calls().Count("DSAddSourceObject") + Calls().Count("DBSetTrait"), 0U);
}

TEST_F(AbbImport, a_color_that_is_not_in_the_palette_is_black) {
  EXPECT_EQ(Import("<PLATE><COLOR>Teal</COLOR><TEXTCOLOR>red</TEXTCOLOR><WIDTH>4</WIDTH>"
                   "<HEIGHT>2</HEIGHT>" +
                   Text("A") + "<DRILLPOINT/></PLATE>"),
            1);
  EXPECT_EQ(Calls().Of({"FindPaletteColor", "DBSetLayer"}),
            (Lines{"FindPaletteColor(\"Teal\") -> 0", "DBSetLayer(#2, RGB(0 0 0))",
                   "FindPaletteColor(\"red\") -> 0", "DBSetLayer(#3, RGB(0 0 0))",
                   "FindPaletteColor(\"\") -> 0", "DBSetLayer(#4, RGB(0 0 0))"}));
}

TEST_F(AbbImport, undo_steps_have_the_hosts_texts) {
  m_Host.m_Translations[L"(*v*)Create plate object"] = L"Schild anlegen";
  m_Host.m_Translations[L"(*v*)Adding text"] = L"Text";
  EXPECT_EQ(Import(Plate("4", "2", Text("A"))), 1);
  EXPECT_EQ(Calls().Of({"UNOpenStep"}),
            (Lines{"UNOpenStep(\"Schild anlegen\")", "UNOpenStep(\"Text\")"}));
}

// --- Drill points ---

TEST_F(AbbImport, a_diameter_of_0_and_none_are_the_default_of_sixteen_hundredths_of_an_inch) {
  EXPECT_EQ(Import(Plate("4", "2",
                         "<DRILLPOINT/><DRILLPOINT><DIAMETER>0</DIAMETER></DRILLPOINT>"
                         "<DRILLPOINT><DIAMETER>0.5</DIAMETER></DRILLPOINT>")),
            1);
  EXPECT_EQ(Calls().Of({"SetXMLDrillPoint"}),
            (Lines{"SetXMLDrillPoint(1, 0.40640000000000004)", "SetXMLDrillPoint(0, 0)",
                   "SetXMLDrillPoint(1, 0.40640000000000004)", "SetXMLDrillPoint(0, 0)",
                   "SetXMLDrillPoint(1, 1.27)", "SetXMLDrillPoint(0, 0)"}));
}

TEST_F(AbbImport, a_drill_point_is_measured_from_the_panes_left_and_top) {
  m_Host.m_Store.m_LastPaneBounds = {.left = 2.54, .top = 25.4, .right = 12.7, .bottom = 20.32};
  EXPECT_EQ(Import(Plate("4", "2", "<DRILLPOINT><XLOC>0.5</XLOC><YLOC>2</YLOC></DRILLPOINT>")), 1);
  EXPECT_EQ(Calls().Of({"SetDrillPointObj"}), (Lines{"SetDrillPointObj((1500 8000))"}));
}

TEST_F(AbbImport, places_of_drill_points_keep_to_32_bits) {
  EXPECT_EQ(Import(Plate("4", "2",
                         "<DRILLPOINT><XLOC>1e300</XLOC><YLOC>1e999</YLOC></DRILLPOINT>"
                         "<DRILLPOINT><XLOC>-1e9</XLOC><YLOC>-1e9</YLOC></DRILLPOINT>")),
            1);
  EXPECT_EQ(Calls().Of({"SetDrillPointObj"}),
            (Lines{"SetDrillPointObj((2147483647 -2147483648))",
                   "SetDrillPointObj((-2147483648 2147483647))"}));
}

TEST_F(AbbImport, a_drill_point_that_the_host_does_not_make_gets_no_attributes) {
  Calls().Next("SetDrillPointObj", {0});
  EXPECT_EQ(Import(Plate("4", "2", "<DRILLPOINT><COLOR>Red</COLOR></DRILLPOINT>")), 1);
  EXPECT_EQ(Calls().Of({"DBGetFirstMember"}), (Lines{"DBGetFirstMember(L2) -> none"}));
  EXPECT_EQ(Calls().Count("DBSetSheetLayer"), 1U);
  EXPECT_EQ(Calls().Count("DBDeselectAll"), 2U);
}

// --- Hostile files ---

TEST_F(AbbImport, a_hundred_thousand_plates_take_time_in_proportion) {
  std::string plates;
  for (int plate = 0; plate < 100'000; ++plate) plates += Plate("4", "2");
  Calls().Limit(0);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(Import(plates), 1);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(60));
}

TEST_F(AbbImport, ten_megabytes_of_text_in_one_attribute_end_in_an_error) {
  EXPECT_EQ(Import(Plate("4", "2", Text(std::string(9 << 20, 'x')))), 0);
  EXPECT_EQ(Calls().Text(), "");
}

TEST_F(AbbImport, deep_nesting_ends_in_an_error) {
  std::string deep;
  for (int level = 0; level < 100'000; ++level) deep += "<a>";
  EXPECT_EQ(Import(deep), 0);
  EXPECT_EQ(Calls().Text(), "");
}

}  // namespace
