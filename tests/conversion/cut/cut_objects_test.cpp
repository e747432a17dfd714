#include "rastrel/conversion/cut/cut_objects.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

namespace rastrel::conversion {
namespace {

CutObject SquareCorner() {
  CutObject object;
  object.colorText = L"Cut";
  object.kind = 7;
  object.number = 2.5;
  object.polygons = PolyReference<Polygons>(new Polygons);
  PolyReference<Polygon> polygon(new Polygon);
  PolyReference<SubPoly> subPoly(new SubPoly);
  subPoly->vertices.emplace_back(1.0, 2.0, 3.0, 4.0, 5.0);
  subPoly->closed = 1;
  SubPolyEntry& entry = polygon->entries.emplace_back();
  entry.subPoly = subPoly;
  entry.value = 9;
  polygon->values = {1, 2, 3, 4};
  polygon->flag = 5;
  object.polygons->polygons.push_back(polygon);
  return object;
}

const SubPoly& SubPolyOf(const CutObject& object) {
  return *object.polygons->polygons[0]->entries[0].subPoly;
}

// How many of a class live.
template <int Tag>
struct Counted : PolyBaseClass2 {
  Counted() { ++living; }
  ~Counted() override { --living; }
  static inline int living = 0;
};

static_assert(std::is_base_of_v<PolyBaseClass2, Polygons>);
static_assert(std::is_base_of_v<PolyBaseClass2, Polygon>);
static_assert(std::is_base_of_v<PolyBaseClass2, SubPolyEntry>);
static_assert(std::is_base_of_v<PolyBaseClass2, SubPoly>);
static_assert(std::is_base_of_v<PolyBaseClass2, Vertex>);
static_assert(std::has_virtual_destructor_v<CCutObjects>);

TEST(CutObject, begins_with_kind_1_number_1_and_no_polygons) {
  const CutObject object;
  EXPECT_EQ(object.colorText, L"");
  EXPECT_EQ(object.kind, 1);
  EXPECT_EQ(object.number, 1.0);
  EXPECT_EQ(object.polygons.Get(), nullptr);
}

TEST(CutObject, a_copy_has_polygons_of_its_own_down_to_the_vertices) {
  const CutObject object = SquareCorner();
  const CutObject copy = object;
  EXPECT_NE(copy.polygons.Get(), object.polygons.Get());
  EXPECT_NE(copy.polygons->polygons[0].Get(), object.polygons->polygons[0].Get());
  EXPECT_NE(&SubPolyOf(copy), &SubPolyOf(object));
  EXPECT_EQ(copy.polygons->GetReferenceCount(), 1);
  EXPECT_EQ(copy.polygons->polygons[0]->GetReferenceCount(), 1);
  EXPECT_EQ(SubPolyOf(copy).GetReferenceCount(), 1);

  object.polygons->polygons[0]->entries[0].subPoly->vertices[0].x = 99;
  EXPECT_EQ(SubPolyOf(copy).vertices[0].x, 1.0);
}

TEST(CutObject, a_copy_has_every_value) {
  CutObject copy;
  copy = SquareCorner();
  const CutObject again = copy;
  EXPECT_EQ(again.colorText, L"Cut");
  EXPECT_EQ(again.kind, 7);
  EXPECT_EQ(again.number, 2.5);
  const Polygon& polygon = *again.polygons->polygons[0];
  EXPECT_EQ(polygon.values, (std::array<std::uint32_t, 4>{1, 2, 3, 4}));
  EXPECT_EQ(polygon.flag, 5);
  EXPECT_EQ(polygon.entries[0].value, 9U);
  EXPECT_EQ(SubPolyOf(again).closed, 1);
  const Vertex& vertex = SubPolyOf(again).vertices[0];
  EXPECT_EQ(vertex.x, 1.0);
  EXPECT_EQ(vertex.y, 2.0);
  EXPECT_EQ(vertex.third, 3.0);
  EXPECT_EQ(vertex.fourth, 4.0);
  EXPECT_EQ(vertex.fifth, 5.0);
}

TEST(CutObject, an_object_assigned_to_itself_stays) {
  CutObject object = SquareCorner();
  const CutObject& same = object;
  object = same;
  EXPECT_EQ(SubPolyOf(object).vertices[0].y, 2.0);
}

TEST(CutObject, a_copy_of_one_without_polygons_has_none) {
  const CutObject object;
  const CutObject copy = object;  // NOLINT(performance-unnecessary-copy-initialization)
  EXPECT_EQ(copy.polygons.Get(), nullptr);
}

TEST(CutObject, a_moved_object_keeps_its_polygons) {
  CutObject object = SquareCorner();
  const Polygons* const polygons = object.polygons.Get();
  const CutObject moved = std::move(object);
  EXPECT_EQ(moved.polygons.Get(), polygons);
  EXPECT_EQ(moved.polygons->GetReferenceCount(), 1);
}

TEST(PolyReference, the_object_goes_with_its_last_reference) {
  using Item = Counted<1>;
  {
    PolyReference<Item> first(new Item);
    {
      const PolyReference<Item> second = first;
      EXPECT_EQ(first->GetReferenceCount(), 2);
    }
    EXPECT_EQ(first->GetReferenceCount(), 1);
    EXPECT_EQ(Item::living, 1);
  }
  EXPECT_EQ(Item::living, 0);
}

TEST(CCutObjects, a_copied_list_shares_no_polygons) {
  CCutObjects objects;
  objects.m_Objects.push_back(SquareCorner());
  const CCutObjects copy = objects;
  EXPECT_NE(copy.m_Objects[0].polygons.Get(), objects.m_Objects[0].polygons.Get());
  EXPECT_EQ(copy.m_Objects[0].polygons->GetReferenceCount(), 1);
}

}  // namespace
}  // namespace rastrel::conversion
