#include "rastrel/job/print_check.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/forked_child.h"
#include "tests/support/library_fixture.h"

namespace {

namespace fs = std::filesystem;
using rastrel::Describe;
using rastrel::job::CheckPrintFiles;
using rastrel::test::ForkedChild;
using rastrel::test::LibraryRoot;

class PrintCheck : public rastrel::test::LibraryTest {
 protected:
  [[nodiscard]] const rastrel::test::ScratchDirectory& Root() const {
    return m_Library.Directory();
  }
};

TEST_F(PrintCheck, of_a_data_root_that_can_be_written_succeeds_and_leaves_the_log_alone) {
  const auto checked = CheckPrintFiles();
  EXPECT_TRUE(checked) << Describe(checked.Error());
  EXPECT_EQ(Root().Read(LibraryRoot::LogName()), "") << "it logs nothing";
  for (const auto& entry : fs::directory_iterator(Root().Path("Queue/rip")))
    EXPECT_FALSE(entry.path().filename().string().starts_with(".rastrel")) << entry.path();
  EXPECT_TRUE(fs::is_empty(Root().Path("Queue/rip/CFM")));
}

TEST_F(PrintCheck, names_the_program_or_setting_that_others_may_change) {
  for (const char* name : {"Queue/rip/corerast.exe", "Queue/rip/coreodalis.exe",
                           "Queue/JobSpool.exe", "settings.ini", "devices.txt"}) {
    Root().Write(name, "");
    fs::permissions(Root().Path(name), fs::perms(0622));
    const auto checked = CheckPrintFiles();
    ASSERT_FALSE(checked) << name;
    EXPECT_EQ(Describe(checked.Error()),
              "trust '" + Root().Path(name) + "': every user may write to it");
    fs::permissions(Root().Path(name), fs::perms(0600));
    EXPECT_TRUE(CheckPrintFiles()) << name;
  }
}

TEST_F(PrintCheck, names_the_directory_in_which_others_may_replace_a_program) {
  Root().Write("Queue/rip/corerast.exe", "");
  fs::permissions(Root().Path("Queue"), fs::perms(0707));
  const auto checked = CheckPrintFiles();
  ASSERT_FALSE(checked);
  EXPECT_EQ(Describe(checked.Error()),
            "trust '" + Root().Path("Queue") + "': every user may write to it");
}

TEST_F(PrintCheck, keeps_the_text_of_a_log_that_is_open) {
  CAppLog::Instance().Write("an entry");
  const std::string before = m_Library.Log();
  EXPECT_TRUE(CheckPrintFiles());
  EXPECT_EQ(m_Library.Log(), before);
}

TEST_F(PrintCheck, names_the_log_that_can_not_be_opened) {
  fs::create_directories(Root().Path(LibraryRoot::LogName()));
  const auto checked = CheckPrintFiles();
  ASSERT_FALSE(checked);
  EXPECT_EQ(Describe(checked.Error()),
            "open '" + Root().Path(LibraryRoot::LogName()) + "': Is a directory (21)");
}

TEST_F(PrintCheck, names_the_directory_that_is_none) {
  CExePaths::Instance();
  fs::remove_all(Root().Path("Queue/rip/CFM"));
  auto checked = CheckPrintFiles();
  ASSERT_FALSE(checked);
  EXPECT_EQ(Describe(checked.Error()),
            "there is no directory '" + Root().Path("Queue/rip/CFM") + "'");
  Root().Write("Queue/rip/CFM", "");
  checked = CheckPrintFiles();
  ASSERT_FALSE(checked);
  EXPECT_EQ(Describe(checked.Error()), "'" + Root().Path("Queue/rip/CFM") + "' is no directory");
}

// Command lines put paths in double quotes, which nothing escapes.
TEST_F(PrintCheck, refuses_a_root_whose_path_the_children_can_not_be_given) {
  const struct {
    const char* name;
    const char* held;
  } rows[] = {
      {"a\"b", "a double quote"}, {"a\\b", "a backslash"}, {"a\xFF", "bytes that are no UTF-8"}};
  for (const auto& [name, held] : rows) {
    const rastrel::test::ScratchDirectory other;
    const std::string root = other.Path(name);
    const rastrel::test::EnvironmentGuard home("RASTREL_HOME", root);
    LibraryRoot::Forget();
    const auto checked = CheckPrintFiles();
    ASSERT_FALSE(checked) << root;
    EXPECT_NE(Describe(checked.Error()).find(std::string("holds ") + held), std::string::npos)
        << Describe(checked.Error());
    EXPECT_FALSE(fs::exists(root + "/Queue/rip")) << "nothing is laid out there";
  }
  LibraryRoot::Forget();
}

// The lock of a log without a file stays entered, so this is done in a process of its own.
TEST_F(PrintCheck, fails_for_good_once_the_log_has_failed) {
  ForkedChild host([this](ForkedChild::Side& side) {
    fs::create_directories(Root().Path(LibraryRoot::LogName()));  // the child's own number
    CAppLog::Instance().Write("lost");
    const auto checked = CheckPrintFiles();
    side.Tell(checked ? "success" : Describe(checked.Error()));
    return 0;
  });
  EXPECT_EQ(host.Hear(std::string::npos),
            "the application log could not be opened, and is not tried again");
  EXPECT_EQ(host.Exit(), 0);
}

}  // namespace
