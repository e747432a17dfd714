// A job that is asked to end early, at every stage.

#include <gtest/gtest.h>

#include <random>
#include <thread>

#include "rastrel/platform/os/system_calls.h"
#include "tests/support/print_fixture.h"
#include "tests/support/wait_until.h"

namespace os = rastrel::os;
using rastrel::test::GoodEngine;
using rastrel::test::GoodRip;
using rastrel::test::Hang;
using rastrel::test::HasChildren;
using rastrel::test::Lines;
using rastrel::test::OpenDescriptors;
using rastrel::test::Threads;
using rastrel::test::ThreadsSettled;

namespace {

class AbortedJob : public rastrel::test::PrintTest {
 protected:
  void TearDown() override { EXPECT_FALSE(HasChildren()); }
  /// Prints with an abort at the transcript's `line`; the default children end well.
  void PrintAborted(const std::string& line) {
    RequestSpool();
    AbortAt(line);
    Print();
  }
  [[nodiscard]] bool HasPages() const { return Root().Has("pages"); }
  [[nodiscard]] std::string Stages() const { return m_Ticket.m_Told.Stages(); }
};

CJobTicket* abortedTicket = nullptr;

TEST_F(AbortedJob, before_its_thread_begins_ends_the_rip_at_once) {
  abortedTicket = &m_Ticket;
  const os::SystemCallsGuard guard;
  os::Calls().thread_create = [](pthread_t* thread, const pthread_attr_t* attributes,
                                 void* (*body)(void*), void* argument) {
    if (CJobTicket* ticket = std::exchange(abortedTicket, nullptr))
      ticket->GetPrintThread()->Abort();
    return ::pthread_create(thread, attributes, body, argument);
  };
  Print();
  EXPECT_EQ(Stages(), "started, ripping, ripped, aborted");
  EXPECT_EQ(End(), "holding: aborted");
  EXPECT_FALSE(HasLogged("[Print]: Print job canceled"));
}

TEST_F(AbortedJob, of_a_thread_that_was_not_started_counts_when_it_is) {
  Rip(Hang);
  PrintingThread::CPrintingThread thread(&m_Ticket);
  thread.Abort();
  ASSERT_TRUE(thread.Start());
  thread.Join();
  EXPECT_EQ(Stages(), "started, ripping, ripped, aborted");
  EXPECT_EQ(End(), "holding: aborted");
}

TEST_F(AbortedJob, before_the_wait_starts_the_child_ends_it_and_never_waits) {
  Rip(Hang);
  PrintAborted("Info 1 system");
  EXPECT_EQ(Stages(), "started, ripping, ripped, aborted");
  EXPECT_EQ(End(), "holding: aborted");
  EXPECT_FALSE(HasLogged("[Print]: Print job canceled"));
  EXPECT_EQ(Errors(), Lines{});
}

TEST_F(AbortedJob, in_the_rips_wait_is_reported_in_both_logs) {
  Rip(Hang);
  abortedTicket = &m_Ticket;
  const os::SystemCallsGuard guard;
  os::Calls().poll = [](pollfd* entries, nfds_t count, int milliseconds) {
    if (count >= 2 && abortedTicket != nullptr)
      std::exchange(abortedTicket, nullptr)->GetPrintThread()->Abort();
    return ::poll(entries, count, milliseconds);
  };
  Print();
  EXPECT_EQ(Logged(), (Lines{"[Print]: Printing thread started", "[Sign] START: Printing|",
                             "[Print]: CFM doesn't exist. Rip & Odalis.", "1", "2",
                             "[Print]: Print job canceled", "3", "4", "5", "6",
                             "[Print]: Printing thread done", "[Print]: Printing thread aborted"}));
  EXPECT_EQ(m_Ticket.m_Told.OfTheLibrary(),
            (Lines{"Log START: Print Job Thread", "Info 7 system", "Log (*v*)Processing Started",
                   "Log CFM doesn't exist. Rip & Odalis.", "Info 1 system",
                   "Log (*v*)Start Ripping", "Info 2 system", "Log (*v*)Ripping Complete",
                   "Log Job aborted", "Info 9 system", "Log (*v*)Printing Aborted"}));
  EXPECT_EQ(End(), "holding: aborted");
}

TEST_F(AbortedJob, in_the_rip_leaves_the_job_file_no_prefix_and_no_page_list) {
  Rip("echo 'INFO: READY' >&2\n" + std::string(Hang));
  PrintAborted("Info 257 rip");
  EXPECT_EQ(Stages(), "started, ripping, ripped, aborted");
  EXPECT_EQ(End(), "holding: aborted");
  EXPECT_EQ(Tree("job"), Lines{"sign.ps"});
  EXPECT_TRUE(m_Ticket.m_CFMFile.Entries.empty());
}

TEST_F(AbortedJob, in_the_rip_leaves_the_pages_that_the_rip_has_not_listed) {
  Rip("mkdir -p \"$RASTREL_HOME/pages/A\"; echo 'INFO: READY' >&2\n" + std::string(Hang));
  PrintAborted("Info 257 rip");
  EXPECT_EQ(End(), "holding: aborted");
  EXPECT_EQ(Tree("pages"), Lines{"A/"});
}

TEST_F(AbortedJob, in_the_rip_deletes_the_pages_that_the_rip_has_listed) {
  Rip(std::string(GoodRip) + "echo 'INFO: READY' >&2\n" + std::string(Hang));
  PrintAborted("Info 257 rip");
  EXPECT_EQ(Stages(), "started, ripping, ripped, aborted");
  EXPECT_EQ(End(), "holding: aborted");
  EXPECT_FALSE(HasPages());
}

TEST_F(AbortedJob, in_the_rip_keeps_the_prefix_if_files_are_to_be_kept) {
  KeepFiles();
  Rip("echo 'INFO: READY' >&2\n" + std::string(Hang));
  PrintAborted("Info 257 rip");
  EXPECT_EQ(Tree("job"), (Lines{"sign.ps", "sign.psp"}));
}

TEST_F(AbortedJob, after_the_rip_ended_by_itself_with_status_2_still_reports_the_status) {
  Rip("exit 2\n");
  PrintAborted("Log Rip exited with status 2");
  EXPECT_EQ(Stages(), "started, ripping, ripped, aborted");
  EXPECT_EQ(Errors(), Lines{"rip: rip status 2"});
  EXPECT_EQ(End(), "holding: aborted");
}

TEST_F(AbortedJob, after_the_rip_ended_well_deletes_its_pages) {
  for (const char* line : {"Log Rip exited with status 0", "Info 2 system"}) {
    m_Ticket.SetDefaults();
    m_Ticket.Attach();
    m_Ticket.SetJobFile(Root().Wide("job/sign.ps"));
    PrintAborted(line);
    EXPECT_TRUE(Stages().ends_with("started, ripping, ripped, aborted")) << Stages();
    EXPECT_EQ(End(), "holding: aborted");
    EXPECT_FALSE(HasPages()) << line;
    EXPECT_FALSE(Root().Has("engine.input"));
  }
}

TEST_F(AbortedJob, when_the_engine_is_about_to_start_ends_it_and_deletes_the_pages) {
  Engine(Hang);
  PrintAborted("Info 3 system");
  EXPECT_EQ(Stages(), "started, ripping, ripped, printing, printed, aborted");
  EXPECT_EQ(End(), "holding: aborted");
  EXPECT_FALSE(HasPages());
  EXPECT_FALSE(HasLogged("[Print]: Print job canceled"));
}

TEST_F(AbortedJob, in_the_engine_deletes_the_pages_and_does_not_spool) {
  Engine("echo 'INFO: READY' >&2\n" + std::string(Hang));
  PrintAborted("Info 257 odalis");
  EXPECT_EQ(Stages(), "started, ripping, ripped, printing, printed, aborted");
  EXPECT_EQ(End(), "holding: aborted");
  EXPECT_FALSE(HasPages());
  EXPECT_EQ(Tree("Queue/rip/CFM"), Lines{});
  EXPECT_EQ(Errors(), Lines{});
}

TEST_F(AbortedJob, in_the_engine_leaves_pages_that_the_job_already_had) {
  GivePages();
  Engine("echo 'INFO: READY' >&2\n" + std::string(Hang));
  PrintAborted("Info 257 odalis");
  EXPECT_EQ(Stages(), "started, printing, printed, aborted");
  EXPECT_EQ(End(), "holding: aborted");
  EXPECT_EQ(Tree("kept"), (Lines{"A/", "A/pixels", "B/", "B/pixels"}));
  EXPECT_EQ(m_Ticket.m_CFMFile.Entries.size(), 2U);
}

TEST_F(AbortedJob, after_the_engine_ended_by_itself_with_status_2_still_reports_the_status) {
  Engine("cat > /dev/null; exit 2\n");
  PrintAborted("Log Odalis exited with status 2");
  EXPECT_EQ(Stages(), "started, ripping, ripped, printing, printed, aborted");
  EXPECT_EQ(Errors(), Lines{"odalis: odalis status 2"});
  EXPECT_EQ(End(), "holding: aborted");
  EXPECT_FALSE(HasPages());
}

TEST_F(AbortedJob, after_the_engine_ended_well_still_deletes_the_pages) {
  PrintAborted("Info 4 system");
  EXPECT_EQ(Stages(), "started, ripping, ripped, printing, printed, aborted");
  EXPECT_EQ(End(), "holding: aborted");
  EXPECT_FALSE(HasPages());
  EXPECT_EQ(Tree("Queue/rip/CFM"), Lines{});
}

TEST_F(AbortedJob, while_the_pages_are_spooled_leaves_them_in_the_spool) {
  PrintAborted("Info 5 system");
  EXPECT_EQ(Stages(), "started, ripping, ripped, printing, printed, spooling, spooled, aborted");
  EXPECT_EQ(End(), "holding: aborted");
  EXPECT_EQ(Tree("Queue/rip/CFM/sign.cfm"), (Lines{".kept", "A/", "A/pixels", "B/", "B/pixels"}));
  EXPECT_EQ(m_Ticket.m_CFMFile.Entries.size(), 2U);
}

TEST_F(AbortedJob, of_an_installing_rip_holds_the_job) {
  m_Ticket.SetRIPInstallJob();
  Rip("echo 'INFO: READY' >&2\n" + std::string(Hang));
  PrintAborted("Info 257 rip");
  EXPECT_EQ(Stages(), "started, ripping, ripped, aborted");
  EXPECT_EQ(End(), "holding: aborted");
}

TEST_F(AbortedJob, of_a_job_that_is_through_comes_too_late) {
  PrintAborted("Info 8 system");
  EXPECT_EQ(Stages(), "started, ripping, ripped, printing, printed, spooling, spooled, completed");
  EXPECT_EQ(End(), "active: no error");
}

TEST_F(AbortedJob, after_the_threads_end_and_before_EndPrint_changes_nothing) {
  ASSERT_TRUE(m_Ticket.PrintJob());
  ASSERT_TRUE(rastrel::test::WaitUntil([this] { return Stages().ends_with("completed"); }));
  Abort();
  m_Ticket.EndPrint();
  EXPECT_EQ(End(), "active: no error");
}

TEST_F(AbortedJob, leaves_the_status_sentence_as_it_was) {
  Rip("echo 'INFO: INTERPRETING' >&2\n" + std::string(Hang));
  m_Ticket.m_Told.Listen([this](const std::string& line) {
    if (line == "Log [Rip]INFO: INTERPRETING") Abort();
  });
  Print();
  CString sentence;
  static_cast<void>(m_Ticket.GetProgress(JTO_SYSTEM, &sentence));
  // The last one reported: the stage's end follows the state.
  EXPECT_EQ(sentence, L"(*v*)Ripping Complete");
  EXPECT_EQ(End(), "holding: aborted");
}

TEST_F(AbortedJob, twice_from_other_threads_is_one_abort) {
  Rip("echo 'INFO: READY' >&2\n" + std::string(Hang));
  std::atomic<bool> ready = false;
  m_Ticket.m_Told.Listen([&ready](const std::string& line) {
    if (line == "Info 257 rip") ready = true;
  });
  m_Mark = m_Library.LogMark();
  ASSERT_TRUE(m_Ticket.PrintJob());
  const auto request = [this, &ready] {
    EXPECT_TRUE(rastrel::test::WaitUntil([&ready] { return ready.load(); }));
    for (int times = 0; times < 2; ++times) m_Ticket.GetPrintThread()->Abort();
  };
  std::thread first(request);
  std::thread second(request);
  first.join();
  second.join();
  m_Ticket.EndPrint();
  EXPECT_EQ(Stages(), "started, ripping, ripped, aborted");
  EXPECT_EQ(End(), "holding: aborted");
}

TEST_F(AbortedJob, while_another_thread_joins_is_safe) {
  Rip(Hang);
  PrintingThread::CPrintingThread thread(&m_Ticket);
  ASSERT_TRUE(thread.Start());
  std::atomic<bool> joined = false;
  std::thread other([&] {
    while (!joined) thread.Abort();
  });
  thread.Join();
  joined = true;
  other.join();
  EXPECT_EQ(End(), "holding: aborted");
}

TEST_F(AbortedJob, at_200_random_moments_always_ends_the_same_and_leaves_nothing) {
  Rip("sleep 0.003\n" + std::string(GoodRip) + "echo 'INFO: READY' >&2\nsleep 0.003\n");
  Engine("sleep 0.002\ncat > /dev/null\necho 'PROGRESS: 50%' >&2\nsleep 0.003\n");
  static_cast<void>(m_Library.LogMark());
  const std::size_t descriptors = OpenDescriptors();
  const std::size_t threads = Threads();
  std::mt19937 random(1);
  std::uniform_int_distribution<int> moment(0, 25'000);
  int aborted = 0;
  for (int round = 0; round < 200; ++round) {
    rastrel::test::RecordingTicket ticket;
    ticket.SetJobFile(Root().Wide("job/sign.ps"));
    ASSERT_TRUE(ticket.PrintJob());
    std::this_thread::sleep_for(std::chrono::microseconds(moment(random)));
    ticket.GetPrintThread()->Abort();
    ticket.EndPrint();
    const bool wasAborted = ticket.m_Told.Stages().ends_with("aborted");
    aborted += wasAborted ? 1 : 0;
    const std::string told =
        "round " + std::to_string(round) + ", stages " + ticket.m_Told.Stages();
    EXPECT_EQ(ticket.m_Status.Load(), wasAborted ? JS_HOLDING : JS_ACTIVE) << told;
    EXPECT_EQ(ticket.m_Error.Load(), wasAborted ? JTE_ABNORMAL : JTE_NONE) << told;
    EXPECT_TRUE(ticket.m_Told.Behind("Error ").empty()) << told;
    EXPECT_EQ(Tree("job"), Lines{"sign.ps"}) << told;
    EXPECT_TRUE(!Root().Has("pages") ||
                ticket.m_Told.Stages() == "started, ripping, ripped, aborted")
        << told;
    ASSERT_FALSE(HasChildren()) << told;
    ASSERT_EQ(OpenDescriptors(), descriptors) << told;
    ASSERT_LE(ThreadsSettled(threads), threads) << told;
    rastrel::test::RemoveTree(Root().Path("pages"));
  }
  EXPECT_GT(aborted, 0);
}

}  // namespace
