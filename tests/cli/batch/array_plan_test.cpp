#include "cli/batch/array_plan.h"

#include <gtest/gtest.h>

#include <fstream>
#include <tuple>

#include "rastrel/platform/os/private_directory.h"

namespace rastrel::cli {
namespace {

class ArrayPlanTest : public testing::Test {
 protected:
  ArrayPlanTest()
      : m_Place(*os::PrivateDirectory::Make("rastrel-array-")),
        m_Record(*BatchRecord::Begin(
            m_Place.Path(), {.words = {"convert"}, .files = {"a.ps", "b.ps", "c.ps"}}, false)) {}

  void Damage(const std::string& text) {
    std::ofstream(m_Record.Directory() + "/array-x.json") << text;
  }

  os::PrivateDirectory m_Place;
  BatchRecord m_Record;
};

TEST_F(ArrayPlanTest, a_task_reads_the_pieces_and_a_directory_of_any_bytes) {
  ASSERT_TRUE(WriteArrayPlan(m_Record, {"x", "/a b/\xff\n", {{0, 2}, {2, 1}}}));
  const auto plan = ReadArrayPlan(m_Record, "x");
  ASSERT_TRUE(plan);
  EXPECT_EQ(plan->directory, "/a b/\xff\n");
  ASSERT_EQ(plan->pieces.size(), 2U);
  EXPECT_EQ(plan->pieces[0].count, 2U);
  EXPECT_EQ(plan->pieces[1].first, 2U);
  EXPECT_EQ(*ArrayNames(m_Record), std::vector<std::string>{"x"});
  ASSERT_TRUE(RemoveArrayPlan(m_Record, "x"));
  EXPECT_TRUE(ArrayNames(m_Record)->empty());
}

TEST_F(ArrayPlanTest, a_missing_or_damaged_one_is_a_failure) {
  EXPECT_FALSE(ReadArrayPlan(m_Record, "x"));
  for (const char* text :
       {"", "[]", "{}",
        R"({"format":"rastrel-batch-array","version":2,"directory":"2f","pieces":[]})",
        R"({"format":"rastrel-batch-array","version":1,"directory":"2","pieces":[]})",
        R"({"format":"rastrel-batch-array","version":1,"directory":"2f","pieces":[[0]]})",
        R"({"format":"rastrel-batch-array","version":1,"directory":"2f","pieces":[[0,-1]]})"}) {
    Damage(text);
    EXPECT_FALSE(ReadArrayPlan(m_Record, "x")) << text;
  }
}

TEST_F(ArrayPlanTest, a_piece_beyond_the_last_file_is_a_failure) {
  for (const auto& [first, count, isGood] :
       {std::tuple{2, 1, true}, std::tuple{2, 2, false}, std::tuple{3, 1, false},
        std::tuple{0, 0, false}, std::tuple{0, 3, true}, std::tuple{0, 4, false}}) {
    const ArrayPlan plan{
        "x", "/", {{static_cast<std::size_t>(first), static_cast<std::size_t>(count)}}};
    ASSERT_TRUE(WriteArrayPlan(m_Record, plan));
    EXPECT_EQ(static_cast<bool>(ReadArrayPlan(m_Record, "x")), isGood) << first << ' ' << count;
  }
}

}  // namespace
}  // namespace rastrel::cli
