#include "rastrel/cfm/directories.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "tests/support/environment_guard.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/present_directory.h"
#include "tests/support/scratch_directory.h"
#include "tests/support/tree_snapshot.h"

namespace {

namespace fs = std::filesystem;
using rastrel::test::EnvironmentGuard;
using rastrel::test::OrdinaryUser;
using rastrel::test::PresentDirectory;
using rastrel::test::ScratchDirectory;
using rastrel::test::TreeSnapshot;

class Directories : public ::testing::Test {
 protected:
  [[nodiscard]] std::wstring Wide(const char* name) const { return m_Scratch.Wide(name); }
  ScratchDirectory m_Scratch;
};

TEST_F(Directories, a_path_of_three_characters_is_not_deleted_and_one_of_four_is) {
  const PresentDirectory present(m_Scratch.Path());
  m_Scratch.Write("abc/file", "x");
  m_Scratch.Write("abcd/file", "x");
  EXPECT_FALSE(DeleteDirectory(L"abc"));
  EXPECT_TRUE(m_Scratch.Has("abc/file"));
  EXPECT_TRUE(DeleteDirectory(L"abcd"));
  EXPECT_FALSE(m_Scratch.Has("abcd"));
  EXPECT_TRUE(DeleteDirectory(L"abc\\"));
}

TEST_F(Directories, a_drive_root_is_out_of_reach) {
  const EnvironmentGuard home("RASTREL_HOME", m_Scratch.Path());
  m_Scratch.Write("drive_c/precious", "x");
  for (const wchar_t* const path : {L"C:\\", L"C:/", L"C:", L"\\", L"/", L"..", L""})
    EXPECT_FALSE(DeleteDirectory(path));
  EXPECT_FALSE(DeleteDirectory(nullptr));
  EXPECT_TRUE(m_Scratch.Has("drive_c/precious"));
}

TEST_F(Directories, a_files_path_is_not_deleted) {
  m_Scratch.Write("file", "x");
  EXPECT_FALSE(DeleteDirectory(Wide("file").c_str()));
  EXPECT_TRUE(m_Scratch.Has("file"));
  EXPECT_FALSE(DeleteDirectory(Wide("missing").c_str()));
}

TEST_F(Directories, deleting_takes_everything_below_and_follows_no_link) {
  m_Scratch.Write("outside/kept", "x");
  m_Scratch.Write("tree/a/b/c/file", "x");
  m_Scratch.Write("tree/.hidden", "x");
  fs::create_directories(m_Scratch.Path("tree/empty"));
  fs::create_directory_symlink(m_Scratch.Path("outside"), m_Scratch.Path("tree/link"));
  fs::create_symlink("nowhere", m_Scratch.Path("tree/dangling"));
  ASSERT_EQ(::mkfifo(m_Scratch.Path("tree/pipe").c_str(), 0600), 0);
  fs::permissions(m_Scratch.Path("tree/.hidden"), fs::perms::owner_read);
  EXPECT_TRUE(DeleteDirectory((Wide("tree") + L"\\").c_str()));
  EXPECT_FALSE(m_Scratch.Has("tree"));
  EXPECT_TRUE(m_Scratch.Has("outside/kept"));
}

TEST_F(Directories, an_entry_that_cannot_be_removed_stops_the_deletion) {
  m_Scratch.Write("tree/locked/file", "x");
  fs::permissions(m_Scratch.Path("tree/locked"), fs::perms::owner_read | fs::perms::owner_exec);
  {
    const OrdinaryUser user;
    EXPECT_FALSE(DeleteDirectory(Wide("tree").c_str()));
  }
  EXPECT_TRUE(m_Scratch.Has("tree/locked/file"));
  fs::permissions(m_Scratch.Path("tree/locked"), fs::perms::all);
}

TEST_F(Directories, a_copy_has_the_same_files) {
  m_Scratch.Write("from/a/b/file", "content");
  m_Scratch.Write("from/empty file", "");
  fs::create_directories(m_Scratch.Path("from/a/empty"));
  EXPECT_TRUE(CopyTree((Wide("from") + L"\\").c_str(), (Wide("to") + L"\\new\\").c_str()));
  EXPECT_EQ(TreeSnapshot(m_Scratch.Path("from")), TreeSnapshot(m_Scratch.Path("to/new")));
}

TEST_F(Directories, a_copy_writes_over_files_and_keeps_others) {
  m_Scratch.Write("from/file", "new");
  m_Scratch.Write("to/file", "old and longer");
  m_Scratch.Write("to/other", "kept");
  EXPECT_TRUE(CopyTree(Wide("from").c_str(), Wide("to").c_str()));
  EXPECT_EQ(m_Scratch.Read("to/file"), "new");
  EXPECT_EQ(m_Scratch.Read("to/other"), "kept");
}

TEST_F(Directories, a_copy_passes_over_other_kinds_than_files_and_directories) {
  m_Scratch.Write("from/file", "x");
  fs::create_symlink("nowhere", m_Scratch.Path("from/dangling"));
  ASSERT_EQ(::mkfifo(m_Scratch.Path("from/pipe").c_str(), 0600), 0);
  EXPECT_TRUE(CopyTree(Wide("from").c_str(), Wide("to").c_str()));
  EXPECT_TRUE(m_Scratch.Has("to/file"));
  EXPECT_FALSE(m_Scratch.Has("to/dangling"));
  EXPECT_FALSE(m_Scratch.Has("to/pipe"));
}

TEST_F(Directories, a_copy_passes_over_a_file_and_a_directory_that_cannot_be_copied) {
  m_Scratch.Write("from/good", "x");
  m_Scratch.Write("from/blocked", "x");
  m_Scratch.Write("from/sub/file", "x");
  fs::create_directories(m_Scratch.Path("to/blocked"));  // a directory where the file should go
  m_Scratch.Write("to/sub", "a file where the directory should go");
  EXPECT_TRUE(CopyTree(Wide("from").c_str(), Wide("to").c_str()));
  EXPECT_EQ(m_Scratch.Read("to/good"), "x");
  EXPECT_EQ(m_Scratch.Read("to/sub"), "a file where the directory should go");
}

TEST_F(Directories, a_copy_passes_over_unreadable_entries) {
  fs::permissions(m_Scratch.Path(), fs::perms::all);
  m_Scratch.Write("from/good", "x");
  m_Scratch.Write("from/secret", "x");
  m_Scratch.Write("from/closed/file", "x");
  fs::permissions(m_Scratch.Path("from/secret"), fs::perms::none);
  fs::permissions(m_Scratch.Path("from/closed"), fs::perms::none);
  {
    const OrdinaryUser user;
    EXPECT_TRUE(CopyTree(Wide("from").c_str(), Wide("to").c_str()));
  }
  EXPECT_TRUE(m_Scratch.Has("to/good"));
  EXPECT_FALSE(m_Scratch.Has("to/secret"));
  EXPECT_FALSE(m_Scratch.Has("to/closed/file"));
  fs::permissions(m_Scratch.Path("from/closed"), fs::perms::all);
}

TEST_F(Directories, a_copy_fails_without_a_source_but_has_made_the_destination) {
  EXPECT_FALSE(CopyTree(Wide("missing").c_str(), Wide("a/b").c_str()));
  EXPECT_TRUE(m_Scratch.Has("a/b"));
  m_Scratch.Write("file", "x");
  EXPECT_FALSE(CopyTree(Wide("file").c_str(), Wide("c").c_str()));
}

TEST_F(Directories, a_copy_fails_if_its_destination_cannot_be_made) {
  m_Scratch.Write("from/file", "x");
  m_Scratch.Write("file", "x");
  EXPECT_FALSE(CopyTree(Wide("from").c_str(), Wide("file/below").c_str()));
  EXPECT_FALSE(CopyTree(nullptr, Wide("to").c_str()));
  EXPECT_FALSE(CopyTree(Wide("from").c_str(), nullptr));
}

TEST_F(Directories, a_path_is_made_with_all_its_elements) {
  const std::wstring root = m_Scratch.Wide();
  EXPECT_TRUE(MakeDirectoryPath((root + L"/a/b\\c").c_str()));
  EXPECT_TRUE(m_Scratch.Has("a/b/c"));
  EXPECT_TRUE(MakeDirectoryPath((root + L"\\\\d//e\\/f\\\\").c_str()));
  EXPECT_TRUE(m_Scratch.Has("d/e/f"));
  EXPECT_TRUE(MakeDirectoryPath((root + L"/a/b\\c").c_str()));
  m_Scratch.Write("file", "x");
  EXPECT_TRUE(MakeDirectoryPath((root + L"/file").c_str()));  // any entry that exists is enough
  EXPECT_FALSE(MakeDirectoryPath((root + L"/file/below").c_str()));
}

TEST_F(Directories, a_null_or_empty_path_is_not_made) {
  EXPECT_FALSE(MakeDirectoryPath(nullptr));
  EXPECT_FALSE(MakeDirectoryPath(L""));
}

TEST_F(Directories, a_relative_path_is_made_from_the_present_directory) {
  const PresentDirectory present(m_Scratch.Path());
  EXPECT_TRUE(MakeDirectoryPath(L"x"));
  EXPECT_TRUE(MakeDirectoryPath(L"y\\z"));
  EXPECT_TRUE(m_Scratch.Has("x"));
  EXPECT_TRUE(m_Scratch.Has("y/z"));
}

TEST_F(Directories, a_drive_root_that_exists_is_there_and_one_that_does_not_cannot_be_made) {
  const EnvironmentGuard home("RASTREL_HOME", m_Scratch.Path());
  fs::create_directory(m_Scratch.Path("drive_c"));
  EXPECT_TRUE(MakeDirectoryPath(L"C:\\"));
  EXPECT_FALSE(MakeDirectoryPath(L"D:\\"));
  EXPECT_FALSE(MakeDirectoryPath(L"D:\\\\//"));
  EXPECT_FALSE(m_Scratch.Has("drive_d"));
  EXPECT_TRUE(MakeDirectoryPath(L"C:\\\\a/b"));
  EXPECT_TRUE(m_Scratch.Has("drive_c/a/b"));
}

TEST_F(Directories, a_network_path_needs_something_behind_its_server) {
  for (const wchar_t* const path :
       {L"\\\\rastrel-no-such-server", L"\\\\rastrel-no-such-server\\",
        L"\\\\rastrel-no-such-server/", L"\\\\rastrel-no-such-server\\\\/"})
    EXPECT_FALSE(MakeDirectoryPath(path)) << std::wstring(path);
}

TEST_F(Directories, the_size_of_a_tree_is_that_of_its_files) {
  m_Scratch.Write("tree/a", std::string(1000, 'x'));
  m_Scratch.Write("tree/b/c/d", std::string(234, 'x'));
  m_Scratch.Write("outside", std::string(50, 'x'));
  fs::create_symlink(m_Scratch.Path("outside"), m_Scratch.Path("tree/dangling"));
  ASSERT_EQ(::mkfifo(m_Scratch.Path("tree/pipe").c_str(), 0600), 0);
  EXPECT_EQ(GetTreeSize(Wide("tree").c_str()), 1234U);
  EXPECT_EQ(GetTreeSize((Wide("tree") + L"\\").c_str()), 1234U);
  EXPECT_EQ(GetTreeSize(Wide("missing").c_str()), 0U);
  EXPECT_EQ(GetTreeSize(Wide("outside").c_str()), 0U);
  EXPECT_EQ(GetTreeSize(nullptr), 0U);
}

TEST_F(Directories, an_unreadable_directory_counts_0) {
  fs::permissions(m_Scratch.Path(), fs::perms::all);
  m_Scratch.Write("tree/a", std::string(1000, 'x'));
  m_Scratch.Write("tree/closed/b", std::string(234, 'x'));
  fs::permissions(m_Scratch.Path("tree/closed"), fs::perms::none);
  {
    const OrdinaryUser user;
    EXPECT_EQ(GetTreeSize(Wide("tree").c_str()), 1000U);
  }
  fs::permissions(m_Scratch.Path("tree/closed"), fs::perms::all);
}

TEST_F(Directories, a_size_beyond_32_bits_is_returned_whole) {
  m_Scratch.Write("tree/a", "");
  fs::resize_file(m_Scratch.Path("tree/a"), 5'000'000'000);
  EXPECT_EQ(GetTreeSize(Wide("tree").c_str()), 5'000'000'000U);
}

}  // namespace
