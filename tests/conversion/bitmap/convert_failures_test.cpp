// Conversions to a bitmap that end while or after the file was drawn, and their cut lines.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <new>

#include "tests/conversion/bitmap/convert_fixture.h"

using namespace rastrel::test;
namespace host = rastrel::host;

namespace {

using ConvertPsToBmpDrawn = ConvertTest;

TEST_F(ConvertPsToBmpDrawn, is_cancelled_by_the_progress_dialog_and_removes_its_files) {
  m_Host.m_Settings[{L"RASTREL", L"Keep PS Files"}] = L"1";
  ReplaceQueue(std::string(Stem) + Page + "echo 'INFO: CONVERTING' >&2\n" + Hang);
  m_Host.m_Views.PressAt("text 2021 Converting", 2005);
  EXPECT_EQ(Convert(), 1);
  EXPECT_EQ(Calls(), AskedCalls + BegunCalls + ClosedCalls);
  EXPECT_EQ(Changes(), Lines());
  EXPECT_EQ(Root().Read("seen/given.ps").substr(0, 3), "%#V") << "the file was there";
}

/// Views that have no memory for the progress dialog.
class FullForProgress : public host::DialogViews {
 public:
  explicit FullForProgress(host::DialogViews& others) : m_Others(others) {}
  std::unique_ptr<host::DialogView> MakeView(host::DialogLogic& dialog) override {
    if (dialog.GetResource().id == 1003) throw std::bad_alloc();
    return m_Others.MakeView(dialog);
  }
  void ShowMessage(CWnd*, const std::wstring&, const std::wstring&) override {}

