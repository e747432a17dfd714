#include "host/document/document.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

#include "host/document/document_store.h"

namespace rastrel::document {
namespace {

ObjectHandle AddDrill(Document& document, double x) {
  const ObjectHandle handle = document.Create(DrillShape{{x, 1}, 0.4});
  EXPECT_TRUE(document.Insert(handle, host::DocumentRoot));
  return handle;
}

// 500 thousandths of an inch are 1.27 cm.
TEST(DocumentObjects, a_text_on_a_circle_reaches_as_far_as_its_letters) {
  ArcTextShape arc;
  arc.center = {10, 20};
  arc.radius = 2;
  arc.run.size = 500;
  const BOUNDS bounds = BoundsOf(arc, {1, 0, 0, 1, 100, 0});
  EXPECT_NEAR(bounds.xmin, 106.73, 1e-9);
  EXPECT_NEAR(bounds.xmax, 113.27, 1e-9);
  EXPECT_NEAR(bounds.ymin, 16.73, 1e-9);
  EXPECT_NEAR(bounds.ymax, 23.27, 1e-9);
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

TEST(Document, of_objects_that_stand_nowhere_none_is_removed) {
  Document document;
  EXPECT_FALSE(document.Remove(12345));
  EXPECT_FALSE(document.Remove(document.Create(GroupShape())));
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

// Nested groups, the outermost first. They are in the parent as far as it takes them.
std::vector<ObjectHandle> NestGroups(Document& document, ObjectHandle parent, int levels) {
  std::vector<ObjectHandle> groups;
  for (int i = 0; i < levels; ++i) {
    groups.push_back(document.Create(GroupShape()));
    document.Insert(groups.back(), parent);
    parent = groups.back();
  }
  return groups;
}

TEST(Document, groups_stand_in_groups_down_to_the_limit) {
  for (const int levels : {DeepestGroup - 1, DeepestGroup, DeepestGroup + 1}) {
    Document document;
    const auto groups = NestGroups(document, host::DocumentRoot, levels);
    EXPECT_EQ(document.Holds(groups.back()), levels <= DeepestGroup) << levels;
    EXPECT_EQ(document.GroupLevels(groups.front()), std::min(levels, DeepestGroup));
    const ObjectHandle drill = document.Create(DrillShape{{1, 1}, 0.4});
    EXPECT_TRUE(document.Insert(drill, groups.back())) << "a drill point is no further level";
  }
}

TEST(Document, a_group_is_put_into_another_with_all_its_levels) {
  for (const int inner : {DeepestGroup - 11, DeepestGroup - 10, DeepestGroup - 9}) {
    Document document;
    const auto outside = NestGroups(document, host::DocumentRoot, 10);
    // The levels are those of the last member, beside members without any.
    const ObjectHandle top = document.Create(GroupShape());
    document.Insert(document.Create(DrillShape()), top);
    document.Insert(document.Create(GroupShape()), top);
    NestGroups(document, top, inner - 1);
    EXPECT_EQ(document.GroupLevels(top), inner);
    EXPECT_EQ(document.Insert(top, outside.back()), inner <= DeepestGroup - 10) << inner;
  }
}

TEST(Document, the_deepest_groups_are_measured_moved_and_destroyed) {
  Document document;
  DocumentStore store(document);
  const auto groups = NestGroups(document, host::DocumentRoot, DeepestGroup);
  const ObjectHandle drill = document.Create(DrillShape{{2, 1}, 1});
  document.Insert(drill, groups.back());
  EXPECT_EQ(document.Bounds(groups.front()), (BOUNDS{1.5, 2.5, 0.5, 1.5}));
  store.DBApplyTM(groups.front(), TM{1, 0, 0, 1, 10, 0});
  EXPECT_EQ(document.Bounds(groups.front()), (BOUNDS{11.5, 12.5, 0.5, 1.5}));
  document.Select(drill);
  document.Destroy(groups.front());
  EXPECT_EQ(document.Find(drill), nullptr);
  EXPECT_TRUE(document.Selection().empty());
  EXPECT_EQ(document.ObjectCount(), 0U);
  EXPECT_EQ(document.HighestPage(), 0);
}

TEST(Document, a_group_of_many_members_ends_as_fast_as_they_do) {
  constexpr std::size_t Many = 300'000;
  Document document;
  const ObjectHandle group = document.Create(GroupShape());
  for (std::size_t i = 0; i < Many; ++i) document.Insert(document.Create(DrillShape()), group);
  document.Insert(group, host::DocumentRoot);
  EXPECT_EQ(document.ObjectCount(), Many + 1);
  document.Destroy(group);
  EXPECT_EQ(document.ObjectCount(), 0U);
}

TEST(Document, pages_and_sheet_layers_that_no_file_can_hold_are_refused) {
  Document document;
  const ObjectHandle drill = AddDrill(document, 1);
  EXPECT_TRUE(document.SetPages(drill, {1, Document::LastPage - 1}));
  EXPECT_TRUE(document.SetPages(drill, {1, Document::LastPage}));
  for (const VK_PAGE_RANGE& pages :
       {VK_PAGE_RANGE{1, Document::LastPage + 1}, VK_PAGE_RANGE{0, 1}, VK_PAGE_RANGE{3, 2}}) {
    EXPECT_FALSE(document.SetPages(drill, pages)) << pages.first << " to " << pages.last;
  }
  EXPECT_EQ(document.HighestPage(), Document::LastPage);
  EXPECT_FALSE(document.SetSheetLayer(drill, -1));
  EXPECT_TRUE(document.SetSheetLayer(drill, 0));
}

TEST(Document, the_highest_sheet_layer_has_none_above_it) {
  Document document;
  const int highest = std::numeric_limits<int>::max();
  document.SetSheetLayer(AddDrill(document, 1), highest - 1);
  EXPECT_EQ(document.NextEmptyLayer(), highest);
  EXPECT_TRUE(document.AddSheetLayer({highest, L"last"}));
  EXPECT_EQ(document.NextEmptyLayer(), highest);
  EXPECT_FALSE(document.AddSheetLayer({document.NextEmptyLayer(), L"none left"}));
}

TEST(Document, no_object_is_made_when_all_handles_were_given) {
  Document document;
  EXPECT_FALSE(document.CreateAs(Document::MaximumHandles + 1, {DrillShape(), {}, 0}));
  EXPECT_TRUE(document.CreateAs(Document::MaximumHandles - 1, {DrillShape(), {}, 0}));
  EXPECT_EQ(document.Create(DrillShape()), Document::MaximumHandles);
  EXPECT_EQ(document.Create(DrillShape()), 0U);
  EXPECT_FALSE(document.Insert(0, host::DocumentRoot));
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

TEST(DocumentStore, a_matrix_maps_a_group_and_its_members) {
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

TEST(DocumentStore, pages_and_sheet_layer_of_a_group_are_those_of_all_that_it_holds) {
  Document document;
  DocumentStore store(document);
  const ObjectHandle beside = AddDrill(document, 1);
  const ObjectHandle outer = document.Create(GroupShape());
  const ObjectHandle inner = document.Create(GroupShape());
  const ObjectHandle drill = document.Create(DrillShape());
  document.Insert(drill, inner);
  document.Insert(inner, outer);
  document.Insert(outer, host::DocumentRoot);
  store.DBSetSheetLayer(outer, 5);
  store.SetPageRange(outer, 3);
  for (const ObjectHandle object : {outer, inner, drill}) {
    EXPECT_EQ(store.DBGetSheetLayer(object), 5);
    EXPECT_EQ(store.DBGetPageRange(object), (VK_PAGE_RANGE{3, 3}));
  }
  EXPECT_EQ(store.DBGetSheetLayer(beside), 0);
  EXPECT_EQ(document.HighestPage(), 3);
  document.OpenStep(L"moved");
  store.SetPageRange(outer, 4);
  document.CloseStep();
  document.Undo();
  EXPECT_EQ(store.DBGetPageRange(drill), (VK_PAGE_RANGE{3, 3}));
}

TEST(DocumentStore, the_document_itself_is_no_object_to_change) {
  Document document;
  DocumentStore store(document);
  const ObjectHandle drill = AddDrill(document, 1);
  store.DBSetSheetLayer(host::DocumentRoot, 5);
  store.DBSetPageRange(host::DocumentRoot, {2, 2});
  store.DBApplyTM(host::DocumentRoot, TM{2, 0, 0, 2, 0, 0});
  EXPECT_EQ(store.DBGetSheetLayer(drill), 0);
  EXPECT_EQ(store.DBGetPageRange(drill), (VK_PAGE_RANGE{1, 1}));
  EXPECT_EQ(document.Find(drill)->attributes.matrix, TM());
}

TEST(DocumentStore, nothing_is_derived_from_another_object) {
  Document document;
  DocumentStore store(document);
  const ObjectHandle drill = AddDrill(document, 1);
  EXPECT_EQ(store.XCGetBaseObject(drill), drill);
  EXPECT_EQ(store.XCGetOwnedOperation(drill), 0U);
  store.SetProductListValid(0, 0);
  store.RecalculateOperations();
  EXPECT_EQ(document.ObjectCount(), 1U);
}

TEST(DocumentStore, property_locks_are_kept) {
  Document document;
  DocumentStore store(document);
  const ObjectHandle drill = AddDrill(document, 1);
  store.DBSetPropertyLocks(drill, {100, 0, 50, 1});
  EXPECT_EQ(document.Find(drill)->attributes.locks, (CPropertyLocks{100, 0, 50, 1}));
  store.DBSetPropertyLocks(99, {});
}

TEST(DocumentStore, a_text_has_a_paragraph_and_nothing_else_has) {
  Document document;
  DocumentStore store(document);
  const ObjectHandle text = store.DBCreateObject(DBTYPE_PARAGRAPH);
  const ObjectHandle group = store.DBCreateObject(DBTYPE_GROUP);
  ParagraphEle* paragraph = store.DBGetObjectElement(text)->GetParagraph();
  ASSERT_NE(paragraph, nullptr);
  EXPECT_EQ(TextNamedBy(*paragraph), text);
  EXPECT_EQ(TextNamedBy({7, 0}), 0U) << "a paragraph that is in no object yet";
  EXPECT_EQ(store.DBGetObjectElement(group)->GetParagraph(), nullptr);
}

TEST(DocumentStore, a_group_takes_the_place_of_the_object_that_leads_it) {
  for (std::size_t lead = 0; lead < 3; ++lead) {
    Document document;
    DocumentStore store(document);
    const ObjectHandle below = AddDrill(document, 1);
    const std::vector<ObjectHandle> members{AddDrill(document, 2), AddDrill(document, 3),
                                            AddDrill(document, 4)};
    const ObjectHandle above = AddDrill(document, 5);
    document.DeselectAll();
    for (const ObjectHandle member : members) document.Select(member);
    const auto list = store.DSCreateSelectedList();
    document.OpenStep(L"Group");
    const ObjectHandle group = store.DSGroupObjects(list, 2, members[lead]);
    document.CloseStep();
    EXPECT_EQ(document.Members(host::DocumentRoot), (std::vector{below, group, above}));
    EXPECT_EQ(document.Members(group), members);
    EXPECT_TRUE(document.Undo());
    EXPECT_EQ(document.Members(host::DocumentRoot),
              (std::vector{below, members[0], members[1], members[2], above}));
    EXPECT_TRUE(document.Redo());
    EXPECT_EQ(document.Members(host::DocumentRoot), (std::vector{below, group, above}));
  }
}

TEST(DocumentStore, a_group_of_objects_that_lie_apart_takes_the_place_of_its_leader) {
  Document document;
  DocumentStore store(document);
  const ObjectHandle first = AddDrill(document, 1);
  const ObjectHandle between = AddDrill(document, 2);
  const ObjectHandle last = AddDrill(document, 3);
  document.DeselectAll();
  document.Select(first);
  document.Select(last);
  const ObjectHandle group = store.DSGroupObjects(store.DSCreateSelectedList(), 2, last);
  EXPECT_EQ(document.Members(host::DocumentRoot), (std::vector{between, group}));
}

TEST(DocumentStore, objects_that_would_stand_too_deep_are_not_grouped) {
  for (const int levels : {DeepestGroup - 1, DeepestGroup}) {
    Document document;
    DocumentStore store(document);
    const auto groups = NestGroups(document, host::DocumentRoot, levels);
    const ObjectHandle drill = AddDrill(document, 1);
    const auto list = store.DBCreateList(host::DocumentRoot, 9, ObjFilter_IsCurrent);
    const ObjectHandle group = store.DSGroupObjects(list, 2, drill);
    const bool deeper = levels < DeepestGroup;
    EXPECT_EQ(group != 0, deeper) << levels;
    const std::vector<ObjectHandle> both{groups.front(), drill};
    EXPECT_EQ(document.Members(host::DocumentRoot), deeper ? std::vector{group} : both);
    EXPECT_EQ(document.Members(group), deeper ? both : std::vector<ObjectHandle>());
  }
}

TEST(DocumentStore, a_matrix_that_leads_beyond_all_numbers_moves_nothing) {
  Document document;
  DocumentStore store(document);
  const ObjectHandle drill = AddDrill(document, 1);
  const TM large{1e200, 0, 0, 1e200, 0, 0};
  store.DBApplyTM(drill, large);
  store.DBApplyTM(drill, large);
  EXPECT_EQ(document.Find(drill)->attributes.matrix, large);
}

TEST(DocumentStore, a_filtered_list_holds_the_objects_of_its_kind) {
  Document document;
  DocumentStore store(document);
  const ObjectHandle drill = AddDrill(document, 1);
  const ObjectHandle text = document.Create(TextShape());
  const ObjectHandle plate = document.Create(PlateShape());
  document.Insert(text, host::DocumentRoot);
  document.Insert(plate, host::DocumentRoot);
  const auto all = store.DBCreateEmptyList();
  for (const ObjectHandle object : {plate, drill, text}) store.DBAddToList(all, object);
  store.DBAddToList(all, 99);
  EXPECT_EQ(store.DBGetMemberCount(all), 3);
  const auto texts = store.DBFilterList(all, ObjFilter_IsText);
  EXPECT_EQ(store.DBGetMemberCount(texts), 1);
  EXPECT_EQ(store.DBGetFirstMember(texts), text);
  const auto plates = store.DBFilterList(all, ObjFilter_IsGenericPlate);
  EXPECT_EQ(store.DBGetMemberCount(plates), 1);
  EXPECT_EQ(store.DBGetFirstMember(plates), plate);
}

// The curve's control points are 4 above its ends, and it reaches three quarters of that.
TEST(Document, the_bounds_of_a_path_are_those_of_its_curve_wherever_it_is_turned) {
  PathShape path;
  path.subPaths.push_back({{1, 0}, {{true, {{{1, 4}, {5, 4}, {5, 0}}}}}, false});
  EXPECT_EQ(BoundsOf(path, TM()), (BOUNDS{1, 5, 0, 3}));
  EXPECT_EQ(BoundsOf(path, TM{0, 1, -1, 0, 0, 0}), (BOUNDS{-3, 0, 1, 5}));
  // A curve whose x is 3 t (1 - t)^2 turns back at a third: 3 * 4 / 27.
  path.subPaths[0] = {{0, 0}, {{true, {{{1, 0}, {0, 0}, {0, 1}}}}}, false};
  EXPECT_NEAR(BoundsOf(path, TM()).xmax, 4.0 / 9, 1e-15);
}

TEST(Document, the_bounds_of_a_placed_file_are_those_of_its_drawn_part) {
  GraphicShape graphic;
  graphic.width = 10;
  graphic.height = 5;
  EXPECT_EQ(BoundsOf(graphic, TM()), (BOUNDS{0, 10, 0, 5}));
  graphic.extent = CWorldRect{2, 4, 8, 1};
  EXPECT_EQ(BoundsOf(graphic, TM{2, 0, 0, 2, 1, 0}), (BOUNDS{5, 17, 2, 8}));
}

TEST(DocumentStore, an_object_made_empty_is_a_group_a_path_or_a_text) {
  Document document;
  DocumentStore store(document);
  for (const int type : {DBTYPE_GROUP, DBTYPE_POLYARC, DBTYPE_PARAGRAPH}) {
    const ObjectHandle object = store.DBCreateObject(type);
    EXPECT_EQ(store.DBGetObjectType(object), type);
    EXPECT_EQ(store.DBInsertObject(object, host::DocumentRoot), 1);
    EXPECT_EQ(store.DBInsertObject(object, host::DocumentRoot), 0) << "it stands there already";
  }
  EXPECT_EQ(store.DBCreateObject(-1), 0U);
}

TEST(DocumentStore, a_selected_list_has_the_bounds_of_all_its_members) {
  Document document;
  DocumentStore store(document);
  AddDrill(document, 1);
  const ObjectHandle last = AddDrill(document, 3);
  store.DBSelect(last);
  const auto list = store.DBCreateList(host::DocumentRoot, 9, ObjFilter_IsCurrent);
  store.DBSetSelectedList(list);
  EXPECT_EQ(document.Selection(), document.Members(host::DocumentRoot));
  BOUNDS bounds{9, 9, 9, 9};
  EXPECT_EQ(store.DBGetSelectedListBounds(store.DBCreateEmptyList(), bounds), 0);
  EXPECT_EQ(bounds, (BOUNDS{9, 9, 9, 9}));
  EXPECT_EQ(store.DBGetSelectedListBounds(list, bounds), 1);
  EXPECT_EQ(bounds, (BOUNDS{0.8, 3.2, 0.8, 1.2}));
}

TEST(DocumentStore, traits_are_set_as_a_whole_with_the_selection_among_them) {
  Document document;
  DocumentStore store(document);
  const ObjectHandle drill = AddDrill(document, 1);
  store.DBSetTraits(drill, DBTRAIT_SELECTED | DBTRAIT_IN_DOCUMENT);
  EXPECT_EQ(document.Find(drill)->attributes.traits, DBTRAIT_SELECTED | DBTRAIT_IN_DOCUMENT);
  EXPECT_EQ(document.Selection(), std::vector<ObjectHandle>{drill});
  store.DBSetTraits(drill, DBTRAIT_VISIBLE);
  EXPECT_EQ(document.Find(drill)->attributes.traits, DBTRAIT_VISIBLE);
  EXPECT_TRUE(document.Selection().empty());
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
