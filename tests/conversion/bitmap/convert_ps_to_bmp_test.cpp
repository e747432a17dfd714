// Conversions to a bitmap that go well, and those that end before a file is drawn.

#include "rastrel/conversion/bitmap/convert_ps_to_bmp.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <new>
#include <utility>

#include "rastrel/platform/os/system_calls.h"
#include "tests/conversion/bitmap/convert_fixture.h"

using namespace rastrel::test;
namespace host = rastrel::host;
namespace os = rastrel::os;

namespace {

using ConvertPsToBmp = ConvertTest;

TEST_F(ConvertPsToBmp, makes_a_bitmap_object_and_leaves_no_file) {
  EXPECT_EQ(Convert(), 1);
  EXPECT_EQ(Calls(), AskedCalls + BegunCalls + LoadedCalls + ClearedCalls + EndCalls + ClosedCalls);
  EXPECT_EQ(Changes(), Lines());
  EXPECT_EQ(LogTexts().find("[CLQ] the"), std::string::npos) << LogTexts();
}

TEST_F(ConvertPsToBmp, names_its_undo_step_in_the_user_s_language) {
  m_Host.m_Translations[L"(*v*)Converting to Bitmap"] = L"In Bitmap umwandeln";
  EXPECT_EQ(Convert(), 1);
  EXPECT_TRUE(m_Host.m_Calls.Has("UNOpenStep(\"In Bitmap umwandeln\")"));
}

TEST_F(ConvertPsToBmp, gives_the_program_a_copy_with_page_size_and_resolution) {
  m_Host.m_Settings[{L"Images", L"EPS dialog data"}] = L"2,150";
  EXPECT_EQ(Convert(), 1);
  // 1 by 2 inches are 72 by 144 points.
  EXPECT_EQ(
      Root().Read("seen/given.ps"),
      std::string("%#Velumark Header 2.0\r\n%#Begin Job: 0\r\n%# Title: MyJob\r\n%#Type=Print\r\n"
                  "%#PageSize=Custom,72.000000,144.000000\r\n%# KVI_Res= 150\r\n%#End Job\r\n") +
          Sign);
  EXPECT_EQ(Root().Read("job/sign.ps"), Sign);
}

TEST_F(ConvertPsToBmp, tells_the_program_the_one_cut_line_of_the_dialog) {
  WantCutLine();
  EXPECT_EQ(Convert(), 1);
  EXPECT_EQ(
      Root().Read("seen/given.ps"),
      std::string("%#Velumark Header 2.0\r\n%#Begin Job: 0\r\n%# Title: MyJob\r\n%#Type=Print\r\n"
                  "%#PageSize=Custom,72.000000,144.000000\r\n%# KVI_Res= 72\r\n"
                  "%# KVI_CutLine= RGB, 0.000, 0.000, 0.000\r\n%# KVI_Setflat= 10\r\n"
                  "%#End Job\r\n") +
          Sign);
}

TEST_F(ConvertPsToBmp, keeps_mode_and_resolution_for_the_next_time) {
  m_Host.m_Views.m_Actions.insert(
      m_Host.m_Views.m_Actions.begin(),
      {"run", [this](host::DialogLogic& dialog) { m_Host.m_Views.Fill(dialog, 2002, 300.0); }});
  EXPECT_EQ(Convert(), 1);
  EXPECT_TRUE(m_Host.m_Calls.Has("Write(\"Images\", \"EPS dialog data\", \"2,300\")"));
  m_Host.m_Views.m_Told.clear();
  m_Host.m_Views.PressAt("run", host::OkCommand);
  EXPECT_EQ(Convert(), 1);
  EXPECT_TRUE(m_Host.m_Views.HasTold("value 2002 300"));
}

TEST_F(ConvertPsToBmp, begins_with_72_dpi_unless_the_setting_has_a_positive_resolution) {
  const std::wstring blanks(73, L' ');
  const std::pair<std::wstring, const char*> cases[] = {
      {L"2,0", "72"},
      {L"2,-1", "72"},
      {L"2,1", "1"},
      {L"2,2", "2"},
      {L"", "72"},
      {L"2", "72"},
      {L"2,", "72"},
      {L"2 300", "72"},
      {L"a,300", "72"},
      {L"1,300", "300"},
      {L"2,300,9", "300"},
      {L"2,2147483648", "72"},
      {L"-5,600", "600"},
      // 78 characters are read.
      {blanks + L"2,300", "300"},
      {blanks + L" 2,300", "30"},
      {blanks + L"   2,300", "72"},
  };
  for (const auto& [setting, resolution] : cases) {
    m_Host.m_Settings[{L"Images", L"EPS dialog data"}] = setting;
    m_Host.m_Views.m_Told.clear();
    m_Host.m_Views.m_Actions.clear();
    m_Host.m_Views.PressAt("run", host::CancelCommand);
    EXPECT_EQ(Convert(), 1);
    EXPECT_TRUE(m_Host.m_Views.HasTold(std::string("value 2002 ") + resolution))
        << os::Utf8FromWide(setting);
  }
}

TEST_F(ConvertPsToBmp, takes_the_size_from_corners_in_any_order) {
  Root().Write("job/sign.ps", "%!PS\n%%BoundingBox: 144 -144 0 72\nshowpage\n%%EOF\n");
  EXPECT_EQ(Convert(), 1);
  EXPECT_TRUE(m_Host.m_Views.HasTold("value 2001 5.08"));  // 144 points
  EXPECT_TRUE(m_Host.m_Views.HasTold("value 2000 7.62"));  // 216 points
}

TEST_F(ConvertPsToBmp, takes_the_size_of_the_largest_box_that_there_is) {
  Root().Write("job/sign.ps",
               "%!PS\n%%BoundingBox: -2147483648 -2147483648 2147483647 2147483647\n%%EOF\nx\n");
  m_Host.m_Views.m_Actions.clear();
  m_Host.m_Views.PressAt("run", host::CancelCommand);
  EXPECT_EQ(Convert(), 1);
  // 4,294,967,295 points.
  EXPECT_TRUE(m_Host.m_Views.HasTold("value 2001 151516901.79583332"))
      << ::testing::PrintToString(m_Host.m_Views.m_Told);
}

TEST_F(ConvertPsToBmp, offers_the_custom_colors_of_the_file) {
  Root().Write("job/sign.ps",
               "%!PS-Adobe-3.0\n%%BoundingBox: 0 0 72 72\n%%DocumentCustomColors: (Kiss Cut)\n"
               "%%+ (Die)\n%%EndComments\nshowpage\n%%EOF\n");
  EXPECT_EQ(Convert(), 1);
  EXPECT_TRUE(m_Host.m_Views.HasTold("items 2024 [Kiss Cut] [Die]"));
}

TEST_F(ConvertPsToBmp, hides_the_size_of_a_file_without_a_box_and_takes_it_from_the_pixels) {
  Root().Write("job/sign.ps", "%!PS-Adobe-3.0\n%%EndComments\nshowpage\n%%EOF\n");
  m_Host.m_Settings[{L"Images", L"EPS dialog data"}] = L"2,2";
  EXPECT_EQ(Convert(), 1);
  for (const char* line :
       {"visible 2000 0", "visible 2001 0", "visible 2003 0", "visible 2006 0", "visible 2007 0"})
    EXPECT_TRUE(m_Host.m_Views.HasTold(line)) << line;
  // 2 by 1 pixels at 2 dpi.
  EXPECT_TRUE(m_Host.m_Calls.Has("DBInsertBitmap(2.54, 1.27) -> #2"));
  EXPECT_NE(Root().Read("seen/given.ps").find("%#PageSize=Custom,0.000000,0.000000\r\n"),
            std::string::npos);
}

TEST_F(ConvertPsToBmp, keeps_the_files_where_the_setting_says_so) {
  m_Host.m_Settings[{L"RASTREL", L"Keep PS Files"}] = L"1";
  EXPECT_EQ(Convert(), 1);
  EXPECT_EQ(Calls(), AskedCalls + BegunCalls + LoadedCalls +
                         "Read(\"RASTREL\", \"Keep PS Files\") -> \"1\"\n" + EndCalls +
                         ClosedCalls);
  EXPECT_EQ(Changes(), PageLeft);
}

TEST_F(ConvertPsToBmp, makes_files_for_this_user_alone) {
  m_Host.m_Settings[{L"RASTREL", L"Keep PS Files"}] = L"1";
  std::filesystem::permissions(Root().Path("job/sign.ps"), std::filesystem::perms(0644));
  EXPECT_EQ(Convert(PS2BMP_POSTSCRIPT), 1);
  m_Host.m_Views.m_Told.clear();
  m_Host.m_Views.PressAt("run", host::OkCommand);
  EXPECT_EQ(Convert(PS2BMP_EPS), 1);
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(Root().Path("Queue/rip"))) {
    if (entry.path().extension() != ".ps") continue;
    ++files;
    EXPECT_EQ(entry.status().permissions(), std::filesystem::perms(0600)) << entry.path();
  }
  EXPECT_EQ(files, 2);
}

