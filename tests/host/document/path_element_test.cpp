#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

#include "host/document/document_store.h"
#include "host/document/knife_lines.h"

namespace rastrel::document {
namespace {

const CVKColor Red(0x0000FF, COLORSPACE_RGB, 0, 0);

class PathElements : public testing::Test {
 protected:
  void AddPoints(POLYARC& arc, int subPath, const std::vector<CWorldPoint>& points) {
    for (int i = 0; std::cmp_less(i, points.size()); ++i) {
      const CWorldPoint& point = points[static_cast<std::size_t>(i)];
      m_Store.PA_AddVertice(arc, subPath, i, {point.x, point.y, 0.5, 99});
    }
  }
  ObjectHandle Insert(const POLYARC& arc) {
    return m_Store.DBInsertElement(nullptr, DBTYPE_POLYARC, &arc, 0, 1, 0, 1, false);
  }
  // The object of a closed triangle.
  ObjectHandle Triangle() {
    const auto arc = m_Store.PA_NewPolyArc();
    m_Store.PA_NewSubPoly(*arc);
    AddPoints(*arc, 0, {{0, 0}, {4, 0}, {0, 3}});
    m_Store.PA_CloseSubpoly(*arc, 0);
    return Insert(*arc);
  }
  const PathShape& ShapeOf(ObjectHandle path) {
    return std::get<PathShape>(m_Document.Find(path)->shape);
  }
  const Attributes& AttributesOf(ObjectHandle object) {
    return m_Document.Find(object)->attributes;
  }
  host::ListHandle ListOf(const std::vector<ObjectHandle>& objects) {
    const host::ListHandle list = m_Store.DBCreateEmptyList();
    for (const ObjectHandle object : objects) m_Store.DBAddToList(list, object);
    return list;
  }

