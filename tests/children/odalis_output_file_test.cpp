#include "children/coreodalis/output_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <optional>
#include <string>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/owner.h"
#include "tests/children/odalis_fixture.h"
#include "tests/support/umask_guard.h"

namespace rastrel::odalis {
namespace {

using namespace testing;
using Names = std::vector<std::string>;

/// Both forms of an unfinished file: without a name, and hidden.
class OutputFiles : public ::testing::TestWithParam<bool> {
 protected:
  OutputFiles() {
    auto started = interpreter::Guardian::Start(interpreter::HeldStreams::Error);
    if (started) m_Guardian.emplace(std::move(*started));
  }

  std::string Path(const std::string& name) const { return m_Directory.Path() + "/out/" + name; }
  Names Visible() const {
    Names names = NamesIn(m_Directory.Path() + "/out");
    std::erase_if(names, [](const std::string& name) { return name.starts_with("."); });
    return names;
  }
  Names All() const { return NamesIn(m_Directory.Path() + "/out"); }

  unsigned m_Permissions = 0666;
  std::optional<OutputFile> Make(const std::string& content) {
    auto file =
        OutputFile::Create(m_Directory.Path() + "/out", *m_Guardian, m_Permissions, GetParam());
    if (!file || !os::WriteAll(file->Descriptor(), content)) return std::nullopt;
    return std::move(*file);
  }

