// The queue program under its supervisor, without a dialog: its start, the log, and the results of
// failing system calls.

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <mutex>

#include "rastrel/conversion/clq_ticket.h"
#include "rastrel/conversion/dialogs/cmd_line_q.h"
#include "rastrel/conversion/queue_supervisor.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/system_calls.h"
#include "tests/conversion/queue_fixture.h"
#include "tests/support/pipe_sizes.h"

namespace os = rastrel::os;
using PrintingThread::CCPHelper;
using PrintingThread::CLQThread;
using rastrel::test::AwaitLeftChildren;
using rastrel::test::Hang;
using rastrel::test::Lines;

namespace {

class RecordingQueue : public CLQTicket {
 public:
  using CLQTicket::CLQTicket;
  ~RecordingQueue() override { Join(); }

  using CLQTicket::Error;
  void Error(JT_ERROR code, JT_ORIGINATOR originator) override {
    Tell("Error " + std::to_string(code) + " " + std::to_string(originator));
  }
  void Info(JT_INFO code, JT_ORIGINATOR originator) override {
    Tell("Info " + std::to_string(code) + " " + std::to_string(originator));
  }
  void Progress(unsigned short percent, JT_ORIGINATOR originator) override {
    Tell("Progress " + std::to_string(percent) + " " + std::to_string(originator));
  }
  [[nodiscard]] Lines Told() {
    const std::scoped_lock lock(m_Mutex);
    return m_Told;
  }
  void WaitFor(const std::string& line) {
    for (int rounds = 0; rounds < 10000; ++rounds) {
      const Lines told = Told();
      if (std::find(told.begin(), told.end(), line) != told.end()) return;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    ADD_FAILURE() << line << " was never told";
  }

 protected:
  void OnEnd() override { Tell("end"); }

 private:
  void Tell(const std::string& line) {
    const std::scoped_lock lock(m_Mutex);
    m_Told.push_back(line);
  }
  std::mutex m_Mutex;
  Lines m_Told;
};

class QueueJob : public rastrel::test::QueueTest {
 protected:
  ~QueueJob() override { ExpectNothingLeft(); }

  static std::wstring Executable() { return CExePaths::Instance().m_QueueExe; }
  [[nodiscard]] std::wstring File() const { return Root().Wide("job/sign.ps"); }
  bool Start() {
    m_Mark = m_Library.LogMark();
    return m_Queue.Start(File().c_str());
  }
  /// Runs the program to its end.
  void Run() {
    ASSERT_TRUE(Start());
    m_Queue.Join();
  }
  /// Runs it with a system that refuses.
  Lines RunAndGetTold() {
    Run();
    Lines told = m_Queue.Told();
    return told;
  }

