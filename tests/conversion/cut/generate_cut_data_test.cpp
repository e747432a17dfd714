// Whole runs of the three routines, call by call, and the files that they leave.

#include "rastrel/conversion/cut/generate_cut_data.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "rastrel/conversion/dialogs/q_progress_dlg.h"
#include "rastrel/platform/mfc/archive.h"
#include "rastrel/platform/os/text.h"
#include "tests/conversion/cut/generate_fixture.h"

namespace rastrel::test {
namespace {

using namespace cut;

constexpr const char* Open = "UNOpenStep(\"Schneiden\")\n";
constexpr const char* Close = "UNCloseStep()\n";
constexpr const char* EpsStart =
    "UNOpenStep(\"Schneiden\")\n"
    "object.ConvertToPS() -> 1\n"
    "object.GetWidth()\n"
    "object.GetHeight()\n"
    "object.GetCutData()\n"
    "object.GetHalfCutData()\n";
constexpr const char* PsStart =
    "UNOpenStep(\"Schneiden\")\n"
    "object.GetBounds()\n"
    "object.GetMatrix()\n"
    "object.GetCutData()\n"
    "object.GetHalfCutData()\n";
constexpr const char* PdfStart =
    "UNOpenStep(\"Schneiden\")\n"
    "object.GetBounds()\n"
    "object.GetCutData()\n"
    "object.GetHalfCutData()\n";
// A line from 0, 0 to 1, -1 as object #3.
constexpr const char* Line =
    "DBCreateObject(1) -> #2\n"
    "PA_NewPolyArc()\n"
    "PA_NewSubPoly()\n"
    "PA_AddVertice(0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0)\n"
    "PA_AddVertice(0, 1, 1, -1, 0, 0, 1, 0, 0, 0, 0)\n"
    "DBInsertElement(null, 128, arc, 0, 1, 0, 1, false) -> #3\n"
    "DBInvalidateBounds(#3)\n"
    "DBValidateBounds(#3)\n"
    "DBSetTraits(#3, 224)\n";
constexpr const char* Cut =
    "AddColorToPalette(RGB(255 0 0) \"Cut\") -> 1\n"
    "DBSetLayer(#3, RGB(255 0 0))\n"
    "DBCreateEmptyList() -> L1\n"
    "DBAddToList(L1, #3)\n"
    "ChangeObjectsToContourCut(L1, 0)\n"
    "DBDestroyList(L1)\n";
constexpr const char* CutHalf =
    "AddColorToPalette(RGB(255 0 0) \"Half\") -> 1\n"
    "DBSetLayer(#3, RGB(255 0 0))\n"
    "DBCreateEmptyList() -> L1\n"
    "DBAddToList(L1, #3)\n"
    "ChangeObjectsToContourCutThrough(L1, 0)\n"
    "DBDestroyList(L1)\n";
constexpr const char* OuterGone = "DBDestroyObject(#2)\n";
constexpr const char* Preview = "object.CreatePreviewBmp(\"..._Color.bmp\") -> 1\n";

std::string Placed(const std::string& x = "0", const std::string& y = "0") {
  return "DBApplyTM(#3, (1 0 0 1 " + x + " " + y +
         "))\n"
         "DBSelect(#3)\n";
}

const std::string Head =
    "%#Velumark Header 2.0\r\n%#Begin Job: 0\r\n%# Title: MyJob\r\n%#Type=Print\r\n";
const std::string Tail = "%# KVI_CutLine= SEP, Cut\r\n%# KVI_Setflat= 10\r\n%#End Job\r\n";

class GenerateCutData : public GenerateTest {};

// --- Each way through, well ---

TEST_F(GenerateCutData, eps_without_a_preview) {
  OneLine();
  EXPECT_EQ(Eps(), 3U);
  EXPECT_EQ(Calls(), std::string(EpsStart) + Line + Cut + OuterGone + Placed() + Close);
  EXPECT_EQ(Left(), "vk.cfm vk.cfm/.info vk.ps vk_Color.bmp");
  EXPECT_EQ(Root().Read("seen"), Head +
                                     "%#PageSize=Custom,72.000000,144.000000\r\n"
                                     "%# KVI_Res= 300\r\n" +
                                     Tail + "%!PS-Adobe-3.0 EPSF-3.0\n");
  EXPECT_EQ(GivenName(), "vk.ps");
  EXPECT_EQ(LogTexts(), "");
}

TEST_F(GenerateCutData, ps_without_a_preview) {
  OneLine();
  EXPECT_EQ(Ps(), 3U);
  EXPECT_EQ(Calls(), std::string(PsStart) + Line + Cut + OuterGone + Placed("0", "5.08") + Close);
  EXPECT_EQ(Left(), "vk.cfm vk.cfm/.info vk.ps vk_Color.bmp");
  EXPECT_EQ(Root().Read("seen"), Head + "%# KVI_Res= 300\r\n" + Tail + "%!PS\nshowpage\n");
}

TEST_F(GenerateCutData, pdf_without_a_preview) {
  OneLine();
  EXPECT_EQ(Pdf(), 3U);
  EXPECT_EQ(Calls(), std::string(PdfStart) + Line + Cut + OuterGone + Placed() + Close);
  EXPECT_EQ(Left(), "vk.cfm vk.cfm/.info vk.jhdr vk.pdf vk_Color.bmp");
  EXPECT_EQ(Root().Read("seen"), "%PDF-1.4\n");
  EXPECT_EQ(Root().Read("seen.jhdr"), Head + "%# KVI_Res= 300\r\n" + Tail);
}

TEST_F(GenerateCutData, eps_with_a_preview) {
  OneLine();
  EXPECT_EQ(Eps(1), 3U);
  EXPECT_EQ(Calls(), std::string(EpsStart) + Line + Cut + OuterGone + Preview + Placed() + Close);
  EXPECT_EQ(Left(), "");
}

TEST_F(GenerateCutData, ps_with_a_preview) {
  OneLine();
  EXPECT_EQ(Ps(1), 3U);
  EXPECT_EQ(Calls(),
            std::string(PsStart) + Line + Cut + OuterGone + Preview + Placed("0", "5.08") + Close);
  EXPECT_EQ(Left(), "");
}

TEST_F(GenerateCutData, pdf_with_a_preview_leaves_its_side_file) {
  OneLine();
  EXPECT_EQ(Pdf(1), 3U);
  EXPECT_EQ(Calls(), std::string(PdfStart) + Line + Cut + OuterGone + Preview + Placed() + Close);
  EXPECT_EQ(Left(), "vk.jhdr");
}

TEST_F(GenerateCutData, files_that_are_to_be_kept_stay_but_the_archive) {
  KeepFiles();
  OneLine();
  EXPECT_EQ(Eps(1), 3U);
  EXPECT_EQ(Left(), "vk.cfm vk.cfm/.info vk.ps vk_Color.bmp");
}

// --- The steps that may fail, in their order ---

TEST_F(GenerateCutData, without_the_queue_program_no_step_is_opened) {
  std::filesystem::remove(Root().Path(QueueProgram));
  EXPECT_EQ(Eps(), 0U);
  EXPECT_EQ(Ps(), 0U);
  EXPECT_EQ(Pdf(), 0U);
  EXPECT_EQ(Calls(), "");
  EXPECT_EQ(Left(), "");
}

TEST_F(GenerateCutData, without_a_path_the_step_is_opened_and_closed) {
  EXPECT_EQ(GenerateEPSCutData(&m_Eps, 300, 0, nullptr), 0U);
  EXPECT_EQ(GeneratePSCutData(&m_Ps, 300, 0, nullptr), 0U);
  EXPECT_EQ(GeneratePDFCutData(&m_Pdf, 300, 0, nullptr), 0U);
  EXPECT_EQ(Calls(), std::string(Open) + Close + Open + Close + Open + Close);
  EXPECT_EQ(Left(), "");
}

TEST_F(GenerateCutData, without_a_document_nothing_is_done_and_the_log_says_so) {
  m_Host.m_HasDocument = false;
  EXPECT_EQ(Eps(), 0U);
  EXPECT_EQ(Calls(), "");
  EXPECT_EQ(LogTexts(), "[CLQ] the host has no document for cut lines\r\n");
}

TEST_F(GenerateCutData, without_a_temporary_name_it_is_0) {
  const os::SystemCallsGuard guard;
  os::Calls().random = [](void*, std::size_t) -> ssize_t { return errno = ENOSYS, -1; };
  EXPECT_EQ(Eps(), 0U);
  EXPECT_EQ(Ps(), 0U);
  EXPECT_EQ(Pdf(), 0U);
  EXPECT_EQ(Calls(), std::string(Open) + Close + Open + Close + Open + Close);
  EXPECT_EQ(Left(), "");
}

TEST_F(GenerateCutData, a_file_that_cant_be_copied_is_0) {
  const std::wstring none = Root().Wide("job/none.pdf");
  EXPECT_EQ(GeneratePSCutData(&m_Ps, 300, 0, none.c_str()), 0U);
  EXPECT_EQ(GeneratePDFCutData(&m_Pdf, 300, 0, none.c_str()), 0U);
  EXPECT_EQ(Calls(), std::string(Open) + Close + Open + Close);
  EXPECT_EQ(Left(), "");
}

TEST_F(GenerateCutData, eps_that_cant_become_postscript_leaves_nothing) {
  m_Host.m_Calls.Always("ConvertToPS", 0);
  EXPECT_EQ(Eps(), 0U);
  EXPECT_EQ(Calls(), std::string(Open) + "object.ConvertToPS() -> 0\n" + Close);
  EXPECT_EQ(Left(), "");
}

TEST_F(GenerateCutData, eps_that_cant_become_postscript_stays_if_files_are_to_be_kept) {
  KeepFiles();
  m_Host.m_Calls.Always("ConvertToPS", 0);
  EXPECT_EQ(Eps(), 0U);
  EXPECT_EQ(Left(), "vk.ps");
}

TEST_F(GenerateCutData, eps_on_a_stream_that_fails_is_one_that_cant_become_postscript) {
  m_Eps.m_Throws = true;
  EXPECT_EQ(Eps(), 0U);
  EXPECT_EQ(Calls(), std::string(Open) + Close);
  EXPECT_EQ(Left(), "");
}

TEST_F(GenerateCutData, eps_that_the_disk_does_not_take_leaves_nothing) {
  const os::SystemCallsGuard guard;
  os::Calls().write = [](int, const void*, std::size_t) -> ssize_t { return errno = ENOSPC, -1; };
  EXPECT_EQ(Eps(), 0U);
  EXPECT_EQ(Left(), "");
}

TEST_F(GenerateCutData, eps_for_which_no_file_can_be_made_is_0) {
  const os::SystemCallsGuard guard;
  static os::SystemCalls machine;
  machine = os::Calls();
  os::Calls().open = [](const char* path, int flags, mode_t mode) {
    if ((flags & O_CREAT) != 0) return errno = EACCES, -1;
    return machine.open(path, flags, mode);
  };
  EXPECT_EQ(Eps(), 0U);
  EXPECT_EQ(Calls(), std::string(Open) + Close);
  EXPECT_EQ(Left(), "");
}

TEST_F(GenerateCutData, without_a_header_eps_and_ps_leave_nothing) {
  const os::SystemCallsGuard guard;
  m_Eps.m_BeforeHeader = m_Ps.m_BeforeHeader = RefuseHeaders;
  EXPECT_EQ(Eps(), 0U);
  EXPECT_EQ(Ps(), 0U);
  EXPECT_EQ(Calls(), std::string(EpsStart) + Close + PsStart + Close);
  EXPECT_EQ(Left(), "");
}

TEST_F(GenerateCutData, without_a_header_eps_and_ps_stay_if_files_are_to_be_kept) {
  KeepFiles();
  const os::SystemCallsGuard guard;
  m_Eps.m_BeforeHeader = m_Ps.m_BeforeHeader = RefuseHeaders;
  EXPECT_EQ(Eps(), 0U);
  EXPECT_EQ(Ps(), 0U);
  EXPECT_EQ(Left(), "vk.ps vk.ps");
}

TEST_F(GenerateCutData, without_a_header_pdf_goes_on_without_its_side_file) {
  const os::SystemCallsGuard guard;
  m_Pdf.m_BeforeHeader = RefuseHeaders;
  OneLine();
  EXPECT_EQ(Pdf(), 3U);
  EXPECT_EQ(Calls(), std::string(PdfStart) + Line + Cut + OuterGone + Placed() + Close);
  EXPECT_EQ(Root().Read("seen.jhdr"), "(none)");
  EXPECT_EQ(Left(), "vk.cfm vk.cfm/.info vk.pdf vk_Color.bmp");
}

TEST_F(GenerateCutData, without_a_header_the_side_file_stays_empty_if_files_are_to_be_kept) {
  KeepFiles();
  const os::SystemCallsGuard guard;
  m_Pdf.m_BeforeHeader = RefuseHeaders;
  OneLine();
  EXPECT_EQ(Pdf(), 3U);
  EXPECT_EQ(Root().Read("seen.jhdr"), "");
  EXPECT_EQ(Left(), "vk.cfm vk.cfm/.info vk.jhdr vk.pdf vk_Color.bmp");
}

// A program that has made its directory, and hangs.
std::string Hanging(const std::string& begin) {
  return begin +
         "mkdir \"$stem.cfm\"; echo x > \"$stem.cfm/.info\"\n"
         "echo 'INFO: CONVERTING' >&2\nexec sleep 1000\n";
}

TEST_F(GenerateCutData, cancelled_the_directory_and_the_file_go) {
  Queue(Hanging(Begin));
  m_Host.m_Views.PressAt("text 2021 Converting", CQProgressDlg::CancelButton);
  EXPECT_EQ(Eps(1), 0U);
  EXPECT_EQ(Calls(), std::string(EpsStart) + Close);
  EXPECT_EQ(Left(), "");
  ExpectNothingLeft();
}

TEST_F(GenerateCutData, cancelled_the_side_file_of_a_pdf_stays) {
  Queue(Hanging(Begin));
  m_Host.m_Views.PressAt("text 2021 Converting", CQProgressDlg::CancelButton);
  EXPECT_EQ(Pdf(), 0U);
  EXPECT_EQ(Calls(), std::string(PdfStart) + Close);
  EXPECT_EQ(Left(), "vk.jhdr");
}

TEST_F(GenerateCutData, cancelled_all_stays_if_files_are_to_be_kept) {
  KeepFiles();
  Queue(Hanging(Begin));
  m_Host.m_Views.PressAt("text 2021 Converting", CQProgressDlg::CancelButton);
  EXPECT_EQ(Ps(), 0U);
  EXPECT_EQ(Left(), "vk.cfm vk.cfm/.info vk.ps");
}

TEST_F(GenerateCutData, a_job_that_fails_is_no_cancel) {
  Queue(std::string(Begin) + "echo 'INFO: CLQ_failure' >&2\nexit 1\n");
  EXPECT_EQ(Eps(), 0U);
  EXPECT_EQ(Calls(), std::string(EpsStart) + Close);
  EXPECT_EQ(Left(), "vk.ps");
}

TEST_F(GenerateCutData, a_job_that_fails_has_no_bitmap_for_a_preview) {
  Queue(std::string(Begin) + "echo 'INFO: CLQ_failure' >&2\nexit 1\n");
  EXPECT_EQ(Eps(1), 0U);
  EXPECT_TRUE(LogTexts().starts_with("[CLQ] could not access the bmp file: ")) << LogTexts();
  EXPECT_EQ(Left(), "");
}

TEST_F(GenerateCutData, without_a_record_that_is_enabled_the_archive_is_not_touched) {
  m_Eps.m_Cut.enabled = 0;
  OneLine();
  EXPECT_EQ(Eps(), 0U);
  EXPECT_EQ(Calls(), std::string(EpsStart) + Close);
  EXPECT_EQ(Left(), "vk.cfm vk.cfm/.info vk.cut vk.ps vk_Color.bmp");
  EXPECT_EQ(Eps(1), 0U);
  EXPECT_EQ(Calls(), std::string(EpsStart) + Close + EpsStart + Preview + Close);
}

TEST_F(GenerateCutData, without_an_archive_no_group_is_made) {
  Products(false, true);
  EXPECT_EQ(Eps(), 0U);
  EXPECT_EQ(Calls(), std::string(EpsStart) + Close);
  EXPECT_EQ(Left(), "vk.cfm vk.cfm/.info vk.ps vk_Color.bmp");
}

TEST_F(GenerateCutData, an_archive_of_another_version_is_an_empty_list_and_goes) {
  Archive(U32(1) + U32(1));
  EXPECT_EQ(Eps(), 0U);
  EXPECT_EQ(Calls(), std::string(EpsStart) + "DBCreateObject(1) -> #2\n" + OuterGone + Close);
  EXPECT_EQ(Left(), "vk.cfm vk.cfm/.info vk.ps vk_Color.bmp");
}

TEST_F(GenerateCutData, an_archive_that_cant_be_opened_is_deleted_all_the_same) {
  Queue(std::string(Begin) + MakeDirectory + "mkfifo \"$stem.cut\"\n" + Success);
  EXPECT_EQ(Eps(), 0U);
  EXPECT_EQ(Calls(), std::string(EpsStart) + "DBCreateObject(1) -> #2\n" + OuterGone + Close);
  EXPECT_EQ(Left(), "vk.cfm vk.cfm/.info vk.ps");
}

TEST_F(GenerateCutData, an_archive_cut_at_every_byte_raises_its_exception_and_closes_the_step) {
  const std::string bytes = ArchiveBytes({ObjectBytes("Cut", {LineBytes(1, -1)})});
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    Archive(bytes.substr(0, length));
    m_Host.m_Calls.Clear();
    int cause = 0;
    try {
      static_cast<void>(Eps(1));
    } catch (const CArchiveException& exception) {
      cause = exception.m_cause;
    }
    EXPECT_EQ(cause, CArchiveException::endOfFile) << length;
    EXPECT_EQ(Calls(), std::string(EpsStart) + Close) << length;
    EXPECT_EQ(Left(), "vk.cfm vk.cfm/.info vk.cut vk.ps vk_Color.bmp") << length;
    for (const auto& entry : std::filesystem::directory_iterator(Root().Path("Queue/rip")))
      if (entry.path().filename().string().starts_with("vk")) RemoveTree(entry.path());
  }
}

TEST_F(GenerateCutData, without_a_bitmap_a_preview_is_0_though_cut_lines_were_built) {
  Products(true, false);
  OneLine();
  EXPECT_EQ(Eps(1), 0U);
  EXPECT_EQ(Calls(), std::string(EpsStart) + Line + Cut + OuterGone + Close)
      << "nothing is destroyed, placed or selected";
  EXPECT_EQ(Left(), "vk.cfm vk.cfm/.info");
  const std::string path = Root().Read("path");
  EXPECT_EQ(LogTexts(), "[CLQ] could not access the bmp file: " + path.substr(0, path.size() - 3) +
                            "_Color.bmp\r\n");
}

TEST_F(GenerateCutData, without_a_bitmap_the_file_stays_if_files_are_to_be_kept) {
  KeepFiles();
  Products(true, false);
  OneLine();
  EXPECT_EQ(Eps(1), 0U);
  EXPECT_EQ(Left(), "vk.cfm vk.cfm/.info vk.ps");
}

TEST_F(GenerateCutData, a_preview_that_is_refused_destroys_the_result) {
  m_Host.m_Calls.Always("CreatePreviewBmp", 0);
  OneLine();
  EXPECT_EQ(Eps(1), 0U);
  EXPECT_EQ(Calls(), std::string(EpsStart) + Line + Cut + OuterGone +
                         "object.CreatePreviewBmp(\"..._Color.bmp\") -> 0\n"
                         "DBDestroyObject(#3)\n" +
                         Close);
  EXPECT_EQ(Left(), "");
  const std::string path = Root().Read("path");
  EXPECT_EQ(LogTexts(), "[CLQ] could not create preview from bmp file: " +
                            path.substr(0, path.size() - 3) + "_Color.bmp\r\n");
}

TEST_F(GenerateCutData, a_preview_that_is_refused_without_a_result_destroys_none) {
  m_Host.m_Calls.Always("CreatePreviewBmp", 0);
  Products(false, true);
  EXPECT_EQ(Ps(1), 0U);
  EXPECT_EQ(Calls(),
            std::string(PsStart) + "object.CreatePreviewBmp(\"..._Color.bmp\") -> 0\n" + Close);
  EXPECT_EQ(Left(), "");
}

TEST_F(GenerateCutData, the_preview_is_taken_while_its_bitmap_is_there) {
  m_Eps.m_OnPreview = [this] { EXPECT_EQ(Left(), "vk.cfm vk.cfm/.info vk.ps vk_Color.bmp"); };
  OneLine();
  EXPECT_EQ(Eps(1), 3U);
}

TEST_F(GenerateCutData, an_exception_of_the_host_passes_and_closes_the_step) {
  OneLine();
  m_Eps.m_OnPreview = [] { throw std::runtime_error("no preview"); };
  EXPECT_THROW(static_cast<void>(Eps(1)), std::runtime_error);
  EXPECT_TRUE(Calls().ends_with(Close));
}

// --- Colors and groups ---

TEST_F(GenerateCutData, the_half_cut_color_makes_lines_that_are_cut_through) {
  m_Pdf.m_HalfCut = m_Half;
  OneLine("Half");
  EXPECT_EQ(Pdf(), 3U);
  EXPECT_EQ(Calls(), std::string(PdfStart) + Line + CutHalf + OuterGone + Placed() + Close);
  EXPECT_EQ(Root().Read("seen.jhdr"), Head +
                                          "%# KVI_Res= 300\r\n%# KVI_CutLine= SEP, Cut\r\n"
                                          "%# KVI_CutLine= SEP, Half\r\n"
                                          "%# KVI_Setflat= 10\r\n%#End Job\r\n");
}

TEST_F(GenerateCutData, the_half_cut_record_alone_is_enough) {
  m_Eps.m_Cut.enabled = 0;
  m_Eps.m_HalfCut = m_Half;
  OneLine("Half");
  EXPECT_EQ(Eps(), 3U);
  EXPECT_EQ(Calls(), std::string(EpsStart) + Line + CutHalf + OuterGone + Placed() + Close);
}

TEST_F(GenerateCutData, a_color_that_no_record_has_makes_plain_paths) {
  OneLine("Other");
  EXPECT_EQ(Eps(), 3U);
  EXPECT_EQ(Calls(), std::string(EpsStart) + Line + OuterGone + Placed() + Close);
}

TEST_F(GenerateCutData, one_object_of_two_polygons_is_a_group_and_the_outer_group_goes) {
  Archive(ArchiveBytes({ObjectBytes("Cut", {LineBytes(1, 1), LineBytes(2, 2)})}));
  EXPECT_EQ(Eps(), 3U);
  EXPECT_EQ(
      m_Host.m_Calls.Of({"DBCreateObject", "DBInsertObject", "DBDestroyObject", "DBSelect"}),
      (Lines{"DBCreateObject(1) -> #2", "DBCreateObject(1) -> #3", "DBInsertObject(#4, #3) -> 1",
             "DBInsertObject(#5, #3) -> 1", "DBDestroyObject(#2)", "DBSelect(#3)"}));
}

TEST_F(GenerateCutData, several_objects_are_a_group_that_is_placed_and_selected) {
  m_Ps.m_HalfCut = m_Half;
  Archive(ArchiveBytes(
      {ObjectBytes("Cut", {LineBytes(1, 1)}), ObjectBytes("Half", {LineBytes(2, 2)})}));
  EXPECT_EQ(Ps(), 2U);
  EXPECT_TRUE(
      Calls().ends_with("DBInsertObject(#4, #2) -> 1\n"
                        "DBSetTraits(#2, 224)\n"
                        "DBInvalidateBounds(#2)\n"
                        "DBValidateBounds(#2)\n"
                        "DBApplyTM(#2, (1 0 0 1 0 5.08))\n"
                        "DBSelect(#2)\n"
                        "UNCloseStep()\n"));
}

TEST_F(GenerateCutData, without_cut_lines_in_the_host_the_paths_are_placed_all_the_same) {
  m_Host.m_HasContourCut = false;
  OneLine();
  EXPECT_EQ(Eps(), 3U);
  EXPECT_EQ(Calls(), std::string(EpsStart) + Line +
                         "AddColorToPalette(RGB(255 0 0) \"Cut\") -> 1\n"
                         "DBSetLayer(#3, RGB(255 0 0))\n" +
                         OuterGone + Placed() + Close);
  EXPECT_EQ(LogTexts(), "[CLQ] the host makes no cut lines: the paths stay plain\r\n");
}

TEST_F(GenerateCutData, an_object_of_another_version_is_misread_and_placed_with_the_rest) {
  Archive(U32(0) + U32(2) + U32(2) + ObjectBytes("Cut", {LineBytes(1, -1)}));
  EXPECT_EQ(Eps(), 2U);
  EXPECT_EQ(
      m_Host.m_Calls.Of({"DBInsertObject", "DBSelect"}),
      (Lines{"DBInsertObject(none, #2) -> 1", "DBInsertObject(#3, #2) -> 1", "DBSelect(#2)"}));
}

// --- Sizes, places, names ---

TEST_F(GenerateCutData, ps_is_moved_and_measured_by_its_translated_bounds) {
  // A quarter turn to the left and then by 100, 200: 2.54 wide and 5.08 high become 5.08 by 2.54,
  // from 94.92 to 100 and from 200 to 202.54.
  m_Ps.m_Matrix = {.a = 0, .b = 1, .c = -1, .d = 0, .tx = 100, .ty = 200};
  OneLine();
  EXPECT_EQ(Ps(), 3U);
  EXPECT_EQ(m_Host.m_Calls.Of({"DBApplyTM"}), (Lines{"DBApplyTM(#3, (1 0 0 1 94.92 202.54))"}));
}

// 100 inches are 254 cm.
TEST_F(GenerateCutData, one_hundred_inches_at_300_are_94_and_in_a_pdf_93) {
  OneLine();
  m_Eps.m_Width = m_Eps.m_Height = 254;
  m_Ps.m_Bounds = m_Pdf.m_Bounds = {.xmin = 10, .xmax = 264, .ymin = -254, .ymax = 0};
  EXPECT_NE(Eps(), 0U);
  EXPECT_NE(Root().Read("seen").find("%# KVI_Res= 94\r\n"), std::string::npos);
  EXPECT_NE(Ps(), 0U);
  EXPECT_NE(Root().Read("seen").find("%# KVI_Res= 94\r\n"), std::string::npos);
  EXPECT_NE(Pdf(), 0U);
  EXPECT_NE(Root().Read("seen.jhdr").find("%# KVI_Res= 93\r\n"), std::string::npos);
}

TEST_F(GenerateCutData, the_size_that_is_limited_is_that_under_the_objects_matrix) {
  OneLine();
  m_Ps.m_Matrix = {.a = 100, .d = 50};  // 1 by 2 inches become 100 by 100
  EXPECT_NE(Ps(), 0U);
  EXPECT_NE(Root().Read("seen").find("%# KVI_Res= 94\r\n"), std::string::npos);
}

TEST_F(GenerateCutData, a_resolution_below_1_has_no_line_in_the_header) {
  OneLine();
  for (const int resolution : {0, -300}) {
    EXPECT_NE(Ps(0, resolution), 0U);
    EXPECT_EQ(Root().Read("seen"), Head + Tail + "%!PS\nshowpage\n") << resolution;
  }
}

TEST_F(GenerateCutData, a_pdf_with_its_extension_in_capitals_has_its_side_file) {
  Root().Write("job/SIGN.PDF", "%PDF-1.4\n");
  OneLine();
  EXPECT_EQ(Pdf(0, 300, "job/SIGN.PDF"), 3U);
  EXPECT_EQ(GivenName(), "vk.pdf");
  EXPECT_EQ(Left(), "vk.cfm vk.cfm/.info vk.jhdr vk.pdf vk_Color.bmp");
  EXPECT_EQ(Root().Read("seen.jhdr"), Head + "%# KVI_Res= 300\r\n" + Tail);
}

TEST_F(GenerateCutData, a_pdf_with_another_extension_keeps_it_and_has_its_side_file) {
  Root().Write("job/sign.ai", "%PDF-1.4\n");
  OneLine();
  EXPECT_EQ(Pdf(0, 300, "job/sign.ai"), 3U);
  EXPECT_EQ(Left(), "vk.ai vk.cfm vk.cfm/.info vk.jhdr vk_Color.bmp");
  EXPECT_EQ(Root().Read("seen"), "%PDF-1.4\n");
}

TEST_F(GenerateCutData, the_path_is_in_lower_case) {
  OneLine();
  EXPECT_EQ(Eps(), 3U);
  const std::string path = Root().Read("path");
  EXPECT_EQ(path, os::Utf8FromWide(os::LowerAscii(os::WideFromUtf8(path))));
  EXPECT_NE(path.find("\\rip\\vk"), std::string::npos) << path;
}

TEST_F(GenerateCutData, its_files_are_this_users_alone) {
  Queue(std::string(Begin) +
        "stat -c %a \"$file\" > \"$RASTREL_HOME/mode\"\n"
        "if [ -e \"$stem.jhdr\" ]; then\n"
        "stat -c %a \"$stem.jhdr\" >> \"$RASTREL_HOME/mode\"; fi\n" +
        Success);
  std::filesystem::permissions(Root().Path("job/sign.pdf"), std::filesystem::perms(0644));
  EXPECT_EQ(Eps(), 0U);
  EXPECT_EQ(Root().Read("mode"), "600\n");
  EXPECT_EQ(Pdf(), 0U);
  EXPECT_EQ(Root().Read("mode"), "600\n600\n");
}

}  // namespace
}  // namespace rastrel::test
