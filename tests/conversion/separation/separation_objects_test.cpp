// Separation call by call, with a queue program that is a shell script.

#include "rastrel/conversion/separation/separation_objects.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "rastrel/conversion/dialogs/q_progress_dlg.h"
#include "tests/conversion/queue_fixture.h"
#include "tests/support/checked_host.h"
#include "tests/support/scripted_views.h"
#include "tests/support/tree_snapshot.h"

namespace {

using namespace rastrel::test;

/// A queue program that leaves a page directory with an ".info" and ends well.
constexpr const char* GoodQueue =
    "cfm=\"${3%.ps}.cfm\"\nmkdir \"$cfm\"\nprintf info > \"$cfm/.info\"\nprintf a > "
    "\"$cfm/a.tif\"\n"
    "echo 'INFO: CLQ_success' >&2\n";

class HostWithViews : public CheckedHost {
 public:
  rastrel::host::DialogViews& GetDialogViews() override { return m_Views; }
  ScriptedViews m_Views;
};

class SeparationObjects : public QueueTest {
 protected:
  SeparationObjects() {
    Queue(GoodQueue);
    SetOutputFile(File());
  }
  ~SeparationObjects() override { ExpectNothingLeft(); }

  [[nodiscard]] std::wstring File() const { return Root().Wide("job/sign.ps"); }
  [[nodiscard]] std::string Info() const { return Root().Path("job/sign.cfm") + "\\.info"; }
  /// The same as a line of a transcript has it.
  [[nodiscard]] std::string WrittenInfo() const {
    return Root().Path("job/sign.cfm") + "\\\\.info";
  }
  void SetOutputFile(const std::wstring& file) {
    m_Host.m_Settings[{L"Separation", L"Output File"}] = file;
  }
  void KeepFile() { m_Host.m_Settings[{L"Separation", L"Delete"}] = L"0"; }
  HostCalls& Calls() { return m_Host.m_Calls; }

  /// The calls from the queue's channel to the end of the dialog.
  [[nodiscard]] std::string Begin() const {
    return "GetQueueComChannel(\"Separation\") -> 0\n"
           "Read(\"Separation\", \"Output File\") -> \"" +
           Root().Path("job/sign.ps") +
           "\"\n"
           "TString(\"(*v*)Processing\") -> \"Processing\"\n"
           "TString(\"(*v*)Cancel\") -> \"Cancel\"\n";
  }
  static std::string Done() { return "TString(\"(*v*)Done\") -> \"Done\"\n"; }
  static std::string Step() {
    return "TString(\"(*v*)Separating\") -> \"Separating\"\nUNOpenStep(\"Separating\")\n";
  }
  static std::string NewLayer() {
    return "GetEmptySeparationLayer() -> 0\nGetNextEmptyLayer() -> 1\n"
           "AddSheetToPalette(1, \"Separations\", 1, false) -> 1\n";
  }
  /// One plane that is placed on a sheet layer.
  [[nodiscard]] std::string Placed(int number, int layer, int plane, int object,
                                   int sheetLayer) const {
    const std::string name = "C" + std::to_string(number);
    const std::string handle = "#" + std::to_string(object);
    return New(number, layer, plane) + name + ".IsStateValid() -> 1\n" + name +
           ".Add(1, 1, 0) -> " + handle + "\nDSAddObject(" + handle + ") -> 1\nDBValidateBounds(" +
           handle + ")\nDBSetSheetLayer(" + handle + ", " + std::to_string(sheetLayer) +
           ")\nDBSetPropertyLocks(" + handle + ", (100 100 100 100))\n";
  }
  [[nodiscard]] std::string New(int number, int layer, int plane) const {
    return "NewGenericCFPlane(\"" + WrittenInfo() + "\", " + std::to_string(layer) + ", " +
           std::to_string(plane) + ") -> C" + std::to_string(number) + "\n";
  }
  static std::string Current(int layer) {
    return "SetActiveOnlySheetLayer(" + std::to_string(layer) + ")\nSetCurrentSheetLayer(" +
           std::to_string(layer) + ")\n";
  }
  static std::string End(const std::string& set) {
    return (set.empty() ? "" : set + " deleted\n") + std::string("ZoomObj()\nUNCloseStep()\n");
  }
  static std::string Delete() { return "Read(\"Separation\", \"Delete\") -> null\n"; }

