#include "rastrel/platform/os/held_directory.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "tests/support/scratch_directory.h"

namespace rastrel::test {
namespace {

namespace fs = std::filesystem;
using os::DirectoryHold;
using os::RemoveAbandonedDirectories;

constexpr std::size_t Many = 1000;

class HeldDirectory : public ::testing::Test {
 protected:
  // A directory whose holder was killed.
  std::string Abandon(const std::string& name) {
    std::string path = m_Scratch.Path(name);
    fs::create_directories(path + "/package/xl");
    std::ofstream(path + "/package/xl/part") << "part";
    const pid_t child = ::fork();
    if (child == 0) {
      const auto hold = DirectoryHold::Take(path);
      if (hold) ::raise(SIGKILL);
      ::_exit(1);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status));
    return path;
  }
  std::size_t Remove(std::size_t names = Many, std::size_t removals = Many) {
    return RemoveAbandonedDirectories(m_Scratch.Path(), names, removals);
  }
  ScratchDirectory m_Scratch;
};

TEST_F(HeldDirectory, is_removed_with_all_in_it_once_its_holder_was_killed) {
  const std::string path = Abandon("1-1");
  EXPECT_EQ(Remove(), 1U);
  EXPECT_FALSE(fs::exists(path));
  EXPECT_EQ(Remove(), 0U);
}

TEST_F(HeldDirectory, stays_as_long_as_it_is_held) {
  fs::create_directory(m_Scratch.Path("held"));
  {
    const auto hold = DirectoryHold::Take(m_Scratch.Path("held"));
    ASSERT_TRUE(hold);
    EXPECT_EQ(Remove(), 0U);
    EXPECT_FALSE(DirectoryHold::Take(m_Scratch.Path("held")));
  }
  EXPECT_EQ(Remove(), 1U);
}

TEST_F(HeldDirectory, is_not_one_that_was_never_held_and_no_file_and_nothing_behind_a_link) {
  const std::string outside = Abandon("outside");
  fs::create_directory(m_Scratch.Path("place"));
  fs::create_directory_symlink(outside, m_Scratch.Path("place/1-1"));
  fs::create_directory(m_Scratch.Path("place/2-1"));
  fs::create_symlink(outside + "/.held", m_Scratch.Path("place/2-1/.held"));
  fs::create_directories(m_Scratch.Path("place/3-1/.held"));
  m_Scratch.Write("place/4-1", "file");
  fs::create_directory(m_Scratch.Path("place/5-1"));
  EXPECT_EQ(RemoveAbandonedDirectories(m_Scratch.Path("place"), Many, Many), 0U);
  EXPECT_TRUE(fs::exists(outside + "/package/xl/part"));
  for (const char* name : {"1-1", "2-1", "3-1", "4-1", "5-1"})
    EXPECT_TRUE(fs::exists(m_Scratch.Path(std::string("place/") + name))) << name;
}

TEST_F(HeldDirectory, removals_are_bounded_and_the_next_call_goes_on) {
  for (const char* name : {"1", "2", "3"}) Abandon(name);
  EXPECT_EQ(Remove(Many, 2), 2U);
  EXPECT_EQ(Remove(0), 0U);
  EXPECT_EQ(Remove(), 1U);
  EXPECT_EQ(RemoveAbandonedDirectories(m_Scratch.Path("missing"), Many, Many), 0U);
}

}  // namespace
}  // namespace rastrel::test
