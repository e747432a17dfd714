#include "rastrel/job/exe_paths.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "rastrel/platform/os/path.h"
#include "tests/support/library_fixture.h"
#include "tests/support/private_member.h"
#include "tests/support/scratch_directory.h"
#include "tests/support/test_host.h"

namespace {

using rastrel::test::LibraryRoot;
using rastrel::test::LibraryTest;
using rastrel::test::PlaceOf;
using rastrel::test::ScratchDirectory;
using rastrel::test::TestHost;

class ExePaths : public LibraryTest {
 protected:
  // The paths of the present configuration.
  static const CExePaths& Paths() {
    LibraryRoot::Forget();
    return CExePaths::Instance();
  }
};

// A host whose programs lie in C:\Programs.
class ConfiguredHost : public TestHost {
 public:
  ConfiguredHost() { m_BaseDirectories[2] = L"C:\\Programs"; }
  void Set(const wchar_t* section, const wchar_t* key, const std::wstring& value) {
    m_Settings[{section, key}] = value;
  }
};

TEST_F(ExePaths, the_fields_stand_in_order) {
  const CExePaths& paths = Paths();
  rastrel::test::ExpectInOrder(
      {PlaceOf(paths.m_RipDir), PlaceOf(paths.m_ModuleDir), PlaceOf(paths.m_OutputDir),
       PlaceOf(paths.m_RipExe), PlaceOf(paths.m_QRastExe), PlaceOf(paths.m_OdalisExe),
       PlaceOf(paths.m_PModesDir), PlaceOf(paths.m_WindowsDir), PlaceOf(paths.m_SystemDir),
       PlaceOf(paths.m_DriverDir), PlaceOf(paths.m_ModulePath), PlaceOf(paths.m_ModuleName),
       PlaceOf(paths.m_CFMDir), PlaceOf(paths.m_QueueDir), PlaceOf(paths.m_QueueExe)});
}

TEST_F(ExePaths, without_a_configured_queue_all_stands_below_the_base_directory) {
  const ConfiguredHost host;
  const CExePaths& paths = Paths();
  EXPECT_EQ(paths.m_QueueDir, L"C:\\Programs/Queue\\");
  EXPECT_EQ(paths.m_QueueExe, L"C:\\Programs/Queue\\JobSpool.exe");
  EXPECT_EQ(paths.m_RipDir, L"C:\\Programs/Queue\\rip\\");
  EXPECT_EQ(paths.m_OutputDir, L"C:\\Programs/Queue\\rip\\System\\c-out\\");
  EXPECT_EQ(paths.m_RipExe, L"C:\\Programs/Queue\\rip\\corerast.exe");
  EXPECT_EQ(paths.m_QRastExe, L"C:\\Programs/Queue\\rip\\qrast.exe");
  EXPECT_EQ(paths.m_OdalisExe, L"C:\\Programs/Queue\\rip\\coreodalis.exe");
  EXPECT_EQ(paths.m_PModesDir, L"C:\\Programs/Queue\\rip\\System\\pmodes\\");
  EXPECT_EQ(paths.m_CFMDir, L"C:\\Programs/Queue\\rip\\CFM");
}

TEST_F(ExePaths, the_standalone_host_puts_the_queue_in_the_data_root) {
  const CExePaths& paths = Paths();
  EXPECT_EQ(m_Library.Directory().Wide() + L"/Queue\\", paths.m_QueueDir);
  EXPECT_TRUE(m_Library.Directory().Has("Queue"));
  EXPECT_EQ(m_Library.RipDirectory(), paths.m_RipDir);
}

TEST_F(ExePaths, the_module_is_this_program) {
  const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe");
  const CExePaths& paths = Paths();
  EXPECT_EQ(rastrel::os::FromNative(self.string()), paths.m_ModulePath);
  EXPECT_EQ(rastrel::os::FromNative(self.stem().string()), paths.m_ModuleName);
  EXPECT_EQ(rastrel::os::FromNative(self.parent_path().string()) + L"/", paths.m_ModuleDir);
}

TEST_F(ExePaths, system_directories_get_a_backslash_and_missing_ones_are_a_bare_one) {
  ConfiguredHost host;
  EXPECT_EQ(Paths().m_WindowsDir, L"\\");
  EXPECT_EQ(Paths().m_SystemDir, L"\\");
  EXPECT_EQ(Paths().m_DriverDir, L"\\");
  host.m_Windows = L"C:\\win";
  host.m_System = L"C:\\win\\sys";
  host.m_Driver = L"C:\\drv";
  EXPECT_EQ(Paths().m_WindowsDir, L"C:\\win\\");
  EXPECT_EQ(Paths().m_SystemDir, L"C:\\win\\sys\\");
  EXPECT_EQ(Paths().m_DriverDir, L"C:\\drv\\");
}

// Two directories that may hold the queue program.
class QueuePath : public ExePaths {
 protected:
  void PutProgram(const ScratchDirectory& directory) { directory.Write("jobspool.exe", ""); }

