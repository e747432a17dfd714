#include "host/document/plate_layout.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>

#include "host/document/document_application.h"
#include "host/document/document_store.h"
#include "host/document/notices.h"

namespace rastrel::document {
namespace {

// A blank of 60 by 40 cm whose plates are laid out the way an import does it.
class PlateLayout : public testing::Test {
 protected:
  // Adds a plate object as an import does, and returns its handle; 0 when the host refuses it.
  ObjectHandle Add(int count, double width, double height, const CWorldRect& margins = {},
                   double gap = 0, bool fromBottom = false) {
    auto plate = application.NewGenericPlateObject(count, width, height, margins, gap, gap);
    if (!plate) return 0;
    const SignBlank& blank = document.Blank();
    const CWorldPoint start = StartOnEmptyPage(blank, margins, fromBottom);
    laid = fromBottom ? plate->CreatePanesWithOriginBottomLeft(start, blank.width, blank.height)
                      : plate->CreatePanesWithOriginTopLeft(start, blank.width, blank.height);
    ObjectHandle handle = 0;
    EXPECT_EQ(plate.release()->Add(1, 1, 0, handle), 1);
    store.DSAddObject(handle);
    return application.AdjustPlateObjects(0, 0, 1);
  }

  [[nodiscard]] const PlateShape& Shape(ObjectHandle handle) const {
    return std::get<PlateShape>(document.Find(handle)->shape);
  }
  [[nodiscard]] int Page(ObjectHandle handle) { return store.DBGetPageRange(handle).first; }
  CGenericPlateObject& Item(ObjectHandle handle) {
    return dynamic_cast<CGenericPlateObject&>(
        *store.DBGetObjectElement(handle)->GetPlaceholderItem());
  }
  void Grow(ObjectHandle handle, int count) {
    CGenericPlateObject& item = Item(handle);
    item.ResetData(count, item.GetPaneWidth(), item.GetPaneHeight(), item.GetMargins(),
                   item.GetHorizontalGap(), item.GetVerticalGap(), {}, 0);
  }