TEST_F(ConvertPsToBmp, works_in_a_document_without_a_view) {
  m_Host.m_Application.m_HasView = false;
  EXPECT_EQ(Convert(), 1);
  EXPECT_EQ(m_Host.m_Calls.Count("SetUpdateAllowed"), 0U);
  EXPECT_EQ(m_Host.m_Calls.Count("DBSelect"), 1U);
}

// --- EPS ---

TEST_F(ConvertPsToBmp, has_the_host_write_an_eps_file) {
  EXPECT_EQ(Convert(PS2BMP_EPS), 1);
  EXPECT_EQ(Calls(), AskedCalls + BegunCalls +
                         "NewGenericEPS(\"ROOT/job/sign.ps\") -> E1\n"
                         "E1.IsDCSObject() -> false\nE1.ConvertToPS() -> 1\n" +
                         LoadedCalls + ClearedCalls + EndCalls + ClosedCalls);
  EXPECT_TRUE(
      Root().Read("seen/given.ps").ends_with("%#End Job\r\n%!PS-Adobe-3.0 EPSF-3.0\nshowpage\n"));
  EXPECT_EQ(Changes(), Lines());
}

TEST_F(ConvertPsToBmp, refuses_a_dcs_file_with_a_message_and_makes_no_file) {
  m_Host.m_Calls.Always("IsDCSObject", 1);
  m_Host.m_Translations[L"(*v*)Error"] = L"Fehler";
  EXPECT_EQ(Convert(PS2BMP_EPS), 1);
  EXPECT_EQ(Calls(), AskedCalls + BegunCalls +
                         "NewGenericEPS(\"ROOT/job/sign.ps\") -> E1\n"
                         "E1.IsDCSObject() -> true\n"
                         "SetUpdateAllowed(true)\n" +
                         ClosedCalls);
  EXPECT_EQ(m_Host.m_Views.m_Told.back(),
            "message Fehler: DCS-EPS file cannot be converted to a bitmap.");
  EXPECT_EQ(Changes(), Lines());
}