 private:
  host::DialogViews& m_Others;
};

TEST_F(ConvertPsToBmpDrawn, closes_its_step_when_the_progress_dialog_throws) {
  FullForProgress views(m_Host.m_Views);
  m_Host.m_Otherwise = &views;
  EXPECT_THROW(Convert(), std::bad_alloc);
  EXPECT_EQ(Calls(), AskedCalls + BegunCalls + ClosedCalls);
  EXPECT_EQ(Changes(), PostScriptLeft);
}

TEST_F(ConvertPsToBmpDrawn, leaves_the_file_of_a_program_that_fails) {
  ReplaceQueue(std::string(Stem) + "echo 'INFO: CLQ_failure' >&2; exit 1\n");
  EXPECT_EQ(Convert(), 1);
  EXPECT_EQ(Calls(), AskedCalls + BegunCalls + ClosedCalls) << "the flag stays cleared";
  EXPECT_EQ(Changes(), PostScriptLeft);
  EXPECT_TRUE(LogHas("the queue program made no page: ROOT/queue\\rip\\vkNAME.cfm"));
}

TEST_F(ConvertPsToBmpDrawn, leaves_the_file_of_a_program_that_makes_no_directory) {
  ReplaceQueue(std::string(Stem) + "echo page > \"$stem.cfm\"\n" + Success);
  EXPECT_EQ(Convert(), 1);
  EXPECT_EQ(Calls(), AskedCalls + BegunCalls + ClosedCalls);
  EXPECT_EQ(Changes(), (Lines{"+Queue/rip/vkNAME.cfm", "+Queue/rip/vkNAME.ps"}));
}

TEST_F(ConvertPsToBmpDrawn, takes_the_page_of_a_program_that_then_reports_a_failure) {
  ReplaceQueue(std::string(Stem) + Page + "echo 'INFO: CLQ_failure' >&2\n");
  EXPECT_EQ(Convert(), 1);
  EXPECT_EQ(Calls(), AskedCalls + BegunCalls + LoadedCalls + ClearedCalls + EndCalls + ClosedCalls)
      << "the directory is all that counts";
  EXPECT_EQ(Changes(), Lines());
}

TEST_F(ConvertPsToBmpDrawn, leaves_all_files_where_the_page_has_no_description) {
  ReplaceQueue(std::string(Stem) + "mkdir \"$stem.cfm\"\n" + Success);
  EXPECT_EQ(Convert(), 1);
  EXPECT_EQ(Calls(), AskedCalls + BegunCalls + ClosedCalls);
  EXPECT_EQ(Changes(), (Lines{"+Queue/rip/vkNAME.cfm", "+Queue/rip/vkNAME.ps"}));
  EXPECT_TRUE(LogHas("there is no page in: ROOT/queue\\rip\\vkNAME.cfm"));
}

TEST_F(ConvertPsToBmpDrawn, leaves_all_files_without_a_plane_reader) {
  m_Host.m_HasPlaneReader = false;
  EXPECT_EQ(Convert(), 1);
  EXPECT_EQ(Calls(), AskedCalls + BegunCalls + ClosedCalls);
  EXPECT_EQ(Changes(), PageLeft);
  EXPECT_TRUE(LogHas("there is no plane reader for: ROOT/queue\\rip\\vkNAME.cfm\\.info"));
}

TEST_F(ConvertPsToBmpDrawn, leaves_all_files_and_places_nothing_where_a_step_of_the_page_fails) {
  Root().Write("archive", cut::ArchiveBytes({}));
  WantCutLine();
  int runs = 0;
  for (const char* step : {"GetInterface", "Open", "GetDimensions", "GetPixels", "NewVKBitmap",
                           "Create bitmap", "DBInsertBitmap", "DSAddObject"}) {
    m_Host.m_Calls.Clear();
    m_Host.m_Calls.Next(step, {0});
    m_Host.m_Views.m_Told.clear();
    m_Host.m_Views.PressAt("run", host::OkCommand);
    EXPECT_EQ(Convert(), 1);
    ++runs;
    EXPECT_EQ(m_Host.m_Calls.Of({"SetUpdateAllowed", "DBSelect", "UNCloseStep"}),
              (HostCalls::Lines{"SetUpdateAllowed(false)", "UNCloseStep()"}))
        << step;
  }
  const Lines left = Changes();
  for (const char* name : {"+Queue/rip/vkNAME.cfm", "+Queue/rip/vkNAME.cfm/.info",
                           "+Queue/rip/vkNAME.cut", "+Queue/rip/vkNAME.ps"})
    EXPECT_EQ(std::count(left.begin(), left.end(), name), runs) << name;
}

// --- Cut lines ---

// The calls of the cut lines of an archive, in front of those at the end. The bitmap is object 2.
const std::string GroupMade = "DBCreateObject(1) -> #3\n";
std::string Line(const std::string& to, const std::string& object) {
  return "PA_NewPolyArc()\nPA_NewSubPoly()\nPA_AddVertice(0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0)\n"
         "PA_AddVertice(0, 1, " +
         to +
         ", 0, 0, 1, 0, 0, 0, 0)\n"
         "DBInsertElement(null, 128, arc, 0, 1, 0, 1, false) -> " +
         object + "\nDBInvalidateBounds(" + object + ")\nDBValidateBounds(" + object +
         ")\nDBSetTraits(" + object + ", 224)\n";
}
std::string Cut(const std::string& object, const std::string& list) {
  return "AddColorToPalette(RGB(0 0 0)) -> 1\nDBSetLayer(" + object +
         ", RGB(0 0 0))\nDBCreateEmptyList() -> " + list + "\nDBAddToList(" + list + ", " + object +
         ")\nChangeObjectsToContourCut(" + list + ", 0)\nDBDestroyList(" + list + ")\n";
}
std::string Added(const std::string& object) {
  return "DSAddObject(" + object + ") -> 1\nDBSelect(" + object + ")\n";
}
// A job header with a cut line has a flatness.
const std::string Flatness = "Read(\"RASTREL\", \"Flatness\") -> null\n";
const std::string Black = "RGB: 0.000  0.000  0.000";
const std::string Red = "RGB: 1.000  0.000  0.000";

class ConvertPsToBmpCut : public ConvertTest {
 protected:
  ConvertPsToBmpCut() { WantCutLine(); }

