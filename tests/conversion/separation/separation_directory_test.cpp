// The directory of separated files: its path, and the cleaning of it.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <system_error>

#include "rastrel/conversion/separation/separation_objects.h"
#include "tests/support/library_fixture.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/tree_snapshot.h"

namespace {

using namespace rastrel::test;
namespace fs = std::filesystem;

class SeparationDirectory : public LibraryTest {
 protected:
  static constexpr const char* Folder = "Queue/rip/Separation";
  static constexpr int Room = 1000;

  SeparationDirectory() {
    fs::create_directories(Root().Path("Queue/rip"));
    CExePaths::Instance();
  }
  [[nodiscard]] const ScratchDirectory& Root() const { return m_Library.Directory(); }
  [[nodiscard]] std::wstring Expected() const { return m_Library.RipDirectory() + L"Separation"; }
  [[nodiscard]] std::wstring QueueDirectory() const { return Root().Wide() + L"/Queue\\"; }
  void MakeItFail() { Root().Write(Folder, "a file in its place"); }
  static int Length(const std::wstring& text) { return static_cast<int>(text.size()); }
};

TEST_F(SeparationDirectory, the_call_that_makes_it_leaves_the_buffer_and_the_next_fills_it) {
  wchar_t buffer[Room] = L"before";
  EXPECT_EQ(GetSeparationPath(buffer, Room), 6);
  EXPECT_STREQ(buffer, L"before");
  EXPECT_TRUE(fs::is_directory(Root().Path(Folder)));
  EXPECT_EQ(fs::status(Root().Path(Folder)).permissions(), fs::perms::owner_all);

  EXPECT_EQ(GetSeparationPath(buffer, Room), Length(Expected()));
  EXPECT_EQ(std::wstring(buffer), Expected());
}

TEST_F(SeparationDirectory, the_call_that_makes_it_takes_no_buffer_for_an_empty_one) {
  EXPECT_EQ(GetSeparationPath(nullptr, Room), 0);
  EXPECT_TRUE(fs::is_directory(Root().Path(Folder)));
}

TEST_F(SeparationDirectory, the_call_that_makes_it_reads_no_further_than_the_buffer) {
  const wchar_t full[3] = {L'a', L'b', L'c'};
  wchar_t buffer[3] = {full[0], full[1], full[2]};
  EXPECT_EQ(GetSeparationPath(buffer, 3), 3);
}

TEST_F(SeparationDirectory, is_copied_only_where_its_terminator_fits_too) {
  fs::create_directories(Root().Path(Folder));
  const int length = Length(Expected());
  for (const int size : {-1, 0, 1, length - 1, length}) {
    wchar_t buffer[Room] = L"before";
    EXPECT_EQ(GetSeparationPath(buffer, size), length + 1) << size;
    EXPECT_STREQ(buffer, L"before") << size;
  }
  wchar_t buffer[Room] = L"before";
  EXPECT_EQ(GetSeparationPath(buffer, length + 1), length);
  EXPECT_EQ(std::wstring(buffer), Expected());
}

TEST_F(SeparationDirectory, that_can_not_be_made_is_the_queue_directory_without_its_backslash) {
  MakeItFail();
  const std::wstring queue = Root().Wide() + L"/Queue";
  wchar_t buffer[Room] = L"before";
  // One more than the directory with its backslash is enough.
  EXPECT_EQ(GetSeparationPath(buffer, Length(QueueDirectory()) + 1), Length(queue));
  EXPECT_EQ(std::wstring(buffer), queue);
  EXPECT_EQ(std::wstring(buffer).find(L"Separation"), std::wstring::npos);
}

TEST_F(SeparationDirectory,
       that_can_not_be_made_is_the_temporary_one_where_the_queues_is_too_long) {
  MakeItFail();
  const EnvironmentGuard temporary("TMPDIR", "/tmp/of-this-test/");
  wchar_t buffer[Room] = L"before";
  EXPECT_EQ(GetSeparationPath(buffer, Length(QueueDirectory())), 17);
  EXPECT_STREQ(buffer, L"/tmp/of-this-test");
}

TEST_F(SeparationDirectory, the_temporary_one_is_cut_to_the_buffer) {
  MakeItFail();
  const EnvironmentGuard temporary("TMPDIR", "/tmp/of-this-test");
  for (const int size : {16, 17, 18}) {
    std::wstring buffer(20, L'*');
    EXPECT_EQ(GetSeparationPath(buffer.data(), size), 17) << size;
    std::wstring expected = L"/tmp/of-this-test";
    expected.push_back(L'\0');
    expected.resize(static_cast<std::size_t>(size));
    expected.resize(20, L'*');
    EXPECT_EQ(buffer, expected) << size;
  }
  EXPECT_EQ(GetSeparationPath(nullptr, 0), 17);
}

TEST_F(SeparationDirectory, cleaning_one_that_is_missing_counts_nothing) {
  EXPECT_EQ(CleanOldSepFiles(), 0);
  EXPECT_FALSE(Root().Has(Folder));
}

TEST_F(SeparationDirectory, cleaning_removes_files_and_directories_and_counts_each_entry_once) {
  const std::string folder = Folder;
  Root().Write(folder + "/a.ps", "%!PS\n");
  Root().Write(folder + "/.hidden", "");
  Root().Write(folder + "/back\\slash", "");
  Root().Write(folder + "/not-utf8-\xff", "");
  Root().Write(folder + "/a.cfm/.info", "info");
  Root().Write(folder + "/a.cfm/p0002/.info", "info");
  EXPECT_EQ(CleanOldSepFiles(), 5);
  EXPECT_TRUE(fs::is_empty(Root().Path(folder)));
  EXPECT_EQ(CleanOldSepFiles(), 0);
}

TEST_F(SeparationDirectory, cleaning_removes_links_and_not_where_they_lead) {
  Root().Write("outside/kept/file", "kept");
  const auto before = TreeSnapshot(Root().Path("outside"));
  const std::string folder = Root().Path(Folder);
  fs::create_directories(folder + "/inner.cfm");
  fs::create_directory_symlink(Root().Path("outside"), folder + "/directory");
  fs::create_symlink(Root().Path("outside/kept/file"), folder + "/file");
  fs::create_symlink("nowhere", folder + "/broken");
  fs::create_directory_symlink(Root().Path("outside/kept"), folder + "/inner.cfm/link");
  EXPECT_EQ(CleanOldSepFiles(), 4);
  EXPECT_TRUE(fs::is_empty(folder));
  EXPECT_EQ(TreeSnapshot(Root().Path("outside")), before);
}

TEST_F(SeparationDirectory, cleaning_leaves_one_that_is_a_link_itself) {
  Root().Write("outside/file", "kept");
  fs::create_directory_symlink(Root().Path("outside"), Root().Path(Folder));
  EXPECT_EQ(CleanOldSepFiles(), 0);
  EXPECT_TRUE(Root().Has("outside/file"));
}

TEST_F(SeparationDirectory, cleaning_counts_entries_that_can_not_be_removed) {
  const std::string folder = Folder;
  Root().Write(folder + "/a.ps", "%!PS\n");
  Root().Write(folder + "/a.cfm/.info", "info");
  for (const char* path : {".", "Queue", "Queue/rip", Folder})
    fs::permissions(Root().Path(path), fs::perms::owner_all | fs::perms::group_read |
                                           fs::perms::group_exec | fs::perms::others_read |
                                           fs::perms::others_exec);
  {
    const OrdinaryUser user;
    // For a user who owns it all the directory itself has to forbid it; another one can't change
    // it.
    std::error_code notOwned;
    fs::permissions(Root().Path(folder), fs::perms(0500), notOwned);
    EXPECT_EQ(CleanOldSepFiles(), 2);
  }
  fs::permissions(Root().Path(folder), fs::perms::owner_all);
  EXPECT_TRUE(Root().Has(folder + "/a.ps"));
}

}  // namespace