  HostWithViews m_Host;
};

TEST_F(SeparationObjects, of_each_layer_each_plane_becomes_a_locked_object_on_a_new_layer) {
  m_Host.m_Application.m_PlanesOfLayers = {2, 1};
  EXPECT_NE(GenerateSCObjects(), 0);
  EXPECT_EQ(Calls().Text(), Begin() + Done() + Step() + NewLayer() + New(1, 0, 0) +
                                "C1.GetNumberofLayers() -> 2\nC1.GetNumberofPlanes(0) -> 2\n" +
                                Placed(2, 0, 0, 2, 1) + Placed(3, 0, 1, 3, 1) +
                                "C1.GetNumberofPlanes(1) -> 1\n" + Placed(4, 1, 0, 4, 1) +
                                "C1 deleted\n" + Current(1) + End("") + Delete());
  EXPECT_EQ(m_Host.m_Views.m_Told.front(), "make 1003");
}

TEST_F(SeparationObjects, leaves_the_planes_directory_and_deletes_the_file) {
  EXPECT_NE(GenerateSCObjects(), 0);
  EXPECT_EQ(Tree("job"), (Lines{"sign.cfm/", "sign.cfm/.info", "sign.cfm/a.tif"}));
}

TEST_F(SeparationObjects, keeps_the_file_if_the_setting_says_so) {
  KeepFile();
  EXPECT_NE(GenerateSCObjects(), 0);
  EXPECT_EQ(Tree("job"), (Lines{"sign.cfm/", "sign.cfm/.info", "sign.cfm/a.tif", "sign.ps"}));
}

TEST_F(SeparationObjects, go_on_an_empty_separation_layer_that_is_there_already) {
  m_Host.m_Application.m_PlanesOfLayers = {1};
  Calls().Always("GetEmptySeparationLayer", 7);
  EXPECT_NE(GenerateSCObjects(), 0);
  EXPECT_EQ(Calls().Text(),
            Begin() + Done() + Step() + "GetEmptySeparationLayer() -> 7\n" + New(1, 0, 0) +
                "C1.GetNumberofLayers() -> 1\nC1.GetNumberofPlanes(0) -> 1\n" +
                Placed(2, 0, 0, 2, 7) + "C1 deleted\n" + Current(7) + End("") + Delete());
}

TEST_F(SeparationObjects, without_a_file_nothing_is_shown_placed_or_deleted) {
  SetOutputFile(L"");
  const auto before = TreeSnapshot(Root().Path("job"));
  EXPECT_EQ(GenerateSCObjects(), 0);
  EXPECT_EQ(Calls().Text(),
            "GetQueueComChannel(\"Separation\") -> 0\n"
            "Read(\"Separation\", \"Output File\") -> \"\"\n" +
                Delete());
  EXPECT_EQ(TreeSnapshot(Root().Path("job")), before);
  EXPECT_TRUE(m_Host.m_Views.m_Told.empty());
}

TEST_F(SeparationObjects, planes_without_a_state_are_destroyed_and_the_others_placed) {
  m_Host.m_Application.m_PlanesOfLayers = {2};
  Calls().Next("IsStateValid", {0, 1});
  EXPECT_NE(GenerateSCObjects(), 0);
  EXPECT_EQ(Calls().Text(), Begin() + Done() + Step() + NewLayer() + New(1, 0, 0) +
                                "C1.GetNumberofLayers() -> 1\nC1.GetNumberofPlanes(0) -> 2\n" +
                                New(2, 0, 0) + "C2.IsStateValid() -> 0\nC2 deleted\n" +
                                Placed(3, 0, 1, 2, 1) + "C1 deleted\n" + Current(1) + End("") +
                                Delete());
}

TEST_F(SeparationObjects, without_usable_planes_a_layer_that_was_made_is_removed_again) {
  m_Host.m_Application.m_PlanesOfLayers = {1};
  Calls().Always("IsStateValid", 0);
  EXPECT_EQ(GenerateSCObjects(), 0);
  EXPECT_EQ(Calls().Text(), Begin() + Done() + Step() + NewLayer() + New(1, 0, 0) +
                                "C1.GetNumberofLayers() -> 1\nC1.GetNumberofPlanes(0) -> 1\n" +
                                New(2, 0, 0) + "C2.IsStateValid() -> 0\nC2 deleted\nC1 deleted\n" +
                                "RemoveSheetFromPalette(1)\n" + End("") + Delete());
}

TEST_F(SeparationObjects, without_usable_planes_a_layer_that_was_there_stays) {
  Calls().Always("GetEmptySeparationLayer", 7);
  Calls().Always("IsStateValid", 0);
  EXPECT_EQ(GenerateSCObjects(), 0);
  EXPECT_EQ(Calls().Count("RemoveSheetFromPalette"), 0U);
  EXPECT_EQ(Calls().Count("SetActiveOnlySheetLayer"), 0U);
  EXPECT_EQ(Calls().Count("ZoomObj"), 1U);
}

TEST_F(SeparationObjects, a_plane_that_the_document_refuses_is_destroyed) {
  m_Host.m_Application.m_PlanesOfLayers = {1};
  Calls().Always("Add", 0);
  EXPECT_EQ(GenerateSCObjects(), 0);
  EXPECT_EQ(Calls().Of({"Add"}), (Lines{"C2.Add(1, 1, 0) -> failed"}));
  EXPECT_TRUE(Calls().Has("C2 deleted"));
  EXPECT_EQ(Calls().Count("DSAddObject"), 0U);
}

TEST_F(SeparationObjects, a_host_that_makes_no_planes_gets_none_and_the_log_says_so_once) {
  Calls().Always("NewGenericCFPlane", 0);
  m_Mark = m_Library.LogMark();
  EXPECT_EQ(GenerateSCObjects(), 0);
  EXPECT_EQ(Calls().Text(), Begin() + Done() + Step() + NewLayer() + "NewGenericCFPlane(\"" +
                                WrittenInfo() + "\", 0, 0) -> none\nRemoveSheetFromPalette(1)\n" +
                                End("") + Delete());
  EXPECT_TRUE(HasLogged("[CLQ] the host can't open the planes of " + Info() + "|"));
}

TEST_F(SeparationObjects, a_plane_set_without_layers_or_planes_places_nothing) {
  for (const std::vector<int>& layers : {std::vector<int>{}, std::vector<int>{0, 0}}) {
    Root().Write("job/sign.ps", "%!PS\n");
    std::filesystem::remove_all(Root().Path("job/sign.cfm"));
    m_Host.m_Application.m_PlanesOfLayers = layers;
    Calls().Clear();
    EXPECT_EQ(GenerateSCObjects(), 0);
    EXPECT_EQ(Calls().Count("NewGenericCFPlane"), 1U) << "the set alone";
    EXPECT_EQ(Calls().Count("RemoveSheetFromPalette"), 1U);
  }
}

TEST_F(SeparationObjects, an_output_without_an_info_file_places_nothing_and_stays) {
  Queue(
      "mkdir \"${3%.ps}.cfm\"\nprintf a > \"${3%.ps}.cfm/a.tif\"\n"
      "echo 'INFO: CLQ_success' >&2\n");
  EXPECT_EQ(GenerateSCObjects(), 0);
  EXPECT_EQ(Calls().Text(), Begin() + Done() + Step() + NewLayer() + "RemoveSheetFromPalette(1)\n" +
                                End("") + Delete());
  EXPECT_EQ(Tree("job"), (Lines{"sign.cfm/", "sign.cfm/a.tif"}));
}

TEST_F(SeparationObjects, a_conversion_that_failed_places_nothing_and_the_file_is_deleted) {
  Queue("echo 'INFO: CLQ_failure' >&2\nexit 1\n");
  EXPECT_EQ(GenerateSCObjects(), 0);
  EXPECT_EQ(Calls().Text(),
            Begin() + Step() + NewLayer() + "RemoveSheetFromPalette(1)\n" + End("") + Delete());
  EXPECT_EQ(Tree("job"), Lines());
}

TEST_F(SeparationObjects, giving_up_deletes_the_planes_and_the_file_and_opens_no_undo_step) {
  Queue(
      "mkdir \"${3%.ps}.cfm\"\nprintf info > \"${3%.ps}.cfm/.info\"\n"
      "echo 'INFO: CONVERTING' >&2\nexec sleep 1000\n");
  m_Host.m_Views.PressAt("text 2021 Converting", CQProgressDlg::CancelButton);
  EXPECT_EQ(GenerateSCObjects(), 0);
  EXPECT_EQ(Calls().Text(),
            Begin() + "TString(\"(*v*)Converting\") -> \"Converting\"\n" + Delete());
  EXPECT_EQ(Tree("job"), Lines());
}

TEST_F(SeparationObjects, giving_up_keeps_the_file_if_the_setting_says_so) {
  KeepFile();
  Queue("echo 'INFO: CONVERTING' >&2\nexec sleep 1000\n");
  m_Host.m_Views.PressAt("text 2021 Converting", CQProgressDlg::CancelButton);
  EXPECT_EQ(GenerateSCObjects(), 0);
  EXPECT_EQ(Tree("job"), Lines{"sign.ps"});
}

TEST_F(SeparationObjects, giving_up_without_ps_in_the_name_deletes_no_directory) {
  // The path of the planes is then that of the file, which is no directory.
  Root().Write("job/sign.prn", "%!PS\n");
  Root().Write("job/sign.cfm/.info", "of somebody");
  SetOutputFile(Root().Wide("job/sign.prn"));
  KeepFile();
  Queue("echo 'INFO: CONVERTING' >&2\nexec sleep 1000\n");
  m_Host.m_Views.PressAt("text 2021 Converting", CQProgressDlg::CancelButton);
  EXPECT_EQ(GenerateSCObjects(), 0);
  EXPECT_EQ(Tree("job"), (Lines{"sign.cfm/", "sign.cfm/.info", "sign.prn", "sign.ps"}));
}

TEST_F(SeparationObjects, only_the_last_ps_of_a_path_is_replaced) {
  Root().Write("my.ps.files/sign.ps", "%!PS\n");
  SetOutputFile(Root().Wide("my.ps.files/sign.ps"));
  EXPECT_NE(GenerateSCObjects(), 0);
  EXPECT_TRUE(Root().Has("my.ps.files/sign.cfm/.info"));
}

TEST_F(SeparationObjects, without_the_queue_program_a_message_says_so_and_nothing_is_placed) {
  std::filesystem::remove(Root().Path(QueueProgram));
  m_Host.m_Views.PressAt("run", CQProgressDlg::CancelButton);
  EXPECT_EQ(GenerateSCObjects(), 0);
  EXPECT_EQ(m_Host.m_Views.m_Told.front(), "message Separation: RIP executable missing");
  EXPECT_EQ(Calls().Count("UNOpenStep"), 0U) << "the dialog stays up until it is cancelled";
  EXPECT_EQ(Tree("job"), Lines());
}

TEST_F(SeparationObjects, without_a_document_nothing_happens_and_the_log_says_why) {
  m_Host.m_HasDocument = false;
  m_Mark = m_Library.LogMark();
  EXPECT_EQ(GenerateSCObjects(), 0);
  EXPECT_EQ(Calls().Text(), "");
  EXPECT_EQ(Tree("job"), Lines{"sign.ps"});
  EXPECT_TRUE(HasLogged("[CLQ] the host has no document to separate into|"));
}

/// A path of that many characters, with the file in it.
// Characters, of which one may be several bytes.
std::string PathOfLength(const ScratchDirectory& root, std::size_t length) {
  std::string path = root.Path() + "/long";
  const std::size_t bytes = path.size() - rastrel::os::FromNative(path).size() + length;
  while (path.size() + 100 < bytes) path += "/" + std::string(50, 'd');
  return path + "/" + std::string(bytes - path.size() - 4, 'n') + ".ps";
}

TEST_F(SeparationObjects, reads_260_characters_of_the_files_path) {
  for (const std::size_t length : {259, 260, 261}) {
    const std::string path = PathOfLength(Root(), length);
    ASSERT_EQ(rastrel::os::FromNative(path).size(), length);
    std::filesystem::remove_all(Root().Path("long"));
    Root().Write(std::filesystem::path(path).lexically_relative(Root().Path()).string(), "%!PS\n");
    SetOutputFile(rastrel::os::FromNative(path));
    // The cut path names no file: the dialog then stays until it is given up.
    if (length > 260) m_Host.m_Views.PressAt("run", CQProgressDlg::CancelButton);
    EXPECT_EQ(GenerateSCObjects() != 0, length <= 260) << length;
    EXPECT_EQ(std::filesystem::exists(path), length > 260) << length;
  }
}

}  // namespace
