#include "cli/batch/batch_record.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "rastrel/platform/os/owned_directory.h"
#include "rastrel/platform/os/owner.h"
#include "rastrel/platform/os/private_directory.h"

namespace rastrel::cli {
namespace {

class BatchRecordTest : public testing::Test {
 protected:
  BatchRecordTest() : m_Place(*os::PrivateDirectory::Make("rastrel-batch-")) {}

  [[nodiscard]] const std::string& Place() const { return m_Place.Path(); }
  /// As if the process that has the record had ended.
  void EndOwner() { ASSERT_TRUE(os::RemoveOwner(Place() + "/" + BatchRecordName)); }

  BatchPlan m_Plan{.words = {"convert", "--dpi=72"}, .files = {"a.ps", "b\xff\n.ps", "c.ps"}};
  os::PrivateDirectory m_Place;
};

TEST_F(BatchRecordTest, a_piece_reads_the_plan_with_names_of_any_bytes) {
  ASSERT_TRUE(BatchRecord::Begin(Place(), m_Plan, false));
  const auto opened = BatchRecord::Open(Place());
  ASSERT_TRUE(opened);
  EXPECT_EQ(opened->Plan(), m_Plan);
}

TEST_F(BatchRecordTest, a_piece_reads_whether_results_are_staged_and_replace_others) {
  m_Plan.staged = true;
  m_Plan.replaces = true;
  ASSERT_TRUE(BatchRecord::Begin(Place(), m_Plan, false));
  const auto opened = BatchRecord::Open(Place());
  ASSERT_TRUE(opened);
  EXPECT_TRUE(opened->Plan().staged);
  EXPECT_TRUE(opened->Plan().replaces);
}

TEST_F(BatchRecordTest, results_come_back_as_they_were_stored) {
  const auto record = BatchRecord::Begin(Place(), m_Plan, false);
  ASSERT_TRUE(record);
  ASSERT_TRUE(record->Store(1, {{3, {{{true, "b\xff: bad\n"}}}}, {0, {{{false, "c.png\n"}}}}}));
  const auto all = record->LoadAll();
  ASSERT_TRUE(all);
  ASSERT_EQ(all->size(), 2U);
  EXPECT_EQ(all->at(1).status, 3);
  ASSERT_EQ(all->at(1).text.pieces.size(), 1U);
  EXPECT_TRUE(all->at(1).text.pieces[0].isError);
  EXPECT_EQ(all->at(1).text.pieces[0].bytes, "b\xff: bad\n");
  EXPECT_EQ(all->at(2).status, 0);
  EXPECT_EQ(record->Load(0).size(), 0U);
}

TEST_F(BatchRecordTest, a_record_that_is_there_is_taken_up_only_when_asked) {
  ASSERT_TRUE(BatchRecord::Begin(Place(), m_Plan, false));
  EndOwner();
  const auto refused = BatchRecord::Begin(Place(), m_Plan, false);
  ASSERT_FALSE(refused);
  EXPECT_NE(Describe(refused.Error()).find("--resume"), std::string::npos);
  EXPECT_TRUE(BatchRecord::Begin(Place(), m_Plan, true));
}

TEST_F(BatchRecordTest, that_of_a_living_process_is_not_taken) {
  ASSERT_TRUE(BatchRecord::Begin(Place(), m_Plan, false));
  const auto refused = BatchRecord::Begin(Place(), m_Plan, true);
  ASSERT_FALSE(refused);
  EXPECT_NE(Describe(refused.Error()).find("under way"), std::string::npos);
}

TEST_F(BatchRecordTest, one_of_other_files_or_options_is_refused) {
  ASSERT_TRUE(BatchRecord::Begin(Place(), m_Plan, false));
  EndOwner();
  BatchPlan other = m_Plan;
  other.files.pop_back();
  EXPECT_FALSE(BatchRecord::Begin(Place(), other, true));
  other = m_Plan;
  other.words.back() = "--dpi=73";
  EXPECT_FALSE(BatchRecord::Begin(Place(), other, true));
}

TEST_F(BatchRecordTest, a_damaged_piece_counts_as_not_done) {
  const auto record = BatchRecord::Begin(Place(), m_Plan, false);
  ASSERT_TRUE(record);
  for (
      const char* text :
      {"", "{", "[]", R"({"format":"rastrel-batch-piece","version":2,"files":[]})",
       R"({"format":"rastrel-batch-piece","version":1,"files":[{"status":"0","text":[]}]})",
       R"({"format":"rastrel-batch-piece","version":1,"files":[{"status":0,"text":[[true]]}]})",
       R"({"format":"rastrel-batch-piece","version":1,"files":[{"status":0,"text":[[true,"4"]]}]})",
       R"({"format":"rastrel-batch-piece","version":1,"files":[{"status":0,"text":[[true,"zz"]]}]})"}) {
    std::ofstream(record->Directory() + "/piece-0.json") << text;
    EXPECT_TRUE(record->LoadAll().ValueOr({{9, {}}}).empty()) << text;
  }
}

TEST_F(BatchRecordTest, more_results_than_files_count_as_none) {
  const auto record = BatchRecord::Begin(Place(), m_Plan, false);
  ASSERT_TRUE(record);
  ASSERT_TRUE(record->Store(2, {{0, {}}}));
  EXPECT_EQ(record->Load(2).size(), 1U);
  ASSERT_TRUE(record->Store(2, {{0, {}}, {0, {}}}));
  EXPECT_EQ(record->Load(2).size(), 0U);
}

TEST_F(BatchRecordTest, nothing_of_it_remains_when_all_was_told) {
  const auto record = BatchRecord::Begin(Place(), m_Plan, false);
  ASSERT_TRUE(record);
  ASSERT_TRUE(record->Remove());
  EXPECT_TRUE(std::filesystem::is_empty(Place()));
}

}  // namespace
}  // namespace rastrel::cli