  ScratchDirectory m_First;
  ScratchDirectory m_Second;
  ConfiguredHost m_Host;
};

TEST_F(QueuePath, a_value_with_its_separator_and_the_program_is_taken) {
  PutProgram(m_First);
  PutProgram(m_Second);
  m_Host.Set(L"Debug", L"CmdlineQpath", m_First.Wide() + L"\\");
  m_Host.Set(L"local queue", L"path", m_Second.Wide());
  EXPECT_EQ(m_First.Wide() + L"\\", Paths().m_QueueDir);
}

TEST_F(QueuePath, a_value_without_its_separator_never_finds_the_program_but_is_used) {
  PutProgram(m_First);
  m_Host.Set(L"Debug", L"CmdlineQpath", m_First.Wide());
  EXPECT_EQ(m_First.Wide() + L"\\", Paths().m_QueueDir);
  EXPECT_EQ(m_First.Wide() + L"\\rip\\corerast.exe", Paths().m_RipExe);
}

TEST_F(QueuePath, a_value_without_its_separator_gives_way_to_a_working_second_place) {
  PutProgram(m_First);
  PutProgram(m_Second);
  m_Host.Set(L"Debug", L"CmdlineQpath", m_First.Wide());
  m_Host.Set(L"local queue", L"path", m_Second.Wide());
  EXPECT_EQ(m_Second.Wide() + L"\\", Paths().m_QueueDir);
}

TEST_F(QueuePath, the_name_is_put_directly_behind_the_value) {
  std::filesystem::create_directory(m_First.Path("pre"));
  m_First.Write("prejobspool.exe", "");
  PutProgram(m_Second);
  m_Host.Set(L"Debug", L"CmdlineQpath", m_First.Wide("pre"));
  m_Host.Set(L"local queue", L"path", m_Second.Wide());
  EXPECT_EQ(m_First.Wide("pre") + L"\\", Paths().m_QueueDir);
}

TEST_F(QueuePath, a_second_place_with_its_separator_works_too) {
  PutProgram(m_Second);
  m_Host.Set(L"Debug", L"CmdlineQpath", m_First.Wide() + L"\\");
  m_Host.Set(L"local queue", L"path", m_Second.Wide() + L"\\");
  EXPECT_EQ(m_Second.Wide() + L"\\", Paths().m_QueueDir);
}

TEST_F(QueuePath, the_first_value_is_used_if_neither_place_has_the_program) {
  m_Host.Set(L"Debug", L"CmdlineQpath", m_First.Wide() + L"\\");
  m_Host.Set(L"local queue", L"path", m_Second.Wide());
  EXPECT_EQ(m_First.Wide() + L"\\", Paths().m_QueueDir);
}

TEST_F(QueuePath, the_second_place_alone_counts_for_nothing) {
  PutProgram(m_Second);
  m_Host.Set(L"local queue", L"path", m_Second.Wide());
  EXPECT_EQ(Paths().m_QueueDir, L"C:\\Programs/Queue\\");
}

TEST_F(QueuePath, an_empty_value_falls_back_to_the_base_directory) {
  m_Host.Set(L"Debug", L"CmdlineQpath", L"");
  EXPECT_EQ(Paths().m_QueueDir, L"C:\\Programs/Queue\\");
}

TEST_F(QueuePath, a_mixed_case_program_is_found_by_its_lower_case_name) {
  m_First.Write("JobSpool.exe", "");
  PutProgram(m_Second);
  m_Host.Set(L"Debug", L"CmdlineQpath", m_First.Wide() + L"\\");
  m_Host.Set(L"local queue", L"path", m_Second.Wide());
  EXPECT_EQ(m_First.Wide() + L"\\", Paths().m_QueueDir);
}

TEST_F(QueuePath, a_value_is_cut_at_255_characters) {
  m_Host.Set(L"Debug", L"CmdlineQpath", std::wstring(300, L'q'));
  EXPECT_EQ(std::wstring(255, L'q') + L"\\", Paths().m_QueueDir);
}

TEST_F(QueuePath, configuration_is_read_once) {
  const std::wstring before = Paths().m_QueueDir;
  m_Host.Set(L"Debug", L"CmdlineQpath", m_First.Wide());
  EXPECT_EQ(before, CExePaths::Instance().m_QueueDir);
}

TEST_F(QueuePath, values_come_from_settings_ini_with_the_standalone_host) {
  rastrel::host::SetHost(nullptr);
  m_Library.Directory().Write("settings.ini", "[Debug]\nCmdlineQpath = C:\\queue\n");
  EXPECT_EQ(Paths().m_QueueDir, L"C:\\queue\\");
}

TEST_F(ExePaths, code_reached_from_the_constructor_sees_the_object) {
  ConfiguredHost host;
  const CExePaths* seen = nullptr;
  host.m_OnRead = [&] { seen = &CExePaths::Instance(); };
  const CExePaths* const paths = &Paths();
  EXPECT_NE(seen, nullptr);
  EXPECT_EQ(paths, seen);
}

}  // namespace
