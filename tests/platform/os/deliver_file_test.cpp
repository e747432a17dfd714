#include "rastrel/platform/os/deliver_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "rastrel/platform/os/owner.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::test {
namespace {

namespace fs = std::filesystem;
using os::DeliverFile;

class DeliverFileTest : public ::testing::Test {
 protected:
  Expected<void> Deliver(const std::string& target) {
    m_Source.Write("result", "new");
    return DeliverFile(m_Source.Path("result"), target,
                       [this](const std::string& path) { m_Hidden.push_back(path); });
  }
  static std::ptrdiff_t CountIn(const std::string& directory) {
    return std::distance(fs::directory_iterator(directory), {});
  }
  static mode_t ModeOf(const std::string& path) {
    struct stat state {};
    EXPECT_EQ(::stat(path.c_str(), &state), 0);
    return state.st_mode & 07777U;
  }
  ScratchDirectory m_Source;
  ScratchDirectory m_Same;
  MemoryScratchDirectory m_Other;
  std::vector<std::string> m_Hidden;
};

TEST_F(DeliverFileTest, gives_a_file_a_new_name_or_replaces_one_on_any_file_system) {
  for (const std::string& target : {m_Same.Path("out"), m_Other.Path("out")})
    for (int time = 0; time < 2; ++time) {
      ASSERT_TRUE(Deliver(target));
      EXPECT_EQ(fs::file_size(target), 3U);
      EXPECT_EQ(CountIn(fs::path(target).parent_path()), 1);
    }
  EXPECT_EQ(m_Same.Read("out"), "new");
  EXPECT_EQ(m_Other.Read("out"), "new");
}

TEST_F(DeliverFileTest, a_replaced_file_gives_its_permissions_to_the_new_one) {
  for (const std::string& target : {m_Same.Path("out"), m_Other.Path("out")})
    for (const mode_t mode : {0600U, 0664U}) {
      ASSERT_TRUE(Deliver(target));
      ASSERT_EQ(::chmod(target.c_str(), mode), 0);
      ASSERT_TRUE(Deliver(target));
      EXPECT_EQ(ModeOf(target), mode);
    }
}

TEST_F(DeliverFileTest, a_hidden_file_is_announced_before_it_is_made_and_is_never_an_existing_one) {
  // Names of this process end in a number that rises by one.
  const std::string last = os::OwnTemporaryName();
  const std::size_t dash = last.rfind('-') + 1;
  const unsigned long number = std::stoul(last.substr(dash));
  const auto after = [&](unsigned long steps) {
    return last.substr(0, dash) + std::to_string(number + steps) + ".tmp";
  };
  const std::string first = m_Other.Path(after(1));
  m_Source.Write("victim", "kept");
  fs::create_symlink(m_Source.Path("victim"), first);
  ASSERT_TRUE(Deliver(m_Other.Path("out")));
  ASSERT_EQ(m_Hidden.size(), 2U);
  EXPECT_TRUE(m_Hidden[0].ends_with(after(2))) << m_Hidden[0];
  EXPECT_EQ(m_Hidden[1], "");
  EXPECT_EQ(m_Source.Read("victim"), "kept");
  EXPECT_EQ(m_Other.Read("out"), "new");
}

TEST_F(DeliverFileTest, a_failure_leaves_the_place_as_it_was) {
  for (const std::string& place : {m_Same.Path("folder"), m_Other.Path("folder")}) {
    fs::create_directory(place);
    EXPECT_FALSE(Deliver(place));
    EXPECT_TRUE(fs::is_directory(place));
    EXPECT_EQ(CountIn(fs::path(place).parent_path()), 1);
    EXPECT_FALSE(Deliver(place + "/missing/out"));
  }
  fs::remove(m_Source.Path("result"));
  const auto missing = DeliverFile(m_Source.Path("result"), m_Same.Path("out"), {});
  ASSERT_FALSE(missing);
  EXPECT_EQ(missing.Error().error, ENOENT);
}

}  // namespace
}  // namespace rastrel::test
