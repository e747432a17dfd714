#include <gtest/gtest.h>

#include <string>

#include "rastrel/job/job_ticket.h"
#include "rastrel/job/vk_job_ticket.h"
#include "tests/support/library_fixture.h"
#include "tests/support/private_member.h"

#define RASTREL_TEST_FIELD(tag, owner, member, ...) \
  namespace rastrel::test {                         \
  struct tag {                                      \
    using Type = __VA_ARGS__ owner::*;              \
    friend Type PrivateMember(tag);                 \
  };                                                \
  }                                                 \
  template struct rastrel::test::Reveal<fields::tag, &owner::member>

namespace fields = rastrel::test;  // where the tags must be

using LogFunction = void (*)(const wchar_t*);
RASTREL_TEST_FIELD(Progress, CJobTicket, m_Progress, rastrel::os::SharedWord<std::int32_t>);
RASTREL_TEST_FIELD(ProgressText, CJobTicket, m_ProgressText, rastrel::job::SharedText);
RASTREL_TEST_FIELD(Log, CJobTicket, m_pfnLog, LogFunction);
RASTREL_TEST_FIELD(InstallJob, CJobTicket, m_bRIPInstallJob, bool);
RASTREL_TEST_FIELD(AnimFrame, CJobTicket, m_ActiveAnimFrame, std::int32_t);
RASTREL_TEST_FIELD(Thread, CJobTicket, m_pPrintThread, PrintingThread::CPrintingThread*);
RASTREL_TEST_FIELD(Planar, CJobTicket, m_bPlanar, bool);
RASTREL_TEST_FIELD(Dpi, CVKJobTicket, m_DPI, std::int32_t);
RASTREL_TEST_FIELD(Window, CVKJobTicket, m_pWnd, CWnd*);
RASTREL_TEST_FIELD(Scale, CVKJobTicket, m_bScale, bool);
RASTREL_TEST_FIELD(CutOnly, CVKJobTicket, m_bCutOnly, bool);

