#include "rastrel/platform/os/inside.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/support/scratch_directory.h"

using rastrel::os::ForeignBelow;
using rastrel::test::ScratchDirectory;

namespace fs = std::filesystem;

TEST(ForeignBelow, plain_files_and_folders_and_missing_names_belong_to_the_folder) {
  const ScratchDirectory directory;
  directory.Write("a/b", "text");
  for (const wchar_t* const rest : {L"\\a\\b", L"/a/b", L"\\a\\", L"\\a\\c\\d", L"\\x"})
    EXPECT_FALSE(ForeignBelow(directory.Wide(), rest)) << rest;
}

TEST(ForeignBelow, a_link_anywhere_on_the_way_is_foreign) {
  const ScratchDirectory directory;
  directory.Write("a/b", "text");
  fs::create_directory_symlink("a", directory.Path("folder"));
  fs::create_symlink("b", directory.Path("a/file"));
  fs::create_symlink("nowhere", directory.Path("a/broken"));
  EXPECT_EQ(ForeignBelow(directory.Wide(), L"\\folder\\b"), directory.Path("folder"));
  EXPECT_EQ(ForeignBelow(directory.Wide(), L"\\a\\file"), directory.Path("a/file"));
  EXPECT_EQ(ForeignBelow(directory.Wide(), L"\\a\\broken"), directory.Path("a/broken"));
}

TEST(ForeignBelow, a_pipe_is_foreign) {
  const ScratchDirectory directory;
  ASSERT_EQ(::mkfifo(directory.Path("pipe").c_str(), 0600), 0);
  EXPECT_EQ(ForeignBelow(directory.Wide(), L"\\pipe"), directory.Path("pipe"));
}

TEST(ForeignBelow, the_folder_itself_may_be_a_link) {
  const ScratchDirectory directory;
  directory.Write("a/b", "text");
  fs::create_directory_symlink("a", directory.Path("folder"));
  EXPECT_FALSE(ForeignBelow(directory.Wide("folder"), L"\\b"));
}
