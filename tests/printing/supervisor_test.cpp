// The two supervisors by themselves, without a printing thread around them.

#include <gtest/gtest.h>

#include "rastrel/platform/os/wait.h"
#include "rastrel/printing/output_supervisor.h"
#include "rastrel/printing/rip_supervisor.h"
#include "tests/support/pipe_sizes.h"
#include "tests/support/print_fixture.h"
#include "tests/support/private_member.h"

using PrintingThread::AbortFlag;
using PrintingThread::CBBasePrintingThread;
using PrintingThread::CCPHelper;
using PrintingThread::CRealPrintingThread;
using PrintingThread::CRealReprintingThread;
using rastrel::printing::ChildSupervisor;
using rastrel::test::Hang;
using rastrel::test::HasChildren;
using rastrel::test::Lines;
using rastrel::test::OpenDescriptors;

namespace rastrel::test {

// This system's waits abandon nothing; the supervisors' reaction to it is called by hand.
struct ProcessAbandoned {
  using Type = void (*)(CBBasePrintingThread&);
  friend Type PrivateMember(ProcessAbandoned);
};
template struct Reveal<ProcessAbandoned, &ChildSupervisor::OnProcessAbandoned>;
struct AbortAbandoned {
  using Type = void (*)(CBBasePrintingThread&);
  friend Type PrivateMember(AbortAbandoned);
};
template struct Reveal<AbortAbandoned, &ChildSupervisor::OnAbortAbandoned>;
struct Process {
  using Type = std::unique_ptr<CCPHelper> ChildSupervisor::*;
  friend Type PrivateMember(Process);
};
template struct Reveal<Process, &ChildSupervisor::m_pProcess>;

}  // namespace rastrel::test

namespace {

class SupervisedChild : public rastrel::test::PrintTest {
 protected:
  void SetUp() override {
    m_Mark = m_Library.LogMark();
    m_Descriptors = OpenDescriptors();
  }
  void TearDown() override {
    EXPECT_EQ(OpenDescriptors(), m_Descriptors);
    EXPECT_FALSE(HasChildren());
  }
  bool RunRip(const wchar_t* prefix) {
    CRealPrintingThread supervisor(&m_Ticket, &m_Semaphore, &m_Abort, &m_Document, prefix);
    return supervisor.Run();
  }
  bool RunEngine() {
    CRealReprintingThread supervisor(&m_Semaphore, &m_Abort, &m_Document, &m_Ticket);
    return supervisor.Run();
  }

