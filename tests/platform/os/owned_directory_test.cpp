#include "rastrel/platform/os/owned_directory.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "rastrel/platform/os/owner.h"
#include "rastrel/platform/os/system_calls.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::os {
namespace {

namespace fs = std::filesystem;

std::ptrdiff_t CountIn(const std::string& directory) {
  return std::distance(fs::directory_iterator(directory), {});
}

TEST(OwnedDirectory, has_its_owner_when_it_has_its_name) {
  const test::ScratchDirectory place;
  ASSERT_TRUE(MakeOwnedDirectory(place.Path("job")));
  EXPECT_TRUE(ReadOwner(place.Path("job")));
  EXPECT_EQ(CountIn(place.Path()), 1);
}

TEST(OwnedDirectory, takes_no_name_that_anything_has) {
  const test::ScratchDirectory place;
  fs::create_directory(place.Path("empty"));
  place.Write("file", "x");
  fs::create_symlink("nowhere", place.Path("link"));
  for (const char* name : {"empty", "file", "link"}) {
    const auto made = MakeOwnedDirectory(place.Path(name));
    ASSERT_FALSE(made) << name;
    EXPECT_EQ(made.Error().error, EEXIST) << name;
  }
  EXPECT_EQ(CountIn(place.Path()), 3);
  EXPECT_TRUE(fs::is_empty(place.Path("empty")));
  EXPECT_EQ(MakeOwnedDirectory(place.Path("missing/job")).Error().error, ENOENT);
}

TEST(OwnedDirectory, is_made_where_the_file_system_can_not_rename_to_a_new_name_alone) {
  const test::ScratchDirectory place;
  const SystemCallsGuard guard;
  Calls().rename_new = [](const char*, const char*) {
    errno = EINVAL;
    return -1;
  };
  ASSERT_TRUE(MakeOwnedDirectory(place.Path("job")));
  EXPECT_TRUE(ReadOwner(place.Path("job")));
  EXPECT_EQ(CountIn(place.Path()), 1);
}

}  // namespace
}  // namespace rastrel::os
