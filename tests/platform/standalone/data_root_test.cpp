#include "rastrel/platform/standalone/data_root.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/standalone/install_record.h"
#include "rastrel/platform/standalone/standalone_host.h"
#include "tests/support/environment_guard.h"
#include "tests/support/scratch_directory.h"
#include "tests/support/umask_guard.h"

namespace fs = std::filesystem;
namespace standalone = rastrel::standalone;
using rastrel::test::EnvironmentGuard;
using rastrel::test::ScratchDirectory;

namespace {

class DataRootLayout : public testing::Test {
 protected:
  void SetUp() override {
    m_Shipped.Write("libexec/rastrel/corerast.exe", "rip 1");
    m_Shipped.Write("libexec/rastrel/coreodalis.exe", "engine 1");
    m_Shipped.Write("libexec/rastrel/JobSpool.exe", "queue 1");
    m_Shipped.Write("libexec/rastrel/readme", "not a program");
    m_Shipped.Write("share/rastrel/rip/System/pmodes/TIFF/tiff default.ps", "mode 1");
    m_Shipped.Write("share/rastrel/rip/System/prolog/prolog.ps", "prolog 1");
    m_Shipped.Write("share/rastrel/tmp/testpage.ps", "page 1");
    m_Shipped.Write("share/rastrel/devices.txt", "devices 1");
    fs::permissions(m_Shipped.Path("libexec/rastrel/corerast.exe"), fs::perms(0755));
  }

  static bool LayOut() { return static_cast<bool>(standalone::LayOutDataRoot()); }

  ScratchDirectory m_Scratch;
  ScratchDirectory m_Shipped;
  std::string m_Path = m_Scratch.Path("new/root");
  EnvironmentGuard m_Home{"RASTREL_HOME", m_Path};
  EnvironmentGuard m_Resources{"RASTREL_RESOURCES", m_Shipped.Path()};
  [[nodiscard]] std::string Read(const std::string& name) const {
    return m_Scratch.Read("new/root/" + name);
  }
  void Write(const std::string& name, const std::string& content) const {
    m_Scratch.Write("new/root/" + name, content);
  }
};

}  // namespace

TEST_F(DataRootLayout, makes_every_folder_and_copies_the_shipped_files) {
  ASSERT_TRUE(LayOut());
  for (const char* folder : {"Queue/rip/System/pmodes", "Queue/rip/System/c-out", "Queue/rip/CFM",
                             "drive_c/tmp", "jobs"})
    EXPECT_TRUE(fs::is_directory(m_Path + "/" + folder)) << folder;
  EXPECT_EQ(Read("Queue/rip/corerast.exe"), "rip 1");
  EXPECT_EQ(Read("Queue/rip/coreodalis.exe"), "engine 1");
  EXPECT_EQ(Read("Queue/JobSpool.exe"), "queue 1");
  EXPECT_EQ(Read("Queue/rip/readme"), "(none)");
  EXPECT_EQ(Read("Queue/rip/System/pmodes/TIFF/tiff default.ps"), "mode 1");
  EXPECT_EQ(Read("Queue/rip/System/prolog/prolog.ps"), "prolog 1");
  EXPECT_EQ(Read("drive_c/tmp/testpage.ps"), "page 1");
  EXPECT_EQ(Read("devices.txt"), "devices 1");
  EXPECT_EQ(fs::status(m_Path + "/Queue/rip/corerast.exe").permissions(), fs::perms(0700));
}

TEST_F(DataRootLayout, nobody_else_has_any_right_in_it_whatever_the_umask_and_the_shipped_modes) {
  const rastrel::test::UmaskGuard open(0);
  fs::permissions(m_Shipped.Path("libexec/rastrel/corerast.exe"), fs::perms(0777));
  fs::permissions(m_Shipped.Path("share/rastrel/devices.txt"), fs::perms(0666));
  ASSERT_TRUE(LayOut());
  ASSERT_TRUE(standalone::IniSettings().Write(L"a", L"b", L"c", DS_USER));
  EXPECT_EQ(fs::status(m_Path).permissions(), fs::perms(0700));
  for (const auto& entry : fs::recursive_directory_iterator(m_Path)) {
    const bool runs = entry.is_directory() || entry.path().filename() == "corerast.exe";
    EXPECT_EQ(entry.status().permissions(), fs::perms(runs ? 0700 : 0600)) << entry.path();
  }
}

