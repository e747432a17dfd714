#include "rastrel/platform/os/trusted_file.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "tests/support/access_list.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::os {
namespace {

namespace fs = std::filesystem;

class TrustedFile : public testing::Test {
 protected:
  TrustedFile() {
    m_Place.Write("top/bin/tool", "");
    for (const char* directory : {"top", "top/bin"}) Set(directory, 0755);
    Set("top/bin/tool", 0755);
  }
  void Set(const std::string& name, unsigned mode) const {
    fs::permissions(m_Place.Path(name), fs::perms(mode));
  }
  [[nodiscard]] std::string Complaint() const {
    const auto checked = CheckTrusted(m_Place.Path("top/bin/tool"), m_Place.Path("top"));
    return checked ? "" : Describe(checked.Error());
  }
  [[nodiscard]] std::string Refusal(const std::string& name, const std::string& why) const {
    return "trust '" + m_Place.Path(name) + "': " + why;
  }

  test::ScratchDirectory m_Place;
};

TEST_F(TrustedFile, is_one_that_others_may_only_read) { EXPECT_EQ(Complaint(), ""); }

TEST_F(TrustedFile, is_none_that_everybody_may_write_to_or_replace) {
  for (const char* name : {"top/bin/tool", "top/bin", "top"}) {
    Set(name, 0757);
    EXPECT_EQ(Complaint(), Refusal(name, "every user may write to it"));
    Set(name, 0755);
  }
  Set("", 0757);
  EXPECT_EQ(Complaint(), "") << "above the top nothing is asked";
}

TEST_F(TrustedFile, may_lie_where_everybody_makes_files_but_replaces_none) {
  Set("top", 01777);
  EXPECT_EQ(Complaint(), "");
}

TEST_F(TrustedFile, is_none_of_another_user) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the superuser may give a file away";
  ASSERT_EQ(::chown(m_Place.Path("top/bin").c_str(), 1234, 0), 0);
  EXPECT_EQ(Complaint(), Refusal("top/bin", "it is another user's"));
}

TEST_F(TrustedFile, may_be_the_superusers) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the superuser has files for this";
  Set("", 0755);
  const test::OrdinaryUser other;
  EXPECT_EQ(Complaint(), "");
}

TEST_F(TrustedFile, is_none_that_a_group_of_others_may_write_to) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the superuser may give a file to any group";
  // Group 1 is daemon's, which is not this user's name.
  ASSERT_EQ(::chown(m_Place.Path("top/bin/tool").c_str(), 0, 1), 0);
  Set("top/bin/tool", 0775);
  EXPECT_EQ(Complaint(), Refusal("top/bin/tool", "other users of its group may write to it"));
  ASSERT_EQ(::chown(m_Place.Path("top/bin/tool").c_str(), 0, 0), 0);
  EXPECT_EQ(Complaint(), "") << "root's own group has root alone";
}

// The bits of the file's group then say how much any of the list may do.
TEST_F(TrustedFile, is_none_that_a_user_of_its_access_list_may_write_to) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the superuser's own group is sure to have him alone";
  ASSERT_EQ(::chown(m_Place.Path("top/bin/tool").c_str(), 0, 0), 0);
  Set("top/bin/tool", 0775);
  ASSERT_EQ(Complaint(), "");
  const std::string path = m_Place.Path("top/bin/tool");
  if (!rastrel::test::GiveAccessList(path, 7))
    GTEST_SKIP() << "the file system keeps no access lists: " << std::strerror(errno);
  EXPECT_EQ(Complaint(), Refusal("top/bin/tool", "other users of its group may write to it"));
  ASSERT_TRUE(rastrel::test::GiveAccessList(path, 5));
  EXPECT_EQ(Complaint(), "") << "who may only read it changes nothing";
}

TEST_F(TrustedFile, is_none_that_is_missing) {
  const auto checked = CheckTrusted(m_Place.Path("top/bin/none"), m_Place.Path("top"));
  ASSERT_FALSE(checked);
  EXPECT_EQ(checked.Error().error, ENOENT);
}

}  // namespace
}  // namespace rastrel::os
