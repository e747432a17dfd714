// The building of first generation templates, call by call, from records made by hand.

#include <gtest/gtest.h>

#include "rastrel/imports/cr2/template_build.h"
#include "tests/imports/cr2/build_transcript.h"
#include "tests/imports/template_fixture.h"

namespace {

using namespace rastrel::imports;
using namespace rastrel::test;

const CVKColor Red(0x0000FF, COLORSPACE_RGB, 0, 0);
const CVKColor Green(0x00FF00, COLORSPACE_RGB, 0, 0);
const std::string RedText = "RGB(255 0 0)";
const std::string GreenText = "RGB(0 255 0)";

/// A table of 24 by 12 inches and plates of 4 by 2, which are 10.16 by 5.08 cm, from its lower left
/// corner.
class Cr2Build : public TemplateTest {
 protected:
  Cr2Build() {
    m_Records.tableSize.placement = {
        .origin = 7, .x = 0, .y = 0, .width = 24, .height = 12, .constrained = false};
    m_Records.plateTemplate.placement = {
        .origin = 1, .x = 0, .y = 0, .width = 4, .height = 2, .constrained = false};
    m_Records.plates.resize(1);
  }

  void Build() {
    TemplateImport import = BeginTemplateImport(
        {m_Host.m_Store, m_Host.m_Text, m_Host.m_Application}, L"Crown Trophy XML");
    BuildCr2(import, m_Records);
  }

  /// The calls of a build up to the first pane.
  static std::string PlateMade(const NewPlateText& plate = {}) {
    return "NewFontReplacement(\"cr2\")\nSetSignBlankSize(60.96, 30.48, 1)\n"
           "SetSignBlankOriginPos(7)\n" +
           NewPlate(plate);
  }
  /// The walk of the panes of a single plate with that content.
  static std::string OnePane(const std::string& content) {
    return "DBGetObjectElement(#2)\nP1 gives pane 1\n" + content + "P1 has no further pane\n" +
           End();
  }
  static std::string End() { return "AdjustPlateObjects(0, 0, 1) -> #2\n"; }

  /// A frame of 2 by 1 inches, an inch from the left and an inch from the bottom.
  static CR2_PLACEMENT Place() {
    return {.origin = 7, .x = 1, .y = 1, .width = 2, .height = 1, .constrained = false};
  }

  /// Adds a graphic of that name to the directory, with a file that can be read; returns the path.
  std::wstring AddGraphic(const std::wstring& name, const std::string& file) {
    m_Records.graphics.push_back({.name = name, .file = Write("<svg/>", file)});
    return m_Records.graphics.back().file;
  }
  /// Adds a frame with that graphic to the first plate.
  CR2_GRAPHIC_FRAME& AddFrame(const std::wstring& graphic) {
    auto& frames = m_Records.plates.front().graphicFrames;
    frames.emplace_back();
    frames.back().graphic = graphic;
    frames.back().placement = Place();
    return frames.back();
  }
  /// A graphic named "logo" that is loaded into a frame of the first plate.
  CR2_GRAPHIC_FRAME& AddLogo() {
    m_Logo = AddGraphic(L"logo", "logo.svg");
    return AddFrame(L"logo");
  }

  /// The calls of a load into the frame, with the lists counted from `list`. The objects are 2 by 1
  /// cm, so that they are scaled by 2.54, and go to 2.54, 2.54.
  std::string Load(const Names& brought, int list, const Names& before = {"#2"},
                   const std::string& answer = "") const {
    const std::string selected = "L" + std::to_string(list + 3);
    return "GetDisplayPage() -> 1\nRead(\"Preferences\", \"DontStripThickLine\") -> null\n" +
           Cr2SettingsChanged() +
           LoadedObjects(Call("LoadTHZ(document, null, ", m_Logo, ", 1, 1) -> ") +
                             (answer.empty() ? std::to_string(brought.size()) : answer),
                         before, brought, list) +
           "DSCreateSelectedList() -> " + selected + "\n" + OnPlatesLayer(selected, brought) +
           "DBGetSelectedListBounds(" + selected + ") -> (0 2 0 1)\n" +
           Placed(selected, brought, "2.54 0 0 2.54 2.54 2.54") + Cr2SettingsRestored();
  }
  static std::string Call(const std::string& start, const std::wstring& path,
                          const std::string& end) {
    return start + TextOf(path) + end;
  }