TEST_F(DataRootLayout, settings_that_others_may_write_to_are_not_read_and_not_written) {
  ASSERT_TRUE(LayOut());
  standalone::IniSettings settings;
  ASSERT_TRUE(settings.Write(L"Debug", L"CmdlineQpath", L"/there", DS_USER));
  EXPECT_EQ(settings.Read(L"Debug", L"CmdlineQpath", DS_USER), L"/there");
  fs::permissions(m_Path + "/settings.ini", fs::perms(0646));
  EXPECT_EQ(settings.Read(L"Debug", L"CmdlineQpath", DS_USER), std::nullopt);
  EXPECT_FALSE(settings.Write(L"Debug", L"CmdlineQpath", L"/else", DS_USER));
}

TEST_F(DataRootLayout, the_record_names_every_file_with_size_and_time) {
  ASSERT_TRUE(LayOut());
  const standalone::InstallRecord record = standalone::ParseInstallRecord(Read("Queue/.installed"));
  EXPECT_EQ(record.size(), 7U);
  ASSERT_TRUE(record.contains("Queue/rip/System/pmodes/TIFF/tiff default.ps"));
  EXPECT_EQ(record.at("devices.txt").size, 9U);
}

TEST_F(DataRootLayout, a_later_version_replaces_files_that_nobody_touched) {
  ASSERT_TRUE(LayOut());
  m_Shipped.Write("libexec/rastrel/corerast.exe", "rip version 2");
  m_Shipped.Write("share/rastrel/devices.txt", "devices version 2");
  ASSERT_TRUE(LayOut());
  EXPECT_EQ(Read("Queue/rip/corerast.exe"), "rip version 2");
  EXPECT_EQ(Read("devices.txt"), "devices version 2");
}

TEST_F(DataRootLayout, copies_whose_record_was_never_written_are_recorded_and_replaced_later) {
  ASSERT_TRUE(LayOut());
  const std::string record = Read("Queue/.installed");
  fs::remove(m_Path + "/Queue/.installed");
  ASSERT_TRUE(LayOut());
  EXPECT_EQ(Read("Queue/.installed"), record);
  m_Shipped.Write("libexec/rastrel/corerast.exe", "rip version 2");
  ASSERT_TRUE(LayOut());
  EXPECT_EQ(Read("Queue/rip/corerast.exe"), "rip version 2");
}

TEST_F(DataRootLayout, a_file_that_a_user_changed_is_left_alone) {
  ASSERT_TRUE(LayOut());
  Write("devices.txt", "my own devices");
  m_Shipped.Write("share/rastrel/devices.txt", "devices version 2");
  ASSERT_TRUE(LayOut());
  EXPECT_EQ(Read("devices.txt"), "my own devices");
}

TEST_F(DataRootLayout, a_file_that_a_user_put_in_the_place_first_is_left_alone) {
  Write("devices.txt", "my own devices");
  ASSERT_TRUE(LayOut());
  EXPECT_EQ(Read("devices.txt"), "my own devices");
  ASSERT_TRUE(LayOut());
  EXPECT_EQ(Read("devices.txt"), "my own devices");
}

TEST_F(DataRootLayout, a_file_that_was_removed_comes_back) {
  ASSERT_TRUE(LayOut());
  fs::remove(m_Path + "/Queue/rip/corerast.exe");
  ASSERT_TRUE(LayOut());
  EXPECT_EQ(Read("Queue/rip/corerast.exe"), "rip 1");
}

TEST_F(DataRootLayout, a_program_that_runs_is_replaced_and_not_written_to) {
  ASSERT_TRUE(LayOut());
  const int open = ::open((m_Path + "/Queue/rip/corerast.exe").c_str(), O_RDONLY | O_CLOEXEC);
  m_Shipped.Write("libexec/rastrel/corerast.exe", "rip version 2");
  ASSERT_TRUE(LayOut());
  char content[6] = {};
  EXPECT_EQ(::read(open, content, 5), 5);
  ::close(open);
  EXPECT_EQ(std::string(content), "rip 1");
}

