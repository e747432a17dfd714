#include "host/host_files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "host/document/document.h"
#include "host/document_host.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/host/settings.h"
#include "rastrel/platform/os/path.h"
#include "tests/support/environment_guard.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::document {
namespace {

class HostFilesTest : public testing::Test {
 protected:
  HostFilesTest() { host::SetHost(&m_Host); }
  ~HostFilesTest() override { host::SetHost(nullptr); }

  void WritePlotter(int index, const std::string& text) {
    m_Root.Write("plotters/" + std::to_string(index) + ".ini", text);
  }

  test::ScratchDirectory m_Root;
  test::EnvironmentGuard m_Home{"RASTREL_HOME", m_Root.Path()};
  test::EnvironmentGuard m_Temporary{"TMPDIR", m_Root.Path()};
  DocumentHost m_Host;
  host::Application& m_Application = *m_Host.GetApplication();
};

TEST_F(HostFilesTest, a_plotter_is_found_by_its_name_as_an_import_looks_for_it) {
  WritePlotter(0, "[setup]\nplottername = Cutter\n");
  WritePlotter(1, "[setup]\nplottername = Engraver \xC3\xA9\n");
  EXPECT_EQ(m_Application.GetStringDevice(m_Application.GGetPathDeviceInI(0).c_str(), L"setup",
                                          L"plottername"),
            L"Cutter");
  EXPECT_EQ(m_Application.GetStringDevice(m_Application.GGetPathDeviceInI(1).c_str(), L"setup",
                                          L"plottername"),
            L"Engraver \u00e9");
  EXPECT_EQ(m_Application.GGetPathDeviceInI(2), L"");
  EXPECT_EQ(m_Application.GGetPathDeviceInI(-1), L"");
  EXPECT_FALSE(m_Application.GetStringDevice(m_Application.GGetPathDeviceInI(1).c_str(), L"setup",
                                             L"other"));
}

TEST_F(HostFilesTest, a_text_is_stored_for_the_plotter_in_use_alone) {
  WritePlotter(0, "[setup]\nplottername = Cutter\n");
  WritePlotter(1, "; mine\n[setup]\nplottername = Engraver\n");
  EXPECT_EQ(WriteIntKorvane(L"plottersetup", L"DeviceUsed", 1, DS_USER, nullptr), 1);
  EXPECT_EQ(m_Application.WriteStringDevice(L"Port Setup", L"File Name", L"badge"), 1);
  EXPECT_EQ(m_Application.GetStringDevice(m_Application.GGetPathDeviceInI(1).c_str(), L"Port Setup",
                                          L"File Name"),
            L"badge");
  EXPECT_NE(m_Root.Read("plotters/1.ini").find("; mine"), std::string::npos);
  EXPECT_EQ(m_Root.Read("plotters/0.ini"), "[setup]\nplottername = Cutter\n");
}

TEST_F(HostFilesTest, without_the_plotter_in_use_nothing_is_stored) {
  EXPECT_EQ(m_Application.WriteStringDevice(L"Port Setup", L"File Name", L"badge"), 0);
  WritePlotter(0, "");
  EXPECT_EQ(m_Application.WriteStringDevice(L"Port Setup", L"File Name", L"two\nlines"), 0);
  for (const wchar_t* number : {L"-1", L"1", L"x", L"1000000", L"99999999999999999999"}) {
    WriteStringKorvane(L"plottersetup", L"DeviceUsed", number, DS_USER, nullptr);
    const bool none = std::wstring(number) == L"1";
    // A text that is no number counts as 0, as GetIntKorvane has it.
    EXPECT_EQ(m_Application.WriteStringDevice(L"Port Setup", L"File Name", L"badge"), none ? 0 : 1)
        << os::ToNative(number);
  }
}

TEST_F(HostFilesTest, no_other_file_is_read_as_a_plotter_s) {
  m_Root.Write("settings.ini", "[setup]\nplottername = Secret\n");
  m_Root.Write("plotters/sub/0.ini", "[setup]\nplottername = Secret\n");
  const std::wstring plotters = m_Root.Wide("plotters/");
  for (const std::wstring& path :
       {m_Root.Wide("settings.ini"), plotters + L"../settings.ini", plotters + L"sub/0.ini",
        plotters + L"..\\settings.ini", std::wstring()}) {
    EXPECT_FALSE(m_Application.GetStringDevice(path.c_str(), L"setup", L"plottername"));
  }
  EXPECT_FALSE(m_Application.GetStringDevice(nullptr, L"setup", L"plottername"));
}

TEST_F(HostFilesTest, the_directory_of_an_import_is_private_the_host_s_own_and_goes_with_it) {
  std::string first;
  std::string second;
  {
    DocumentHost one;
    DocumentHost other;
    const std::wstring directory = one.GetApplication()->LoadBaseDir();
    first = os::ToNative(directory);
    second = os::ToNative(other.GetApplication()->LoadBaseDir());
    EXPECT_NE(first, second);
    EXPECT_EQ(one.GetApplication()->LoadBaseDir(), directory);
    struct stat state {};
    ASSERT_EQ(::stat(first.c_str(), &state), 0);
    EXPECT_EQ(state.st_mode & 0777U, 0700U);
    EXPECT_TRUE(first.starts_with(m_Root.Path()));
    m_Root.Write(first.substr(m_Root.Path().size() + 1) + "/cutline.svg", "<svg/>");
    EXPECT_TRUE(std::filesystem::exists(first + "/cutline.svg"));
  }
  EXPECT_FALSE(std::filesystem::exists(first));
  EXPECT_FALSE(std::filesystem::exists(second));
}

TEST_F(HostFilesTest, without_a_directory_of_its_own_an_import_gets_the_temporary_one) {
  const test::EnvironmentGuard temporary("TMPDIR", "/no/such/directory");
  EXPECT_EQ(m_Application.LoadBaseDir(), L"/no/such/directory");
}

// The settings that an import changes while it loads graphics, with its defaults and values.
TEST_F(HostFilesTest, the_settings_of_an_import_are_read_changed_and_set_back) {
  const struct {
    const wchar_t* section;
    const wchar_t* key;
    int usual, during;
  } settings[] = {
      {L"Pages", L"CollapseToZero", 1, 0},       {L"Sheet Layer", L"Merge", 0, 0},
      {L"Grouping", L"CollapseDatabase", 1, 0},  {L"IMPPDF", L"TextAsGraphics", 0, 1},
      {L"IMPPDF", L"ShowDialog", 1, 0},          {L"Preferences", L"DontStripThickLine", 1, 0},
      {L"ZML IMPORT", L"Invisible Plate", 1, 0}, {L"zippo", L"NumStrings", 3, 5},
      {L"impcr2", L"CodePage", 65001, 1252},     {L"plottersetup", L"NumberDevices", 0, 2}};
  for (const auto& one : settings) {
    const auto read = [&] {
      return GetIntKorvane(one.section, one.key, one.usual, DS_USER, nullptr);
    };
    EXPECT_EQ(read(), one.usual);
    EXPECT_EQ(WriteIntKorvane(one.section, one.key, one.during, DS_USER, nullptr), 1);
    EXPECT_EQ(read(), one.during);
    EXPECT_EQ(WriteIntKorvane(one.section, one.key, one.usual, DS_USER, nullptr), 1);
    EXPECT_EQ(read(), one.usual);
  }
  wchar_t path[260] = L"unchanged";
  EXPECT_EQ(GetStringKorvane(L"Crown", L"ImagePath", path, 260, DS_USER, nullptr), 0);
  EXPECT_EQ(std::wstring(path), L"unchanged");
  EXPECT_EQ(WriteStringKorvane(L"Crown", L"ImagePath", L"C:\\art", DS_USER, nullptr), 1);
  EXPECT_EQ(GetStringKorvane(L"Crown", L"ImagePath", path, 260, DS_USER, nullptr), 1);
  EXPECT_EQ(std::wstring(path), L"C:\\art");
}

TEST(Undo, a_load_with_the_history_off_leaves_the_user_s_steps) {
  DocumentHost host;
  host::ObjectStore& store = *host.GetObjectStore();
  EXPECT_EQ(store.GetKeepHistory(), 1);
  store.UNOpenStep(L"mine");
  const ObjectHandle mine = store.DBCreateObject(DBTYPE_POLYARC);
  store.DSAddObject(mine);
  store.UNCloseStep();
  store.WriteKeepHistory(0);
  EXPECT_EQ(store.GetKeepHistory(), 0);
  const ObjectHandle loaded = store.DBCreateObject(DBTYPE_POLYARC);
  store.DSAddObject(loaded);
  store.WriteKeepHistory(1);
  EXPECT_TRUE(host.GetDocument().Undo());
  EXPECT_EQ(host.GetDocument().Members(host::DocumentRoot), std::vector<ObjectHandle>{loaded});
}

}  // namespace
}  // namespace rastrel::document