  Document m_Document;
  DocumentStore m_Store{m_Document};
  Notices m_Notices;
  KnifeLines m_Knife{m_Store, m_Notices};
};

TEST_F(PathElements, points_are_joined_by_straight_lines_whatever_their_other_values) {
  const auto arc = m_Store.PA_NewPolyArc();
  m_Store.PA_NewSubPoly(*arc);
  AddPoints(*arc, 0, {{1, 2}, {3, 2}, {3, 5}});
  m_Store.PA_CloseSubpoly(*arc, 0);
  m_Store.PA_NewSubPoly(*arc);
  AddPoints(*arc, 1, {{7, 7}, {8, 9}});
  const ObjectHandle path = Insert(*arc);
  ASSERT_NE(path, 0U);
  PathShape wanted;
  wanted.subPaths = {{{1, 2}, {{false, {{{}, {}, {3, 2}}}}, {false, {{{}, {}, {3, 5}}}}}, true},
                     {{7, 7}, {{false, {{{}, {}, {8, 9}}}}}, false}};
  EXPECT_EQ(ShapeOf(path), wanted);
  EXPECT_EQ(m_Store.DBGetObjectType(path), DBTYPE_POLYARC);
  const BOUNDS bounds = m_Document.Bounds(path);
  EXPECT_EQ(bounds.xmin, 1);
  EXPECT_EQ(bounds.xmax, 8);
  EXPECT_EQ(bounds.ymin, 2);
  EXPECT_EQ(bounds.ymax, 9);
}

TEST_F(PathElements, an_inserted_path_is_in_no_place_and_has_a_line_and_no_inside) {
  const ObjectHandle path = Triangle();
  EXPECT_FALSE(m_Document.Holds(path));
  EXPECT_TRUE(m_Document.Members(host::DocumentRoot).empty());
  EXPECT_TRUE(AttributesOf(path).layer.IsInvisible());
  EXPECT_EQ(AttributesOf(path).lineColor, CVKColor());
  EXPECT_FALSE(m_Store.DBGetObjectElement(path)->IsFilled());
  EXPECT_EQ(m_Store.DSAddObject(path), 1);
  EXPECT_TRUE(m_Document.Holds(path));
}

TEST_F(PathElements, an_element_is_copied_and_stays_the_callers) {
  const auto arc = m_Store.PA_NewPolyArc();
  m_Store.PA_NewSubPoly(*arc);
  AddPoints(*arc, 0, {{1, 2}, {3, 2}});
  const ObjectHandle first = Insert(*arc);
  m_Store.PA_AddVertice(*arc, 0, 2, {9, 9});
  const ObjectHandle second = Insert(*arc);
  EXPECT_EQ(ShapeOf(first).subPaths.at(0).segments.size(), 1U);
  EXPECT_EQ(ShapeOf(second).subPaths.at(0).segments.size(), 2U);
}

TEST_F(PathElements, points_out_of_order_and_in_sub_paths_that_are_not_there_change_nothing) {
  const auto arc = m_Store.PA_NewPolyArc();
  m_Store.PA_AddVertice(*arc, 0, 0, {1, 1});
  m_Store.PA_CloseSubpoly(*arc, 0);
  m_Store.PA_NewSubPoly(*arc);
  for (const int number : {-1, 1, 7}) m_Store.PA_AddVertice(*arc, 0, number, {1, 1});
  for (const int subPath : {-1, 1}) {
    m_Store.PA_AddVertice(*arc, subPath, 0, {1, 1});
    m_Store.PA_CloseSubpoly(*arc, subPath);
  }
  AddPoints(*arc, 0, {{2, 2}, {3, 3}});
  m_Store.PA_AddVertice(*arc, 0, 1, {1, 1});
  const ObjectHandle path = Insert(*arc);
  ASSERT_NE(path, 0U);
  ASSERT_EQ(ShapeOf(path).subPaths.size(), 1U);
  EXPECT_EQ(ShapeOf(path).subPaths[0].start, (CWorldPoint{2, 2}));
  EXPECT_EQ(ShapeOf(path).subPaths[0].segments.size(), 1U);
  EXPECT_FALSE(ShapeOf(path).subPaths[0].closed);
}

TEST_F(PathElements, a_path_without_points_or_with_one_that_is_nowhere_makes_no_object) {
  const auto empty = m_Store.PA_NewPolyArc();
  EXPECT_EQ(Insert(*empty), 0U);
  m_Store.PA_NewSubPoly(*empty);
  EXPECT_EQ(Insert(*empty), 0U);
  for (const double nowhere : {std::nan(""), std::numeric_limits<double>::infinity(),
                               -std::numeric_limits<double>::infinity()}) {
    const auto arc = m_Store.PA_NewPolyArc();
    m_Store.PA_NewSubPoly(*arc);
    AddPoints(*arc, 0, {{1, 1}, {2, 2}});
    EXPECT_NE(Insert(*arc), 0U);
    m_Store.PA_AddVertice(*arc, 0, 2, {nowhere, 1});
    EXPECT_EQ(Insert(*arc), 0U);
  }
}

TEST_F(PathElements, sub_paths_without_points_are_left_out) {
  const auto arc = m_Store.PA_NewPolyArc();
  m_Store.PA_NewSubPoly(*arc);
  m_Store.PA_NewSubPoly(*arc);
  AddPoints(*arc, 1, {{5, 5}, {6, 6}});
  m_Store.PA_NewSubPoly(*arc);
  const ObjectHandle path = Insert(*arc);
  ASSERT_EQ(ShapeOf(path).subPaths.size(), 1U);
  EXPECT_EQ(m_Document.Bounds(path).xmin, 5) << "no empty sub-path reaches to the origin";
}

TEST_F(PathElements, elements_of_others_and_of_other_types_make_no_object) {
  class Other : public POLYARC {};
  Other other;
  m_Store.PA_NewSubPoly(other);
  m_Store.PA_AddVertice(other, 0, 0, {1, 1});
  m_Store.PA_CloseSubpoly(other, 0);
  EXPECT_EQ(Insert(other), 0U);
  const POLYARC* none = nullptr;
  EXPECT_EQ(m_Store.DBInsertElement(nullptr, DBTYPE_POLYARC, none, 0, 1, 0, 1, false), 0U);
  const auto arc = m_Store.PA_NewPolyArc();
  m_Store.PA_NewSubPoly(*arc);
  AddPoints(*arc, 0, {{1, 1}, {2, 2}});
  EXPECT_EQ(m_Store.DBInsertElement(nullptr, DBTYPE_PARAGRAPH, arc.get(), 0, 1, 0, 1, false), 0U);
  EXPECT_EQ(m_Store.DBInsertElement(nullptr, DBTYPE_GROUP, arc.get(), 0, 1, 0, 1, false), 0U);
  EXPECT_EQ(Insert(*arc), host::DocumentRoot + 1) << "nothing was made until now";
}

TEST_F(PathElements, a_path_of_a_hundred_thousand_points_is_whole) {
  const auto arc = m_Store.PA_NewPolyArc();
  m_Store.PA_NewSubPoly(*arc);
  constexpr int Count = 100'000;
  for (int i = 0; i < Count; ++i) m_Store.PA_AddVertice(*arc, 0, i, {i * 0.001, i % 7 * 0.5});
  const ObjectHandle path = Insert(*arc);
  ASSERT_EQ(ShapeOf(path).subPaths.at(0).segments.size(), std::size_t{Count - 1});
  EXPECT_EQ(ShapeOf(path).subPaths[0].segments.back().points[2].x, (Count - 1) * 0.001);
}

TEST_F(PathElements, a_list_becomes_lines_that_are_cut_or_cut_through) {
  const ObjectHandle cut = Triangle();
  const ObjectHandle through = Triangle();
  const ObjectHandle untouched = Triangle();
  m_Store.DBSetLayer(cut, Red);
  const host::ListHandle list = ListOf({cut});
  m_Knife.ChangeObjectsToContourCut(list, 0);
  m_Knife.ChangeObjectsToContourCutThrough(ListOf({through}), 0);
  EXPECT_EQ(ShapeOf(cut).cutLine, CutLine::Cut);
  EXPECT_EQ(AttributesOf(cut).lineColor, Red) << "it is drawn in its layer's color";
  EXPECT_EQ(AttributesOf(cut).layer, Red);
  EXPECT_EQ(ShapeOf(through).cutLine, CutLine::Through);
  EXPECT_EQ(AttributesOf(through).lineColor, CVKColor())
      << "an invisible layer has none to pass on";
  EXPECT_EQ(ShapeOf(untouched).cutLine, CutLine::None);
  EXPECT_EQ(m_Store.DBGetMemberCount(list), 1) << "the list stays the caller's";
  EXPECT_TRUE(m_Notices.Losses().empty());
}

TEST_F(PathElements, a_group_that_is_made_a_cut_line_makes_all_that_it_holds_one) {
  const ObjectHandle outer = m_Store.DBCreateObject(DBTYPE_GROUP);
  const ObjectHandle inner = m_Store.DBCreateObject(DBTYPE_GROUP);
  const ObjectHandle first = Triangle();
  const ObjectHandle second = Triangle();
  ASSERT_EQ(m_Store.DBInsertObject(first, outer), 1);
  ASSERT_EQ(m_Store.DBInsertObject(inner, outer), 1);
  ASSERT_EQ(m_Store.DBInsertObject(second, inner), 1);
  m_Store.DBSetLayer(outer, Red);
  m_Knife.ChangeObjectsToContourCutThrough(ListOf({outer}), 0);
  for (const ObjectHandle path : {first, second}) {
    EXPECT_EQ(ShapeOf(path).cutLine, CutLine::Through);
    EXPECT_EQ(AttributesOf(path).lineColor, Red);
  }
}

TEST_F(PathElements, objects_that_are_gone_or_no_paths_are_passed_over) {
  const ObjectHandle path = Triangle();
  const ObjectHandle gone = Triangle();
  const ObjectHandle drill = m_Document.Create(DrillShape{{1, 1}, 0.5});
  const host::ListHandle list = ListOf({gone, drill, path});
  m_Store.DBDestroyObject(gone);
  m_Knife.ChangeObjectsToContourCut(list, 0);
  EXPECT_EQ(ShapeOf(path).cutLine, CutLine::Cut);
  ASSERT_EQ(m_Notices.Losses().size(), 1U);
  EXPECT_EQ(m_Notices.Losses()[0], L"an object without lines can't become a cut line");
  m_Knife.ChangeObjectsToContourCut(host::ListHandle::None, 0);
  m_Store.DBDestroyList(list);
  m_Knife.ChangeObjectsToContourCutThrough(list, 0);
  EXPECT_EQ(ShapeOf(path).cutLine, CutLine::Cut) << "a list that was destroyed is empty";
}

TEST_F(PathElements, becoming_a_cut_line_is_undone_with_its_step) {
  const ObjectHandle path = Triangle();
  m_Store.DSAddObject(path);
  m_Store.UNOpenStep(L"Cutting");
  m_Store.DBSetLayer(path, Red);
  m_Knife.ChangeObjectsToContourCut(ListOf({path}), 0);
  m_Store.UNCloseStep();
  ASSERT_TRUE(m_Document.Undo());
  EXPECT_EQ(ShapeOf(path).cutLine, CutLine::None);
  EXPECT_EQ(AttributesOf(path).lineColor, CVKColor());
  ASSERT_TRUE(m_Document.Redo());
  EXPECT_EQ(ShapeOf(path).cutLine, CutLine::Cut);
}

TEST_F(PathElements, colors_and_lines_of_a_group_are_those_of_its_members) {
  const ObjectHandle group = m_Store.DBCreateObject(DBTYPE_GROUP);
  const ObjectHandle path = Triangle();
  ASSERT_EQ(m_Store.DBInsertObject(path, group), 1);
  m_Store.DBSetLayer(group, Red);
  m_Store.DBSetLineColor(group, Red);
  m_Store.DBSetLineStyle(group, {0.25, LINESTYLE_WIDTH});
  EXPECT_EQ(AttributesOf(path).layer, Red);
  EXPECT_EQ(AttributesOf(path).lineColor, Red);
  EXPECT_EQ(AttributesOf(path).lineStyle, (LINESTYLE{0.25, LINESTYLE_WIDTH}));
}

}  // namespace
}  // namespace rastrel::document