  RecordingQueue m_Queue{Executable()};
};

TEST_F(QueueJob, reports_states_and_percentages_with_its_own_originator) {
  Queue(
      "echo 'INFO: INITIALISING' >&2; sleep 0.05; echo 'PROGRESS: 40%' >&2; sleep 0.05\n"
      "echo 'INFO: CLQ_success' >&2\n");
  Run();
  EXPECT_EQ(m_Queue.Told(), (Lines{"Info 256 4", "Progress 40 4", "Info 10 4", "end"}));
}

TEST_F(QueueJob, logs_the_childs_lines_its_status_and_its_end) {
  Queue("echo 'INFO: CLQ_failure' >&2\nexit 3\n");
  Run();
  EXPECT_TRUE(HasLogged("INFO: CLQ_failure|"));
  EXPECT_TRUE(HasLogged("Q exited with status 3|"));
  EXPECT_TRUE(HasLogged("[CLQ]: Q exited"));
}

TEST_F(QueueJob, hands_over_two_options_and_the_path_and_both_output_streams) {
  QueueChild("describe");
  Run();
  const std::string told = Root().Read("JobSpool.exe.told");
  const std::string path = Root().Path("job/sign.ps");
  EXPECT_NE(told.find("argument -ps\nargument -q\nargument " + path + "\n"), told.npos) << told;
  EXPECT_NE(told.find("\n1 pipe:"), told.npos) << told;
  EXPECT_NE(told.find("\n2 pipe:"), told.npos) << told;
  EXPECT_NE(told.find("other descriptors 0"), told.npos) << told;
}

TEST_F(QueueJob, has_pipes_of_16384_bytes_for_output_and_of_512_for_errors) {
  const os::SystemCallsGuard guard;
  Queue("exit 0\n");
  rastrel::test::RecordPipeSizes();
  Run();
  EXPECT_EQ(rastrel::test::PipeSizes(), (std::vector<int>{16384, 512}));
}

TEST_F(QueueJob, needs_the_program_and_the_file) {
  EXPECT_FALSE(Start()) << "no program";
  Queue("exit 0\n");
  EXPECT_FALSE(m_Queue.Start(Root().Wide("job/none.ps").c_str()));
  EXPECT_FALSE(m_Queue.Start(nullptr));
  EXPECT_FALSE(m_Queue.IsRunning());
  m_Queue.Abort();
  m_Queue.Join();
}

TEST_F(QueueJob, runs_one_program_at_a_time_and_another_when_that_has_ended) {
  Queue("echo 'INFO: CONVERTING' >&2\nread line\n");
  ASSERT_TRUE(Start());
  EXPECT_FALSE(m_Queue.Start(File().c_str()));
  m_Queue.Join();
  EXPECT_TRUE(m_Queue.Start(File().c_str()));
  m_Queue.Join();
}

TEST_F(QueueJob, started_again_after_an_abort_is_not_aborted_at_once) {
  Queue(Hang);
  ASSERT_TRUE(Start());
  m_Queue.Abort();
  Queue("sleep 0.1\n: > \"$RASTREL_HOME/whole\"\n");
  ASSERT_TRUE(Start());
  m_Queue.Join();
  EXPECT_TRUE(Root().Has("whole"));
}

TEST_F(QueueJob, joined_twice_does_nothing_the_second_time) {
  Queue("exit 0\n");
  Run();
  m_Queue.Join();
  m_Queue.Abort();
}

TEST_F(QueueJob, destroyed_while_it_runs_is_joined) {
  Queue("sleep 0.1; touch \"$RASTREL_HOME/done\"\n");
  {
    RecordingQueue queue(Executable());
    ASSERT_TRUE(queue.Start(File().c_str()));
  }
  EXPECT_TRUE(Root().Has("done"));
}

TEST_F(QueueJob, aborted_ends_a_child_that_hangs) {
  Queue("echo 'INFO: CONVERTING' >&2\nexec sleep 1000\n");
  bool logged = false;
  // An abort that comes before the supervisor waits for it needs no waking, and logs nothing.
  for (int round = 0; round < 50 && !logged; ++round) {
    RecordingQueue queue(Executable());
    m_Mark = m_Library.LogMark();
    ASSERT_TRUE(queue.Start(File().c_str()));
    queue.WaitFor("Info 259 4");
    std::this_thread::sleep_for(std::chrono::milliseconds(round));
    queue.Abort();
    EXPECT_FALSE(queue.IsRunning());
    logged = HasLogged("[CLQ]: Q job canceled");
  }
  EXPECT_TRUE(logged);
}

TEST_F(QueueJob, aborted_at_once_ends_too) {
  Queue(Hang);
  for (int round = 0; round < 20; ++round) {
    RecordingQueue queue(Executable());
    ASSERT_TRUE(queue.Start(File().c_str()));
    queue.Abort();
  }
}

TEST_F(QueueJob, aborted_ends_a_child_that_floods) {
  Queue("while :; do echo 'PROGRESS: 5%'; done >&2\n");
  ASSERT_TRUE(Start());
  m_Queue.WaitFor("Progress 5 4");
  m_Queue.Abort();
}

// docs/architecture.md promises it to whoever cancels.
TEST(GuardianTimeout, of_a_cancelled_job_is_five_seconds) {
  EXPECT_EQ(CLQThread::GuardianTimeout, 5000);
  EXPECT_EQ(CLQThread::s_GuardianTimeout, CLQThread::GuardianTimeout);
}

// Somebody else who holds the child's pipes.
class HeldPipes : public QueueJob {
 protected:
  HeldPipes() { CLQThread::s_GuardianTimeout = 100; }
  void Leave(const std::string& redirection, int status) {
    Queue("sleep 1000 " + redirection + " &\necho $! > \"$RASTREL_HOME/left\"\n" +
          "echo 'INFO: CONVERTING' >&2\nexit " + std::to_string(status) + "\n");
  }
  ~HeldPipes() override {
    CLQThread::s_GuardianTimeout = CLQThread::GuardianTimeout;
    if (Root().Has("left")) ::kill(std::stoi(Root().Read("left")), SIGKILL);
  }
};

TEST_F(HeldPipes, stdout_held_behind_a_child_that_ended_well_ends_the_job) {
  Leave("2>/dev/null", 0);
  Run();
}

TEST_F(HeldPipes, aborted_ends_a_job_whose_child_is_gone) {
  for (const char* held : {"", "2>/dev/null", ">/dev/null"}) {
    Leave(held, 7);
    RecordingQueue queue(Executable());
    m_Mark = m_Library.LogMark();
    ASSERT_TRUE(queue.Start(File().c_str()));
    while (!HasLogged("[CLQ]: Q exited")) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_TRUE(queue.IsRunning()) << "it waits for the stream";
    queue.Abort();
    ::kill(std::stoi(Root().Read("left")), SIGKILL);
  }
}

TEST_F(HeldPipes, aborted_waits_for_the_cleanup_after_the_child) {
  CLQThread::s_GuardianTimeout = 30'000;
  Queue(
      "(sleep 0.3; touch \"$RASTREL_HOME/cleared\") &\necho 'INFO: CONVERTING' >&2\n"
      "exec sleep 1000\n");
  ASSERT_TRUE(Start());
  m_Queue.WaitFor("Info 259 4");
  m_Queue.Abort();
  EXPECT_TRUE(Root().Has("cleared"));
}

// The log.

TEST_F(QueueJob, logs_text_with_a_line_end_cut_to_1021_characters_more_than_its_format) {
  for (const std::size_t length : {1022U, 1023U, 1024U}) {
    m_Mark = m_Library.LogMark();
    m_Queue.Log(L"%s", std::wstring(length, L'x').c_str());
    EXPECT_EQ(Logged(), Lines{std::string(std::min<std::size_t>(length, 1023), 'x') + "|"});
  }
  m_Mark = m_Library.LogMark();
  m_Queue.Log(L"%i of %s", 3, L"five");
  EXPECT_EQ(Logged(), Lines{"3 of five|"});
}

TEST_F(QueueJob, does_nothing_with_reports_that_nobody_overrides) {
  CLQTicket plain(Executable());
  m_Mark = m_Library.LogMark();
  plain.Warning(L"text", JTO_CLQ);
  plain.Error(L"text", JTO_CLQ);
  plain.Error(JTE_LOW_RESOURCES, JTO_CLQ);
  plain.Info(JTI_CLQ_SUCCESS, JTO_CLQ);
  plain.Progress(5, JTO_CLQ);
  EXPECT_EQ(Logged(), Lines());
}

TEST_F(QueueJob, posts_nothing_without_a_dialog) {
  CCmdLineQ queue(Executable());
  queue.Info(JTI_CLQ_SUCCESS, JTO_CLQ);
  queue.Progress(5, JTO_CLQ);
}

// A system that refuses.

int failingTime;
os::SystemCalls machine;

class RefusedQueue : public QueueJob {
 protected:
  RefusedQueue() {
    Queue(Hang);
    machine = os::Calls();
  }
  void ExpectFailure(const char* logged) {
    Run();
    EXPECT_TRUE(HasLogged(logged)) << logged;
    EXPECT_EQ(m_Queue.Told(), (Lines{"Error 10 4", "end"}));
  }
  os::SystemCallsGuard m_Guard;
};

TEST_F(RefusedQueue, without_a_semaphore_does_not_start) {
  for (const int time : {1, 2, 3}) {
    failingTime = time;
    os::Calls().eventfd = [](unsigned count, int flags) {
      return --failingTime == 0 ? (errno = EMFILE, -1) : machine.eventfd(count, flags);
    };
    EXPECT_FALSE(Start());
    EXPECT_EQ(Logged(), Lines{"[Print]: Couldn't set up synchronization"});
  }
}

TEST_F(RefusedQueue, without_its_lock_does_not_start) {
  os::Calls().poll = [](pollfd*, nfds_t, int) { return errno = ENOMEM, -1; };
  EXPECT_FALSE(Start());
  EXPECT_EQ(Logged(), Lines{"[Print]: Couldn't set up synchronization"});
}

TEST_F(RefusedQueue, without_a_thread_does_not_start_and_may_be_tried_again) {
  os::Calls().thread_create = [](pthread_t*, const pthread_attr_t*, void* (*)(void*), void*) {
    return EAGAIN;
  };
  EXPECT_FALSE(Start());
  EXPECT_FALSE(Start());
  EXPECT_EQ(Logged(), Lines());
  os::Calls() = machine;
  Queue("exit 0\n");
  EXPECT_TRUE(Start());
  m_Queue.Join();
}

TEST_F(RefusedQueue, without_a_pipe_reports_low_resources) {
  failingTime = 1;
  os::Calls().pipe2 = [](int* ends, int flags) {
    return --failingTime == 0 ? (errno = EMFILE, -1) : machine.pipe2(ends, flags);
  };
  ExpectFailure("[CLQ]: Couldn't create pipes (1).");
}

TEST_F(RefusedQueue, without_its_second_pipe_reports_low_resources) {
  failingTime = 2;
  os::Calls().pipe2 = [](int* ends, int flags) {
    return --failingTime == 0 ? (errno = EMFILE, -1) : machine.pipe2(ends, flags);
  };
  ExpectFailure("[CLQ]: Couldn't create pipes (1).");
}

TEST_F(RefusedQueue, without_a_duplicate_reports_low_resources) {
  failingTime = 1;
  os::Calls().duplicate = [](int descriptor, int lowest) {
    return --failingTime == 0 ? (errno = EMFILE, -1) : machine.duplicate(descriptor, lowest);
  };
  ExpectFailure("[CLQ]: Couldn't set pipes non inheritable.");
}

TEST_F(RefusedQueue, without_its_second_duplicate_reports_low_resources) {
  failingTime = 2;
  os::Calls().duplicate = [](int descriptor, int lowest) {
    return --failingTime == 0 ? (errno = EMFILE, -1) : machine.duplicate(descriptor, lowest);
  };
  ExpectFailure("[CLQ]: Couldn't set pipes non inheritable.");
}

TEST_F(RefusedQueue, that_does_not_start_the_program_says_so_twice) {
  os::Calls().spawn = [](pid_t*, const char*, const posix_spawn_file_actions_t*,
                         const posix_spawnattr_t*, char* const*, char* const*) { return EAGAIN; };
  ExpectFailure("[CLQ]: Didn't start the Q");
  EXPECT_TRUE(HasLogged("[CLQ]: Couldn't start rip"));
}

TEST_F(RefusedQueue, without_a_thread_for_either_reader_ends_the_program) {
  // The first thread is the job's, the second the program's reaper's.
  for (const int time : {3, 4}) {
    RecordingQueue queue(Executable());
    m_Mark = m_Library.LogMark();
    failingTime = time;
    os::Calls().thread_create = [](pthread_t* thread, const pthread_attr_t* attributes,
                                   void* (*body)(void*), void* argument) {
      return --failingTime == 0 ? EAGAIN
                                : machine.thread_create(thread, attributes, body, argument);
    };
    ASSERT_TRUE(queue.Start(File().c_str()));
    queue.Join();
    EXPECT_TRUE(HasLogged("[CLQ]: Couldn't start parsers."));
    EXPECT_EQ(queue.Told(), (Lines{"Error 10 4", "end"}));
  }
}

TEST_F(RefusedQueue, that_can_not_wait_ends_the_program) {
  rastrel::test::FailWaitsForChildren();
  Run();
  EXPECT_TRUE(HasLogged("[CLQ]: WaitForMultipleObjects failed. Error: 12|"));
  EXPECT_EQ(m_Queue.Told(), Lines{"end"});
}

TEST_F(RefusedQueue, that_can_not_end_the_program_closes_its_handle_all_the_same) {
  Queue("sleep 0.2\n");
  rastrel::test::FailWaitsForChildren();
  os::Calls().pidfd_send_signal = [](int, int, siginfo_t*, unsigned) { return errno = EPERM, -1; };
  Run();
  EXPECT_TRUE(HasLogged("[CLQ]: Couldn't terminate Q: 1|"));
  AwaitLeftChildren();
}

TEST_F(RefusedQueue, that_can_not_ask_for_the_exit_status_says_so) {
  Queue("exit 0\n");
  os::Calls().waitid = [](idtype_t, id_t, siginfo_t*, int) { return errno = ECHILD, -1; };
  Run();
  EXPECT_TRUE(HasLogged("[CLQ]: GetExitCodeProcess failed on Q: 10|"));
  EXPECT_TRUE(HasLogged("[CLQ]: Q exited"));
  AwaitLeftChildren();
}

// Reactions to results of the wait that this system never has.

class Supervisor : public QueueJob {
 protected:
  CLQThread::Job Lent() {
    return {.ticket = &m_Queue, .semaphore = &m_Semaphore, .abort = &m_Abort, .giveUp = -1};
  }
  CSemaphore m_Semaphore;
  PrintingThread::AbortFlag m_Abort = false;
};

TEST_F(Supervisor, destroyed_with_a_process_says_that_it_lives_and_closes_it) {
  HANDLE read = INVALID_HANDLE_VALUE;
  HANDLE write = INVALID_HANDLE_VALUE;
  ASSERT_TRUE(os::CreatePipe(read, write, 0));
  m_Mark = m_Library.LogMark();
  {
    auto process = std::make_unique<CCPHelper>(Executable());
    process->m_hProcess = read;
    const CLQThread supervisor(Lent(), std::move(process), L"file");
  }
  EXPECT_EQ(Logged(), Lines{"[CLQ] Rip handle still alive"});
  ::close(write);
}

TEST_F(Supervisor, skips_the_wait_if_the_job_was_aborted_before) {
  Queue(Hang);
  m_Abort = true;
  CLQThread supervisor(Lent(), std::make_unique<CCPHelper>(Executable()), L"file");
  EXPECT_TRUE(supervisor.Run());
}

TEST_F(Supervisor, logs_a_wait_that_was_abandoned_or_ended_by_nothing_known) {
  // The table of a wait as the supervisors make it, with reactions that log.
  class Bare : public PrintingThread::CBBasePrintingThread {
  } bare;
  HANDLE handle = 5;
  PrintingThread::CWaitTable table;
  table.Add(
      &handle, [](PrintingThread::CBBasePrintingThread&) {},
      [](PrintingThread::CBBasePrintingThread&) {});
  static_cast<void>(table.GetHandles());
  m_Mark = m_Library.LogMark();
  EXPECT_TRUE(bare.ReactTo(1, table));
  EXPECT_TRUE(bare.ReactTo(128 + 1, table));
  EXPECT_EQ(Logged(), (Lines{"[Print]: Unexpected return from WaitForMultipleObjects (signal)",
                             "[Print]: Unexpected return from WaitForMultipleObjects (abandon)"}));
}

}  // namespace
