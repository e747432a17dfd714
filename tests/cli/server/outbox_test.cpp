#include "cli/server/outbox.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "rastrel/platform/os/private_directory.h"

namespace rastrel::cli {
namespace {

namespace fs = std::filesystem;

class OutboxTest : public testing::Test {
 protected:
  OutboxTest() : m_Place(*os::PrivateDirectory::Make("rastrel-outbox-")) {}

  [[nodiscard]] std::string Job() const { return m_Place.Path() + "/7"; }
  [[nodiscard]] std::string Target() const { return m_Place.Path() + "/output"; }

  void MakeWhole(Outbox& outbox, const std::vector<std::string>& names) {
    const auto place = outbox.Begin();
    ASSERT_TRUE(place);
    for (const std::string& name : names) {
      fs::create_directories(fs::path(*place + "/" + name).parent_path());
      std::ofstream(*place + "/" + name) << name;
    }
    ASSERT_TRUE(outbox.Finish());
  }

  static std::string ContentOf(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  os::PrivateDirectory m_Place;
};

TEST_F(OutboxTest, FilesComeToTheirPlacesWithTheirDirectories) {
  Outbox outbox(Job(), "A");
  EXPECT_FALSE(outbox.IsWhole());
  MakeWhole(outbox, {"a.tif", "day/b.tif"});
  EXPECT_TRUE(outbox.IsWhole());
  const auto paths = outbox.MoveTo(Target(), false);
  ASSERT_TRUE(paths);
  EXPECT_EQ(*paths, (std::vector<std::string>{Target() + "/a.tif", Target() + "/day/b.tif"}));
  EXPECT_EQ(ContentOf(Target() + "/day/b.tif"), "day/b.tif");
}

TEST_F(OutboxTest, ATakenNameGetsANumberUnlessItIsReplaced) {
  for (const bool overwrite : {false, true}) {
    Outbox outbox(Job(), overwrite ? "B" : "A");
    MakeWhole(outbox, {"a.tif"});
    fs::create_directories(Target());
    std::ofstream(Target() + "/a.tif") << "old";
    const auto paths = outbox.MoveTo(Target(), overwrite);
    ASSERT_TRUE(paths);
    EXPECT_EQ(paths->front(), Target() + (overwrite ? "/a.tif" : "/a-2.tif"));
    EXPECT_EQ(ContentOf(Target() + "/a.tif"), overwrite ? "a.tif" : "old");
  }
}

// As after a kill between the move and the queue's word of it.
TEST_F(OutboxTest, AMoveThatWasDoneIsDoneOnce) {
  Outbox outbox(Job(), "A");
  MakeWhole(outbox, {"a.tif", "b.tif"});
  fs::create_directories(Target());
  fs::rename(*outbox.Files()->begin(), Target() + "/a.tif");  // killed after the first
  Outbox next(Job(), "A");
  ASSERT_TRUE(next.IsWhole());
  EXPECT_EQ(next.MoveTo(Target(), false)->size(), 1U);
  Outbox last(Job(), "A");
  ASSERT_TRUE(last.IsWhole());
  EXPECT_EQ(last.MoveTo(Target(), false)->size(), 0U);
  EXPECT_EQ(std::distance(fs::directory_iterator(Target()), {}), 2);
  ASSERT_TRUE(last.Clear());
  EXPECT_FALSE(last.IsWhole());
}

TEST_F(OutboxTest, AnAttemptBeginsEmptyAndApartFromTheLast) {
  Outbox first(Job(), "A");
  const auto one = first.Begin();
  ASSERT_TRUE(one);
  std::ofstream(*one + "/a.tif") << "half";
  Outbox second(Job(), "A");
  const auto other = second.Begin();
  ASSERT_TRUE(other);
  EXPECT_NE(*one, *other);
  EXPECT_TRUE(fs::is_empty(*other));
  EXPECT_FALSE(fs::exists(*one));
}

TEST_F(OutboxTest, FilesOfOneDeviceGoToNoOther) {
  Outbox outbox(Job(), "A");
  MakeWhole(outbox, {"a.tif"});
  EXPECT_FALSE(Outbox(Job(), "B").IsWhole());
}

}  // namespace
}  // namespace rastrel::cli