TEST_F(ConvertPsToBmp, ends_where_the_host_cannot_open_the_eps_file) {
  m_Host.m_Calls.Always("NewGenericEPS", 0);
  EXPECT_EQ(Convert(PS2BMP_EPS), 1);
  EXPECT_EQ(Calls(), AskedCalls + BegunCalls +
                         "NewGenericEPS(\"ROOT/job/sign.ps\") -> none\nSetUpdateAllowed(true)\n" +
                         ClosedCalls);
  EXPECT_EQ(Changes(), Lines());
  EXPECT_TRUE(LogHas("the host can't open the EPS file: ROOT/job/sign.ps"));
}

TEST_F(ConvertPsToBmp, leaves_what_was_written_of_an_eps_file_that_fails) {
  for (const int answer : {0, -1}) {
    m_Host.m_Calls.Clear();
    m_Host.m_Calls.Always("ConvertToPS", answer);
    m_Host.m_Views.m_Told.clear();
    m_Host.m_Views.PressAt("run", host::OkCommand);
    EXPECT_EQ(Convert(PS2BMP_EPS), 1);
    const std::string calls = Calls();
    EXPECT_TRUE(calls.ends_with(".ConvertToPS() -> " + std::to_string(answer) +
                                "\nSetUpdateAllowed(true)\nUNCloseStep()\n"))
        << calls;
  }
  EXPECT_EQ(Changes(), (Lines{PostScriptLeft[0], PostScriptLeft[0]}));
  EXPECT_TRUE(LogHas("the host can't write the EPS file as PostScript: ROOT/job/sign.ps"));
}