  CSemaphore m_Semaphore{0, 1};
  AbortFlag m_Abort = false;
  CCFM2 m_Document;
  std::size_t m_Descriptors = 0;
};

TEST_F(SupervisedChild, puts_the_rips_text_after_the_documents_own) {
  m_Document.m_Text = L"before ";
  Rip("printf 'after'\n");
  EXPECT_TRUE(RunRip(nullptr));
  EXPECT_EQ(m_Document.m_Text, L"before after");
}

// The listener is slower than the RIP, so its end comes long before its lines have been reported.
TEST_F(SupervisedChild, has_all_words_of_the_rip_reported_before_its_status) {
  m_Ticket.m_Told.Listen([](const std::string& line) {
    if (line.starts_with("Warning")) std::this_thread::sleep_for(std::chrono::milliseconds(20));
  });
  Rip("for n in 1 2 3 4 5 6 7 8; do echo \"WARNING: $n\" >&2; done\nexit 2\n");
  EXPECT_FALSE(RunRip(nullptr));
  Lines told = m_Ticket.m_Told.All();
  std::erase_if(told, [](const std::string& line) {
    return !line.starts_with("Warning") && !line.starts_with("Error");
  });
  ASSERT_EQ(told.size(), 9U);
  EXPECT_EQ(told.at(7), "Warning \"8\" rip");
  EXPECT_EQ(Errors(), Lines{"rip: rip status 2"});
  EXPECT_TRUE(told.back().starts_with("Error"));
}

TEST_F(SupervisedChild, leaves_the_documents_text_if_the_rip_writes_none) {
  m_Document.m_Text = L"before";
  Rip("exit 0\n");
  EXPECT_TRUE(RunRip(nullptr));
  EXPECT_EQ(m_Document.m_Text, L"before");
}

TEST_F(SupervisedChild, gives_the_rip_no_empty_argument_for_an_empty_prefix_path) {
  Rip("for word; do printf '%s\\n' \"$word\"; done\n");
  const std::wstring words = L"-M\n-Q\n-m128\n" + m_Ticket.m_JobFile.GetFullPath() + L"\n";
  for (const wchar_t* prefix : {static_cast<const wchar_t*>(nullptr), L""}) {
    m_Document.m_Text.clear();
    EXPECT_TRUE(RunRip(prefix));
    EXPECT_EQ(m_Document.m_Text, words);
  }
}

TEST_F(SupervisedChild, gives_the_rip_its_prefix_before_the_job) {
  Rip("printf '%s|%s' \"$4\" \"$5\"\n");
  EXPECT_TRUE(RunRip(L"C:\\a prefix.psp"));
  EXPECT_EQ(m_Document.m_Text, L"C:\\a prefix.psp|" + m_Ticket.m_JobFile.GetFullPath());
}

TEST_F(SupervisedChild, whose_abort_was_set_before_starts_the_child_and_ends_it_well) {
  m_Abort = true;
  Rip(Hang);
  Engine(Hang);
  EXPECT_TRUE(RunRip(nullptr));
  EXPECT_TRUE(RunEngine());
  EXPECT_EQ(Errors(), Lines{});
  EXPECT_EQ(Logged(), (Lines{"1", "2", "3", "4", "5", "6", "[Print]: Waiting for output thread"}));
}

TEST_F(SupervisedChild, that_is_woken_without_an_abort_waits_on_for_its_child) {
  m_Semaphore.Unlock();
  Rip("printf x\n");
  EXPECT_TRUE(RunRip(nullptr));
  EXPECT_EQ(m_Document.m_Text, L"x");
  EXPECT_EQ(Logged(), (Lines{"1", "2", "[Print]: Print job canceled", "[Print]: Rip exited", "3",
                             "4", "5", "6"}));
}

TEST_F(SupervisedChild, gives_an_engine_without_text_the_end_of_its_input_at_once) {
  Engine("wc -c > \"$RASTREL_HOME/size\"\n");
  EXPECT_TRUE(RunEngine());
  EXPECT_EQ(Root().Read("size"), "0\n");
}

TEST_F(SupervisedChild, gives_the_engine_its_text_as_utf_8_without_a_terminator) {
  m_Document.m_Text = L"\x00E4\x20AC\x1F5A8";
  Engine("cat > \"$RASTREL_HOME/engine.input\"\n");
  EXPECT_TRUE(RunEngine());
  EXPECT_EQ(Root().Read("engine.input"), "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x96\xA8");
}

// Standard output, then (for the engine) the input that takes its whole text, then standard error.
TEST_F(SupervisedChild, has_pipes_of_16384_bytes_for_output_and_of_512_for_errors) {
  const rastrel::os::SystemCallsGuard guard;
  Rip("exit 0\n");
  Engine("cat > /dev/null\n");
  rastrel::test::RecordPipeSizes();
  EXPECT_TRUE(RunRip(nullptr));
  EXPECT_EQ(rastrel::test::PipeSizes(), (std::vector<int>{16384, 512}));
  rastrel::test::PipeSizes().clear();
  m_Document.m_Text = L"12345";
  EXPECT_TRUE(RunEngine());
  EXPECT_EQ(rastrel::test::PipeSizes(), (std::vector<int>{16384, 5, 512}));
}

TEST_F(SupervisedChild, that_never_ran_leaves_nothing) {
  const CRealPrintingThread rip(&m_Ticket, &m_Semaphore, &m_Abort, &m_Document, L"prefix");
  const CRealReprintingThread engine(&m_Semaphore, &m_Abort, &m_Document, &m_Ticket);
  EXPECT_EQ(Logged(), Lines{});
}

TEST_F(SupervisedChild, reports_a_status_by_its_result) {
  Rip("exit 3\n");
  EXPECT_FALSE(RunRip(nullptr));
  Engine("cat > /dev/null; exit 1\n");
  EXPECT_FALSE(RunEngine());
  EXPECT_EQ(Errors(), (Lines{"rip: rip status 3", "odalis: odalis status 1"}));
  m_Ticket.SetRIPInstallJob();
  Rip("exit 1\n");
  EXPECT_TRUE(RunRip(nullptr));
}

// Of a job whose pages vanish between the choice of its way and their use.
TEST_F(SupervisedChild, has_no_engine_to_run_when_the_jobs_pages_vanish) {
  GivePages();
  m_Ticket.m_Told.Listen([this](const std::string& line) {
    if (line == "Log CFM exists. Odalis only.") m_Ticket.m_CFMFile.Entries.clear();
  });
  Print();
  EXPECT_EQ(m_Ticket.m_Told.OfTheLibrary(),
            (Lines{"Log START: Print Job Thread", "Info 7 system", "Log (*v*)Processing Started",
                   "Log CFM exists. Odalis only.", "Error 17 system",
                   "Log (*v*)Spool file is missing", "Log CFM missing. Aborting.",
                   "Log Printing done", "Info 8 system", "Log (*v*)Processing Completed"}));
  EXPECT_TRUE(HasLogged("[Print]: CFM missing. Aborting."));
  EXPECT_EQ(End(), "holding: spool missing");
}

TEST_F(SupervisedChild, has_a_long_line_cut_in_the_job_log_and_whole_for_its_reader) {
  // 5,000 characters; the log's limit counts the tag too.
  Rip("head -c 5000 /dev/zero | tr '\\0' x | sed 's/^/WARNING:/' >&2; echo >&2\n");
  EXPECT_TRUE(RunRip(nullptr));
  const Lines lines = m_Ticket.m_Told.Behind("Log [Rip]WARNING:");
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0], std::string(1021 - std::string_view("[Rip]WARNING:").size(), 'x'));
  EXPECT_EQ(m_Ticket.m_Told.Behind("Warning "), Lines{"\"" + std::string(5000, 'x') + "\" rip"});
}