  /// Converts with that archive. The calls between the cleared directory and the end.
  void ExpectCutCalls(const std::string& archive, const std::string& calls,
                      const std::string& added) {
    Root().Write("archive", archive);
    m_Before = TreeSnapshot(Root().Path());
    EXPECT_EQ(Convert(), 1);
    EXPECT_EQ(Calls(), AskedCalls + BegunCalls + Flatness + LoadedCalls + ClearedCalls + calls +
                           EndCalls + added + ClosedCalls);
    EXPECT_EQ(Changes(), PostScriptLeft) << "the PostScript stays, the archive never";
  }
};

TEST_F(ConvertPsToBmpCut, of_one_object_in_the_color_is_a_cut_line) {
  ExpectCutCalls(cut::ArchiveBytes({cut::ObjectBytes(Black, {cut::LineBytes(1.5, -2)})}),
                 GroupMade + Line("1.5, -2", "#4") + Cut("#4", "L1") + "DBDestroyObject(#3)\n",
                 Added("#4"));
}

TEST_F(ConvertPsToBmpCut, of_one_object_in_another_color_stays_a_path) {
  ExpectCutCalls(cut::ArchiveBytes({cut::ObjectBytes(Red, {cut::LineBytes(1, 1)})}),
                 GroupMade + Line("1, 1", "#4") + "DBDestroyObject(#3)\n", Added("#4"));
}

TEST_F(ConvertPsToBmpCut, of_several_objects_are_a_group_whether_they_match_or_not) {
  ExpectCutCalls(cut::ArchiveBytes({cut::ObjectBytes(Red, {cut::LineBytes(1, 1)}),
                                    cut::ObjectBytes(Black, {cut::LineBytes(2, 2)}),
                                    cut::ObjectBytes(Black, {cut::LineBytes(3, 3)})}),
                 GroupMade + Line("1, 1", "#4") + "DBInsertObject(#4, #3) -> 1\n" +
                     Line("2, 2", "#5") + Cut("#5", "L1") + "DBInsertObject(#5, #3) -> 1\n" +
                     Line("3, 3", "#6") + Cut("#6", "L2") +
                     "DBInsertObject(#6, #3) -> 1\n"
                     "DBSetTraits(#3, 224)\nDBInvalidateBounds(#3)\nDBValidateBounds(#3)\n",
                 Added("#3"));
}

TEST_F(ConvertPsToBmpCut, of_an_empty_archive_are_none) {
  ExpectCutCalls(cut::ArchiveBytes({}), GroupMade + "DBDestroyObject(#3)\n", "");
}

TEST_F(ConvertPsToBmpCut, of_an_archive_of_another_version_are_none_and_the_log_says_so) {
  ExpectCutCalls(cut::U32(1) + cut::U32(0), GroupMade + "DBDestroyObject(#3)\n", "");
  EXPECT_TRUE(LogHas("the cut archive can't be read: ROOT/queue\\rip\\vkNAME.cut"));
}

TEST_F(ConvertPsToBmpCut, without_an_archive_are_none) {
  EXPECT_EQ(Convert(), 1);
  EXPECT_EQ(Calls(), AskedCalls + BegunCalls + Flatness + LoadedCalls + ClearedCalls + EndCalls +
                         ClosedCalls);
  EXPECT_EQ(Changes(), PostScriptLeft);
}

TEST_F(ConvertPsToBmpCut, stay_paths_with_a_host_that_makes_none) {
  m_Host.m_HasContourCut = false;
  ExpectCutCalls(cut::ArchiveBytes({cut::ObjectBytes(Black, {cut::LineBytes(1, 1)})}),
                 GroupMade + Line("1, 1", "#4") +
                     "AddColorToPalette(RGB(0 0 0)) -> 1\nDBSetLayer(#4, RGB(0 0 0))\n"
                     "DBDestroyObject(#3)\n",
                 Added("#4"));
}

TEST_F(ConvertPsToBmpCut, leave_page_and_file_where_the_setting_says_so_but_not_the_archive) {
  m_Host.m_Settings[{L"RASTREL", L"Keep PS Files"}] = L"1";
  Root().Write("archive", cut::ArchiveBytes({cut::ObjectBytes(Black, {cut::LineBytes(1, 1)})}));
  m_Before = TreeSnapshot(Root().Path());
  EXPECT_EQ(Convert(), 1);
  EXPECT_EQ(Changes(), PageLeft);
  EXPECT_EQ(m_Host.m_Calls.Count("ChangeObjectsToContourCut"), 1U);
}

TEST_F(ConvertPsToBmpCut, of_an_archive_cut_at_any_byte_are_none_and_the_bitmap_stays) {
  // Short, since each byte is a run; the reader's own tests cut whole paths.
  const std::string whole = cut::ArchiveBytes({cut::ObjectBytes("a", {})});
  for (std::size_t length = 0; length < whole.size(); ++length) {
    m_Host.m_Calls.Clear();
    m_Host.m_Views.m_Told.clear();
    m_Host.m_Views.m_Actions.clear();
    m_Host.m_Views.PressAt("run", host::OkCommand);
    WantCutLine();
    Root().Write("archive", whole.substr(0, length));
    EXPECT_EQ(Convert(), 1) << length;
    EXPECT_EQ(
        m_Host.m_Calls
            .Of({"SetUpdateAllowed", "DBCreateObject", "DSAddObject", "DBSelect", "UNCloseStep"})
            .size(),
        5U)
        << length;  // no cut line: the flag twice, the bitmap added and selected, the step closed
    EXPECT_EQ(m_Host.m_Calls.Count("DBCreateObject"), 0U) << length;
  }
  EXPECT_TRUE(LogTexts().find("[CLQ] the cut archive is damaged: ROOT/queue\\rip\\vkNAME.cut: ") !=
              std::string::npos);
  for (const std::string& change : Changes())
    EXPECT_TRUE(change == PostScriptLeft[0] || change == "+archive") << change;
}

}  // namespace