  Document document;
  DocumentStore store{document};
  Notices notices;
  DocumentApplication application{document, store, notices};
  int laid = 0;
};

TEST_F(PlateLayout, panes_stand_in_rows_from_the_top_left_corner) {
  const ObjectHandle plate = Add(7, 20, 10);
  EXPECT_EQ(laid, 7);
  const auto& panes = Shape(plate).panes;
  ASSERT_EQ(panes.size(), 7U);
  EXPECT_EQ(panes[0], (CWorldRect{0, 40, 20, 30}));
  EXPECT_EQ(panes[2], (CWorldRect{40, 40, 60, 30}));
  EXPECT_EQ(panes[3], (CWorldRect{0, 30, 20, 20}));
  EXPECT_EQ(panes[6], (CWorldRect{0, 20, 20, 10}));
}

TEST_F(PlateLayout, rows_go_upward_from_the_bottom_left_corner) {
  const ObjectHandle plate = Add(4, 20, 10, {}, 0, true);
  const auto& panes = Shape(plate).panes;
  ASSERT_EQ(panes.size(), 4U);
  EXPECT_EQ(panes[0], (CWorldRect{0, 10, 20, 0}));
  EXPECT_EQ(panes[3], (CWorldRect{0, 20, 20, 10}));
}

TEST_F(PlateLayout, margins_and_gaps_take_room) {
  // 60 - 2 - 3 leaves 55: two panes of 20 with a gap of 5, and 10 over.
  const ObjectHandle plate = Add(5, 20, 10, {2, 1, 3, 4}, 5);
  const auto& panes = Shape(plate).panes;
  EXPECT_EQ(laid, 4);  // 40 - 1 - 4 leaves 35: two rows of 10 with 5 between, a third would need 40
  EXPECT_EQ(panes[0], (CWorldRect{2, 39, 22, 29}));
  EXPECT_EQ(panes[1], (CWorldRect{27, 39, 47, 29}));
  EXPECT_EQ(panes[2], (CWorldRect{2, 24, 22, 14}));
}

TEST_F(PlateLayout, a_pane_as_large_as_the_blank_fits_and_a_larger_one_is_refused_with_a_message) {
  EXPECT_NE(Add(1, 60, 40), 0U);
  EXPECT_TRUE(notices.Losses().empty());
  EXPECT_EQ(Add(1, 60.01, 40), 0U);
  EXPECT_EQ(Add(1, 60, 40.01), 0U);
  ASSERT_EQ(notices.Losses().size(), 2U);
  EXPECT_NE(notices.Losses()[0].find(L"60.01 by 40 cm does not fit on the blank of 60 by 40 cm"),
            std::wstring::npos);
}

TEST_F(PlateLayout, measures_that_are_no_sizes_are_refused) {
  EXPECT_EQ(Add(1, std::numeric_limits<double>::quiet_NaN(), 1), 0U);
  EXPECT_EQ(Add(1, std::numeric_limits<double>::infinity(), 1), 0U);
  EXPECT_EQ(Add(1, 0, 1), 0U);
  EXPECT_EQ(Add(1, 1, -1), 0U);
  EXPECT_EQ(Add(0, 1, 1), 0U);
  EXPECT_EQ(Add(MaximumPanes + 1, 1, 1), 0U);
  EXPECT_EQ(document.ObjectCount(), 0U);
}

TEST_F(PlateLayout, a_second_plate_object_begins_below_the_first) {
  Add(4, 20, 10);
  const ObjectHandle second = Add(1, 30, 5);
  EXPECT_EQ(Shape(second).panes[0], (CWorldRect{0, 20, 30, 15}));
  EXPECT_EQ(Page(second), 1);
}

TEST_F(PlateLayout, a_plate_object_that_does_not_fit_below_gets_a_page_of_its_own) {
  Add(4, 20, 10);
  const ObjectHandle second = Add(1, 30, 25);
  EXPECT_EQ(Page(second), 2);
  EXPECT_EQ(Shape(second).panes[0], (CWorldRect{0, 40, 30, 15}));
}

// Below a row of 10 cm there is room for three of three panes.
TEST_F(PlateLayout, panes_that_fill_the_room_below_a_plate_exactly_stay_on_its_page) {
  for (const auto& [count, page] : {std::pair(8, 1), std::pair(9, 1), std::pair(10, 2)}) {
    for (const bool fromBottom : {false, true}) {
      const ObjectHandle first = Add(3, 20, 10, {}, 0, fromBottom);
      const ObjectHandle second = Add(count, 20, 10, {}, 0, fromBottom);
      EXPECT_EQ(Page(second), page) << count;
      EXPECT_EQ(Shape(second).panes.size(), static_cast<std::size_t>(count));
      document.Remove(second);
      document.Remove(first);
    }
  }
}

TEST_F(PlateLayout, as_many_panes_are_laid_as_the_blank_holds_and_no_more) {
  for (const auto& [count, fitting] : {std::pair(11, 11), std::pair(12, 12), std::pair(13, 12)}) {
    const ObjectHandle plate = Add(count, 20, 10);
    EXPECT_EQ(laid, fitting) << count;
    document.Remove(plate);
  }
}

TEST_F(PlateLayout, a_pane_more_is_appended_and_moves_none) {
  const ObjectHandle plate = Add(1, 20, 10);
  for (int count = 2; count <= 12; ++count) Grow(plate, count);
  EXPECT_EQ(Shape(plate).panes, [] {
    std::vector<CWorldRect> all;
    for (int row = 0; row < 4; ++row) {
      for (int column = 0; column < 3; ++column) {
        all.push_back({20.0 * column, 40.0 - 10 * row, 20.0 * column + 20, 30.0 - 10 * row});
      }
    }
    return all;
  }());
  EXPECT_EQ(Item(plate).GetPaneCount(), 12);
  EXPECT_EQ(Item(plate).GetLastPaneBounds(), (CWorldRect{40, 10, 60, 0}));
}

TEST_F(PlateLayout, a_pane_too_many_for_the_page_goes_to_a_new_plate_on_the_next) {
  const ObjectHandle plate = Add(12, 20, 10);
  store.DBSetLayer(plate, CVKColor(255, COLORSPACE_RGB, 0, 0));
  Grow(plate, 13);
  ASSERT_EQ(document.Members(host::DocumentRoot).size(), 2U);
  const ObjectHandle next = document.Members(host::DocumentRoot).back();
  EXPECT_EQ(Page(next), 2);
  EXPECT_EQ(Shape(next).panes, (std::vector<CWorldRect>{{0, 40, 20, 30}}));
  EXPECT_EQ(document.Find(next)->attributes.layer, document.Find(plate)->attributes.layer);
  EXPECT_NE(store.DBGetSheetLayer(next), store.DBGetSheetLayer(plate));
  // The last plate of the list is the one with the new pane, as an import expects.
  const auto list = store.DBCreateList(host::DocumentRoot, 9, ObjFilter_IsGenericPlate);
  EXPECT_EQ(store.DBGetLastMember(list), next);
  store.DBDestroyList(list);
}

TEST_F(PlateLayout, a_walk_over_panes_goes_on_on_further_pages) {
  const ObjectHandle plate = Add(1, 20, 10);
  Grow(plate, 26);
  int panes = 0;
  for (CPane* pane = Item(plate).GetFirstPane(); pane; pane = Item(plate).GetNextPane()) ++panes;
  EXPECT_EQ(panes, 26);
  EXPECT_EQ(document.HighestPage(), 3);
}

TEST_F(PlateLayout, a_pane_of_the_walk_keeps_its_edges_while_the_walk_goes_on_to_further_pages) {
  const ObjectHandle plate = Add(1, 20, 10);
  Grow(plate, 40);
  std::vector<CPane*> panes;
  for (CPane* pane = Item(plate).GetFirstPane(); pane; pane = Item(plate).GetNextPane())
    panes.push_back(pane);
  ASSERT_EQ(panes.size(), 40U);
  EXPECT_EQ(Item(plate).GetNextPane(), nullptr) << "the walk is at its end";
  for (std::size_t number = 0; number < panes.size(); ++number) {
    const CWorldRect& edges = Shape(plate).panes[number % 12];
    EXPECT_EQ(panes[number]->GetLeft(), edges.left) << number;
    EXPECT_EQ(panes[number]->GetTop(), edges.top) << number;
  }
  EXPECT_EQ(Item(plate).GetFirstPane()->GetPlateObject(), plate) << "a second walk";
}

TEST_F(PlateLayout, a_layout_ends_the_walk_before_it) {
  const ObjectHandle plate = Add(1, 20, 10);
  Grow(plate, 26);
  ASSERT_NE(Item(plate).GetFirstPane(), nullptr);
  Grow(plate, 27);
  EXPECT_EQ(Item(plate).GetNextPane(), nullptr);
}

TEST_F(PlateLayout, a_plate_whose_continuation_is_gone_is_continued_anew) {
  for (const bool forGood : {true, false}) {
    const ObjectHandle plate = Add(12, 20, 10);
    Grow(plate, 13);
    const ObjectHandle gone = Shape(plate).continuation;
    forGood ? document.Destroy(gone) : static_cast<void>(document.Remove(gone));
    int panes = 0;
    for (CPane* pane = Item(plate).GetFirstPane(); pane; pane = Item(plate).GetNextPane()) ++panes;
    EXPECT_EQ(panes, 12);
    Grow(plate, 14);
    const ObjectHandle next = Shape(plate).continuation;
    EXPECT_NE(next, gone);
    EXPECT_TRUE(document.Holds(next));
    EXPECT_EQ(Shape(next).panes.size(), 2U);
    document.Destroy(next);
    document.Destroy(plate);
  }
}

TEST_F(PlateLayout, panes_that_are_added_one_by_one_fill_pages_in_order) {
  const ObjectHandle plate = Add(1, 20, 10);
  for (int pane = 1; pane < 30; ++pane) application.AddPaneToPlateObject(plate);
  const ObjectHandle second = Shape(plate).continuation;
  const ObjectHandle third = Shape(second).continuation;
  EXPECT_EQ(Shape(plate).panes.size(), 12U);
  EXPECT_EQ(Shape(second).panes, Shape(plate).panes);
  ASSERT_EQ(Shape(third).panes.size(), 6U);
  EXPECT_EQ(Shape(third).panes[5], (CWorldRect{40, 30, 60, 20}));
  EXPECT_EQ(Page(second), 2);
  EXPECT_EQ(Page(third), 3);
  EXPECT_EQ(Shape(third).continuation, 0U);
}

TEST_F(PlateLayout, panes_are_added_in_turn_to_several_plates_and_to_a_new_continuation) {
  const ObjectHandle first = Add(12, 20, 10);
  const ObjectHandle second = Add(12, 20, 10);
  for (int pane = 0; pane < 3; ++pane) {
    application.AddPaneToPlateObject(first);
    application.AddPaneToPlateObject(second);
  }
  EXPECT_EQ(Shape(Shape(first).continuation).panes.size(), 3U);
  EXPECT_EQ(Shape(Shape(second).continuation).panes.size(), 3U);
  const ObjectHandle gone = Shape(second).continuation;
  document.Destroy(gone);
  application.AddPaneToPlateObject(second);
  EXPECT_EQ(Shape(Shape(second).continuation).panes.size(), 1U);
  application.AddPaneToPlateObject(gone);
  application.AddPanesToPlateObject(first, 0);
  EXPECT_EQ(Shape(Shape(first).continuation).panes.size(), 3U);
}

TEST_F(PlateLayout, a_plate_does_not_grow_over_the_one_below_it) {
  const ObjectHandle first = Add(1, 20, 10);
  const ObjectHandle second = Add(1, 30, 5);
  Grow(first, 4);  // three fit beside each other; below them is the second
  EXPECT_EQ(Shape(first).panes.size(), 3U);
  EXPECT_EQ(Shape(second).panes[0].top, 30);
  EXPECT_EQ(document.HighestPage(), 2);
}

TEST_F(PlateLayout, ten_thousand_plates_of_one_size_fill_pages_in_order) {
  const ObjectHandle plate = Add(1, 20, 10);
  ObjectHandle last = plate;
  for (int i = 1; i < 10000; ++i) {
    Grow(last, Item(last).GetPaneCount() + 1);
    last = document.SharedPlateObjects()->back();
  }
  EXPECT_EQ(document.HighestPage(), 834);  // 12 on a page
  EXPECT_EQ(Shape(last).panes.size(), 4U);
}

TEST_F(PlateLayout, a_gap_below_nothing_that_would_stack_panes_up_is_no_layout) {
  EXPECT_EQ(Add(5, 20, 10, {}, -20), 0U);
}

}  // namespace
}  // namespace rastrel::document
