#include "rastrel/platform/standalone/kept_text.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/standalone/standalone_host.h"
#include "tests/support/environment_guard.h"
#include "tests/support/scratch_directory.h"

namespace fs = std::filesystem;
using rastrel::standalone::IniSettings;
using rastrel::standalone::KeptText;
using rastrel::test::EnvironmentGuard;
using rastrel::test::ScratchDirectory;

namespace {

constexpr std::uint64_t Limit = 1000;

class KeptTextTest : public testing::Test {
 protected:
  /// The text, or "none".
  std::string Read(const std::string& name = "file") {
    const auto text = m_Kept.Read(m_Folder.Path(name), Limit);
    return text ? *text : "none";
  }

  /// Waits until the file has been as it is for so long that its text is kept.
  void ReadUntilKept() {
    for (int attempt = 0; attempt < 600; ++attempt) {
      const auto first = m_Kept.Read(m_Folder.Path("file"), Limit);
      if (first && first == m_Kept.Read(m_Folder.Path("file"), Limit)) return;
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    FAIL() << "the text is never kept";
  }

  ScratchDirectory m_Folder;
  KeptText m_Kept;
};

}  // namespace

TEST_F(KeptTextTest, a_file_that_does_not_change_is_not_read_again) {
  m_Folder.Write("file", "one");
  ReadUntilKept();
  EXPECT_EQ(Read(), "one");
}

TEST_F(KeptTextTest, every_change_is_seen_by_the_next_read) {
  m_Folder.Write("file", "one");
  ReadUntilKept();
  m_Folder.Write("file", "two");
  EXPECT_EQ(Read(), "two") << "written in place, with the same size";
  m_Folder.Write("new", "six");
  fs::rename(m_Folder.Path("new"), m_Folder.Path("file"));
  EXPECT_EQ(Read(), "six") << "replaced";
  fs::remove(m_Folder.Path("file"));
  EXPECT_EQ(Read(), "none");
  m_Folder.Write("file", "again");
  EXPECT_EQ(Read(), "again");
}

TEST_F(KeptTextTest, changes_of_one_size_in_quick_succession_are_all_seen) {
  for (int number = 100; number < 400; ++number) {
    m_Folder.Write("file", std::to_string(number));
    ASSERT_EQ(Read(), std::to_string(number));
  }
}

TEST_F(KeptTextTest, a_change_whose_time_is_set_back_is_seen) {
  m_Folder.Write("file", "one");
  ReadUntilKept();
  const auto before = fs::last_write_time(m_Folder.Path("file"));
  m_Folder.Write("file", "two");
  fs::last_write_time(m_Folder.Path("file"), before);
  EXPECT_EQ(Read(), "two");
}

TEST_F(KeptTextTest, a_file_from_the_future_is_read_each_time) {
  m_Folder.Write("file", "one");
  fs::last_write_time(m_Folder.Path("file"),
                      fs::file_time_type::clock::now() + std::chrono::hours(1));
  EXPECT_NE(m_Kept.Read(m_Folder.Path("file"), Limit), m_Kept.Read(m_Folder.Path("file"), Limit));
}

TEST_F(KeptTextTest, another_file_is_not_taken_for_the_kept_one) {
  m_Folder.Write("file", "one");
  ReadUntilKept();
  m_Folder.Write("other", "two");
  EXPECT_EQ(Read("other"), "two");
  EXPECT_EQ(Read(), "one");
}

TEST_F(KeptTextTest, a_file_above_the_limit_is_none) {
  m_Folder.Write("file", std::string(Limit - 1, 'x'));
  EXPECT_EQ(Read().size(), Limit - 1);
  m_Folder.Write("file", std::string(Limit, 'x'));
  EXPECT_EQ(Read().size(), Limit);
  m_Folder.Write("file", std::string(Limit + 1, 'x'));
  EXPECT_EQ(Read(), "none");
}

TEST_F(KeptTextTest, settings_see_what_another_program_writes) {
  const EnvironmentGuard home("RASTREL_HOME", m_Folder.Path("root"));
  IniSettings ours;
  IniSettings theirs;
  EXPECT_EQ(ours.Read(L"zippo", L"NumStrings", DS_USER), std::nullopt);
  for (const wchar_t* value : {L"3", L"4", L"5"}) {
    ASSERT_TRUE(theirs.Write(L"zippo", L"NumStrings", value, DS_USER));
    EXPECT_EQ(ours.Read(L"zippo", L"NumStrings", DS_USER), value);
  }
  const EnvironmentGuard other("RASTREL_HOME", m_Folder.Path("other"));
  EXPECT_EQ(ours.Read(L"zippo", L"NumStrings", DS_USER), std::nullopt) << "another data root";
}
