#include "interpreter/page_plan.h"

#include <gtest/gtest.h>

#include <vector>

namespace rastrel::interpreter {
namespace {

using Ranges = std::vector<PageRange>;

Settings With(std::uint64_t processes, std::uint64_t memory = 8192) {
  Settings settings;
  settings.processes = processes;
  settings.memoryMebibytes = memory;
  return settings;
}

// Pages whose work is one start each.
JobWork Starts(unsigned pages) { return {pages, StartWork - PageWork, 0}; }

// Each interpreter is to have two starts' worth of work, so two of them need four.
TEST(PlanRanges, leaves_all_pages_to_one_interpreter_below_four_starts_of_work) {
  EXPECT_EQ(PlanRanges(Starts(3), With(2)), Ranges());
  EXPECT_EQ(PlanRanges(Starts(4), With(2)).size(), 1U);
  EXPECT_EQ(PlanRanges(Starts(5), With(2)).size(), 1U);
}

TEST(PlanRanges, has_a_third_interpreter_from_six_starts_of_work_on) {
  EXPECT_EQ(PlanRanges(Starts(5), With(3)).size(), 1U);
  EXPECT_EQ(PlanRanges(Starts(6), With(3)).size(), 2U);
  EXPECT_EQ(PlanRanges(Starts(7), With(3)).size(), 2U);
}

TEST(PlanRanges, has_no_more_interpreters_than_are_allowed) {
  EXPECT_EQ(PlanRanges(Starts(100), With(1)), Ranges());
  EXPECT_EQ(PlanRanges(Starts(100), With(2)).size(), 1U);
  EXPECT_EQ(PlanRanges(Starts(100), With(3)).size(), 2U);
}

// Its page can't be divided, whatever it costs.
TEST(PlanRanges, leaves_one_page_whole_and_divides_two) {
  EXPECT_EQ(PlanRanges({0, 1e12, 0}, With(4)), Ranges());
  EXPECT_EQ(PlanRanges({1, 1e12, 0}, With(4)), Ranges());
  EXPECT_EQ(PlanRanges({2, 1e12, 0}, With(4)), (Ranges{{2, 2}}));
  EXPECT_EQ(PlanRanges({3, 1e12, 0}, With(4)), (Ranges{{2, 2}, {3, 3}}));
}

// 256 MiB are the least that an interpreter has of the job's memory.
TEST(PlanRanges, gives_no_interpreter_too_little_memory) {
  EXPECT_EQ(PlanRanges(Starts(100), With(4, 511)), Ranges());
  EXPECT_EQ(PlanRanges(Starts(100), With(4, 512)).size(), 1U);
  EXPECT_EQ(PlanRanges(Starts(100), With(4, 767)).size(), 1U);
  EXPECT_EQ(PlanRanges(Starts(100), With(4, 768)).size(), 2U);
}

// With two interpreters for 20 pages of one start each: the first is a start ahead, so both end at
// the same time if it makes (20 + 1) / 2 pages, which is rounded up.
TEST(PlanRanges, gives_the_first_interpreter_what_it_can_do_while_the_others_start) {
  EXPECT_EQ(PlanRanges(Starts(20), With(2)), (Ranges{{12, 20}}));
  // (21 + 2) / 3 is 7.67; 13 pages are left for two.
  EXPECT_EQ(PlanRanges(Starts(21), With(3)), (Ranges{{9, 15}, {16, 21}}));
}

TEST(PlanRanges, counts_large_files_of_few_pixels_as_work) {
  const std::uint64_t bytes = static_cast<std::uint64_t>(4 * StartWork / ByteWork);
  EXPECT_EQ(PlanRanges({4, 0, bytes}, With(2)).size(), 1U);
  EXPECT_EQ(
      PlanRanges({4, 0, bytes - static_cast<std::uint64_t>(4 * PageWork / ByteWork) - 1}, With(2)),
      Ranges());
}

TEST(PlanRanges, leaves_no_gap_and_no_empty_range) {
  for (unsigned pages = 2; pages < 60; ++pages) {
    for (std::uint64_t processes = 2; processes < 17; ++processes) {
      unsigned last = 0;
      for (const PageRange& range : PlanRanges({pages, 1e9, 0}, With(processes))) {
        EXPECT_EQ(range.first, last == 0 ? range.first : last + 1);
        EXPECT_GE(range.first, 2U);
        EXPECT_LE(range.first, range.last);
        last = range.last;
      }
      EXPECT_EQ(last, pages);
    }
  }
}

}  // namespace
}  // namespace rastrel::interpreter