TEST_F(SupervisedChild, reports_an_abandoned_abort_semaphore) {
  CRealPrintingThread rip(&m_Ticket, &m_Semaphore, &m_Abort, &m_Document, nullptr);
  PrivateMember(rastrel::test::AbortAbandoned())(rip);
  CRealReprintingThread engine(&m_Semaphore, &m_Abort, &m_Document, &m_Ticket);
  PrivateMember(rastrel::test::AbortAbandoned())(engine);
  EXPECT_EQ(Logged(),
            (Lines{"[Print]: Abort semaphore abandoned!", "[Print]: Abort semaphore abandoned!"}));
}

// Starts the child and waits until it has ended.
void RunToItsEnd(CCPHelper& process) {
  ASSERT_TRUE(process.Start());
  const HANDLE ended[] = {process.m_hProcess};
  ASSERT_EQ(rastrel::os::WaitForAny(ended), rastrel::os::WaitSignaledBase);
}

TEST_F(SupervisedChild, whose_wait_for_the_rip_is_abandoned_logs_it_and_takes_its_end) {
  Rip("exit 0\n");
  CRealPrintingThread supervisor(&m_Ticket, &m_Semaphore, &m_Abort, &m_Document, nullptr);
  CCPHelper& process = *(supervisor.*PrivateMember(rastrel::test::Process()));
  RunToItsEnd(process);
  PrivateMember(rastrel::test::ProcessAbandoned())(supervisor);
  EXPECT_EQ(Logged(), (Lines{"[Print]: Wait abandoned on rip!", "[Print]: Rip exited"}));
  EXPECT_EQ(process.m_hProcess, INVALID_HANDLE_VALUE);
}

TEST_F(SupervisedChild, whose_wait_for_the_engine_is_abandoned_logs_it_and_takes_its_end) {
  Engine("exit 0\n");
  CRealReprintingThread supervisor(&m_Semaphore, &m_Abort, &m_Document, &m_Ticket);
  CCPHelper& process = *(supervisor.*PrivateMember(rastrel::test::Process()));
  RunToItsEnd(process);
  PrivateMember(rastrel::test::ProcessAbandoned())(supervisor);
  EXPECT_EQ(Logged(), (Lines{"[Print]: Wait abandoned on odalis!", "[Print]: Odalis exited"}));
  EXPECT_EQ(process.m_hProcess, INVALID_HANDLE_VALUE);
}

}  // namespace
