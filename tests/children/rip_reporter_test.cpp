#include <gtest/gtest.h>

#include <string>

#include "children/shared/exit_status.h"
#include "children/shared/reporter.h"

namespace rastrel::children {
namespace {

// The reporter's output on the error stream.
template <typename Action>
std::string Written(Action action) {
  ::testing::internal::CaptureStderr();
  Reporter reporter;
  action(reporter);
  return ::testing::internal::GetCapturedStderr();
}

TEST(Reporter, writes_the_line_protocol) {
  EXPECT_EQ(Written([](Reporter& reporter) {
              reporter.Info("READY");
              reporter.Warning("w");
              reporter.Error("e");
              reporter.Page(3);
            }),
            "INFO: READY\nWARNING: w\nERROR: e\nPAGE: 3\n");
}

TEST(Reporter, reports_a_percentage_only_when_it_grows) {
  EXPECT_EQ(Written([](Reporter& reporter) {
              for (const unsigned percent : {0U, 5U, 5U, 3U, 100U, 101U})
                reporter.Progress(percent);
            }),
            "PROGRESS: 5 %\nPROGRESS: 100 %\n");
}

TEST(Reporter, makes_no_report_of_a_jobs_text) {
  EXPECT_EQ(Written([](Reporter& reporter) {
              reporter.Text("ERROR: forged");
              reporter.Text(std::string("a\rERROR: b\nINFO: READY\0c", 24));
            }),
            "gs: ERROR: forged\ngs: a\\x0dERROR: b\\x0aINFO: READY\\x00c\n");
}

TEST(Reporter, passes_only_so_much_of_a_jobs_text_on) {
  const std::string written = Written([](Reporter& reporter) {
    for (std::size_t i = 0; i < Reporter::TextLimit; ++i) reporter.Text("0123456789");
  });
  EXPECT_LT(written.size(), 2 * Reporter::TextLimit);
  EXPECT_TRUE(written.ends_with("gs: (What the job writes beyond this is not shown.)\n"));
}

TEST(Reporter, writes_a_runs_own_reports) {
  EXPECT_EQ(Written([](Reporter& reporter) {
              interpreter::RunListener& listener = reporter;
              listener.StateReached(interpreter::RunState::Interpreting);
              listener.StateReached(interpreter::RunState::Converting);
              listener.Progressed(7);
              listener.PageMade(2);
              listener.Warned("A sentence.");
              listener.Noted("printer KVI");
              listener.Printed("ERROR: forged");
              listener.StateReached(interpreter::RunState::Spooling);
            }),
            "INFO: READY\nINFO: INTERPRETING\nINFO: CONVERTING\nPROGRESS: 7 %\nPAGE: 2\n"
            "WARNING: A sentence.\nprinter KVI\ngs: ERROR: forged\nINFO: SPOOLING\n");
}

TEST(Reporter, ends_a_failure_with_a_full_stop) {
  EXPECT_EQ(Written([](Reporter& reporter) {
              reporter.Error(FailureOf("The job makes no page"));
              reporter.Error(Failure{"open", "/a", ENOENT});
            }),
            "ERROR: The job makes no page.\nERROR: open '/a': No such file or directory (2).\n");
}

TEST(ExitStatus, is_the_one_of_the_failures_kind) {
  EXPECT_EQ(static_cast<int>(StatusOf(FailureCode::BadProgram)), 1);
  EXPECT_EQ(static_cast<int>(StatusOf(FailureCode::BadInput)), 2);
  EXPECT_EQ(static_cast<int>(StatusOf(FailureCode::Unspecified)), 3);
}

}  // namespace
}  // namespace rastrel::children
