#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "rastrel/job/app_log.h"
#include "rastrel/job/ex_job_ticket.h"
#include "rastrel/job/job_ticket.h"
#include "rastrel/platform/os/text.h"
#include "tests/job/vocabulary.h"
#include "tests/support/job_log.h"
#include "tests/support/library_fixture.h"

namespace {

using rastrel::os::Utf8FromWide;
using rastrel::test::JobLog;
using rastrel::test::LibraryTest;

class JobTicketMessaging : public LibraryTest {
 protected:
  void SetUp() override {
    JobLog::Taken();
    m_Mark = m_Library.LogMark();
  }
  // Texts in the application log since the last call.
  std::string Logged() {
    std::string texts = m_Library.LogTextsBehind(m_Mark);
    m_Mark = m_Library.LogMark();
    return texts;
  }

 private:
  std::size_t m_Mark = 0;
};

// Everything that an Info can change.
struct Effect {
  int error = 5;
  int status = 4;
  int progress = 42;
  std::wstring progressText = L"before";
  std::string applicationLog;
  std::wstring jobLog;
};

// The table of effects, row by row.
Effect EffectOf(int code, int originator) {
  const std::wstring text = rastrel::test::ExpectedInfoText(code, originator);
  Effect effect;
  const bool row0to6 = code >= 0 && code <= 6;
  const bool row257 = code == 257;
  const bool row255or256or258to263 = code == 255 || code == 256 || (code >= 258 && code <= 263);
  if (row0to6) {
    effect.progressText = text;
  } else if (code == 7) {
    effect.error = 0;
    effect.progressText = text;
    effect.applicationLog = "[Sign] START: Printing\r\n";
  } else if (code == 8) {
    effect.applicationLog = "[Sign] STOP: Printing\r\n";
  } else if (code == 9) {
    effect.status = 3;
    effect.error = 12;
  } else if (row257) {
    effect.progress = 0;
    effect.progressText = text;
  } else if (row255or256or258to263) {
    effect.progressText = text;
  } else {
    effect.applicationLog = "Unknown info " + std::to_string(code) + " in CJobTicket::Info\r\n";
  }
  if (code < 255) effect.jobLog = text + L"\r\n";
  return effect;
}

void Prepare(CJobTicket& ticket) {
  ticket.m_JobName = L"Sign";
  ticket.m_Error = JTE_START_ODALIS;
  ticket.m_Status = JS_ACTIVE;
  const CString before = L"before";
  ticket.SetProgress(JTO_SYSTEM, 42, &before);
  ticket.OpenLog(JobLog::Take);
}

TEST_F(JobTicketMessaging, every_info_has_the_effects_of_its_row) {
  for (const int originator : {0, 1, 2, 5}) {
    for (int code = -1; code <= 300; ++code) {
      CJobTicket ticket;
      Prepare(ticket);
      ticket.Info(static_cast<JT_INFO>(code), static_cast<JT_ORIGINATOR>(originator));
      const Effect expected = EffectOf(code, originator);
      CString text;
      EXPECT_EQ(expected.progress, ticket.GetProgress(JTO_RIP, &text)) << code;
      EXPECT_EQ(expected.progressText, text) << code;
      EXPECT_EQ(expected.error, ticket.m_Error) << code;
      EXPECT_EQ(expected.status, ticket.m_Status) << code;
      EXPECT_EQ(expected.applicationLog, Logged()) << code;
      EXPECT_EQ(expected.jobLog, JobLog::Taken()) << code;
    }
  }
}

TEST_F(JobTicketMessaging, every_error_number_has_its_effects) {
  for (int code = -1; code <= 300; ++code) {
    CJobTicket ticket;
    Prepare(ticket);
    ticket.Error(static_cast<JT_ERROR>(code), JTO_RIP);
    const std::wstring text = rastrel::test::ExpectedErrorText(code);
    EXPECT_EQ(code, ticket.m_Error);
    EXPECT_EQ(code == 0 ? 4 : 3, ticket.m_Status) << code;
    EXPECT_EQ(Utf8FromWide(text), Logged()) << code;
    EXPECT_EQ(code < 255 ? text + L"\r\n" : L"", JobLog::Taken()) << code;
    CString progress;
    EXPECT_EQ(ticket.GetProgress(JTO_RIP, &progress), 42);
    EXPECT_EQ(progress, L"before");
  }
}

TEST_F(JobTicketMessaging, error_0_clears_the_error_logs_an_empty_text_and_leaves_the_status) {
  CJobTicket ticket;
  Prepare(ticket);
  const std::size_t before = m_Library.Log().size();
  ticket.Error(JTE_NONE, JTO_SYSTEM);
  EXPECT_EQ(ticket.m_Error, JTE_NONE);
  EXPECT_EQ(ticket.m_Status, JS_ACTIVE);
  const std::string entry = m_Library.Log().substr(before);
  EXPECT_FALSE(entry.empty());
  EXPECT_EQ(entry.size(), rastrel::test::LibraryRoot::HeadLength(entry));
}

TEST_F(JobTicketMessaging, error_256_holds_the_job_and_stays_out_of_the_job_log) {
  CJobTicket ticket;
  ticket.OpenLog(JobLog::Take);
  ticket.Error(JTE_RUN_INSTALL, JTO_RIP);
  EXPECT_EQ(ticket.m_Status, JS_HOLDING);
  EXPECT_EQ(Logged(), "(*v*)Run Sysinstall3.ps");
  EXPECT_EQ(JobLog::Taken(), L"");
}

TEST_F(JobTicketMessaging, an_abort_keeps_the_progress_text_and_sets_error_12) {
  CJobTicket ticket;
  Prepare(ticket);
  ticket.Info(JTI_PRINTING_ABORTED, JTO_SYSTEM);
  CString text;
  EXPECT_EQ(ticket.GetProgress(JTO_SYSTEM, &text), 42);
  EXPECT_EQ(text, L"before");
  EXPECT_EQ(ticket.m_Error, 12);
  EXPECT_EQ(Logged(), "");
}

TEST_F(JobTicketMessaging, text_errors_and_warnings_leave_no_mark) {
  CJobTicket ticket;
  Prepare(ticket);
  for (int originator = 0; originator <= 2; ++originator) {
    ticket.Error(L"words", static_cast<JT_ORIGINATOR>(originator));
    ticket.Warning(L"words", static_cast<JT_ORIGINATOR>(originator));
  }
  EXPECT_EQ(ticket.m_Error, 5);
  EXPECT_EQ(ticket.m_Status, 4);
  CString text;
  EXPECT_EQ(ticket.GetProgress(JTO_RIP, &text), 42);
  EXPECT_EQ(text, L"before");
  EXPECT_EQ(Logged(), "");
  EXPECT_EQ(JobLog::Taken(), L"");
}

TEST_F(JobTicketMessaging, progress_0_is_ignored_and_any_other_is_taken) {
  CJobTicket ticket;
  ticket.Progress(17, JTO_RIP);
  EXPECT_EQ(ticket.GetProgress(JTO_RIP, nullptr), 17);
  ticket.Progress(0, JTO_RIP);
  EXPECT_EQ(ticket.GetProgress(JTO_RIP, nullptr), 17);
  ticket.Progress(65535, JTO_RIP);
  EXPECT_EQ(ticket.GetProgress(JTO_RIP, nullptr), 65535);
  ticket.Progress(1, JTO_ODALIS);
  EXPECT_EQ(ticket.GetProgress(JTO_RIP, nullptr), 1);
}

TEST_F(JobTicketMessaging, get_progress_without_a_text_gives_the_number_alone) {
  CJobTicket ticket;
  ticket.SetProgress(JTO_RIP, 55, nullptr);
  EXPECT_EQ(ticket.GetProgress(JTO_SYSTEM, nullptr), 55);
}

TEST_F(JobTicketMessaging, set_progress_without_a_text_keeps_the_text) {
  CJobTicket ticket;
  ticket.SetProgressText(JTO_RIP, L"100% %s");
  ticket.SetProgress(JTO_ODALIS, -7, nullptr);
  CString text;
  EXPECT_EQ(ticket.GetProgress(JTO_SYSTEM, &text), -7);
  EXPECT_EQ(text, L"100% %s");
}

TEST_F(JobTicketMessaging, log_cuts_at_1021_characters_and_keeps_its_line_end) {
  struct Row {
    std::size_t length, kept;
  };
  const Row rows[] = {{0, 0},       {1, 1},       {1020, 1020}, {1021, 1021},
                      {1022, 1021}, {1023, 1021}, {5000, 1021}, {200'000, 1021}};
  CJobTicket ticket;
  ticket.OpenLog(JobLog::Take);
  for (const Row& row : rows) {
    const std::wstring text(row.length, L'x');
    ticket.Log(L"%s", text.c_str());
    EXPECT_EQ(std::wstring(row.kept, L'x') + L"\r\n", JobLog::Taken()) << row.length;
    ticket.Log(text.c_str());
    EXPECT_EQ(std::wstring(row.kept, L'x') + L"\r\n", JobLog::Taken()) << row.length;
  }
}

TEST_F(JobTicketMessaging, log_formats_its_arguments) {
  CJobTicket ticket;
  ticket.OpenLog(JobLog::Take);
  ticket.Log(L"%s|%S|%i|%u|%lu|%08X|%.3f|%c|100%%", L"wide", "narrow", -5, 7U, 8UL, 0xBEEFU, 1.5,
             'c');
  EXPECT_EQ(JobLog::Taken(), L"wide|narrow|-5|7|8|0000BEEF|1.500|c|100%\r\n");
}

// Those of the framework's FormatV, and not those of formatstringT: -42 is "00-42" there.
TEST_F(JobTicketMessaging, log_follows_the_rules_of_printf) {
  CJobTicket ticket;
  ticket.OpenLog(JobLog::Take);
  ticket.Log(L"%05d|%+d|%.3d|%#x|%*d", -42, 5, 5, 255U, 4, 7);
  EXPECT_EQ(JobLog::Taken(), L"-0042|+5|005|0xff|   7\r\n");
}

TEST_F(JobTicketMessaging, without_a_log_the_line_goes_to_standard_error) {
  CJobTicket ticket;
  testing::internal::CaptureStderr();
  ticket.Log(L"Gr\u00fc\u00dfe %i", 5);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Gr\xC3\xBC\xC3\x9F"
            "e 5\r\n");
}

TEST_F(JobTicketMessaging, open_log_opens_nothing_and_null_goes_back_to_standard_error) {
  CJobTicket ticket;
  ticket.OpenLog(JobLog::Take);
  EXPECT_EQ(JobLog::Taken(), L"");
  ticket.OpenLog(nullptr);
  testing::internal::CaptureStderr();
  ticket.Log(L"x");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "x\r\n");
}

TEST_F(JobTicketMessaging, the_job_name_of_a_log_line_is_no_format) {
  CJobTicket ticket;
  ticket.OpenLog(JobLog::Take);
  ticket.m_JobName = L"100%s";
  ticket.Info(JTI_PROCESSING_STARTED, JTO_SYSTEM);
  EXPECT_EQ(Logged(), "[100%s] START: Printing\r\n");
}

TEST_F(JobTicketMessaging, the_host_polls_while_the_pipeline_reports) {
  CJobTicket ticket;
  ticket.OpenLog(JobLog::Take);
  std::atomic<bool> done = false;
  std::thread reporter([&] {
    for (unsigned short percent = 1; percent <= 100; ++percent) {
      ticket.Progress(percent, JTO_RIP);
      ticket.Info(JTI_INTERPRETING, JTO_RIP);
      ticket.Error(JTE_RIP_EXIT, JTO_RIP);
      ticket.Info(JTI_PROCESSING_STARTED, JTO_SYSTEM);
    }
    done = true;
  });
  while (!done) {
    CString text;
    const int progress = ticket.GetProgress(JTO_RIP, &text);
    EXPECT_TRUE(progress >= 0 && progress <= 100);
    EXPECT_TRUE(text.empty() || text == L"(*v*)Rip Interpreting" ||
                text == L"(*v*)Processing Started")
        << Utf8FromWide(text);
    ticket.GetErrorText(text);
    ticket.GetStatusText(text);
  }
  reporter.join();
  EXPECT_EQ(ticket.GetProgress(JTO_RIP, nullptr), 100);
}

TEST_F(JobTicketMessaging, the_ticket_of_a_run_without_a_host_reports_as_any_other) {
  {
    CExJobTicket ticket;
    Prepare(ticket);
    ticket.Info(JTI_PRINTING_ABORTED, JTO_SYSTEM);
    EXPECT_EQ(ticket.m_Error, 12);
    ticket.Error(JTE_PREFIX, JTO_SYSTEM);
    EXPECT_EQ(ticket.m_Error, 15);
    ticket.Error(L"words", JTO_SYSTEM);
    EXPECT_EQ(ticket.m_Error, 15);
    EXPECT_EQ(JobLog::Taken(),
              L"(*v*)Printing Aborted\r\n(*v*)Can't generate PostScript prefix\r\n");
  }
  // Its end took the log down: the next use begins the file anew.
  CAppLog::Instance();
  EXPECT_EQ(m_Library.LogTexts(), "0 old log(s) cleaned up\r\n");
}

TEST_F(JobTicketMessaging, the_ticket_of_a_run_without_a_host_takes_the_paths_down_too) {
  const std::wstring before = CExePaths::Instance().m_RipDir;
  { const CExJobTicket ticket; }
  const rastrel::test::ScratchDirectory other;
  const rastrel::test::EnvironmentGuard home("RASTREL_HOME", other.Path());
  EXPECT_NE(before, CExePaths::Instance().m_RipDir);
  m_Library.Forget();
}

}  // namespace
