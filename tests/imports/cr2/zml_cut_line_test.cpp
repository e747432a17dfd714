// The cut lines of second generation templates, call by call, from records made by hand.

#include <gtest/gtest.h>

#include "tests/imports/cr2/zml_fixture.h"

namespace {

using namespace rastrel::imports;
using namespace rastrel::test;

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

}  // namespace
