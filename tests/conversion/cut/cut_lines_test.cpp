#include "rastrel/conversion/cut/cut_lines.h"

#include <gtest/gtest.h>

#include "rastrel/conversion/cut/cut_archive_reader.h"
#include "rastrel/platform/mfc/archive.h"
#include "tests/support/bare_document.h"
#include "tests/support/checked_host.h"
#include "tests/support/cut_archive_bytes.h"
#include "tests/support/library_fixture.h"

namespace rastrel::conversion {
namespace {

using namespace test::cut;

CCutObjects Objects(const std::vector<std::string>& objects) {
  const std::string bytes = ArchiveBytes(objects);
  CMemFile file(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
  CArchive archive(&file, CArchive::load);
  CCutObjects read;
  EXPECT_TRUE(ReadCutObjects(archive, bytes.size(), read));
  return read;
}

CPS2CutData Named(const std::wstring& name) {
  CPS2CutData cut;
  cut.colorKind = CutColorNamed;
  cut.enabled = 1;
  cut.color = CVKFullColor(255, COLORSPACE_RGB, 0, 0);
  cut.color.SetColorName(name);
  return cut;
}

// The calls of one arc with a line from 0, 0 to that point, and of its insertion as that object.
std::string LineArc(const std::string& to) {
  return "PA_NewPolyArc()\n"
         "PA_NewSubPoly()\n"
         "PA_AddVertice(0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0)\n"
         "PA_AddVertice(0, 1, " +
         to + ", 0, 0, 1, 0, 0, 0, 0)\n";
}
std::string Inserted(const std::string& object) {
  return "DBInsertElement(null, 128, arc, 0, 1, 0, 1, false) -> " + object +
         "\n"
         "DBInvalidateBounds(" +
         object +
         ")\n"
         "DBValidateBounds(" +
         object +
         ")\n"
         "DBSetTraits(" +
         object + ", 224)\n";
}
// One object becomes a cut line in red, by a list of its own.
std::string Cut(const std::string& object, const std::string& list, const std::string& name,
                const std::string& change = "ChangeObjectsToContourCut") {
  return "AddColorToPalette(RGB(255 0 0) \"" + name +
         "\") -> 1\n"
         "DBSetLayer(" +
         object +
         ", RGB(255 0 0))\n"
         "DBCreateEmptyList() -> " +
         list + "\nDBAddToList(" + list + ", " + object + ")\n" + change + "(" + list +
         ", 0)\n"
         "DBDestroyList(" +
         list + ")\n";
}

class CutLines : public test::LibraryTest {
 protected:
  [[nodiscard]] std::string Calls() { return m_Host.m_Calls.Text(); }
  test::CheckedHost m_Host;
};

TEST_F(CutLines, an_object_of_one_polygon_is_that_path) {
  EXPECT_EQ(BuildCutObject(Objects({ObjectBytes("a", {LineBytes(1.5, -2)})}).m_Objects[0]), 2U);
  EXPECT_EQ(Calls(), LineArc("1.5, -2") + Inserted("#2"));
}

// The fifth double of the archive comes before the third, and the fourth nowhere.
TEST_F(CutLines, a_vertex_is_given_with_its_fifth_and_then_its_third_value) {
  const std::string polygon = PolygonBytes(
      {SubPolyBytes({VertexBytes(1, 2, 3, 4, 5)}, true), SubPolyBytes({}, false),
       SubPolyBytes({VertexBytes(6, 7, 8, 9, 10), VertexBytes(11, 12, 13, 14, 15)}, true)});
  EXPECT_EQ(BuildCutObject(Objects({ObjectBytes("a", {polygon})}).m_Objects[0]), 2U);
  EXPECT_EQ(Calls(),
            "PA_NewPolyArc()\n"
            "PA_NewSubPoly()\n"
            "PA_AddVertice(0, 0, 1, 2, 5, 3, 1, 0, 0, 0, 0)\n"
            "PA_CloseSubpoly(0)\n"
            "PA_NewSubPoly()\n"
            "PA_NewSubPoly()\n"
            "PA_AddVertice(2, 0, 6, 7, 10, 8, 1, 0, 0, 0, 0)\n"
            "PA_AddVertice(2, 1, 11, 12, 15, 13, 1, 0, 0, 0, 0)\n"
            "PA_CloseSubpoly(2)\n" +
                Inserted("#2"));
}

TEST_F(CutLines, an_object_of_several_polygons_is_a_group_of_paths) {
  EXPECT_EQ(
      BuildCutObject(Objects({ObjectBytes("a", {LineBytes(1, 1), LineBytes(2, 2)})}).m_Objects[0]),
      2U);
  EXPECT_EQ(Calls(), LineArc("1, 1") + LineArc("2, 2") + "DBCreateObject(1) -> #2\n" +
                         Inserted("#3") + "DBInsertObject(#3, #2) -> 1\n" + Inserted("#4") +
                         "DBInsertObject(#4, #2) -> 1\n" +
                         "DBSetTraits(#2, 224)\n"
                         "DBValidateBounds(#2)\n");
}

TEST_F(CutLines, a_path_that_the_host_refuses_gets_no_bounds_and_no_traits) {
  m_Host.m_Calls.Next("DBInsertElement", {0, 1, 0});
  const CCutObjects objects = Objects(
      {ObjectBytes("a", {LineBytes(1, 1), LineBytes(2, 2)}), ObjectBytes("b", {LineBytes(1, 1)})});
  EXPECT_EQ(BuildCutObject(objects.m_Objects[0]), 2U);
  const std::string refused = "DBInsertElement(null, 128, arc, 0, 1, 0, 1, false) -> none\n";
  EXPECT_EQ(Calls(), LineArc("1, 1") + LineArc("2, 2") + "DBCreateObject(1) -> #2\n" + refused +
                         "DBInsertObject(none, #2) -> 1\n" + Inserted("#3") +
                         "DBInsertObject(#3, #2) -> 1\n" +
                         "DBSetTraits(#2, 224)\n"
                         "DBValidateBounds(#2)\n");
  m_Host.m_Calls.Clear();
  EXPECT_EQ(BuildCutObject(objects.m_Objects[1]), 0U);
  EXPECT_EQ(Calls(), LineArc("1, 1") + refused);
}

TEST_F(CutLines, an_object_without_polygons_is_none_and_asks_for_nothing) {
  EXPECT_EQ(BuildCutObject(CutObject()), 0U);
  EXPECT_EQ(BuildCutObject(Objects({ObjectBytes("a", {})}).m_Objects[0]), 0U);
  EXPECT_EQ(Calls(), "");
}

TEST_F(CutLines, one_object_in_the_cut_color_is_the_result_and_the_group_goes) {
  EXPECT_EQ(BuildCutLines(Objects({ObjectBytes("Cut", {LineBytes(1, 1)})}), Named(L"Cut"), nullptr),
            3U);
  EXPECT_EQ(Calls(), "DBCreateObject(1) -> #2\n" + LineArc("1, 1") + Inserted("#3") +
                         Cut("#3", "L1", "Cut") + "DBDestroyObject(#2)\n");
}

TEST_F(CutLines, one_object_of_two_polygons_is_a_group_of_two_and_the_outer_group_goes) {
  EXPECT_EQ(BuildCutLines(Objects({ObjectBytes("Cut", {LineBytes(1, 1), LineBytes(2, 2)})}),
                          Named(L"Cut"), nullptr),
            3U);
  EXPECT_EQ(Calls(), "DBCreateObject(1) -> #2\n" + LineArc("1, 1") + LineArc("2, 2") +
                         "DBCreateObject(1) -> #3\n" + Inserted("#4") +
                         "DBInsertObject(#4, #3) -> 1\n" + Inserted("#5") +
                         "DBInsertObject(#5, #3) -> 1\n" +
                         "DBSetTraits(#3, 224)\n"
                         "DBValidateBounds(#3)\n" +
                         Cut("#3", "L1", "Cut") + "DBDestroyObject(#2)\n");
}

TEST_F(CutLines, several_objects_are_a_group_whatever_their_colors) {
  const CPS2CutData half = Named(L"Half");
  EXPECT_EQ(BuildCutLines(Objects({ObjectBytes("Cut", {LineBytes(1, 1)}),
                                   ObjectBytes("Half", {LineBytes(2, 2)}),
                                   ObjectBytes("Other", {LineBytes(3, 3)})}),
                          Named(L"Cut"), &half),
            2U);
  EXPECT_EQ(Calls(), "DBCreateObject(1) -> #2\n" + LineArc("1, 1") + Inserted("#3") +
                         Cut("#3", "L1", "Cut") + "DBInsertObject(#3, #2) -> 1\n" +
                         LineArc("2, 2") + Inserted("#4") +
                         Cut("#4", "L2", "Half", "ChangeObjectsToContourCutThrough") +
                         "DBInsertObject(#4, #2) -> 1\n" + LineArc("3, 3") + Inserted("#5") +
                         "DBInsertObject(#5, #2) -> 1\n" +
                         "DBSetTraits(#2, 224)\n"
                         "DBInvalidateBounds(#2)\n"
                         "DBValidateBounds(#2)\n");
}

TEST_F(CutLines, without_a_half_cut_record_its_color_is_any_other) {
  EXPECT_EQ(
      BuildCutLines(Objects({ObjectBytes("Half", {LineBytes(1, 1)})}), Named(L"Cut"), nullptr), 3U);
  EXPECT_EQ(Calls(), "DBCreateObject(1) -> #2\n" + LineArc("1, 1") + Inserted("#3") +
                         "DBDestroyObject(#2)\n");
}

TEST_F(CutLines, a_color_of_both_records_is_the_cut_records) {
  const CPS2CutData half = Named(L"Cut");
  EXPECT_EQ(BuildCutLines(Objects({ObjectBytes("Cut", {LineBytes(1, 1)})}), Named(L"Cut"), &half),
            3U);
  EXPECT_EQ(m_Host.m_Calls.Count("ChangeObjectsToContourCut"), 1U);
  EXPECT_EQ(m_Host.m_Calls.Count("ChangeObjectsToContourCutThrough"), 0U);
}

TEST_F(CutLines, a_record_without_a_name_matches_only_an_empty_text) {
  EXPECT_NE(BuildCutLines(Objects({ObjectBytes("Cut", {LineBytes(1, 1)})}), Named(L""), nullptr),
            0U);
  EXPECT_EQ(m_Host.m_Calls.Count("ChangeObjectsToContourCut"), 0U);
  EXPECT_NE(BuildCutLines(Objects({ObjectBytes("", {LineBytes(1, 1)})}), Named(L""), nullptr), 0U);
  EXPECT_EQ(m_Host.m_Calls.Count("ChangeObjectsToContourCut"), 1U);
}

TEST_F(CutLines, an_rgb_and_a_cmyk_color_match_by_the_text_of_their_numbers) {
  CPS2CutData cut;
  cut.color = CVKFullColor(255 | 128 << 8, COLORSPACE_RGB, 0, 0);
  CPS2CutData half;
  half.colorKind = CutColorCmyk;
  half.color.SetColor(0.0, 1.0, 1.0, 0.0, COLORSPACE_CMYK);
  const CCutObjects objects =
      Objects({ObjectBytes("RGB: 1.000  0.502  0.000", {LineBytes(1, 1)}),
               ObjectBytes("CMYK: 0.0000  1.0000  1.0000  0.0000", {LineBytes(2, 2)}),
               ObjectBytes("RGB: 1.000 0.502 0.000", {LineBytes(3, 3)})});
  EXPECT_NE(BuildCutLines(objects, cut, &half), 0U);
  EXPECT_EQ(
      m_Host.m_Calls.Of({"DBSetLayer"}),
      (test::HostCalls::Lines{"DBSetLayer(#3, RGB(255 128 0))", "DBSetLayer(#4, CMYK(0 1 1 0))"}));
}

TEST_F(CutLines, no_object_is_no_result_and_the_group_goes) {
  EXPECT_EQ(BuildCutLines(CCutObjects(), Named(L"Cut"), nullptr), 0U);
  EXPECT_EQ(Calls(),
            "DBCreateObject(1) -> #2\n"
            "DBDestroyObject(#2)\n");
}

TEST_F(CutLines, a_host_that_makes_no_cut_lines_gets_plain_paths_in_the_color_and_one_log_line) {
  m_Host.m_HasContourCut = false;
  const std::size_t mark = m_Library.LogMark();
  m_Host.m_Calls.Clear();
  EXPECT_EQ(BuildCutLines(Objects({ObjectBytes("Cut", {LineBytes(1, 1)}),
                                   ObjectBytes("Cut", {LineBytes(2, 2)})}),
                          Named(L"Cut"), nullptr),
            2U);
  const std::string color =
      "AddColorToPalette(RGB(255 0 0) \"Cut\") -> 1\n"
      "DBSetLayer(#";
  EXPECT_EQ(Calls(), "DBCreateObject(1) -> #2\n" + LineArc("1, 1") + Inserted("#3") + color +
                         "3, RGB(255 0 0))\n"
                         "DBInsertObject(#3, #2) -> 1\n" +
                         LineArc("2, 2") + Inserted("#4") + color +
                         "4, RGB(255 0 0))\n"
                         "DBInsertObject(#4, #2) -> 1\n"
                         "DBSetTraits(#2, 224)\n"
                         "DBInvalidateBounds(#2)\n"
                         "DBValidateBounds(#2)\n");
  EXPECT_EQ(m_Library.LogTextsBehind(mark),
            "[CLQ] the host makes no cut lines: the paths stay plain\r\n");
}

TEST_F(CutLines, a_host_without_a_document_gets_none_and_the_log_says_so) {
  m_Host.m_HasDocument = false;
  const std::size_t mark = m_Library.LogMark();
  EXPECT_EQ(BuildCutLines(Objects({ObjectBytes("Cut", {LineBytes(1, 1)})}), Named(L"Cut"), nullptr),
            0U);
  EXPECT_EQ(m_Library.LogTextsBehind(mark), "[CLQ] the host has no document for cut lines\r\n");
}

// A host with the fewest operations.
class BareHost : public test::RecordingHost {
 public:
  host::ObjectStore* GetObjectStore() override { return &m_Bare; }
  host::ContourCut* GetContourCut() override { return nullptr; }
  host::Application* GetApplication() override { return nullptr; }

  test::BareStore m_Bare;
};

TEST(BareCutLines, a_host_without_paths_makes_nothing) {
  const test::LibraryRoot library;
  const BareHost host;
  const CCutObjects objects = Objects({ObjectBytes("Cut", {LineBytes(1, 1)})});
  EXPECT_EQ(BuildCutObject(objects.m_Objects[0]), 0U);
  EXPECT_EQ(BuildCutLines(objects, Named(L"Cut"), nullptr), 0U);
}

}  // namespace
}  // namespace rastrel::conversion
