// The building of second generation templates, call by call, from records made by hand.

#include <gtest/gtest.h>

#include "rastrel/imports/add_plate_object.h"
#include "rastrel/imports/cr2/graphic_frames.h"
#include "rastrel/imports/cr2/load_graphic.h"
#include "rastrel/imports/cr2/template_build.h"
#include "rastrel/imports/cr2/text_frames.h"
#include "rastrel/imports/cr2/text_variables.h"
#include "tests/imports/cr2/build_transcript.h"
#include "tests/imports/template_fixture.h"

namespace {

using namespace rastrel::imports;
using namespace rastrel::test;

const CVKColor Red(0x0000FF, COLORSPACE_RGB, 0, 0);
const CVKColor Green(0x00FF00, COLORSPACE_RGB, 0, 0);
const CVKColor Invisible(-1, COLORSPACE_RGB, 0, 0);
const std::string RedText = "RGB(255 0 0)";
const std::string GreenText = "RGB(0 255 0)";

/// A blank of 40 by 20 cm with its origin at the bottom left, and plates of 8 by 4 with the same.
class ZmlBuild : public TemplateTest {
 protected:
  ZmlBuild() {
    m_Records.tableSize.placement = Place(7, 0, 0, 40, 20);
    m_Records.plateTemplate.placement = Place(7, 0, 0, 8, 4);
    m_Records.plates.resize(1);
  }

  static CR2_PLACEMENT Place(int origin, double x, double y, double width, double height) {
    return {
        .origin = origin, .x = x, .y = y, .width = width, .height = height, .constrained = false};
  }
  TemplateImport Begin() {
    return BeginTemplateImport({m_Host.m_Store, m_Host.m_Text, m_Host.m_Application}, L"ZML FILE");
  }
  void Build() {
    TemplateImport import = Begin();
    BuildZml(import, m_Records, L"");
  }

  /// The calls up to the list of plate objects, the plate's color read by the setting.
  static std::string PlateMade(const std::string& color = "invisible",
                               const std::string& furtherPanes = "0") {
    return std::string(
               "NewFontReplacement(\"cr2\")\nOnNew()\nSetSignBlankSize(40, 20, 1)\n"
               "SetSignBlankOriginPos(7)\n") +
           (color == "invisible" ? "Read(\"ZML IMPORT\", \"Invisible Plate\") -> null\n"
                                   "FindPaletteColor(-1) -> 1\n"
                                 : "") +
           NewPlate({.blank = "40 20",
                     .measures = "8, 4, (0 0 0 0), 0, 0",
                     .start = "P1.CreatePanesWithOriginBottomLeft((0 0), 40, 20) -> 1",
                     .color = color,
                     .isZml = true}) +
           "AddPanesToPlateObject(#2, " + furtherPanes + ")\n";
  }
  /// The list of the one plate object, with the calls for its panes.
  static std::string Panes(const std::string& panes) {
    return "DBCreateList(1, 9, IsGenericPlate) -> L1\n" + Walk("L1", {"#2"}) +
           "DBGetObjectElement(#2)\n" + panes + "DBDestroyList(L1)\n";
  }
  static std::string LayerRead() {
    return "DBGetPageRange(#2) -> 1..1\nDBGetSheetLayer(#2) -> 1\n";
  }

