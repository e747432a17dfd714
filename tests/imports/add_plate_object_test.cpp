#include "rastrel/imports/add_plate_object.h"

#include <gtest/gtest.h>

#include "tests/support/checked_host.h"
#include "tests/support/library_fixture.h"

namespace {

using rastrel::imports::AddPlateObject;
using rastrel::imports::DocumentHost;
using rastrel::imports::PlateRequest;
using rastrel::test::CheckedHost;
using Lines = rastrel::test::HostCalls::Lines;

class AddPlateObjectTest : public ::testing::Test {
 protected:
  AddPlateObjectTest() : m_Document{m_Host.m_Store, m_Host.m_Text, m_Host.m_Application} {}

  rastrel::test::HostCalls& Calls() { return m_Host.m_Calls; }

  rastrel::test::LibraryRoot m_Library;
  std::size_t m_LogMark = m_Library.LogMark();
  CheckedHost m_Host;
  DocumentHost m_Document;
  /// 20 by 10 cm with margins of 1, 2, 3 and 4 cm.
  PlateRequest m_Request{.count = 3,
                         .width = 20,
                         .height = 10,
                         .margins = {.left = 1, .top = 2, .right = 3, .bottom = 4},
                         .horizontalGap = 0.5,
                         .verticalGap = 0.25,
                         .color = CVKColor(0x0000FF, COLORSPACE_RGB, 0, 0)};
};

TEST_F(AddPlateObjectTest, starts_at_the_margins_of_the_lower_left_corner_with_origin_7) {
  EXPECT_EQ(AddPlateObject(m_Document, m_Request), 2U);
  EXPECT_EQ(Calls().Of({"NewGenericPlateObject", "CreatePanesWithOriginBottomLeft",
                        "SetPlateObjectParameters"}),
            (Lines{"NewGenericPlateObject(3, 20, 10, (1 2 3 4), 0.5, 0.25) -> P1",
                   "P1.CreatePanesWithOriginBottomLeft((1 4), 60, 30) -> 3",
                   "SetPlateObjectParameters((1 2 3 4), 0.5, 0.25)"}));
}

TEST_F(AddPlateObjectTest, starts_at_the_margins_of_the_upper_left_corner_with_any_other_origin) {
  for (const int origin : {0, 1, 2, 5, 8, 9}) {
    Calls().Clear();
    m_Host.m_Application.m_BlankOrigin = origin;
    EXPECT_TRUE(AddPlateObject(m_Document, m_Request).has_value());
    EXPECT_EQ(Calls().Count("CreatePanesWithOriginTopLeft"), 1U) << origin;
    EXPECT_TRUE(Calls().All()[4].ends_with(".CreatePanesWithOriginTopLeft((1 28), 60, 30) -> 3"))
        << Calls().All()[4];
  }
}

TEST_F(AddPlateObjectTest, puts_the_object_on_the_page_on_show_or_on_the_first) {
  Calls().Next("GetDisplayPage", {4, 0});
  EXPECT_TRUE(AddPlateObject(m_Document, m_Request).has_value());
  EXPECT_TRUE(AddPlateObject(m_Document, m_Request).has_value());
  EXPECT_EQ(Calls().Of({"DBSetPageRange"}),
            (Lines{"DBSetPageRange(#2, 4..4)", "DBSetPageRange(#3, 1..1)"}));
}

TEST_F(AddPlateObjectTest, panes_that_do_not_fit_go_on_to_fresh_pages_with_objects_of_their_own) {
  m_Request.count = 5;
  Calls().Always("CreatePanesWithOriginBottomLeft", 2);
  EXPECT_EQ(AddPlateObject(m_Document, m_Request), 4U);
  EXPECT_EQ(
      Calls().Of({"NewGenericPlateObject", "Add", "DBSetSheetLayer", "DBSetPageRange",
                  "WhatisMaxNumberofPages", "AdjustPlateObjects"}),
      (Lines{
          "NewGenericPlateObject(5, 20, 10, (1 2 3 4), 0.5, 0.25) -> P1", "P1.Add(1, 1, 0) -> #2",
          "DBSetSheetLayer(#2, 1)", "DBSetPageRange(#2, 1..1)", "WhatisMaxNumberofPages(0) -> 1",
          "NewGenericPlateObject(3, 20, 10, (1 2 3 4), 0.5, 0.25) -> P2", "P2.Add(1, 1, 0) -> #3",
          "DBSetSheetLayer(#3, 2)", "DBSetPageRange(#3, 2..2)", "WhatisMaxNumberofPages(0) -> 2",
          "NewGenericPlateObject(1, 20, 10, (1 2 3 4), 0.5, 0.25) -> P3", "P3.Add(1, 1, 0) -> #4",
          "DBSetSheetLayer(#4, 3)", "DBSetPageRange(#4, 3..3)", "WhatisMaxNumberofPages(0) -> 3",
          "AdjustPlateObjects(0, 0, 1) -> #4"}));
}

TEST_F(AddPlateObjectTest, an_object_without_a_pane_is_deleted_and_the_next_page_tried) {
  Calls().Next("CreatePanesWithOriginBottomLeft", {0, 3});
  EXPECT_EQ(AddPlateObject(m_Document, m_Request), 2U);
  const std::string text = Calls().Text();
  EXPECT_NE(text.find("P1.CreatePanesWithOriginBottomLeft((1 4), 60, 30) -> 0\n"
                      "P1 deleted\n"
                      "WhatisMaxNumberofPages(0) -> 0\n"
                      "NewGenericPlateObject(3, 20, 10, (1 2 3 4), 0.5, 0.25) -> P2\n"),
            std::string::npos)
      << text;
}

TEST_F(AddPlateObjectTest, the_line_loses_its_width_and_keeps_its_other_bits) {
  m_Host.m_Store.m_NewLineStyle = {.width = 0.5, .style = 4 + 32};
  EXPECT_TRUE(AddPlateObject(m_Document, m_Request).has_value());
  EXPECT_TRUE(Calls().Has("DBSetLineStyle(#2, (width 0 style 20))"));
}

TEST_F(AddPlateObjectTest, a_count_below_1_is_nothing_and_asks_for_nothing) {
  for (const int count : {0, -1}) {
    m_Request.count = count;
    EXPECT_EQ(AddPlateObject(m_Document, m_Request), std::nullopt);
  }
  EXPECT_EQ(Calls().Text(), "");
}

TEST_F(AddPlateObjectTest, a_refusal_at_once_adds_nothing_and_is_logged) {
  m_Request.width = 56.5;  // with margins of 4 cm wider than the blank
  EXPECT_EQ(AddPlateObject(m_Document, m_Request), std::nullopt);
  EXPECT_EQ(Calls().Count("Add") + Calls().Count("AdjustPlateObjects"), 0U);
  EXPECT_EQ(m_Library.LogTextsBehind(m_LogMark),
            "[Import] the host refuses a plate of 56.5 by 10 cm, which does not fit the sign blank"
            "\r\n");
}

TEST_F(AddPlateObjectTest, a_refusal_on_a_later_page_keeps_the_objects_added_before) {
  Calls().Next("NewGenericPlateObject", {1, 0});
  Calls().Next("CreatePanesWithOriginBottomLeft", {2});
  EXPECT_EQ(AddPlateObject(m_Document, m_Request), 2U);
  EXPECT_EQ(Calls().Count("Add"), 1U);
  EXPECT_EQ(Calls().Count("AdjustPlateObjects"), 1U);
}

TEST_F(AddPlateObjectTest, a_host_that_never_lays_a_pane_out_is_not_asked_for_ever) {
  Calls().Always("CreatePanesWithOriginBottomLeft", 0);
  EXPECT_EQ(AddPlateObject(m_Document, m_Request), std::nullopt);
  EXPECT_EQ(Calls().Count("CreatePanesWithOriginBottomLeft"), 1000U);
}

TEST_F(AddPlateObjectTest, a_host_that_counts_panes_below_0_is_not_asked_for_ever) {
  Calls().Always("CreatePanesWithOriginBottomLeft", -5);
  EXPECT_EQ(AddPlateObject(m_Document, m_Request), std::nullopt);
}

TEST_F(AddPlateObjectTest, an_object_that_the_host_does_not_take_is_deleted_and_logged) {
  Calls().Next("Add", {0});
  EXPECT_TRUE(AddPlateObject(m_Document, m_Request).has_value());
  EXPECT_TRUE(Calls().Has("P1 deleted"));
  EXPECT_EQ(Calls().Count("DSAddObject"), 0U);
  EXPECT_EQ(m_Library.LogTextsBehind(m_LogMark),
            "[Import] the host did not take a plate object\r\n");
}

TEST_F(AddPlateObjectTest, formats_without_an_outline_keep_the_colors_when_all_is_laid_out) {
  EXPECT_TRUE(AddPlateObject(m_Document, m_Request, {.setsLineColor = false, .keepsColors = 1})
                  .has_value());
  EXPECT_EQ(Calls().Count("DBSetLineColor"), 0U);
  EXPECT_TRUE(Calls().Has("AdjustPlateObjects(0, 1, 1) -> #2"));
}

}  // namespace
