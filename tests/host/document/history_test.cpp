#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/document/document.h"

namespace rastrel::document {
namespace {

ObjectHandle AddDrill(Document& document, double x) {
  const ObjectHandle handle = document.Create(DrillShape{{x, 1}, 0.4});
  EXPECT_TRUE(document.Insert(handle, host::DocumentRoot));
  return handle;
}

TEST(Document, a_place_that_changes_without_being_kept_ends_the_history) {
  Document document;
  const ObjectHandle first = AddDrill(document, 1);
  const ObjectHandle second = AddDrill(document, 2);
  document.OpenStep(L"taken out");
  document.Remove(second);
  document.CloseStep();
  // Undoing the step would put the second after a first that is gone.
  document.Remove(first);
  EXPECT_FALSE(document.Undo());
  EXPECT_TRUE(document.Members(host::DocumentRoot).empty());
}

TEST(Document, a_change_that_moves_nothing_leaves_the_history) {
  Document document;
  const ObjectHandle first = AddDrill(document, 1);
  document.OpenStep(L"taken out");
  document.Remove(first);
  document.CloseStep();
  document.Edit(first)->attributes.sheetLayer = 3;
  EXPECT_TRUE(document.Undo());
  EXPECT_TRUE(document.Holds(first));
}

TEST(Document, objects_that_are_added_without_history_leave_the_steps_before_alone) {
  Document document;
  const ObjectHandle first = AddDrill(document, 1);
  document.OpenStep(L"added");
  const ObjectHandle added = AddDrill(document, 2);
  document.CloseStep();
  document.OpenStep(L"taken out");
  document.Remove(first);
  document.CloseStep();
  document.KeepHistory(false);
  const ObjectHandle loaded = AddDrill(document, 3);
  document.KeepHistory(true);
  EXPECT_EQ(document.StepNames(), (std::vector<std::wstring>{L"added", L"taken out"}));
  EXPECT_TRUE(document.Undo());
  EXPECT_EQ(document.Members(host::DocumentRoot), (std::vector{first, added, loaded}));
  EXPECT_TRUE(document.Undo());
  EXPECT_EQ(document.Members(host::DocumentRoot), (std::vector{first, loaded}));
  EXPECT_FALSE(document.Undo());
  EXPECT_TRUE(document.Redo());
  EXPECT_EQ(document.Members(host::DocumentRoot), (std::vector{first, added, loaded}));
  EXPECT_TRUE(document.Redo());
  EXPECT_EQ(document.Members(host::DocumentRoot), (std::vector{added, loaded}));
}

TEST(Document, an_object_added_without_history_ends_what_could_be_done_again) {
  Document document;
  document.OpenStep(L"added");
  AddDrill(document, 1);
  document.CloseStep();
  document.Undo();
  AddDrill(document, 2);
  EXPECT_FALSE(document.Redo());
  EXPECT_EQ(document.ObjectCount(), 1U);
}

TEST(Document, an_object_of_a_step_that_comes_back_without_history_ends_it) {
  Document document;
  const ObjectHandle drill = AddDrill(document, 1);
  document.OpenStep(L"taken out");
  document.Remove(drill);
  document.CloseStep();
  document.Insert(drill, host::DocumentRoot);
  EXPECT_FALSE(document.Undo()) << "it would be there twice";
}

TEST(Document, an_object_added_in_between_or_to_a_group_without_history_ends_it) {
  for (const bool inGroup : {false, true}) {
    Document document;
    const ObjectHandle group = document.Create(GroupShape());
    document.Insert(group, host::DocumentRoot);
    document.OpenStep(L"added");
    AddDrill(document, 1);
    document.CloseStep();
    const ObjectHandle loaded = document.Create(DrillShape());
    EXPECT_TRUE(document.Insert(loaded, inGroup ? group : host::DocumentRoot, 0));
    EXPECT_FALSE(document.Undo());
  }
}

TEST(Document, a_step_that_was_opened_without_history_does_not_continue_the_step_before) {
  Document document;
  document.OpenStep(L"first");
  const ObjectHandle first = AddDrill(document, 1);
  document.CloseStep();
  document.KeepHistory(false);
  document.OpenStep(L"second");
  document.KeepHistory(true);
  const ObjectHandle second = AddDrill(document, 2);
  document.CloseStep();
  EXPECT_EQ(document.StepNames(), (std::vector<std::wstring>{L"first", L"second"}));
  EXPECT_TRUE(document.Undo());
  EXPECT_TRUE(document.Holds(first));
  EXPECT_FALSE(document.Holds(second));
}

TEST(Document, an_object_that_is_destroyed_ends_the_history) {
  Document document;
  const ObjectHandle first = AddDrill(document, 1);
  const ObjectHandle second = AddDrill(document, 2);
  document.OpenStep(L"taken out");
  document.Remove(second);
  document.CloseStep();
  document.Destroy(second);
  EXPECT_TRUE(document.StepNames().empty());
  EXPECT_FALSE(document.Undo());
  EXPECT_EQ(document.Members(host::DocumentRoot), std::vector{first});
}

TEST(Document, a_step_without_changes_leaves_what_could_be_done_again) {
  Document document;
  document.OpenStep(L"added");
  AddDrill(document, 1);
  document.CloseStep();
  document.Undo();
  document.OpenStep(L"nothing");
  document.CloseStep();
  EXPECT_TRUE(document.Redo());
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

TEST(Document, a_plate_that_comes_back_stands_where_it_stood_among_the_plates) {
  Document document;
  std::vector<ObjectHandle> plates;
  for (int i = 0; i < 3; ++i) {
    plates.push_back(document.Create(PlateShape()));
    document.Insert(plates.back(), host::DocumentRoot);
    AddDrill(document, i);
  }
  document.OpenStep(L"taken out");
  document.Remove(plates[1]);
  document.CloseStep();
  EXPECT_EQ(document.SharedPlateObjects()->size(), 2U);
  document.Undo();
  EXPECT_EQ(*document.SharedPlateObjects(), plates);
}

}  // namespace
}  // namespace rastrel::document