  Cr2Document m_Records;
};

TEST_F(ZmlBuild, a_plate_without_content_is_a_pane_in_a_new_document) {
  Build();
  EXPECT_EQ(Calls().Text(),
            PlateMade() + Panes("P1 gives pane 1\n" + LayerRead() + "P1 has no further pane\n"));
}

TEST_F(ZmlBuild, further_plates_are_panes_that_are_added_at_once) {
  m_Records.plates.resize(3);
  Build();
  EXPECT_EQ(Calls().Text(),
            PlateMade("invisible", "2") +
                Panes("P1 gives pane 1\n" + LayerRead() + "P1 gives pane 2\n" + LayerRead() +
                      "P1 gives pane 3\n" + LayerRead() + "P1 has no further pane\n"));
}

TEST_F(ZmlBuild, the_blank_takes_any_origin_and_the_plate_both_spacings) {
  m_Records.tableSize.placement.origin = 5;
  m_Records.tableSize.margins = {.left = 1, .top = 2, .right = 3, .bottom = 4};
  m_Records.plateTemplate.spacing = 99;
  m_Records.plateTemplate.xSpacing = 0.5;
  m_Records.plateTemplate.ySpacing = 0.25;
  Build();
  EXPECT_EQ(Calls().Of({"SetSignBlankOriginPos", "NewGenericPlateObject",
                        "CreatePanesWithOriginTopLeft", "SetPlateObjectParameters"}),
            (HostCalls::Lines{"SetSignBlankOriginPos(5)",
                              "NewGenericPlateObject(1, 8, 4, (1 2 3 4), 0.5, 0.25) -> P1",
                              "P1.CreatePanesWithOriginTopLeft((1 18), 40, 20) -> 1",
                              "SetPlateObjectParameters((1 2 3 4), 0.5, 0.25)"}));
}

TEST_F(ZmlBuild, a_host_without_a_view_keeps_its_document_and_the_log_says_so) {
  m_Host.m_Application.m_HasView = false;
  Build();
  EXPECT_EQ(Calls().Count("OnNew"), 0U);
  EXPECT_EQ(Log(), "[Import] the host has no view to replace the document in\r\n");
}

TEST_F(ZmlBuild, a_plate_with_a_stroke_color_has_it_and_then_the_fill_color) {
  m_Records.plateTemplate.colors.stroke = std::make_unique<CVKColor>(Red);
  m_Records.plateTemplate.colors.fill = std::make_unique<CVKColor>(Green);
  Build();
  const std::string calls = Calls().Text();
  const std::string made = PlateMade(RedText);
  const std::size_t panes = made.find("AddPanesToPlateObject");
  EXPECT_TRUE(calls.starts_with(made.substr(0, panes) + "DBGetLayer(#2) -> " + RedText +
                                "\nIsInvisibleColor(" + RedText + ") -> 0\nDBSetLayer(#2, " +
                                GreenText + ")\n" + made.substr(panes)))
      << calls;
}

TEST_F(ZmlBuild, an_invisible_plate_drops_the_fill_color) {
  m_Records.plateTemplate.colors.fill = std::make_unique<CVKColor>(Green);
  Build();
  EXPECT_EQ(Calls().Of({"DBGetLayer", "IsInvisibleColor", "DBSetLayer"}),
            (HostCalls::Lines{"DBSetLayer(#2, invisible)", "DBGetLayer(#2) -> invisible",
                              "IsInvisibleColor(invisible) -> 1"}));
}

TEST_F(ZmlBuild, with_the_setting_at_0_a_plate_without_stroke_has_the_palette_s_first_color) {
  m_Host.m_Settings[{L"ZML IMPORT", L"Invisible Plate"}] = L"0";
  m_Host.m_Application.m_PaletteByIndex = {Red, Green};
  m_Records.plateTemplate.colors.fill = std::make_unique<CVKColor>(Green);
  Build();
  EXPECT_EQ(Calls().Of({"FindPaletteColor", "DBSetLayer"}),
            (HostCalls::Lines{"FindPaletteColor(0) -> 1", "DBSetLayer(#2, " + RedText + ")",
                              "DBSetLayer(#2, " + GreenText + ")"}));
}

TEST_F(ZmlBuild, with_an_empty_palette_such_a_plate_is_black) {
  m_Host.m_Settings[{L"ZML IMPORT", L"Invisible Plate"}] = L"0";
  Build();
  EXPECT_EQ(Calls().Of({"FindPaletteColor", "DBSetLayer"}),
            (HostCalls::Lines{"FindPaletteColor(0) -> 0", "DBSetLayer(#2, RGB(0 0 0))"}));
}

TEST_F(ZmlBuild, a_plate_that_does_not_fit_leaves_the_new_document_without_panes) {
  m_Records.plateTemplate.placement.width = 41;
  Build();
  EXPECT_EQ(Calls().Count("AddPanesToPlateObject"), 0U);
  const std::string calls = Calls().Text();
  EXPECT_TRUE(
      calls.ends_with("DBCreateList(1, 9, IsGenericPlate) -> L1\n"
                      "DBGetFirstMember(L1) -> none\nDBDestroyList(L1)\n"))
      << calls;
}

TEST_F(ZmlBuild, a_pane_that_comes_again_with_its_own_plate_object_is_passed_over_before) {
  // The document has a plate object of two panes, the second of which went on in the next object.
  const auto first =
      AddPlateObject({m_Host.m_Store, m_Host.m_Text, m_Host.m_Application},
                     {.count = 2, .width = 8, .height = 4, .margins = {}, .color = Red});
  ASSERT_EQ(first, 2U);
  m_Host.m_Store.m_PlateOfPane = [](const std::string& plate, int pane) {
    return plate == "P1" && pane == 1 ? 2U : 3U;
  };
  m_Records.plates.resize(3);
  Calls().Clear();
  Build();
  const std::string calls = Calls().Text();
  const std::string ofThird = "DBGetPageRange(#3) -> 1..1\nDBGetSheetLayer(#3) -> 2\n";
  const std::string panes =
      Walk("L1", {"#2", "#3"}) + "DBGetObjectElement(#2)\nP1 gives pane 1\n" + LayerRead() +
      "P1 gives pane 2\nP1 has no further pane\nDBGetObjectElement(#3)\n"
      "P2 gives pane 1\n" +
      ofThird + "P2 gives pane 2\n" + ofThird + "P2 gives pane 3\nDBDestroyList(L1)\n";
  EXPECT_TRUE(calls.ends_with(panes)) << calls << "instead of\n" << panes;
}

TEST_F(ZmlBuild, a_pane_of_an_object_that_is_not_in_the_list_is_filled_with_that_object) {
  m_Host.m_Store.m_PlateOfPane = [](const std::string&, int) { return 77U; };
  Build();
  EXPECT_EQ(Calls().Of({"DBGetPageRange"}), (HostCalls::Lines{"DBGetPageRange(#77) -> 1..1"}));
}

TEST_F(ZmlBuild, an_import_ends_at_a_plate_during_which_it_is_cancelled) {
  TemplateImport import = Begin();
  import.cancelled = true;
  m_Records.plates.resize(2);
  Calls().Clear();
  BuildZml(import, m_Records, L"");
  const std::string calls = Calls().Text();
  EXPECT_TRUE(calls.ends_with(Panes("P1 gives pane 1\n" + LayerRead()) +
                              "MessageBoxW(\"Import cancelled!\", \"ZML FILE\", 16)\n"))
      << calls;
}

TEST_F(ZmlBuild, a_character_outside_code_page_1252_is_named_in_a_message_at_the_end) {
  m_Records.plates.front().textFrames.resize(1);
  CR2_TEXT_FRAME& frame = m_Records.plates.front().textFrames.front();
  frame.placement = Place(7, 0, 0, 2, 1);
  frame.texts.resize(1);
  frame.texts.front().lines.resize(1);
  frame.texts.front().lines.front().spans.resize(1);
  frame.texts.front().lines.front().spans.front().text = L"&Omega;";
  Build();
  EXPECT_TRUE(Calls().Has("edPasteString(\"?\", 1, 0, null, false)"));
  EXPECT_EQ(Calls().All().back(),
            "MessageBoxW(\"Unicode character(s) encountered which\\ncannot be displayed "
            "properly\\n\\nThese will be displayed as question marks (?)\", \"ZML FILE\", 48)");
}

TEST_F(ZmlBuild, graphic_frames_are_looked_up_and_never_appear) {
  const std::wstring path = Write("<svg/>", "logo.svg");
  m_Records.graphics.push_back({.name = L"logo", .file = path});
  m_Records.plates.front().graphicFrames.resize(2);
  m_Records.plates.front().graphicFrames.front().graphic = L"logo";
  Build();
  EXPECT_EQ(Calls().Text(), PlateMade() + Panes("P1 gives pane 1\n" + LayerRead() + LayerRead() +
                                                LayerRead() + "P1 has no further pane\n"));
}

TEST_F(ZmlBuild, a_graphic_that_is_not_readable_as_named_is_looked_for_in_the_image_directory) {
  const std::wstring path = Write("<svg/>", "logo.svg");
  const std::vector<CR2_GRAPHIC> entries{{.name = L"whole", .file = path},
                                         {.name = L"short", .file = L"logo.svg"},
                                         {.name = L"gone", .file = L"gone.svg"}};
  const GraphicsDirectory graphics(entries);
  const std::wstring images = m_Scratch.Wide();
  EXPECT_EQ(GetGraphicLocation(graphics, L"whole", images), path);
  EXPECT_EQ(GetGraphicLocation(graphics, L"short", images), images + L"\\logo.svg");
  EXPECT_EQ(GetGraphicLocation(graphics, L"short", L""), std::nullopt);
  EXPECT_EQ(GetGraphicLocation(graphics, L"short"), std::nullopt);
  EXPECT_EQ(GetGraphicLocation(graphics, L"gone", images), std::nullopt);
  EXPECT_EQ(GetGraphicLocation(graphics, L"none", images), std::nullopt);
}

/// A cut line of 4 by 2 cm whose lower left corner is at 1, 1 of the pane.
class ZmlCutLine : public ZmlBuild {
 protected:
  ZmlCutLine() {
    m_Records.cutLine.present = 1.0;
    m_Records.cutLine.file = L"cut.svg";
    m_Records.cutLine.placement = Place(7, 1, 1, 4, 2);
  }
  /// The load of objects, the first list of which is L2. They are 2 by 1 cm. `styled` are the calls
  /// that give them the line width.
  static std::string Load(const Names& brought, const std::string& styled,
                          const std::string& keepsThickLines = "0",
                          const std::string& matrix = "2 0 0 2 1 1") {
    return "GetDisplayPage() -> 1\n" + ZmlSettingsChanged() +
           LoadedObjects("ExpectCutLine(true)\nLoadTHZ(document, null, \"cut.svg\", 1, " +
                             keepsThickLines + ") -> " + std::to_string(brought.size()) +
                             "\nExpectCutLine(false)",
                         {"#2"}, brought, 2) +
           "DSCreateSelectedList() -> L5\n" + OnPlatesLayer("L5", brought) + Walk("L5", brought) +
           styled + "DBGetSelectedListBounds(L5) -> (0 2 0 1)\n" + Placed("L5", brought, matrix) +
           ZmlSettingsRestored();
  }
  /// The reading of a line style, with a line of the width 0.1 cm.
  static std::string Style(const std::string& object) {
    return "DBGetLineStyle(" + object + ") -> (width 0.1 style 48)\n";
  }
  static std::string Measured(const std::string& object) {
    return "DBInvalidateBounds(" + object + ")\nDBValidateBounds(" + object + ")\n";
  }
  static std::string OnPlatesPage(const std::string& object) {
    return "DBSetPageRange(" + object + ", 1..1)\nDBSetSheetLayer(" + object + ", 1)\n";
  }
  /// New objects have a line of the width 0.1 cm, the plate object none.
  void LoadLines(int count) {
    m_Host.m_Store.m_MakeLoaded = [this, count] {
      for (int object = 0; object < count; ++object) {
        const auto made = m_Host.m_Store.Make(128, true);
        m_Host.m_Store.Find(made)->lineStyle = {.width = 0.1, .style = 48};
        m_Host.m_Store.Find(made)->lineColor = Red;
      }
    };
    Calls().Always("LoadTHZ", count);
  }
};

TEST_F(ZmlCutLine, without_a_stroke_keeps_the_lines_of_its_file) {
  m_Host.m_Store.m_NewLineStyle = {.width = 0.1, .style = 48};
  Build();
  const std::string calls = Calls().Text();
  const std::string panes =
      Panes("P1 gives pane 1\n" + LayerRead() + Load({"#3"}, Style("#3") + Measured("#3")) +
            "DBGetFirstMember(L5) -> #3\nDBGetObjectType(#3) -> 0\n" + Walk("L5", {"#3"}) +
            Walk("L5", {"#3"}) + OnPlatesPage("#3") + "DBDestroyList(L5)\n" + LayerRead() +
            "P1 has no further pane\n");
  EXPECT_TRUE(calls.ends_with(panes)) << calls << "instead of\n" << panes;
}

TEST_F(ZmlCutLine, gives_its_width_to_every_object_that_has_a_line) {
  m_Records.cutLine.strokeWidth = 0.5;
  m_Host.m_Store.m_MakeLoaded = [this] {
    m_Host.m_Store.Make(0, true);
    m_Host.m_Store.Make(0, true);
    m_Host.m_Store.Find(3)->lineStyle = {.width = 0.1, .style = 48 | 5};
    m_Host.m_Store.Find(4)->lineStyle = {.width = 0, .style = 16};
  };
  Build();
  const std::string calls = Calls().Text();
  EXPECT_NE(calls.find("DBGetLineStyle(#3) -> (width 0.1 style 53)\n"
                       "DBSetLineStyle(#3, (width 0.5 style 53))\n" +
                       Measured("#3") +
                       "DBGetLineStyle(#4) -> (width 0 style 16)\n"
                       "DBGetSelectedListBounds(L5)"),
            std::string::npos)
      << calls;
}

TEST_F(ZmlCutLine, a_width_above_0_keeps_thick_lines_while_loading) {
  for (const auto& [width, flag] : {std::pair(0.5, "1"), {0.0, "0"}, {-0.5, "0"}}) {
    Calls().Clear();
    m_Records.cutLine.strokeWidth = width;
    Build();
    EXPECT_EQ(Calls().Of({"LoadTHZ"}),
              (HostCalls::Lines{"LoadTHZ(document, null, \"cut.svg\", 1, " + std::string(flag) +
                                ") -> 1"}));
  }
}

TEST_F(ZmlCutLine, a_negative_width_leaves_lines_and_their_bounds_alone) {
  LoadLines(1);
  m_Records.cutLine.strokeWidth = -0.5;
  Build();
  EXPECT_FALSE(Calls().Has("DBGetLineStyle(#3) -> (width 0.1 style 48)"));
  EXPECT_FALSE(Calls().Has("DBInvalidateBounds(#3)"));
}

TEST_F(ZmlCutLine, a_hairline_makes_hairlines) {
  LoadLines(1);
  m_Records.cutLine.strokeWidth = LineStyleHairline;
  Build();
  EXPECT_TRUE(
      Calls().Has("DBSetLineStyle(#3, (width " + TextOf(LineStyleHairline) + " style 32))"));
}

TEST_F(ZmlCutLine, its_colors_join_the_palette_and_go_to_visible_lines_and_insides) {
  LoadLines(2);
  m_Records.cutLine.colors.stroke = std::make_unique<CVKColor>(Green);
  m_Records.cutLine.colors.fill = std::make_unique<CVKColor>(Red);
  m_Records.cutLine.strokeWidth = -1;
  Build();
  const std::string calls = Calls().Text();
  const std::string colored =
      "IsColorInPalette(" + RedText + ") -> 0\nAddColorToPalette(" + RedText +
      ") -> 1\nIsColorInPalette(" + GreenText + ") -> 0\nAddColorToPalette(" + GreenText +
      ") -> 1\nDBGetFirstMember(L5) -> #3\nDBGetObjectType(#3) -> 128\n" +
      Walk("L5", {"#3", "#4"}) + Style("#3") + "DBGetLineColor(#3) -> " + RedText +
      "\nIsInvisibleColor(" + RedText + ") -> 0\nDBSetLineColor(#3, " + GreenText +
      ")\nDBGetObjectElement(#3)\nDBGetLayer(#3) -> RGB(0 0 0)\nIsInvisibleColor(RGB(0 0 0)) -> "
      "0\nDBSetLayer(#3, " +
      RedText + ")\n" + Style("#4");
  EXPECT_NE(calls.find(colored), std::string::npos) << calls;
}

TEST_F(ZmlCutLine, an_object_without_a_line_or_with_an_invisible_one_keeps_its_line_color) {
  m_Records.cutLine.colors.stroke = std::make_unique<CVKColor>(Green);
  m_Host.m_Store.m_MakeLoaded = [this] {
    for (int object = 0; object < 2; ++object) m_Host.m_Store.Make(0, true);
    m_Host.m_Store.Find(3)->lineStyle = {.width = 0, .style = 16};
    m_Host.m_Store.Find(4)->lineStyle = {.width = 0, .style = 32};
    m_Host.m_Store.Find(4)->lineColor = Invisible;
  };
  Build();
  EXPECT_EQ(Calls().Count("DBSetLineColor"), 0U);
}

TEST_F(ZmlCutLine, an_object_whose_inside_is_invisible_keeps_it) {
  m_Records.cutLine.colors.fill = std::make_unique<CVKColor>(Red);
  m_Host.m_Store.m_MakeLoaded = [this] {
    for (int object = 0; object < 2; ++object) m_Host.m_Store.Make(0, true);
    m_Host.m_Store.Find(3)->layer = Invisible;
  };
  Build();
  EXPECT_FALSE(Calls().Has("DBSetLayer(#3, " + RedText + ")"));
  EXPECT_TRUE(Calls().Has("DBSetLayer(#4, " + RedText + ")"));
}

TEST_F(ZmlCutLine, an_object_that_is_not_filled_keeps_its_inside) {
  m_Records.cutLine.colors.fill = std::make_unique<CVKColor>(Red);
  Calls().Always("IsFilled", 0);
  Build();
  EXPECT_FALSE(Calls().Has("DBSetLayer(#3, " + RedText + ")"));
}

TEST_F(ZmlCutLine, colors_go_to_the_members_of_a_group) {
  m_Records.cutLine.colors.fill = std::make_unique<CVKColor>(Red);
  m_Host.m_Store.m_MakeLoaded = [this] {
    RecordingStore& store = m_Host.m_Store;
    const auto member = store.Make(128, false);
    store.Find(store.Make(DBTYPE_GROUP, true))->members = {member};
  };
  Build();
  EXPECT_TRUE(Calls().Has("DBCreateList(4, 9, IsCurrent) -> L6"));
  EXPECT_TRUE(Calls().Has("DBSetLayer(#3, " + RedText + ")"));
}

TEST_F(ZmlCutLine, that_asks_for_it_becomes_a_group_on_the_plate_s_page_and_layer) {
  LoadLines(2);
  m_Records.cutLine.group = true;
  Build();
  const std::string calls = Calls().Text();
  EXPECT_NE(calls.find(Walk("L5", {"#3", "#4"}) + OnPlatesPage("#3") + OnPlatesPage("#4") +
                       "DBGetMemberCount(L5) -> 2\n" + Grouped("L5", "#3", "#5") +
                       OnPlatesPage("#5") + "DBDestroyList(L5)\n"),
            std::string::npos)
      << calls;
}

TEST_F(ZmlCutLine, is_not_grouped_if_it_does_not_ask_or_is_one_object_or_the_host_cannot) {
  LoadLines(2);
  Build();
  EXPECT_EQ(Calls().Count("DSGroupObjects"), 0U);
  LoadLines(1);
  m_Records.cutLine.group = true;
  Build();
  EXPECT_EQ(Calls().Count("DSGroupObjects"), 0U);
  LoadLines(2);
  Calls().Always("DSGroupObjects", 0);
  Build();
  EXPECT_EQ(Calls().Count("DSGroupObjects"), 1U);
  EXPECT_EQ(Calls().Count("DBAddToList"), 5U) << "of the loads alone";
}

TEST_F(ZmlCutLine, that_cannot_be_loaded_is_shown_on_each_pane) {
  m_Records.plates.resize(2);
  m_Records.cutLine.colors.stroke = std::make_unique<CVKColor>(Green);
  m_Records.cutLine.group = true;
  Calls().Always("LoadTHZ", 0);
  Build();
  EXPECT_EQ(
      Calls().Of({"TMessageBox", "IsColorInPalette", "DSGroupObjects"}),
      (HostCalls::Lines{"TMessageBox(\"Unable to load graphics file\\ncut.svg\", \"ZML FILE\", 48)",
                        "IsColorInPalette(" + GreenText + ") -> 0",
                        "TMessageBox(\"Unable to load graphics file\\ncut.svg\", \"ZML FILE\", 48)",
                        "IsColorInPalette(" + GreenText + ") -> 0"}));
}

TEST_F(ZmlCutLine, only_a_width_given_keeps_the_proportions) {
  m_Records.cutLine.placement = Place(1, 1, 3, 6, 0);
  Build();
  // 6 by 3 with its upper left corner at 1, 3 of the pane: the lower one is at 1, 0.
  EXPECT_TRUE(Calls().Has("DBApplyTM(#3, (3 0 0 3 1 0))"));
}

TEST_F(ZmlCutLine, counts_from_the_template_origin_inside_its_margins) {
  m_Records.plateTemplate.placement.origin = 1;
  m_Records.plateTemplate.margins = {.left = 0.5, .top = 0.25, .right = 0, .bottom = 0};
  m_Records.cutLine.placement = Place(1, 1, 1, 4, 2);
  Build();
  // The pane's top is at 4: 2.75 is the frame's upper edge, 0.75 its lower one.
  EXPECT_TRUE(Calls().Has("DBApplyTM(#3, (2 0 0 2 1.5 0.75))"));
}

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
