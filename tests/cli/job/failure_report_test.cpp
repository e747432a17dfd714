#include "cli/job/failure_report.h"

#include <gtest/gtest.h>

#include "cli/job/job_record.h"

namespace rastrel::cli {
namespace {

FailureReport ReportOf(JT_ERROR error) { return ReportFailure(JobRecord(), error, 0, 0); }

TEST(FailureReport, a_child_that_is_missing_or_can_not_be_started_sends_the_user_to_doctor) {
  for (const JT_ERROR error :
       {JTE_START_RIP, JTE_START_ODALIS, JTE_RIP_MISSING, JTE_ODALIS_MISSING})
    EXPECT_NE(ReportOf(error).hint.find("rastrel doctor"), std::string::npos) << error;
  for (const JT_ERROR error : {JTE_ABNORMAL, JTE_SPOOL_GENERATE})
    EXPECT_EQ(ReportOf(error).hint, "") << error;
}

TEST(FailureReport, only_a_child_that_is_missing_is_not_installed) {
  EXPECT_EQ(ReportOf(JTE_RIP_MISSING).exit, ExitStatus::NotInstalled);
  EXPECT_EQ(ReportOf(JTE_START_RIP).exit, ExitStatus::JobFailed);
}

TEST(FailureReport, a_page_that_the_job_does_not_have_is_named) {
  EXPECT_EQ(ReportFailure(JobRecord(), JTE_SPOOL_GENERATE, 4, 3).text,
            "page 4 was asked for, and the job has 3");
}

}  // namespace
}  // namespace rastrel::cli