// --- Ends before the file is drawn ---

TEST_F(ConvertPsToBmp, returns_0_at_once_without_a_queue_program) {
  std::filesystem::remove(Root().Path(QueueProgram));
  EXPECT_EQ(Convert(), 0);
  EXPECT_EQ(Calls(), "");
  EXPECT_EQ(Changes(), Lines{std::string("-") + QueueProgram});
}

TEST_F(ConvertPsToBmp, returns_0_without_a_path) {
  EXPECT_EQ(ConvertPStoBmp(nullptr, 0, PS2BMP_POSTSCRIPT, 0, 0, nullptr), 0);
  EXPECT_EQ(Calls(), "");
}

TEST_F(ConvertPsToBmp, returns_0_without_a_document_and_the_log_says_so) {
  m_Host.m_HasDocument = false;
  EXPECT_EQ(Convert(), 0);
  m_Host.m_HasDocument = true;
  m_Host.m_HasApplication = false;
  EXPECT_EQ(Convert(), 0);
  EXPECT_EQ(Calls(), "");
  EXPECT_EQ(LogTexts(),
            "[CLQ] the host has no document to convert into\r\n"
            "[CLQ] the host has no document to convert into\r\n");
  EXPECT_EQ(Changes(), Lines());
}

TEST_F(ConvertPsToBmp, returns_1_for_a_cancelled_dialog_and_makes_no_file) {
  m_Host.m_Views.m_Actions.clear();
  m_Host.m_Views.PressAt("run", host::CancelCommand);
  EXPECT_EQ(Convert(), 1);
  EXPECT_EQ(Calls(), AskedCalls + ClosedCalls);
  EXPECT_EQ(Changes(), Lines());
}

TEST_F(ConvertPsToBmp, counts_a_dialog_that_cannot_be_shown_as_cancelled) {
  m_Host.m_Views.m_Refuses = true;
  EXPECT_EQ(Convert(), 1);
  EXPECT_EQ(Calls(),
            "UNOpenStep(\"Converting to Bitmap\")\n"
            "Read(\"Images\", \"EPS dialog data\") -> null\n"
            "GetCurrentUnits() -> 0\n" +
                ClosedCalls);
  EXPECT_EQ(Changes(), Lines());
}

/// Views that answer OK while they are made, so that no dialog comes to set its mode.
class HastyViews : public host::DialogViews {
 public:
  std::unique_ptr<host::DialogView> MakeView(host::DialogLogic& dialog) override {
    dialog.Command(host::OkCommand);
    return nullptr;
  }
  void ShowMessage(CWnd*, const std::wstring&, const std::wstring&) override {}
};

