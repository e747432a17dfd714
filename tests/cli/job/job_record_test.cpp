#include "cli/job/job_record.h"

#include <gtest/gtest.h>

namespace rastrel::cli {
namespace {

void TakeLine(JobRecord& record, const std::wstring& line) {
  if (const auto event = EventOfLogLine(line)) record.OnEvent(*event);
}

void TakeState(JobRecord& record, JT_INFO code) {
  JobEvent event;
  event.kind = JobEventKind::State;
  event.code = code;
  record.OnEvent(event);
}

void TakeError(JobRecord& record, const std::string& text) {
  JobEvent event;
  event.kind = JobEventKind::Error;
  event.originator = JTO_RIP;
  event.text = text;
  record.OnEvent(event);
}

TEST(JobRecord, remembers_files_pages_and_exit_statuses) {
  JobRecord record;
  TakeLine(record, L"[Rip]PAGE: 1");
  TakeLine(record, L"[Rip]PAGE: 2");
  TakeLine(record, L"[Odalis]PAGE: 9");
  TakeLine(record, L"Rip exited with status 3");
  TakeLine(record, L"Odalis exited with status 137");
  TakeLine(record, L"[Odalis]OUTPUT: /a.tif");
  EXPECT_EQ(record.PagesMade(), 2);
  EXPECT_EQ(record.Rip().exitStatus, 3);
  EXPECT_EQ(record.Odalis().exitStatus, 137);
  EXPECT_EQ(record.Outputs(), std::vector<std::string>({"/a.tif"}));
}

TEST(JobRecord, a_page_may_have_come_out_once_the_engine_says_so) {
  for (const wchar_t* line :
       {L"[Odalis]PAGE: 1", L"[Odalis]OUTPUT: /a.tif", L"[Odalis]UNSURE: 1"}) {
    JobRecord record;
    TakeLine(record, L"[Rip]PAGE: 1");
    TakeLine(record, L"[Rip]UNSURE: 1");
    TakeLine(record, L"[Odalis]page 1");
    EXPECT_FALSE(record.MayHaveDelivered());
    TakeLine(record, line);
    EXPECT_TRUE(record.MayHaveDelivered());
  }
}

TEST(JobRecord, a_child_can_not_speak_for_the_library_about_its_own_end) {
  JobRecord record;
  TakeLine(record, L"[Rip]Rip exited with status 0");
  EXPECT_FALSE(record.Rip().exitStatus);
}

TEST(JobRecord, keeps_the_errors_of_the_engine_apart_from_the_rips) {
  JobRecord record;
  JobEvent event;
  event.kind = JobEventKind::Error;
  event.originator = JTO_ODALIS;
  event.text = "no paper";
  record.OnEvent(event);
  EXPECT_EQ(record.Odalis().LastMessages(), std::vector<std::string>({"no paper"}));
  EXPECT_TRUE(record.Rip().LastMessages().empty());
}

TEST(JobRecord, keeps_the_last_messages_with_errors_first) {
  JobRecord record;
  for (int line = 1; line <= 100; ++line) TakeLine(record, L"[Rip]line " + std::to_wstring(line));
  EXPECT_EQ(record.Rip().LastMessages().size(), ChildRecord::MessageLimit);
  EXPECT_EQ(record.Rip().LastMessages().back(), "line 100");
  TakeError(record, "broken");
  EXPECT_EQ(record.Rip().LastMessages(),
            std::vector<std::string>({"broken", "line 97", "line 98", "line 99", "line 100"}));
  EXPECT_TRUE(record.Odalis().LastMessages().empty());
}

TEST(JobRecord, keeps_little_of_a_child_that_floods) {
  JobRecord record;
  for (int line = 0; line < 1000; ++line)
    TakeLine(record, L"[Rip]" + std::wstring(100000, L'\xE4'));
  std::size_t bytes = 0;
  for (const std::string& message : record.Rip().LastMessages()) bytes += message.size();
  EXPECT_LT(bytes, 10000U);
}

TEST(JobRecord, takes_the_stage_from_the_error_and_else_from_the_last_state) {
  JobRecord record;
  EXPECT_EQ(record.StageOf(JTE_LOW_RESOURCES), JobStage::Start);
  TakeState(record, JTI_START_RIPPING);
  EXPECT_EQ(record.StageOf(JTE_LOW_RESOURCES), JobStage::Rip);
  TakeState(record, JTI_RIPPING_COMPLETE);
  TakeState(record, JTI_START_PRINTING);
  EXPECT_EQ(record.StageOf(JTE_LOW_RESOURCES), JobStage::OutputEngine);
  EXPECT_EQ(record.StageOf(JTE_PREFIX), JobStage::Prefix);
  EXPECT_EQ(record.StageOf(JTE_PS_MISSING), JobStage::JobFile);
  EXPECT_EQ(record.StageOf(JTE_SPOOL_INVALID), JobStage::PageList);
  EXPECT_EQ(record.StageOf(JTE_SPOOL_GENERATE), JobStage::PageSelection);
  EXPECT_EQ(record.StageOf(JTE_SPOOL_OUTPUT), JobStage::Spool);
  EXPECT_EQ(record.StageOf(JTE_RIP_STATUS_2), JobStage::Rip);
  EXPECT_EQ(record.StageOf(JTE_ODALIS_EXIT), JobStage::OutputEngine);
}

}  // namespace
}  // namespace rastrel::cli