TEST_F(DataRootLayout, a_second_time_changes_nothing) {
  ASSERT_TRUE(LayOut());
  const auto record = rastrel::os::StampOf(rastrel::os::FromNative(m_Path + "/Queue/.installed"));
  ASSERT_TRUE(LayOut());
  EXPECT_EQ(*rastrel::os::StampOf(rastrel::os::FromNative(m_Path + "/Queue/.installed")), *record);
}

TEST_F(DataRootLayout, several_at_once_end_with_the_same) {
  std::vector<std::jthread> threads;
  std::atomic<int> done{0};
  for (int count = 0; count < 4; ++count) threads.emplace_back([&] { done += LayOut() ? 1 : 0; });
  threads.clear();
  EXPECT_EQ(done, 4);
  EXPECT_EQ(Read("Queue/rip/corerast.exe"), "rip 1");
  for (const auto& entry : fs::recursive_directory_iterator(m_Path))
    EXPECT_NE(entry.path().extension(), ".new") << entry.path();
}

TEST_F(DataRootLayout, without_anything_shipped_the_folders_are_made) {
  const EnvironmentGuard resources("RASTREL_RESOURCES", "/no/resources");
  ASSERT_TRUE(LayOut());
  EXPECT_TRUE(fs::is_directory(m_Path + "/Queue/rip/CFM"));
}

TEST_F(DataRootLayout, the_first_failure_is_reported_and_the_rest_is_still_done) {
  Write("Queue/rip/System/pmodes", "a file where a folder belongs");
  const auto laidOut = standalone::LayOutDataRoot();
  ASSERT_FALSE(laidOut);
  EXPECT_TRUE(laidOut.Error().where.find("pmodes") != std::string::npos)
      << rastrel::Describe(laidOut.Error());
  EXPECT_EQ(Read("Queue/rip/corerast.exe"), "rip 1");
}

TEST_F(DataRootLayout, a_root_that_can_not_be_made_is_a_failure) {
  const EnvironmentGuard home("RASTREL_HOME", "/proc/no/root");
  EXPECT_FALSE(LayOut());
}

TEST_F(DataRootLayout, is_ensured_once_a_process_for_each_root) {
  standalone::EnsureDataRoot();
  EXPECT_EQ(Read("devices.txt"), "devices 1");
  fs::remove(m_Path + "/devices.txt");
  standalone::EnsureDataRoot();
  EXPECT_EQ(Read("devices.txt"), "(none)");
  const EnvironmentGuard home("RASTREL_HOME", m_Scratch.Path("second"));
  standalone::EnsureDataRoot();
  EXPECT_EQ(m_Scratch.Read("second/devices.txt"), "devices 1");
}

TEST_F(DataRootLayout, resources_are_taken_from_the_tree_that_the_variable_names) {
  const standalone::Resources found = standalone::FindResources();
  EXPECT_EQ(found.programs, m_Shipped.Path("libexec/rastrel"));
  EXPECT_EQ(found.files, m_Shipped.Path("share/rastrel"));
  const EnvironmentGuard none("RASTREL_RESOURCES", "/no/resources");
  EXPECT_EQ(standalone::FindResources().programs, "");
  EXPECT_EQ(standalone::FindResources().files, "");
}

TEST(InstallRecord, lines_come_back_and_bad_ones_are_left_out) {
  const standalone::InstallRecord record = {
      {"a b", {.size = 5, .modified = -7}},
      {"c", {.size = 0, .modified = 1'700'000'000'000'000'000}}};
  EXPECT_EQ(standalone::FormatInstallRecord(record), "5 -7 a b\n0 1700000000000000000 c\n");
  EXPECT_EQ(standalone::ParseInstallRecord(standalone::FormatInstallRecord(record)), record);
  EXPECT_EQ(
      standalone::ParseInstallRecord("\nx\n1\n1 2\n1 2 \n-1 2 a\n99999999999999999999 1 b\n1 2 c"),
      (standalone::InstallRecord{{"c", {.size = 1, .modified = 2}}}));
}
