#include "interpreter/removal.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "tests/support/scratch_directory.h"

namespace rastrel::interpreter {
namespace {

TEST(Removal, takes_files_and_directories_with_all_below) {
  const test::ScratchDirectory directory;
  directory.Write("file", "x");
  // More entries than one reading of the directory returns.
  for (int i = 0; i < 500; ++i) {
    directory.Write("tree/a-rather-long-name-of-a-file-" + std::to_string(i), "x");
    directory.Write("tree/below/" + std::to_string(i), "x");
  }
  EXPECT_EQ(RemoveAll(directory.Path("file").c_str()), 0);
  EXPECT_EQ(RemoveAll(directory.Path("tree").c_str()), 0);
  EXPECT_FALSE(directory.Has("file"));
  EXPECT_FALSE(directory.Has("tree"));
}

TEST(Removal, of_nothing_is_no_error) {
  const test::ScratchDirectory directory;
  EXPECT_EQ(RemoveAll(directory.Path("nothing").c_str()), 0);
}

TEST(Removal, takes_links_and_leaves_their_targets) {
  const test::ScratchDirectory directory;
  directory.Write("kept/file", "x");
  ASSERT_EQ(mkdir(directory.Path("tree").c_str(), 0777), 0);
  ASSERT_EQ(symlink(directory.Path("kept").c_str(), directory.Path("tree/link").c_str()), 0);
  ASSERT_EQ(symlink(directory.Path("kept").c_str(), directory.Path("link").c_str()), 0);
  EXPECT_EQ(RemoveAll(directory.Path("tree").c_str()), 0);
  EXPECT_EQ(RemoveAll(directory.Path("link").c_str()), 0);
  EXPECT_FALSE(directory.Has("tree"));
  EXPECT_FALSE(directory.Has("link"));
  EXPECT_EQ(directory.Read("kept/file"), "x");
}

// Far more levels than it goes down, with a file in each.
TEST(Removal, takes_directories_of_any_depth) {
  const test::ScratchDirectory directory;
  std::string path = "tree";
  for (int level = 0; level < 300; ++level) {
    directory.Write(path + "/f", "x");
    path += "/d";
  }
  EXPECT_EQ(RemoveAll(directory.Path("tree").c_str()), 0);
  EXPECT_FALSE(directory.Has("tree"));
}

}  // namespace
}  // namespace rastrel::interpreter
