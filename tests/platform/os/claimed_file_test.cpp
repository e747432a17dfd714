#include "rastrel/platform/os/claimed_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <optional>

#include "tests/support/open_descriptors.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::os {
namespace {

namespace fs = std::filesystem;

bool HasAttribute(const std::string& path) {
  return ::getxattr(path.c_str(), "user.rastrel.owner", nullptr, 0) > 0;
}

class ClaimedFileTest : public ::testing::Test {
 protected:
  [[nodiscard]] auto TakeOver() const {
    return ClaimedFile::TakeOver(m_Scratch.Path("file"), "head");
  }
  test::ScratchDirectory m_Scratch;
};

TEST_F(ClaimedFileTest, is_made_where_nothing_has_the_name_and_leaves_no_descriptor_open) {
  const std::size_t before = test::OpenDescriptors();
  auto file = ClaimedFile::Create(m_Scratch.Path("file"));
  ASSERT_TRUE(file);
  EXPECT_EQ(test::OpenDescriptors(), before);
  ASSERT_TRUE(file->Write("a longer text"));
  ASSERT_TRUE(file->Write("content"));
  EXPECT_EQ(m_Scratch.Read("file"), "content");
  EXPECT_EQ(ClaimedFile::Create(m_Scratch.Path("file")).Error().error, EEXIST);
  EXPECT_TRUE(file->Remove());
  EXPECT_FALSE(m_Scratch.Has("file"));
}

TEST_F(ClaimedFileTest, only_a_file_of_that_head_is_taken_over) {
  EXPECT_EQ(TakeOver().Error().error, ENOENT);
  m_Scratch.Write("file", "hea");
  EXPECT_EQ(TakeOver().Error().error, EEXIST);
  m_Scratch.Write("file", "headless");
  {
    const auto claimed = TakeOver();
    ASSERT_TRUE(claimed);
    EXPECT_EQ(m_Scratch.Read("file"), "headless");  // until it is written
    EXPECT_EQ(TakeOver().Error().error, EEXIST);
  }
  EXPECT_TRUE(TakeOver());
}

TEST_F(ClaimedFileTest, another_process_does_not_take_what_is_claimed_until_the_owner_has_ended) {
  m_Scratch.Write("file", "head");
  int claimed[2];
  int gate[2];
  ASSERT_EQ(::pipe(claimed) + ::pipe(gate), 0);
  const pid_t child = ::fork();
  if (child == 0) {
    ::close(gate[1]);
    const auto file = TakeOver();
    char byte = file ? 'y' : 'n';
    if (::write(claimed[1], &byte, 1) != 1) _exit(1);
    while (::read(gate[0], &byte, 1) < 0 && errno == EINTR) {
    }
    _exit(0);  // the claim is not given up
  }
  char byte = 0;
  ASSERT_EQ(::read(claimed[0], &byte, 1), 1);
  ASSERT_EQ(byte, 'y');
  const std::string probe = m_Scratch.Path("file");
  const bool attributes = HasAttribute(probe);
  if (attributes) {
    EXPECT_EQ(TakeOver().Error().error, EEXIST);
  }
  ::close(gate[1]);
  ASSERT_EQ(::waitpid(child, nullptr, 0), child);
  EXPECT_TRUE(TakeOver());
  for (const int end : {claimed[0], claimed[1], gate[0]}) ::close(end);
  if (!attributes) GTEST_SKIP() << "this file system has no attributes";
}

TEST_F(ClaimedFileTest, a_file_that_took_its_place_is_neither_written_nor_removed) {
  auto file = ClaimedFile::Create(m_Scratch.Path("file"));
  ASSERT_TRUE(file);
  fs::rename(m_Scratch.Path("file"), m_Scratch.Path("moved"));
  EXPECT_EQ(file->Write("x").Error().error, ENOENT);
  m_Scratch.Write("file", "other");
  EXPECT_EQ(file->Write("x").Error().error, EEXIST);
  EXPECT_TRUE(file->Remove());
  EXPECT_EQ(m_Scratch.Read("file"), "other");
}

}  // namespace
}  // namespace rastrel::os