  Cr2Document m_Records;
  std::wstring m_Logo;
};

TEST_F(Cr2Build, a_plate_without_content_is_a_pane) {
  Build();
  EXPECT_EQ(Calls().Text(), PlateMade() + OnePane(""));
}

TEST_F(Cr2Build, the_plate_has_the_table_s_margins_the_spacing_and_the_stroke_color) {
  m_Records.tableSize.margins = {.left = 1, .top = 2, .right = 3, .bottom = 4};
  m_Records.plateTemplate.margins = {.left = 9, .top = 9, .right = 9, .bottom = 9};
  m_Records.plateTemplate.spacing = 0.5;
  m_Records.plateTemplate.colors.stroke = std::make_unique<CVKColor>(Red);
  m_Records.plateTemplate.colors.fill = std::make_unique<CVKColor>(Green);
  Build();
  const std::string margins = "(2.54 5.08 7.62 10.16), 1.27, 1.27";
  const std::string calls = Calls().Text();
  EXPECT_TRUE(calls.starts_with(
      "NewFontReplacement(\"cr2\")\nSetSignBlankSize(60.96, 30.48, 1)\nSetSignBlankOriginPos(7)\n"
      "IsColorInPalette(" +
      RedText + ") -> 0\nAddColorToPalette(" + RedText + ") -> 1\n" +
      NewPlate({.measures = "10.16, 5.08, " + margins,
                .margins = margins,
                .start = "P1.CreatePanesWithOriginBottomLeft((2.54 10.16), 60.96, 30.48) -> 1",
                .color = RedText})))
      << calls;
}

TEST_F(Cr2Build, a_stroke_color_of_the_palette_is_not_added_again) {
  m_Records.plateTemplate.colors.stroke = std::make_unique<CVKColor>(Red);
  Calls().Always("IsColorInPalette", 1);
  Build();
  EXPECT_EQ(Calls().Count("IsColorInPalette"), 1U);
  EXPECT_EQ(Calls().Count("AddColorToPalette"), 0U);
}

TEST_F(Cr2Build, a_table_with_an_origin_other_than_1_and_7_has_its_origin_at_1) {
  for (const int origin : {-1, 0, 1, 2, 5, 6, 8, 9, 10}) {
    Calls().Clear();
    m_Records.tableSize.placement.origin = origin;
    Build();
    EXPECT_EQ(Calls().Of({"SetSignBlankOriginPos"}), (HostCalls::Lines{"SetSignBlankOriginPos(1)"}))
        << origin;
    EXPECT_EQ(m_Records.tableSize.placement.origin, 1) << origin;
  }
}

TEST_F(Cr2Build, further_plates_are_panes_of_the_object) {
  m_Records.plates.resize(3);
  Build();
  EXPECT_EQ(Calls().Text(), PlateMade() +
                                "AddPaneToPlateObject(#2)\nAddPaneToPlateObject(#2)\n"
                                "DBGetObjectElement(#2)\nP1 gives pane 1\nP1 gives pane 2\n"
                                "P1 gives pane 3\nP1 has no further pane\n" +
                                End());
}

TEST_F(Cr2Build, records_of_a_refused_file_ask_for_a_blank_and_a_plate_of_no_size) {
  m_Records = {};
  Build();
  EXPECT_EQ(Calls().Text(),
            "NewFontReplacement(\"cr2\")\nSetSignBlankSize(0, 0, 1)\nSetSignBlankOriginPos(1)\n"
            "GetSignBlankSize() -> (60 30)\nGetOriginPosIndex() -> 1\nGetDisplayPage() -> 1\n"
            "NewGenericPlateObject(1, 0, 0, (0 0 0 0), 0, 0) -> none\n"
            "AdjustPlateObjects(0, 0, 1) -> none\n");
}

TEST_F(Cr2Build, plates_that_do_not_fit_the_blank_are_left_out) {
  m_Records.plateTemplate.placement.width = 25;
  m_Records.cutLine.present = 1.0;
  AddLogo();
  Build();
  EXPECT_EQ(Calls().Count("LoadTHZ"), 0U);
  EXPECT_TRUE(Calls().Has("AdjustPlateObjects(0, 0, 1) -> none"));
}

TEST_F(Cr2Build, a_graphic_is_loaded_under_changed_settings_and_placed_in_its_frame) {
  AddLogo();
  Build();
  EXPECT_EQ(Calls().Text(),
            PlateMade() + OnePane(Load({"#3"}, 1) +
                                  "DBGetMemberCount(L4) -> 1\nDBGetFirstMember(L4) -> #3\n"
                                  "DBGetObjectType(#3) -> 0\n" +
                                  Walk("L4", {"#3"}) +
                                  "GetDisplayPage() -> 1\nDBGetMemberCount(L4) -> 1\n"
                                  "DBGetFirstMember(L4) -> #3\nSetPageRange(#3, 1)\n"
                                  "DBDestroyList(L4)\n"));
}

TEST_F(Cr2Build, a_host_s_own_values_of_the_settings_are_restored) {
  AddLogo();
  m_Host.m_Settings[{L"Pages", L"CollapseToZero"}] = L"0";
  m_Host.m_Settings[{L"Sheet Layer", L"Merge"}] = L"7";
  m_Host.m_Settings[{L"Grouping", L"CollapseDatabase"}] = L"2";
  m_Host.m_Settings[{L"IMPPDF", L"TextAsGraphics"}] = L"1";
  m_Host.m_Settings[{L"IMPPDF", L"ShowDialog"}] = L"5";
  m_Host.m_Settings[{L"Preferences", L"DontStripThickLine"}] = L"0";
  Build();
  EXPECT_EQ(
      Calls().Of({"Write"}),
      (HostCalls::Lines{
          "Write(\"Pages\", \"CollapseToZero\", \"0\")", "Write(\"Sheet Layer\", \"Merge\", \"0\")",
          "Write(\"Grouping\", \"CollapseDatabase\", \"0\")",
          "Write(\"IMPPDF\", \"TextAsGraphics\", \"1\")",
          "Write(\"IMPPDF\", \"ShowDialog\", \"0\")", "Write(\"Pages\", \"CollapseToZero\", \"0\")",
          "Write(\"Sheet Layer\", \"Merge\", \"7\")",
          "Write(\"Grouping\", \"CollapseDatabase\", \"2\")",
          "Write(\"IMPPDF\", \"TextAsGraphics\", \"1\")",
          "Write(\"IMPPDF\", \"ShowDialog\", \"5\")"}));
  EXPECT_TRUE(Calls().Has(Call("LoadTHZ(document, null, ", m_Logo, ", 1, 0) -> 1")));
}

TEST_F(Cr2Build, a_history_that_is_off_stays_off) {
  AddLogo();
  m_Host.m_Store.WriteKeepHistory(0);
  Calls().Clear();
  Build();
  EXPECT_EQ(Calls().Of({"GetKeepHistory", "WriteKeepHistory"}),
            (HostCalls::Lines{"GetKeepHistory() -> 0"}));
  m_Host.m_Store.WriteKeepHistory(1);
}

TEST_F(Cr2Build, a_graphic_that_cannot_be_loaded_is_shown_and_the_import_goes_on) {
  AddLogo();
  Calls().Always("LoadTHZ", 0);
  Build();
  EXPECT_EQ(Calls().Text(),
            PlateMade() +
                OnePane("GetDisplayPage() -> 1\n"
                        "Read(\"Preferences\", \"DontStripThickLine\") -> null\n" +
                        Cr2SettingsChanged() +
                        LoadedObjects(Call("LoadTHZ(document, null, ", m_Logo, ", 1, 1) -> 0"),
                                      {"#2"}, {}, 1) +
                        "TMessageBox(\"Unable to load graphics file\\n" + TextOf(m_Logo).substr(1) +
                        ", \"Crown Trophy XML\", 48)\n" + Cr2SettingsRestored()));
}

TEST_F(Cr2Build, objects_that_a_failed_load_leaves_are_selected) {
  AddLogo();
  Calls().Always("LoadTHZ", 0);
  m_Host.m_Store.m_MakeLoaded = [this] { m_Host.m_Store.Make(0, true); };
  Build();
  EXPECT_EQ(Calls()
                .Of({"DBAddToList", "DBSetSelectedList", "DSCreateSelectedList", "TMessageBox"})
                .size(),
            3U);
  EXPECT_TRUE(Calls().Has("DBAddToList(L3, #3)"));
  EXPECT_TRUE(Calls().Has("DBSetSelectedList(L3)"));
}

TEST_F(Cr2Build, an_object_of_a_known_handle_with_another_type_counts_as_new) {
  AddLogo();
  m_Host.m_Store.m_MakeLoaded = [this] { m_Host.m_Store.Find(2)->type = 55; };
  Build();
  EXPECT_TRUE(Calls().Has("DBAddToList(L3, #2)"));
}

TEST_F(Cr2Build, the_message_of_a_failed_load_has_at_most_260_characters) {
  // The text in front of the path has 29 characters.
  for (const std::size_t length : {230U, 231U, 232U}) {
    Calls().Clear();
    m_Records.cutLine.present = 1.0;
    m_Records.cutLine.file = std::wstring(length, L'x');
    Calls().Always("LoadTHZ", 0);
    Build();
    EXPECT_EQ(Calls().Of({"TMessageBox"}),
              (HostCalls::Lines{"TMessageBox(\"Unable to load graphics file\\n" +
                                std::string(std::min<std::size_t>(length, 231), 'x') +
                                "\", \"Crown Trophy XML\", 48)"}))
        << length;
  }
}

TEST_F(Cr2Build, a_native_file_is_loaded_as_such_and_its_sheet_layers_are_removed) {
  const std::wstring path = AddGraphic(L"native", "a.krv.svg");
  AddFrame(L"native");
  m_Host.m_Store.m_MakeLoaded = [this] {
    m_Host.m_Store.Make(0, true);
    m_Host.m_Application.AddNewSheetLayer(2);
    m_Host.m_Application.AddNewSheetLayer(3);
  };
  Build();
  EXPECT_EQ(Calls().Count("LoadTHZ"), 0U);
  EXPECT_EQ(Calls().Of({"LoadVEFile", "DSCreateSelectedList", "GetSheetLayerFromPalette",
                        "RemoveSheetFromPalette"}),
            (HostCalls::Lines{Call("LoadVEFile(null, ", path, ", 1) -> 1"),
                              "DSCreateSelectedList() -> L4", "GetSheetLayerFromPalette(4)",
                              "GetSheetLayerFromPalette(3)", "RemoveSheetFromPalette(3)",
                              "GetSheetLayerFromPalette(2)", "RemoveSheetFromPalette(2)"}));
}

TEST_F(Cr2Build, a_native_file_is_one_with_krv_in_lower_or_upper_case_anywhere) {
  for (const char* name : {"a.krv", "a.KRV", "a.krvx", "b.KRV.eps"}) AddGraphic(L"n", name);
  for (const char* name : {"a.Krv", "krv", "a.kr", "akrv.svg"}) AddGraphic(L"n", name);
  for (std::size_t place = 0; place < m_Records.graphics.size(); ++place) {
    m_Records.graphics[place].name = std::to_wstring(place);
    AddFrame(std::to_wstring(place));
  }
  Build();
  EXPECT_EQ(Calls().Count("LoadVEFile"), 4U);
  EXPECT_EQ(Calls().Count("LoadTHZ"), 4U);
}

TEST_F(Cr2Build, a_host_without_a_loader_of_native_files_fails_the_load_and_logs_it_once) {
  AddGraphic(L"native", "a.krv");
  AddFrame(L"native");
  AddFrame(L"native");
  m_Host.m_HasGraphicsIO = false;
  Build();
  EXPECT_EQ(Calls().Count("TMessageBox"), 2U);
  EXPECT_EQ(Log(), "[Import] the host loads no graphics\r\n");
}

TEST_F(Cr2Build, a_host_without_a_view_is_given_no_document_to_load_into) {
  AddLogo();
  m_Host.m_Application.m_HasView = false;
  Build();
  EXPECT_TRUE(Calls().Has(Call("LoadTHZ(null, null, ", m_Logo, ", 1, 1) -> 1")));
}

TEST_F(Cr2Build, a_graphic_that_is_not_in_the_directory_or_not_readable_is_left_out) {
  AddGraphic(L"logo", "logo.svg");
  m_Records.graphics.push_back({.name = L"gone", .file = m_Scratch.Wide("gone.svg")});
  m_Records.graphics.push_back({.name = L"folder", .file = m_Scratch.Wide()});
  for (const wchar_t* name : {L"Logo", L"logo ", L"", L"gone", L"folder"}) AddFrame(name);
  Build();
  EXPECT_EQ(Calls().Text(), PlateMade() + OnePane(""));
}

TEST_F(Cr2Build, of_two_entries_of_one_name_the_first_counts) {
  const std::wstring first = AddGraphic(L"logo", "1.svg");
  AddGraphic(L"logo", "2.svg");
  AddFrame(L"logo");
  Build();
  EXPECT_EQ(Calls().Of({"LoadTHZ"}),
            (HostCalls::Lines{Call("LoadTHZ(document, null, ", first, ", 1, 1) -> 1")}));
}

TEST_F(Cr2Build, two_frames_with_one_graphic_load_it_twice) {
  AddLogo();
  AddFrame(L"logo");
  Build();
  EXPECT_EQ(Calls().Count("LoadTHZ"), 2U);
}

TEST_F(Cr2Build, a_graphic_s_colors_join_the_palette_and_go_to_all_of_its_objects) {
  CR2_GRAPHIC_FRAME& frame = AddLogo();
  frame.colors.stroke = std::make_unique<CVKColor>(Red);
  frame.colors.fill = std::make_unique<CVKColor>(Green);
  Calls().Always("LoadTHZ", 2);
  Build();
  EXPECT_EQ(Calls().Text(),
            PlateMade() +
                OnePane(Load({"#3", "#4"}, 1) + "DBGetMemberCount(L4) -> 2\nIsColorInPalette(" +
                        GreenText + ") -> 0\nAddColorToPalette(" + GreenText +
                        ") -> 1\nIsColorInPalette(" + RedText + ") -> 0\nAddColorToPalette(" +
                        RedText + ") -> 1\nDBGetFirstMember(L4) -> #3\nDBGetObjectType(#3) -> 0\n" +
                        Walk("L4", {"#3", "#4"}) + "DBSetLineColor(#3, " + RedText +
                        ")\nDBSetLayer(#3, " + GreenText + ")\nDBSetLineColor(#4, " + RedText +
                        ")\nDBSetLayer(#4, " + GreenText +
                        ")\nGetDisplayPage() -> 1\nDBGetMemberCount(L4) -> 2\n" +
                        Grouped("L4", "#3", "#5") + "SetPageRange(#5, 1)\nDBDestroyList(L4)\n"));
}

TEST_F(Cr2Build, colors_go_to_the_members_of_a_graphic_that_is_a_group) {
  AddLogo().colors.fill = std::make_unique<CVKColor>(Green);
  m_Host.m_Store.m_MakeLoaded = [this] {
    RecordingStore& store = m_Host.m_Store;
    const auto first = store.Make(128, false);
    const auto second = store.Make(128, false);
    const auto group = store.Make(DBTYPE_GROUP, true);
    store.Find(group)->members = {first, second};
  };
  Build();
  EXPECT_TRUE(Calls().Has("DBCreateList(5, 9, IsCurrent) -> L5"));
  EXPECT_EQ(Calls().Of({"DBSetLayer"}),
            (HostCalls::Lines{"DBSetLayer(#2, RGB(0 0 0))", "DBSetLayer(#3, " + GreenText + ")",
                              "DBSetLayer(#4, " + GreenText + ")"}));
}

TEST_F(Cr2Build, objects_of_a_host_that_cannot_group_get_the_page_one_by_one) {
  AddLogo();
  Calls().Always("LoadTHZ", 2);
  Calls().Always("DSGroupObjects", 0);
  Build();
  const std::string calls = Calls().Text();
  EXPECT_NE(calls.find("UNOpenStep(\"Group Graphic Components\")\n"
                       "DSGroupObjects(L4, 2, #3) -> none\nUNCloseStep()\n" +
                       Walk("L4", {"#3", "#4"}) +
                       "SetPageRange(#3, 1)\nSetPageRange(#4, 1)\nDBDestroyList(L4)\n"),
            std::string::npos)
      << calls;
}

TEST_F(Cr2Build, a_load_that_brings_no_object_skips_the_rest_of_its_frame) {
  AddLogo().colors.fill = std::make_unique<CVKColor>(Green);
  m_Host.m_Store.m_MakeLoaded = [] {};
  Build();
  EXPECT_EQ(Calls().Text(),
            PlateMade() + OnePane(Load({}, 1, {"#2"}, "1") +
                                  "DBGetMemberCount(L4) -> 0\nDBDestroyList(L4)\n"));
}

TEST_F(Cr2Build, a_graphic_whose_fill_is_filtered_out_is_left_out) {
  AddLogo().colors.fill = std::make_unique<CVKColor>(Green);
  CVKColor cmyk;
  cmyk.SetColor(0, 255, 0, 0, COLORSPACE_CMYK);
  m_Records.outputFilter.push_back(std::make_unique<CVKColor>(cmyk));
  Build();
  EXPECT_EQ(Calls().Count("LoadTHZ"), 1U) << "a CMYK color equals no RGB color";
  Calls().Clear();
  m_Records.outputFilter.push_back(std::make_unique<CVKColor>(Green));
  Build();
  EXPECT_EQ(Calls().Count("LoadTHZ"), 0U);
}

TEST_F(Cr2Build, a_frame_counts_from_the_template_margins) {
  AddLogo();
  m_Records.plateTemplate.margins = {.left = 1, .top = 0.5, .right = 0, .bottom = 0};
  Build();
  // 2 inches from the left, 1.5 from the bottom.
  EXPECT_TRUE(Calls().Has("DBApplyTM(#3, (2.54 0 0 2.54 5.08 3.81))"));
}

TEST_F(Cr2Build, a_frame_without_a_placement_asks_for_the_document_s_origin) {
  AddLogo().placement = {};
  Calls().Always("GetOrigin", 9);
  Build();
  const std::string calls = Calls().Text();
  // Both factors are 0; the corner is the lower right one of the pane.
  EXPECT_NE(calls.find("DBGetSelectedListBounds(L4) -> (0 2 0 1)\nGetOrigin() -> 9\n"
                       "DBDeselectAll()\n" +
                       Walk("L4", {"#3"}) + "DBApplyTM(#3, (0 0 0 0 10.16 0))\n"),
            std::string::npos)
      << calls;
}

TEST_F(Cr2Build, content_of_a_pane_on_a_further_page_goes_to_that_page_and_its_sheet_layer) {
  m_Records.plates.resize(2);
  AddLogo();
  std::swap(m_Records.plates[0], m_Records.plates[1]);
  const auto further = m_Host.m_Store.Make(0, false);
  m_Host.m_Store.Find(further)->pages = {.first = 2, .last = 2};
  m_Host.m_Store.Find(further)->sheetLayer = 8;
  m_Host.m_Store.m_PlateOfPane = [further](const std::string&, int pane) {
    return pane == 2 ? further : 0;
  };
  Build();
  EXPECT_TRUE(Calls().Has("DBGetPageRange(#2) -> 2..2"));
  EXPECT_TRUE(Calls().Has("DBSetSheetLayer(#4, 8)"));
  EXPECT_EQ(Calls().Of({"SetPageRange"}),
            (HostCalls::Lines{"SetPageRange(#4, 2)", "SetPageRange(#4, 2)"}));
}

TEST_F(Cr2Build, graphics_come_before_text_on_each_pane) {
  AddLogo();
  m_Records.plates.front().textFrames.resize(1);
  m_Records.plates.push_back(m_Records.plates.front());
  Build();
  std::string order;
  for (const std::string& line : Calls().Of({"LoadTHZ", "InitNewText"}))
    order += line.substr(0, line.find('(')) + ' ';
  EXPECT_EQ(order, "LoadTHZ InitNewText LoadTHZ InitNewText ");
}

TEST_F(Cr2Build, a_cancelled_import_ends_after_its_plate_with_a_message) {
  m_Records.plates.resize(2);
  TemplateImport import = BeginTemplateImport({m_Host.m_Store, m_Host.m_Text, m_Host.m_Application},
                                              L"Crown Trophy XML");
  import.cancelled = true;
  import.unicodeLost = true;
  BuildCr2(import, m_Records);
  EXPECT_EQ(Calls().Text(),
            PlateMade() + "AddPaneToPlateObject(#2)\nDBGetObjectElement(#2)\nP1 gives pane 1\n" +
                End() + "MessageBoxW(\"Import cancelled!\", \"Crown Trophy XML\", 16)\n");
}

TEST_F(Cr2Build, lost_characters_are_named_in_a_message_at_the_end) {
  TemplateImport import = BeginTemplateImport({m_Host.m_Store, m_Host.m_Text, m_Host.m_Application},
                                              L"Crown Trophy XML");
  import.unicodeLost = true;
  BuildCr2(import, m_Records);
  EXPECT_EQ(Calls().All().back(),
            "MessageBoxW(\"Unicode character(s) encountered which\\ncannot be displayed "
            "properly\\n\\nThese will be displayed as question marks (?)\", \"Crown Trophy XML\", "
            "48)");
}

/// A cut line of 2 by 1 inches an inch from the lower left corner.
class Cr2CutLine : public Cr2Build {
 protected:
  Cr2CutLine() {
    m_Logo = L"cut.svg";
    m_Records.cutLine.present = 1.0;
    m_Records.cutLine.file = m_Logo;
    m_Records.cutLine.placement = Place();
  }
  /// The load, for which the host expects a cut line.
  std::string CutLineLoad(const Names& brought) const {
    std::string text = Load(brought, 1);
    const std::size_t load = text.find("LoadTHZ");
    text.insert(text.find('\n', load) + 1, "ExpectCutLine(false)\n");
    text.insert(load, "ExpectCutLine(true)\n");
    return text;
  }
  static std::string FirstPane() {
    return "DBGetObjectElement(#2)\nP1 gives pane 1\nGetDisplayPage() -> 1\n";
  }
};

TEST_F(Cr2CutLine, is_loaded_on_the_first_pane_and_loses_its_lines_without_a_stroke) {
  Build();
  EXPECT_EQ(Calls().Text(), PlateMade() + FirstPane() + CutLineLoad({"#3"}) + Walk("L4", {"#3"}) +
                                "DBGetLineStyle(#3) -> (width 0 style 0)\n"
                                "DBSetLineStyle(#3, (width 0 style 16))\n"
                                "DBGetMemberCount(L4) -> 1\nDBGetFirstMember(L4) -> #3\n"
                                "SetPageRange(#3, 1)\nDBDestroyList(L4)\n" +
                                OnePane(""));
}

TEST_F(Cr2CutLine, of_several_objects_is_grouped_whatever_its_group_says) {
  for (const bool group : {false, true}) {
    m_Records.cutLine.group = group;
    m_Records.cutLine.strokeWidth = 0.5;
    m_Records.cutLine.colors.stroke = std::make_unique<CVKColor>(Red);
    m_Records.cutLine.colors.fill = std::make_unique<CVKColor>(Green);
    Calls().Always("LoadTHZ", 2);
    Calls().Clear();
    Build();
    const std::string calls = Calls().Text();
    if (group) {
      EXPECT_EQ(Calls().Count("DSGroupObjects"), 1U);
      continue;
    }
    const std::string inPalette =
        "IsColorInPalette(" + RedText + ") -> 0\nAddColorToPalette(" + RedText + ") -> 1\n";
    EXPECT_EQ(calls, PlateMade() + FirstPane() + CutLineLoad({"#3", "#4"}) +
                         Walk("L4", {"#3", "#4"}) +
                         "DBGetLineStyle(#3) -> (width 0 style 0)\n"
                         "DBSetLineStyle(#3, (width 1.27 style 48))\n" +
                         inPalette + "DBSetLineColor(#3, " + RedText +
                         ")\nDBGetLineStyle(#4) -> (width 0 style 0)\n"
                         "DBSetLineStyle(#4, (width 1.27 style 48))\n" +
                         inPalette + "DBSetLineColor(#4, " + RedText +
                         ")\nDBGetMemberCount(L4) -> 2\n" + Grouped("L4", "#3", "#5") +
                         "SetPageRange(#5, 1)\nDBDestroyList(L4)\n" + OnePane(""));
  }
}

TEST_F(Cr2CutLine, a_hairline_stays_one_and_other_bits_of_the_style_stay) {
  m_Records.cutLine.strokeWidth = LineStyleHairline;
  m_Host.m_Store.m_NewLineStyle = {.width = 3, .style = 0x100 | 48 | 7};
  Build();
  EXPECT_TRUE(Calls().Has("DBSetLineStyle(#3, (width " + TextOf(LineStyleHairline) + " style " +
                          std::to_string(0x100 | 32 | 7) + "))"));
}

TEST_F(Cr2CutLine, that_cannot_be_loaded_is_shown_and_leaves_nothing) {
  Calls().Always("LoadTHZ", 0);
  Build();
  EXPECT_EQ(
      Calls().Of({"ExpectCutLine", "TMessageBox", "DBSetLineStyle", "DSGroupObjects"}),
      (HostCalls::Lines{
          "DBSetLineStyle(#2, (width 0 style 16))", "ExpectCutLine(true)", "ExpectCutLine(false)",
          "TMessageBox(\"Unable to load graphics file\\ncut.svg\", \"Crown Trophy XML\", 48)"}));
}

TEST_F(Cr2CutLine, of_a_plate_object_that_the_host_refuses_is_not_loaded) {
  Calls().Always("NewGenericPlateObject", 0);
  Build();
  EXPECT_EQ(Calls().Count("LoadTHZ"), 0U);
}

}  // namespace
