#include "rastrel/platform/os/private_directory.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <utility>

#include "rastrel/platform/os/random_digits.h"
#include "rastrel/platform/os/system_calls.h"
#include "tests/support/environment_guard.h"
#include "tests/support/error_number.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::os {
namespace {

namespace fs = std::filesystem;

TEST(PrivateDirectory, lies_in_the_users_place_for_temporary_files_and_goes_with_its_content) {
  const test::ScratchDirectory place;
  const test::EnvironmentGuard temporary("TMPDIR", place.Path() + "/");
  std::string path;
  {
    const auto made = PrivateDirectory::Make("work-");
    ASSERT_TRUE(made);
    path = made->Path();
    EXPECT_TRUE(path.starts_with(place.Path() + "/work-")) << path;
    struct stat state {};
    ASSERT_EQ(stat(path.c_str(), &state), 0);
    EXPECT_EQ(state.st_mode & 0777U, 0700U);
    fs::create_directories(path + "/a/b");
  }
  EXPECT_FALSE(fs::exists(path));
}

TEST(PrivateDirectory, a_place_that_is_no_full_path_is_not_used) {
  const test::EnvironmentGuard temporary("TMPDIR", "here");
  const auto made = PrivateDirectory::Make("rastrel-test-");
  ASSERT_TRUE(made);
  EXPECT_TRUE(made->Path().starts_with("/tmp/rastrel-test-")) << made->Path();
}

TEST(PrivateDirectory, two_have_two_names_and_a_moved_one_stays) {
  const test::ScratchDirectory place;
  const test::EnvironmentGuard temporary("TMPDIR", place.Path());
  auto first = PrivateDirectory::Make("a");
  const auto second = PrivateDirectory::Make("a");
  ASSERT_TRUE(first && second);
  EXPECT_NE(first->Path(), second->Path());
  std::optional<PrivateDirectory> moved(std::move(*first));
  EXPECT_TRUE(fs::exists(moved->Path()));
  EXPECT_TRUE(moved->Remove());
  EXPECT_FALSE(fs::exists(moved->Path()));
}

TEST(PrivateDirectory, that_is_kept_stays) {
  const test::ScratchDirectory place;
  const test::EnvironmentGuard temporary("TMPDIR", place.Path());
  std::string path;
  {
    auto made = PrivateDirectory::Make("a");
    ASSERT_TRUE(made);
    path = made->Path();
    made->Keep();
  }
  EXPECT_TRUE(fs::is_directory(path));
}

TEST(PrivateDirectory, a_failure_names_the_directory) {
  const test::EnvironmentGuard temporary("TMPDIR", "/no/such/place");
  const auto made = PrivateDirectory::Make("work-");
  ASSERT_FALSE(made);
  EXPECT_EQ(made.Error().error, ENOENT);
  EXPECT_TRUE(made.Error().where.starts_with("/no/such/place/work-"));
}

TEST(PrivateDirectory, a_callback_that_gets_its_path_first_may_refuse_it) {
  const test::ScratchDirectory place;
  const test::EnvironmentGuard temporary("TMPDIR", place.Path());
  const auto made = PrivateDirectory::Make("a", [](const std::string& path) {
    EXPECT_FALSE(fs::exists(path));
    return false;
  });
  ASSERT_FALSE(made);
  EXPECT_EQ(made.Error().error, ECANCELED);
  EXPECT_TRUE(fs::is_empty(place.Path()));
}

TEST(RandomDigits, are_two_a_byte_and_other_ones_each_time) {
  const std::string digits = RandomDigits(16).ValueOr("");
  EXPECT_EQ(digits.size(), 32U);
  EXPECT_EQ(digits.find_first_not_of("0123456789abcdef"), std::string::npos);
  EXPECT_NE(digits, RandomDigits(16).ValueOr(""));
}

TEST(RandomDigits, without_random_bytes_there_are_none) {
  const SystemCallsGuard guard;
  Calls().random = [](void*, size_t) -> ssize_t {
    errno = ENOSYS;
    return -1;
  };
  EXPECT_EQ(test::ErrorNumber(RandomDigits(4)), ENOSYS);
}

}  // namespace
}  // namespace rastrel::os