namespace {

using rastrel::test::ExpectInOrder;
using rastrel::test::LibraryTest;
using rastrel::test::PlaceOf;

class JobTicketRecord : public LibraryTest {};

void IgnoreLog(const wchar_t*) {}

TEST_F(JobTicketRecord, the_fields_of_the_record_stand_in_order) {
  const CJobTicket ticket;
  ExpectInOrder({PlaceOf(ticket.m_JobName), PlaceOf(ticket.m_JobNote), PlaceOf(ticket.m_Error),
                 PlaceOf(ticket.m_Status), PlaceOf(ticket.m_Copies), PlaceOf(ticket.m_JobData),
                 PlaceOf(ticket.m_Pages), PlaceOf(ticket.m_JobFile), PlaceOf(ticket.m_SecondFile),
                 PlaceOf(ticket.m_CFMFile), PlaceOf(ticket.m_Created)});
}

TEST_F(JobTicketRecord, the_fields_of_the_tickets_stand_in_order) {
  const CVKJobTicket ticket;
  ExpectInOrder({PlaceOf(ticket.m_Created), PlaceOf(ticket.*PrivateMember(fields::Progress())),
                 PlaceOf(ticket.*PrivateMember(fields::ProgressText())),
                 PlaceOf(ticket.*PrivateMember(fields::Log())),
                 PlaceOf(ticket.*PrivateMember(fields::InstallJob())),
                 PlaceOf(ticket.*PrivateMember(fields::AnimFrame())),
                 PlaceOf(ticket.*PrivateMember(fields::Thread())),
                 PlaceOf(ticket.*PrivateMember(fields::Planar())),
                 PlaceOf(ticket.*PrivateMember(fields::Dpi())),
                 PlaceOf(ticket.*PrivateMember(fields::Window())),
                 PlaceOf(ticket.*PrivateMember(fields::Scale())),
                 PlaceOf(ticket.*PrivateMember(fields::CutOnly()))});
}

TEST_F(JobTicketRecord, the_reporting_interface_stands_behind_the_record) {
  CJobTicket ticket;
  CJobBase* const record = &ticket;
  CJobMessaging* const messaging = &ticket;
  EXPECT_EQ(static_cast<void*>(&ticket), static_cast<void*>(record));
  EXPECT_LT(static_cast<void*>(record), static_cast<void*>(messaging));
}

TEST_F(JobTicketRecord, words_that_the_host_polls_are_32_bits) {
  const CJobTicket ticket;
  EXPECT_EQ(sizeof(ticket.m_Error), 4U);
  EXPECT_EQ(sizeof(ticket.m_Status), 4U);
  EXPECT_EQ(sizeof(ticket.m_Copies), 4U);
  EXPECT_EQ(sizeof(ticket.*PrivateMember(fields::Progress())), 4U);
}

void ExpectDefaults(const CJobTicket& ticket) {
  EXPECT_EQ(ticket.m_JobName, L"");
  EXPECT_EQ(ticket.m_JobNote, L"");
  EXPECT_EQ(ticket.m_Error, JTE_NONE);
  EXPECT_EQ(ticket.m_Status, JS_IDLE);
  EXPECT_EQ(ticket.m_Copies, 1);
  EXPECT_TRUE(ticket.m_Pages.empty());
  EXPECT_EQ(ticket.m_JobFile.Directory + ticket.m_JobFile.FileName, L"");
  EXPECT_EQ(ticket.m_SecondFile.Directory + ticket.m_SecondFile.FileName, L"");
  EXPECT_EQ(COleDateTime::valid, ticket.m_Created.GetStatus());
  EXPECT_EQ(ticket.*PrivateMember(fields::Progress()), 0);
  CString text = L"before";
  EXPECT_EQ(ticket.GetProgress(JTO_RIP, &text), 0);
  EXPECT_EQ(text, L"");
  EXPECT_EQ(ticket.*PrivateMember(fields::Log()), nullptr);
  EXPECT_FALSE(ticket.IsRIPInstallJob());
  EXPECT_EQ(ticket.GetActiveAnimFrame(), -1);
  EXPECT_EQ(ticket.GetPrintThread(), nullptr);
  EXPECT_FALSE(ticket.GetPlanar());
}

TEST_F(JobTicketRecord, a_fresh_ticket_has_the_defaults) {
  const CJobTicket ticket;
  ExpectDefaults(ticket);
  EXPECT_FALSE(ticket.GetCFMFileExists());
  const CVKJobTicket direct;
  ExpectDefaults(direct);
  EXPECT_EQ(direct.GetDPI(), 72);
  EXPECT_EQ(direct.*PrivateMember(fields::Window()), nullptr);
  EXPECT_TRUE(direct.GetScale());
  EXPECT_FALSE(direct.IsCutOnly());
}

TEST_F(JobTicketRecord, a_fresh_ticket_was_created_now) {
  const COleDateTime before = COleDateTime::GetCurrentTime();
  const CJobTicket ticket;
  const COleDateTime after = COleDateTime::GetCurrentTime();
  EXPECT_LE(before.m_dt, ticket.m_Created.m_dt);
  EXPECT_LE(ticket.m_Created.m_dt, after.m_dt);
}

void FillEverything(CJobTicket& ticket) {
  ticket.m_JobName = L"Name";
  ticket.m_JobNote = L"Note";
  ticket.m_Error = JTE_PREFIX;
  ticket.m_Status = JS_COMPLETE;
  ticket.m_Copies = 7;
  ticket.m_JobData.PrinterName = L"Printer";
  ticket.m_JobData.Levels[2].Gamma = 2.5;
  ticket.m_JobData.LevelsEnabled = true;
  ticket.m_JobData.HostValue = 99;
  ticket.m_Pages = {3, 1};
  ticket.m_JobFile.Directory = L"C:\\a\\";
  ticket.m_JobFile.FileName = L"b.ps";
  ticket.m_JobFile.GetFullPath();
  ticket.m_SecondFile.Directory = L"C:\\c\\";
  ticket.m_SecondFile.FileName = L"d.ps";
  ticket.m_CFMFile.AddEntry(L"C:\\e\\", L"p1");
  ticket.m_CFMFile.TotalSize = 12;
  ticket.m_CFMFile.BaseDirectory = L"C:\\base";
  ticket.m_Created = COleDateTime(2001, 2, 3, 4, 5, 6);
  const CString sentence = L"sentence";
  ticket.SetProgress(JTO_RIP, 42, &sentence);
  ticket.OpenLog(IgnoreLog);
  ticket.SetRIPInstallJob();
  ticket.SetActiveAnimFrame(5);
  ticket.SetPlanar(true);
}

TEST_F(JobTicketRecord, set_defaults_resets_all_but_the_pages_levels_and_the_hosts_value) {
  CJobTicket ticket;
  FillEverything(ticket);
  ticket.SetDefaults();
  ExpectDefaults(ticket);
  EXPECT_LT(2020, ticket.m_Created.GetYear());
  EXPECT_EQ(ticket.m_JobData.PrinterName, L"");
  EXPECT_FALSE(ticket.m_JobData.LevelsEnabled);
  EXPECT_EQ(ticket.m_JobData.Levels[2].Gamma, 2.5);
  EXPECT_EQ(ticket.m_JobData.HostValue, 99);
  ASSERT_TRUE(ticket.GetCFMFileExists());
  EXPECT_EQ(ticket.m_CFMFile.Entries[0].FileName, L"p1");
  EXPECT_EQ(ticket.m_CFMFile.TotalSize, 12);
  // The cached path is only forgotten at its next use.
  EXPECT_EQ(ticket.m_JobFile.FullPath, L"C:\\a\\b.ps");
}

TEST_F(JobTicketRecord, set_defaults_of_a_record_alone_resets_the_record) {
  CJobTicket ticket;
  FillEverything(ticket);
  ticket.CJobBase::SetDefaults();
  EXPECT_EQ(ticket.m_Status, JS_IDLE);
  EXPECT_EQ(ticket.GetProgress(JTO_RIP, nullptr), 42);
  EXPECT_TRUE(ticket.GetPlanar());
}

void ExpectCopied(const CJobTicket& copy) {
  EXPECT_EQ(copy.m_JobName, L"Name");
  EXPECT_EQ(copy.m_JobNote, L"Note");
  EXPECT_EQ(copy.m_Error, JTE_PREFIX);
  EXPECT_EQ(copy.m_Status, JS_COMPLETE);
  EXPECT_EQ(copy.m_Copies, 7);
  EXPECT_EQ(copy.m_JobData.PrinterName, L"Printer");
  EXPECT_EQ(copy.m_JobData.Levels[2].Gamma, 2.5);
  EXPECT_EQ(copy.m_JobData.HostValue, 99);
  EXPECT_EQ((std::deque<std::int32_t>{3, 1}), copy.m_Pages);
  EXPECT_EQ(copy.m_JobFile.Directory, L"C:\\a\\");
  EXPECT_EQ(copy.m_JobFile.FileName, L"b.ps");
  EXPECT_EQ(copy.m_SecondFile.FileName, L"d.ps");
  ASSERT_EQ(copy.m_CFMFile.Entries.size(), 1U);
  EXPECT_EQ(copy.m_CFMFile.Entries[0].Directory, L"C:\\e\\");
  EXPECT_EQ(copy.m_CFMFile.TotalSize, 12);
  EXPECT_EQ(copy.m_Created.GetYear(), 2001);
  CString text;
  EXPECT_EQ(copy.GetProgress(JTO_RIP, &text), 42);
  EXPECT_EQ(text, L"sentence");
  EXPECT_EQ(&IgnoreLog, copy.*PrivateMember(fields::Log()));
  EXPECT_TRUE(copy.IsRIPInstallJob());
  EXPECT_EQ(copy.GetActiveAnimFrame(), 5);
  EXPECT_TRUE(copy.GetPlanar());
}

TEST_F(JobTicketRecord, a_copy_has_every_field) {
  CJobTicket ticket;
  FillEverything(ticket);
  const CJobTicket copy(ticket);
  ExpectCopied(copy);
  EXPECT_EQ(copy.m_CFMFile.BaseDirectory, L"");
}

TEST_F(JobTicketRecord, an_assignment_has_every_field_and_keeps_the_base_directory) {
  CJobTicket ticket;
  FillEverything(ticket);
  CJobTicket target;
  target.m_CFMFile.AddEntry(L"gone", L"gone");
  target.m_CFMFile.BaseDirectory = L"kept";
  target = ticket;
  ExpectCopied(target);
  EXPECT_EQ(target.m_CFMFile.BaseDirectory, L"kept");
}

TEST_F(JobTicketRecord, a_copy_shares_nothing_with_its_source) {
  CJobTicket ticket;
  FillEverything(ticket);
  const CJobTicket copy(ticket);
  ticket.m_CFMFile.Entries[0].FileName = L"changed";
  ticket.m_Pages.push_back(9);
  ticket.m_JobName += L"!";
  ticket.SetProgressText(JTO_RIP, L"changed");
  ExpectCopied(copy);
}

TEST_F(JobTicketRecord, is_made_by_its_run_time_class) {
  CRuntimeClass* const ticketClass = CJobTicket::GetThisClass();
  EXPECT_EQ(&CJobTicket::classCJobTicket, ticketClass);
  EXPECT_STREQ(ticketClass->m_lpszClassName, "CJobTicket");
  const std::unique_ptr<CObject> object(ticketClass->CreateObject());
  ASSERT_NE(dynamic_cast<CJobTicket*>(object.get()), nullptr);
  EXPECT_EQ(ticketClass, object->GetRuntimeClass());
  EXPECT_TRUE(ticketClass->IsDerivedFrom(&CJobBase::classCJobBase));
  EXPECT_TRUE(ticketClass->IsDerivedFrom(CObject::GetThisClass()));
  EXPECT_EQ(CJobBase::classCJobBase.CreateObject(), nullptr);
  const std::unique_ptr<CObject> other(CJobTicket::CreateObject());
  EXPECT_NE(dynamic_cast<CJobTicket*>(other.get()), nullptr);
}

TEST_F(JobTicketRecord, accessors_return_the_values_set) {
  CVKJobTicket ticket;
  ticket.SetDPI(300);
  ticket.SetScale(false);
  ticket.SetCutOnly(true);
  ticket.SetPlanar(true);
  EXPECT_EQ(ticket.GetDPI(), 300);
  EXPECT_FALSE(ticket.GetScale());
  EXPECT_TRUE(ticket.IsCutOnly());
  EXPECT_TRUE(ticket.GetPlanar());
}

TEST_F(JobTicketRecord, end_print_without_a_thread_is_true_and_keeps_the_status) {
  CJobTicket ticket;
  for (int status = 0; status <= 5; ++status) {
    ticket.m_Status = static_cast<JT_STATUS>(status);
    EXPECT_TRUE(ticket.EndPrint());
    EXPECT_EQ(status, ticket.m_Status);
  }
}

TEST_F(JobTicketRecord, hold_moves_only_between_idle_and_holding) {
  struct Row {
    int from, hold, to;
  };
  const Row rows[] = {{0, 1, 0},  {1, 1, 1},   {2, 1, 3}, {3, 1, 3}, {4, 1, 4}, {5, 1, 5},
                      {0, 0, 0},  {1, 0, 1},   {2, 0, 2}, {3, 0, 2}, {4, 0, 4}, {5, 0, 5},
                      {2, -1, 3}, {2, 256, 3}, {6, 1, 6}, {6, 0, 6}};
  for (const Row& row : rows) {
    CJobTicket ticket;
    ticket.m_Status = static_cast<JT_STATUS>(row.from);
    ticket.HoldJob(row.hold);
    EXPECT_EQ(row.to, ticket.m_Status) << row.from << " hold " << row.hold;
  }
}

TEST_F(JobTicketRecord, printing_a_job_that_is_not_idle_is_refused_and_changes_nothing) {
  for (const int status : {0, 1, 3, 4, 5, 6, -1}) {
    CJobTicket ticket;
    ticket.m_Status = static_cast<JT_STATUS>(status);
    ticket.m_Error = JTE_PREFIX;
    EXPECT_FALSE(ticket.PrintJob());
    EXPECT_EQ(status, ticket.m_Status);
    EXPECT_EQ(ticket.m_Error, JTE_PREFIX);
    EXPECT_EQ(ticket.GetPrintThread(), nullptr);
  }
}

}  // namespace
