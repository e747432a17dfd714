#include "cli/batch/staged_results.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "rastrel/platform/os/private_directory.h"

namespace rastrel::cli {
namespace {

class StagedResultsTest : public testing::Test {
 protected:
  StagedResultsTest() : m_Directory(*os::PrivateDirectory::Make("rastrel-staged-")) {}

  [[nodiscard]] BatchRecord Begin(bool replaces = false) const {
    return *BatchRecord::Begin(
        m_Place + "/",
        {.words = {"print"}, .files = {"a.ps", "b.ps"}, .staged = true, .replaces = replaces},
        false);
  }
  static void Write(const std::string& path, const std::string& text) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path) << text;
  }
  [[nodiscard]] std::string Read(const std::string& name) const {
    std::ifstream file(m_Place + "/" + name);
    return file ? std::string(std::istreambuf_iterator<char>(file), {}) : "none";
  }

  os::PrivateDirectory m_Directory;
  const std::string m_Place = m_Directory.Path();
};

TEST_F(StagedResultsTest, all_files_of_a_run_get_their_places_below_directories_too) {
  const BatchRecord record = Begin();
  StagedResults staged(record, 0);
  ASSERT_TRUE(staged.Prepare());
  Write(staged.Directory() + "/a-1.png", "one");
  Write(staged.Directory() + "/2026/a-2.png", "two");
  ASSERT_TRUE(staged.Deliver());
  EXPECT_EQ(Read("a-1.png"), "one");
  EXPECT_EQ(Read("2026/a-2.png"), "two");
  EXPECT_FALSE(std::filesystem::exists(staged.Directory()));
}

TEST_F(StagedResultsTest, a_run_without_files_is_delivered) {
  const BatchRecord record = Begin();
  StagedResults staged(record, 0);
  ASSERT_TRUE(staged.Prepare());
  EXPECT_TRUE(staged.Deliver());
}

TEST_F(StagedResultsTest, a_second_run_does_not_see_the_files_of_the_first) {
  const BatchRecord record = Begin();
  StagedResults staged(record, 0);
  ASSERT_TRUE(staged.Prepare());
  const std::string first = staged.Directory();
  Write(first + "/a-1.png", "half");
  ASSERT_TRUE(staged.Prepare());
  EXPECT_NE(staged.Directory(), first);
  ASSERT_TRUE(staged.Deliver());
  EXPECT_EQ(Read("a-1.png"), "none");
}

TEST_F(StagedResultsTest, a_file_that_is_there_stays_and_nothing_is_moved) {
  const BatchRecord record = Begin();
  Write(m_Place + "/a-2.png", "mine");
  StagedResults staged(record, 0);
  ASSERT_TRUE(staged.Prepare());
  Write(staged.Directory() + "/a-1.png", "one");
  Write(staged.Directory() + "/a-2.png", "two");
  const auto delivered = staged.Deliver();
  ASSERT_FALSE(delivered);
  EXPECT_EQ(delivered.Error().error, EEXIST);
  EXPECT_EQ(Read("a-1.png"), "none");
  EXPECT_EQ(Read("a-2.png"), "mine");
}

TEST_F(StagedResultsTest, a_plan_that_replaces_takes_the_place_of_a_file) {
  const BatchRecord record = Begin(true);
  Write(m_Place + "/a-1.png", "mine");
  StagedResults staged(record, 0);
  ASSERT_TRUE(staged.Prepare());
  Write(staged.Directory() + "/a-1.png", "one");
  ASSERT_TRUE(staged.Deliver());
  EXPECT_EQ(Read("a-1.png"), "one");
}

TEST_F(StagedResultsTest, what_a_killed_run_had_put_there_is_replaced_and_others_files_are_not) {
  const BatchRecord record = Begin();
  for (const std::size_t file : {0U, 0U, 1U}) {
    StagedResults staged(record, file);
    ASSERT_TRUE(staged.Prepare());
    Write(staged.Directory() + "/a-1.png", std::to_string(file));
    EXPECT_EQ(static_cast<bool>(staged.Deliver()), file == 0);
  }
  EXPECT_EQ(Read("a-1.png"), "0");
}

TEST_F(StagedResultsTest, lines_have_the_places_of_the_results_each_time) {
  const BatchRecord record = Begin();
  StagedResults staged(record, 0);
  ASSERT_TRUE(staged.Prepare());
  const std::string one = staged.Directory() + "/a-1.png";
  const HeldText text =
      staged.WithPlaces({{{false, one + "\n" + one + "\n"}, {true, "no path\n"}}});
  EXPECT_EQ(text.pieces[0].bytes, m_Place + "/a-1.png\n" + m_Place + "/a-1.png\n");
  EXPECT_EQ(text.pieces[1].bytes, "no path\n");
}

}  // namespace
}  // namespace rastrel::cli
