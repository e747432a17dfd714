#include "rastrel/platform/os/native_file.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "rastrel/platform/os/path.h"
#include "tests/support/environment_guard.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::os {
namespace {

namespace fs = std::filesystem;

TEST(CopyNativeFile, takes_names_that_a_library_path_can_not_spell) {
  const test::ScratchDirectory place;
  place.Write("back\\slash\xFF", "content");
  const auto copied = CopyNativeFile(place.Path("back\\slash\xFF"), place.Path("c:x\\y"));
  ASSERT_TRUE(copied) << rastrel::Describe(copied.Error());
  EXPECT_EQ(place.Read("c:x\\y"), "content");
}

TEST(CopyNativeFile, says_which_of_the_two_failed) {
  const test::ScratchDirectory place;
  place.Write("source", "content");
  const auto missing = CopyNativeFile(place.Path("none"), place.Path("target"));
  ASSERT_FALSE(missing);
  EXPECT_EQ(missing.Error().what, "open");
  EXPECT_EQ(missing.Error().where, place.Path("none"));
  EXPECT_EQ(missing.Error().error, ENOENT);
  const auto nowhere = CopyNativeFile(place.Path("source"), place.Path("no/target"));
  ASSERT_FALSE(nowhere);
  EXPECT_EQ(nowhere.Error().where, place.Path("no/target"));
  EXPECT_EQ(nowhere.Error().error, ENOENT);
}

TEST(IsProgram, is_true_for_an_executable_file_only) {
  const test::ScratchDirectory place;
  place.Write("program", "#!/bin/sh\n");
  EXPECT_FALSE(IsProgram(place.Path("program")));
  fs::permissions(place.Path("program"), fs::perms::owner_all);
  EXPECT_TRUE(IsProgram(place.Path("program")));
  EXPECT_FALSE(IsProgram(place.Path()));
  EXPECT_FALSE(IsProgram(place.Path("none")));
}

TEST(SetEnvironmentValue, sets_and_removes) {
  const test::EnvironmentGuard guard("RASTREL_TEST_VALUE", nullptr);
  EXPECT_TRUE(SetEnvironmentValue("RASTREL_TEST_VALUE", "x y"));
  EXPECT_EQ(EnvironmentValue("RASTREL_TEST_VALUE"), "x y");
  EXPECT_TRUE(SetEnvironmentValue("RASTREL_TEST_VALUE", nullptr));
  EXPECT_EQ(EnvironmentValue("RASTREL_TEST_VALUE"), "");
  EXPECT_FALSE(SetEnvironmentValue("A=B", "x"));
}

}  // namespace
}  // namespace rastrel::os