 private:
  TemporaryDirectory m_Directory;
  std::optional<interpreter::Guardian> m_Guardian;
};

INSTANTIATE_TEST_SUITE_P(Forms, OutputFiles, ::testing::Values(true, false),
                         [](const auto& form) { return form.param ? "anonymous" : "hidden"; });

TEST_P(OutputFiles, nothing_is_seen_before_the_name_is_given) {
  {
    auto file = Make("whole");
    ASSERT_TRUE(file);
    EXPECT_EQ(Visible(), Names{});
    EXPECT_EQ(file->Name(Path("a.tif")), OutputFile::Naming::Named);
    EXPECT_EQ(Visible(), (Names{"a.tif"}));
    EXPECT_EQ(ReadFile(Path("a.tif")), "whole");
  }
  EXPECT_EQ(All(), (Names{"a.tif"}));
}

TEST_P(OutputFiles, a_file_that_gets_no_name_leaves_nothing) {
  { ASSERT_TRUE(Make("given up")); }
  EXPECT_EQ(All(), Names{});
}

TEST_P(OutputFiles, a_taken_name_is_left_alone) {
  auto first = Make("first");
  auto second = Make("second");
  EXPECT_EQ(first->Name(Path("a")), OutputFile::Naming::Named);
  EXPECT_EQ(second->Name(Path("a")), OutputFile::Naming::Taken);
  std::filesystem::create_symlink("/nowhere", Path("link"));
  EXPECT_EQ(second->Name(Path("link")), OutputFile::Naming::Taken);
  EXPECT_EQ(ReadFile(Path("a")), "first");
}

TEST_P(OutputFiles, in_place_replaces_a_file_but_no_directory) {
  auto first = Make("first");
  auto second = Make("second");
  auto third = Make("third");
  EXPECT_EQ(first->NameInPlace(Path("a")), OutputFile::Naming::Named);
  EXPECT_EQ(second->NameInPlace(Path("a")), OutputFile::Naming::Named);
  EXPECT_EQ(ReadFile(Path("a")), "second");
  std::filesystem::create_directory(Path("d"));
  EXPECT_EQ(third->NameInPlace(Path("d")), OutputFile::Naming::Failed);
  first.reset();
  second.reset();
  third.reset();
  EXPECT_EQ(All(), (Names{"a", "d"}));
}

TEST_P(OutputFiles, a_name_can_be_taken_away_and_another_given) {
  auto file = Make("content");
  ASSERT_EQ(file->Name(Path("a")), OutputFile::Naming::Named);
  file->Unname(Path("a"));
  EXPECT_EQ(Visible(), Names{});
  ASSERT_EQ(file->Name(Path("b")), OutputFile::Naming::Named);
  file.reset();
  EXPECT_EQ(All(), (Names{"b"}));
  EXPECT_EQ(ReadFile(Path("b")), "content");
}

TEST_P(OutputFiles, files_of_one_page_get_their_names_together) {
  WriteFile(Path("c.tif"), "mine");
  auto first = Make("1");
  auto second = Make("2");
  const Publisher::Item items[] = {{&*first, Path("b.tif")}, {&*second, Path("c.tif")}};
  Publisher publisher;
  const auto paths = publisher.Publish(items, false);
  ASSERT_TRUE(paths) << Describe(paths.Error());
  EXPECT_EQ(*paths, (Names{Path("b-2.tif"), Path("c-2.tif")}));
  first.reset();
  second.reset();
  EXPECT_EQ(All(), (Names{"b-2.tif", "c-2.tif", "c.tif"}));
  EXPECT_EQ(ReadFile(Path("c.tif")), "mine");
}

TEST_P(OutputFiles, names_are_told_once_all_are_given) {
  auto first = Make("1");
  auto second = Make("2");
  const Publisher::Item items[] = {{&*first, Path("a")}, {&*second, Path("b")}};
  Publisher publisher;
  int calls = 0;
  const auto paths = publisher.Publish(items, false, [&](const std::vector<std::string>& named) {
    ++calls;
    EXPECT_EQ(named, (Names{Path("a"), Path("b")}));
    EXPECT_EQ(Visible(), (Names{"a", "b"}));
  });
  ASSERT_TRUE(paths) << Describe(paths.Error());
  EXPECT_EQ(calls, 1);
}

TEST_P(OutputFiles, if_one_name_cannot_be_given_no_file_has_one) {
  auto first = Make("1");
  auto second = Make("2");
  const Publisher::Item items[] = {{&*first, Path("a")}, {&*second, Path("missing/b")}};
  Publisher publisher;
  const auto paths = publisher.Publish(items, false);
  ASSERT_FALSE(paths);
  EXPECT_NE(Describe(paths.Error()).find("missing/b"), std::string::npos);
  first.reset();
  second.reset();
  EXPECT_EQ(All(), Names{});
}

TEST_P(OutputFiles, if_one_file_cannot_be_replaced_all_old_ones_are_back) {
  WriteFile(Path("a"), "old");
  std::filesystem::create_directories(Path("c"));
  auto first = Make("1");
  auto second = Make("2");
  auto third = Make("3");
  const Publisher::Item items[] = {
      {&*first, Path("a")}, {&*second, Path("b")}, {&*third, Path("c")}};
  Publisher publisher;
  const auto paths = publisher.Publish(items, true);
  ASSERT_FALSE(paths);
  EXPECT_NE(Describe(paths.Error()).find(Path("c")), std::string::npos);
  first.reset();
  second.reset();
  third.reset();
  EXPECT_EQ(All(), (Names{"a", "c"}));
  EXPECT_EQ(ReadFile(Path("a")), "old");
}

TEST(HiddenFiles, have_names_by_which_a_sweep_knows_their_owner) {
  const TemporaryDirectory place;
  auto guardian = interpreter::Guardian::Start(interpreter::HeldStreams::Error);
  ASSERT_TRUE(guardian);
  const auto file = OutputFile::Create(place.Path(), *guardian, 0600, false);
  ASSERT_TRUE(file);
  const Names names = NamesIn(place.Path());
  ASSERT_EQ(names.size(), 1U);
  const std::string own = os::OwnTemporaryName();
  EXPECT_EQ(names[0].substr(0, names[0].rfind('-')), own.substr(0, own.rfind('-')));
}

TEST_P(OutputFiles, access_follows_the_umask) {
  const mode_t before = umask(027);
  auto file = Make("x");
  umask(before);
  ASSERT_EQ(file->Name(Path("a")), OutputFile::Naming::Named);
  struct stat state {};
  ASSERT_EQ(stat(Path("a").c_str(), &state), 0);
  EXPECT_EQ(state.st_mode & 0777u, 0640u);
}

TEST_P(OutputFiles, access_is_no_wider_than_the_jobs_whatever_the_umask) {
  const test::UmaskGuard open(0);
  m_Permissions = 0640;
  auto file = Make("x");
  ASSERT_EQ(file->Name(Path("a")), OutputFile::Naming::Named);
  struct stat state {};
  ASSERT_EQ(stat(Path("a").c_str(), &state), 0);
  EXPECT_EQ(state.st_mode & 0777U, 0640U);
}

TEST_P(OutputFiles, a_killed_process_leaves_none) {
  const pid_t child = fork();
  if (child == 0) {
    auto guardian = interpreter::Guardian::Start(interpreter::HeldStreams::Error);
    if (!guardian) _exit(1);
    auto file =
        OutputFile::Create(Path("").substr(0, Path("").size() - 1), *guardian, 0600, GetParam());
    if (!file || !os::WriteAll(file->Descriptor(), "half")) _exit(2);
    const bool hidden = NamesIn(Path("")).size() == 1;
    if (hidden == GetParam()) _exit(3);
    kill(getpid(), SIGKILL);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status)) << WEXITSTATUS(status);
  for (int i = 0; i < 500 && !All().empty(); ++i) usleep(10'000);
  EXPECT_EQ(All(), Names{});
}

TEST(NumberedPath, the_number_stands_before_the_extension) {
  EXPECT_EQ(NumberedPath("/a.b/c.tif", 1), "/a.b/c.tif");
  EXPECT_EQ(NumberedPath("/a.b/c.tif", 2), "/a.b/c-2.tif");
  EXPECT_EQ(NumberedPath("/a.b/c", 3), "/a.b/c-3");
  EXPECT_EQ(NumberedPath("/a/.c", 2), "/a/.c-2");
  EXPECT_EQ(NumberedPath("/a/x.y.tif", 10), "/a/x.y-10.tif");
}

TEST(DirectoryOf, is_the_part_before_the_last_slash) {
  EXPECT_EQ(DirectoryOf("/a/b"), "/a");
  EXPECT_EQ(DirectoryOf("/b"), "/");
  EXPECT_EQ(DirectoryOf("b"), ".");
}

}  // namespace
}  // namespace rastrel::odalis
