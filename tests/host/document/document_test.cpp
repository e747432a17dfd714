#include "host/document/document.h"

#include <gtest/gtest.h>

#include "host/document/document_store.h"

namespace rastrel::document {
namespace {

ObjectHandle AddDrill(Document& document, double x) {
  const ObjectHandle handle = document.Create(DrillShape{{x, 1}, 0.4});
  EXPECT_TRUE(document.Insert(handle, host::DocumentRoot));
  return handle;
}

TEST(Document, handles_ascend_and_are_never_given_twice) {
  Document document;
  const ObjectHandle first = AddDrill(document, 1);
  const ObjectHandle second = AddDrill(document, 2);
  document.Destroy(second);
  EXPECT_LT(first, second);
  EXPECT_LT(second, AddDrill(document, 3));
  EXPECT_EQ(document.Find(second), nullptr);
  EXPECT_EQ(document.Find(0), nullptr);
  EXPECT_EQ(document.Find(host::DocumentRoot), nullptr);
}

TEST(Document, an_object_stands_in_one_place) {
  Document document;
  const ObjectHandle group = document.Create(GroupShape());
  const ObjectHandle drill = AddDrill(document, 1);
  EXPECT_FALSE(document.Insert(drill, group));
  EXPECT_TRUE(document.Remove(drill));
  EXPECT_TRUE(document.Insert(drill, group));
  EXPECT_EQ(document.Members(group), std::vector<ObjectHandle>{drill});
  EXPECT_FALSE(document.Insert(12345, group));
  EXPECT_FALSE(document.Insert(group, drill)) << "a drill point holds nothing";
}

TEST(Document, a_group_can_not_be_put_into_itself) {
  Document document;
  const ObjectHandle outer = document.Create(GroupShape());
  const ObjectHandle inner = document.Create(GroupShape());
  EXPECT_TRUE(document.Insert(inner, outer));
  EXPECT_FALSE(document.Insert(outer, inner));
  EXPECT_FALSE(document.Insert(outer, outer));
}

TEST(Document, a_destroyed_group_takes_its_members_with_it) {
  Document document;
  const ObjectHandle group = document.Create(GroupShape());
  const ObjectHandle drill = document.Create(DrillShape());
  document.Insert(drill, group);
  document.Insert(group, host::DocumentRoot);
  document.Destroy(group);
  EXPECT_EQ(document.Find(drill), nullptr);
  EXPECT_TRUE(document.Members(host::DocumentRoot).empty());
  EXPECT_EQ(document.ObjectCount(), 0U);
}

TEST(Document, a_step_is_undone_and_done_again_as_a_whole) {
  Document document;
  const ObjectHandle kept = AddDrill(document, 1);
  document.OpenStep(L"outer");
  document.OpenStep(L"inner");
  const ObjectHandle added = AddDrill(document, 2);
  document.CloseStep();
  document.Edit(kept)->attributes.sheetLayer = 7;
  document.Remove(kept);
  document.CloseStep();
  EXPECT_EQ(document.StepNames(), std::vector<std::wstring>{L"outer"});

  ASSERT_TRUE(document.Undo());
  EXPECT_EQ(document.Members(host::DocumentRoot), std::vector<ObjectHandle>{kept});
  EXPECT_EQ(document.Find(kept)->attributes.sheetLayer, 0);
  EXPECT_FALSE(document.Undo());

  ASSERT_TRUE(document.Redo());
  EXPECT_EQ(document.Members(host::DocumentRoot), std::vector<ObjectHandle>{added});
  EXPECT_EQ(document.Find(kept)->attributes.sheetLayer, 7);
  EXPECT_FALSE(document.Redo());
}

TEST(Document, an_empty_step_and_one_without_history_leave_nothing_to_undo) {
  Document document;
  document.OpenStep(L"nothing");
  document.CloseStep();
  EXPECT_TRUE(document.StepNames().empty());
  document.KeepHistory(false);
  document.OpenStep(L"unkept");
  AddDrill(document, 1);
  document.CloseStep();
  EXPECT_TRUE(document.StepNames().empty());
}

TEST(Document, the_oldest_step_is_forgotten_behind_the_depth_of_history) {
  Document document;
  for (std::size_t i = 0; i <= Document::HistoryDepth; ++i) {
    document.OpenStep(std::to_wstring(i));
    AddDrill(document, 1);
    document.CloseStep();
  }
  const auto names = document.StepNames();
  EXPECT_EQ(names.size(), Document::HistoryDepth);
  EXPECT_EQ(names.front(), L"1");
}

TEST(Document, the_highest_page_is_that_of_an_object_in_the_document) {
  Document document;
  EXPECT_EQ(document.HighestPage(), 0);
  const ObjectHandle drill = AddDrill(document, 1);
  EXPECT_EQ(document.HighestPage(), 1);
  document.SetPages(drill, {2, 5});
  EXPECT_EQ(document.HighestPage(), 5);
  document.OpenStep(L"away");
  document.Remove(drill);
  document.CloseStep();
  EXPECT_EQ(document.HighestPage(), 0);
  document.Undo();
  EXPECT_EQ(document.HighestPage(), 5);
}

TEST(Document, a_sheet_layer_number_is_given_once) {
  Document document;
  EXPECT_EQ(document.NextEmptyLayer(), 1);
  EXPECT_TRUE(document.AddSheetLayer({1, L"one"}));
  EXPECT_FALSE(document.AddSheetLayer({1, L"again"}));
  EXPECT_FALSE(document.AddSheetLayer({0, L"none"}));
  document.RemoveSheetLayer(1);
  EXPECT_EQ(document.NextEmptyLayer(), 2);
}

TEST(DocumentStore, a_list_keeps_the_members_of_its_moment_but_for_those_destroyed) {
  Document document;
  DocumentStore store(document);
  const ObjectHandle first = AddDrill(document, 1);
  const ObjectHandle second = AddDrill(document, 2);
  const auto list = store.DBCreateList(host::DocumentRoot, 9, ObjFilter_IsCurrent);
  AddDrill(document, 3);
  EXPECT_EQ(store.DBGetMemberCount(list), 2);
  store.DBDestroyObject(first);
  EXPECT_EQ(store.DBGetFirstMember(list), second);
  EXPECT_EQ(store.DBGetNextMember(list), 0U);
  EXPECT_EQ(store.DBGetLastMember(list), second);
  store.DBDestroyList(list);
  EXPECT_EQ(store.DBGetFirstMember(list), 0U);
  EXPECT_EQ(store.OpenLists(), 0U);
}

TEST(DocumentStore, a_list_of_the_page_on_show_leaves_other_pages_out) {
  Document document;
  DocumentStore store(document);
  const ObjectHandle here = AddDrill(document, 1);
  document.SetPages(AddDrill(document, 2), {2, 3});
  const auto list = store.DBCreateList(host::DocumentRoot, 3, ObjFilter_IsCurrent);
  EXPECT_EQ(store.DBGetFirstMember(list), here);
  EXPECT_EQ(store.DBGetMemberCount(list), 1);
  document.SetDisplayPage(3);
  const auto other = store.DBCreateList(host::DocumentRoot, 3, ObjFilter_IsCurrent);
  EXPECT_NE(store.DBGetFirstMember(other), here);
}

TEST(DocumentStore, selecting_twice_counts_once) {
  Document document;
  DocumentStore store(document);
  const ObjectHandle drill = AddDrill(document, 1);
  store.DBSelect(drill);
  store.DBSetTrait(drill, DBTRAIT_SELECTED, 1);
  EXPECT_EQ(document.Selection().size(), 1U);
  store.DBSetTrait(drill, DBTRAIT_SELECTED, 0);
  EXPECT_TRUE(document.Selection().empty());
}

TEST(DocumentStore, a_matrix_maps_a_group_and_what_stands_in_it) {
  Document document;
  DocumentStore store(document);
  AddDrill(document, 1);
  AddDrill(document, 3);
  const auto list = store.DBCreateList(host::DocumentRoot, 9, ObjFilter_IsCurrent);
  const ObjectHandle group = store.DSGroupObjects(list, 2, store.DBGetFirstMember(list));
  EXPECT_EQ(document.Bounds(group), (BOUNDS{0.8, 3.2, 0.8, 1.2}));
  store.DBApplyTM(group, TM{2, 0, 0, 2, 10, 0});
  const BOUNDS bounds = document.Bounds(group);
  EXPECT_DOUBLE_EQ(bounds.xmin, 11.6);
  EXPECT_DOUBLE_EQ(bounds.xmax, 16.4);
  EXPECT_DOUBLE_EQ(bounds.ymax, 2.4);
}

TEST(DocumentStore, operations_on_no_object_do_nothing_and_give_0) {
  Document document;
  DocumentStore store(document);
  for (const ObjectHandle none : {ObjectHandle{0}, host::DocumentRoot, ObjectHandle{99}}) {
    LINESTYLE style{5, 5};
    EXPECT_EQ(store.DBGetLineStyle(none, style), 0);
    EXPECT_EQ(style, (LINESTYLE{5, 5}));
    EXPECT_EQ(store.DSAddObject(none), 0);
    EXPECT_EQ(store.DBGetObjectElement(none), nullptr);
    EXPECT_EQ(store.DBGetSheetLayer(none), 0);
    store.DBSetLayer(none, CVKColor());
    store.DBSetPageRange(none, {1, 1});
    store.DBSetTrait(none, 1, 1);
    store.DBApplyTM(none, TM());
    store.DBDestroyObject(none);
  }
}

}  // namespace
}  // namespace rastrel::document
