// Several files at a time: their order, their number, and how failures and exceptions end it.
#include "cli/console/files_at_once.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <new>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "cli/console/options.h"
#include "cli/console/standard_streams.h"
#include "tests/support/wait_until.h"

namespace rastrel::cli {
namespace {

using test::WaitUntil;

// The texts of a whole run, each with the letter of its stream.
class FilesAtOnceTest : public testing::Test {
 protected:
  std::string Run(std::size_t count, unsigned atOnce, const FilesWork& work) {
    HeldOutput output;
    WorkOnFiles(count, atOnce, work);
    return TextOf(output.Take());
  }
  static std::string TextOf(const HeldText& held) {
    std::string text;
    for (const HeldText::Piece& piece : held.pieces)
      text += (piece.isError ? "e:" : "o:") + piece.bytes;
    return text;
  }
  static void Report(std::size_t index, const CommandError& error) {
    WriteErrorLine(std::to_string(index) + " " + error.what());
  }
};

TEST_F(FilesAtOnceTest, output_has_the_order_of_the_files_whichever_is_done_first) {
  std::atomic<bool> second = false;
  const auto work = [&](std::size_t index) {
    WriteOutLine("begin " + std::to_string(index));
    if (index == 0) {
      EXPECT_TRUE(WaitUntil([&] { return second.load(); })) << "they are not worked on together";
    }
    WriteErrorLine("end " + std::to_string(index));
    if (index == 1) second = true;
  };
  EXPECT_EQ(Run(3, 2, {.work = work, .failed = Report}),
            "o:begin 0\ne:end 0\no:begin 1\ne:end 1\no:begin 2\ne:end 2\n");
}

TEST_F(FilesAtOnceTest, a_failure_is_reported_after_the_lines_of_its_file_and_the_others_go_on) {
  const auto work = [](std::size_t index) {
    WriteOutLine("line " + std::to_string(index));
    if (index == 1) throw CommandError(ExitStatus::BadInput, "is bad");
  };
  const std::string expected = "o:line 0\nline 1\ne:1 is bad\no:line 2\n";
  for (const unsigned atOnce : {1U, 2U, 3U, 9U})
    EXPECT_EQ(Run(3, atOnce, {.work = work, .failed = Report}), expected) << atOnce;
}

TEST_F(FilesAtOnceTest, no_more_files_are_worked_on_at_a_time_than_allowed) {
  for (const unsigned atOnce : {1U, 2U, 5U}) {
    std::atomic<unsigned> now = 0;
    std::atomic<unsigned> highest = 0;
    const auto work = [&](std::size_t) {
      const unsigned present = ++now;
      for (unsigned seen = highest;
           seen < present && !highest.compare_exchange_weak(seen, present);)
        ;
      std::this_thread::yield();
      --now;
    };
    (void)Run(300, atOnce, {.work = work, .failed = Report});
    EXPECT_LE(highest.load(), atOnce);
  }
}

TEST_F(FilesAtOnceTest, work_runs_ahead_of_a_slow_file_by_a_limited_number) {
  constexpr std::size_t ahead = 32;  // 16 for each of two
  std::atomic<std::size_t> done = 0;
  std::atomic<bool> slowIsDone = false;
  std::atomic<std::size_t> furthest = 0;
  const auto work = [&](std::size_t index) {
    if (index == 0) {
      EXPECT_TRUE(WaitUntil([&] { return done == ahead - 1; }));
      slowIsDone = true;
      return;
    }
    if (!slowIsDone) furthest = std::max(furthest.load(), index);
    ++done;
  };
  (void)Run(100, 2, {.work = work, .failed = Report});
  EXPECT_EQ(done.load(), 99U);
  EXPECT_EQ(furthest.load(), ahead - 1);
}

TEST_F(FilesAtOnceTest, a_file_that_writes_much_waits_for_its_turn_and_loses_nothing) {
  const std::string line(9999, 'x');
  constexpr std::size_t lines = 3 * HeldOutput::Limit / 10'000;
  std::atomic<std::size_t> written = 0;
  const auto work = [&](std::size_t index) {
    if (index == 0) {
      EXPECT_TRUE(WaitUntil([&] { return written > HeldOutput::Limit / 10'000; }));
      EXPECT_LE(written.load(), HeldOutput::Limit / 10'000 + 1);
      WriteOutLine("first");
      return;
    }
    for (std::size_t number = 0; number < lines; ++number) {
      ++written;
      WriteOutLine(line);
    }
  };
  std::string expected = "first\n";
  for (std::size_t number = 0; number < lines; ++number) expected += line + "\n";
  testing::internal::CaptureStdout();
  WorkOnFiles(2, 2, {.work = work, .failed = Report});
  EXPECT_TRUE(testing::internal::GetCapturedStdout() == expected);
}

TEST_F(FilesAtOnceTest, a_file_that_waits_for_its_turn_goes_when_all_work_is_ended) {
  const auto work = [](std::size_t index) {
    if (index == 0) throw CommandError(ExitStatus::Cancelled, "cancelled");
    for (int number = 0; number < 300; ++number) WriteOutLine(std::string(9999, 'x'));
  };
  const auto failed = [](std::size_t, const CommandError& error) { throw CommandError(error); };
  testing::internal::CaptureStdout();
  EXPECT_THROW(WorkOnFiles(2, 2, {.work = work, .failed = failed}), CommandError);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(FilesAtOnceTest, a_failure_may_end_all_work) {
  std::atomic<std::size_t> begun = 0;
  const auto work = [&](std::size_t index) {
    ++begun;
    if (index == 2) throw CommandError(ExitStatus::Cancelled, "cancelled");
  };
  const auto failed = [](std::size_t, const CommandError& error) { throw CommandError(error); };
  for (const unsigned atOnce : {1U, 2U}) {
    begun = 0;
    EXPECT_THROW((void)Run(1000, atOnce, {.work = work, .failed = failed}), CommandError);
    EXPECT_LT(begun.load(), 100U) << "work that was not begun is not begun any more";
  }
}

TEST_F(FilesAtOnceTest, another_exception_comes_out_of_the_call) {
  const auto work = [](std::size_t index) {
    if (index == 1) throw std::bad_alloc();
  };
  for (const unsigned atOnce : {1U, 2U})
    EXPECT_THROW((void)Run(4, atOnce, {.work = work, .failed = Report}), std::bad_alloc);
}

TEST_F(FilesAtOnceTest, no_file_is_no_work) {
  EXPECT_EQ(Run(0, 2, {.work = [](std::size_t) { FAIL(); }, .failed = Report}), "");
}

TEST_F(FilesAtOnceTest, the_number_is_from_1_to_256_or_that_of_the_processors) {
  Invocation invocation;
  const auto none = FilesAtOnce(invocation);
  ASSERT_TRUE(none);
  EXPECT_GE(*none, 1U);
  for (const auto& [text, number] : std::vector<std::pair<std::string, unsigned>>{
           {"1", 1}, {"2", 2}, {"255", 255}, {"256", 256}}) {
    invocation.options[OptionId::Jobs] = text;
    const auto value = FilesAtOnce(invocation);
    ASSERT_TRUE(value) << text;
    EXPECT_EQ(*value, number);
  }
  for (const char* text : {"0", "257", "-1", "2.5", "", "two", "99999999999999999999"}) {
    invocation.options[OptionId::Jobs] = text;
    const auto value = FilesAtOnce(invocation);
    ASSERT_FALSE(value) << text;
    EXPECT_EQ(Describe(value.Error()),
              "--jobs " + std::string(text) + ": not a number from 1 to 256");
  }
}

}  // namespace
}  // namespace rastrel::cli
