// The plates of second generation templates, call by call, from records made by hand.

#include <gtest/gtest.h>

#include "rastrel/imports/add_plate_object.h"
#include "rastrel/imports/cr2/graphic_frames.h"
#include "tests/imports/cr2/zml_fixture.h"

namespace {

using namespace rastrel::imports;
using namespace rastrel::test;

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

TEST_F(ZmlBuild, a_walk_ends_at_the_panes_that_come_again_with_their_own_plate_object) {
  // The document has a plate object of three panes; the last two went on in the next object.
  const auto first =
      AddPlateObject({m_Host.m_Store, m_Host.m_Text, m_Host.m_Application},
                     {.count = 3, .width = 8, .height = 4, .margins = {}, .color = Red});
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
      "P1 gives pane 2\nDBGetObjectElement(#3)\n"
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

}  // namespace