TEST_F(ConvertPsToBmp, returns_0_in_mode_1_without_a_further_call) {
  HastyViews views;
  m_Host.m_Otherwise = &views;
  EXPECT_EQ(Convert(), 0);
  EXPECT_EQ(Calls(),
            "UNOpenStep(\"Converting to Bitmap\")\n"
            "Read(\"Images\", \"EPS dialog data\") -> null\n"
            "GetCurrentUnits() -> 0\n"
            "Write(\"Images\", \"EPS dialog data\", \"1,72\")\n");
  EXPECT_EQ(Changes(), Lines());
  m_Host.m_Store.UNCloseStep();  // the step is open still
}

TEST_F(ConvertPsToBmp, refuses_other_kinds_of_file_and_makes_no_file) {
  for (const int kind : {0, 2, 4, 10, 12, -1}) {
    m_Host.m_Calls.Clear();
    m_Host.m_Settings.clear();
    m_Host.m_Views.m_Told.clear();
    m_Host.m_Views.PressAt("run", host::OkCommand);
    EXPECT_EQ(Convert(kind), 1);
    EXPECT_EQ(Calls(), AskedCalls + BegunCalls + "SetUpdateAllowed(true)\n" + ClosedCalls) << kind;
    EXPECT_TRUE(LogHas("a file of kind " + std::to_string(kind) +
                       " can't be converted to a bitmap: ROOT/job/sign.ps"));
  }
  EXPECT_EQ(Changes(), Lines());
}

TEST_F(ConvertPsToBmp, ends_where_the_file_cannot_be_copied) {
  EXPECT_EQ(Convert(PS2BMP_POSTSCRIPT, "job/none.ps"), 1);
  EXPECT_EQ(Calls(), AskedCalls + BegunCalls + "SetUpdateAllowed(true)\n" + ClosedCalls);
  EXPECT_EQ(Changes(), Lines());
  EXPECT_NE(LogTexts().find("[CLQ] the file to convert can't be copied: "), std::string::npos);
}

TEST_F(ConvertPsToBmp, ends_where_there_is_no_free_name) {
  const os::SystemCallsGuard guard;
  os::Calls().random = [](void*, std::size_t) -> ssize_t { return errno = ENOSYS, -1; };
  EXPECT_EQ(Convert(), 1);
  EXPECT_EQ(Calls(), AskedCalls + BegunCalls + "SetUpdateAllowed(true)\n" + ClosedCalls);
  EXPECT_EQ(Changes(), Lines());
  EXPECT_TRUE(LogHas("there is no free name for a conversion's file"));
}

TEST_F(ConvertPsToBmp, leaves_the_file_and_the_view_s_flag_where_the_header_cannot_be_written) {
  const os::SystemCallsGuard guard;
  // The first name is the conversion's, the second the header's.
  static int names;
  names = 0;
  static os::SystemCalls machine;
  machine = os::Calls();
  os::Calls().random = [](void* bytes, std::size_t count) -> ssize_t {
    return ++names == 1 ? machine.random(bytes, count) : (errno = ENOSYS, ssize_t{-1});
  };
  EXPECT_EQ(Convert(), 1);
  EXPECT_EQ(Calls(), AskedCalls + BegunCalls + ClosedCalls);
  EXPECT_EQ(Changes(), PostScriptLeft);
  EXPECT_TRUE(LogHas("the job header can't be written: ROOT/queue\\rip\\vkNAME.ps"));
}

/// Views whose dialog has no memory.
class FullViews : public host::DialogViews {
 public:
  std::unique_ptr<host::DialogView> MakeView(host::DialogLogic&) override {
    throw std::bad_alloc();
  }
  void ShowMessage(CWnd*, const std::wstring&, const std::wstring&) override {}
};

TEST_F(ConvertPsToBmp, closes_its_step_when_an_exception_leaves_it) {
  FullViews views;
  m_Host.m_Otherwise = &views;
  EXPECT_THROW(Convert(), std::bad_alloc);
  EXPECT_TRUE(Calls().ends_with(ClosedCalls));
  EXPECT_EQ(Changes(), Lines());
}

}  // namespace
