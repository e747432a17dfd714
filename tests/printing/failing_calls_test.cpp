// A job on a system whose calls fail: its reports, and that it neither hangs nor leaves anything.

#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <fstream>

#include "rastrel/platform/os/system_calls.h"
#include "tests/support/print_fixture.h"

namespace os = rastrel::os;
using rastrel::test::Hang;
using rastrel::test::HasChildren;
using rastrel::test::Lines;
using rastrel::test::OpenDescriptors;
using rastrel::test::Threads;
using rastrel::test::ThreadsSettled;

namespace {

enum Call {
  Pipe,
  Duplicate,
  Event,
  Thread,
  Spawn,
  Open,
  Poll,
  Wait,
  WaitProcess,
  Kill,
  Read,
  CallCount
};
constexpr std::array<const char*, CallCount> CallNames = {
    "pipe2",  "duplicate",         "eventfd", "thread_create",
    "spawn",  "pidfd_open",        "poll",    "poll of a supervisor",
    "waitid", "pidfd_send_signal", "read"};

// How often each call was made, and which one fails at its which time (from 1).
std::array<std::atomic<int>, CallCount> made;
std::atomic<int> failing = CallCount;
std::atomic<int> failingTime = 0;

bool Fails(Call call, int error) {
  const int time = ++made[call];
  if (call != failing || time != failingTime) return false;
  errno = error;
  return true;
}

os::SystemCalls machine;

void Count() {
  machine = os::Calls();
  os::SystemCalls& calls = os::Calls();
  calls.pipe2 = [](int* descriptors, int flags) {
    return Fails(Pipe, EMFILE) ? -1 : machine.pipe2(descriptors, flags);
  };
  calls.duplicate = [](int descriptor, int lowest) {
    return Fails(Duplicate, EMFILE) ? -1 : machine.duplicate(descriptor, lowest);
  };
  calls.eventfd = [](unsigned count, int flags) {
    return Fails(Event, EMFILE) ? -1 : machine.eventfd(count, flags);
  };
  calls.thread_create = [](pthread_t* thread, const pthread_attr_t* attributes,
                           void* (*body)(void*), void* argument) {
    return Fails(Thread, EAGAIN) ? EAGAIN
                                 : machine.thread_create(thread, attributes, body, argument);
  };
  calls.spawn = [](pid_t* id, const char* path, const posix_spawn_file_actions_t* actions,
                   const posix_spawnattr_t* attributes, char* const arguments[],
                   char* const environment[]) {
    return Fails(Spawn, EAGAIN)
               ? EAGAIN
               : machine.spawn(id, path, actions, attributes, arguments, environment);
  };
  calls.pidfd_open = [](pid_t id, unsigned flags) {
    return Fails(Open, EMFILE) ? -1 : machine.pidfd_open(id, flags);
  };
  calls.poll = [](pollfd* entries, nfds_t count, int milliseconds) {
    if (Fails(count >= 2 ? Wait : Poll, ENOMEM)) return -1;
    return machine.poll(entries, count, milliseconds);
  };
  calls.waitid = [](idtype_t type, id_t id, siginfo_t* information, int options) {
    return Fails(WaitProcess, ECHILD) ? -1 : machine.waitid(type, id, information, options);
  };
  calls.pidfd_send_signal = [](int process, int signal, siginfo_t* information, unsigned flags) {
    return Fails(Kill, EPERM) ? -1 : machine.pidfd_send_signal(process, signal, information, flags);
  };
  calls.read = [](int descriptor, void* bytes, std::size_t count) -> ssize_t {
    return Fails(Read, EIO) ? -1 : machine.read(descriptor, bytes, count);
  };
}

class FailingCall : public rastrel::test::PrintTest {
 protected:
  void SetUp() override {
    m_Mark = m_Library.LogMark();
    m_Descriptors = OpenDescriptors();
    m_Threads = Threads();
    Count();
    Arm(CallCount, 0);
  }
  void TearDown() override { ExpectNothingLeft(""); }
  static void Arm(int call, int time) {
    for (auto& count : made) count = 0;
    failing = call;
    failingTime = time;
  }
  /// Prints with one call failing, if the print starts at all.
  void PrintWithout(Call call, int time) {
    m_Mark = m_Library.LogMark();
    Arm(call, time);
    m_Started = m_Ticket.PrintJob();
    m_Ticket.EndPrint();
    EXPECT_GE(made[call], time) << CallNames[call] << " was not called so often";
  }
  void ExpectNothingLeft(const std::string& where) {
    EXPECT_FALSE(HasChildren()) << where;
    EXPECT_EQ(OpenDescriptors(), m_Descriptors) << where;
    EXPECT_LE(ThreadsSettled(m_Threads), m_Threads) << where;
    EXPECT_EQ(Tree("job"), Lines{"sign.ps"}) << where;
  }
  void Renew() {
    m_Ticket.SetDefaults();
    m_Ticket.Attach();
    m_Ticket.SetJobFile(Root().Wide("job/sign.ps"));
  }

  os::SystemCallsGuard m_Guard;
  std::size_t m_Descriptors = 0;
  std::size_t m_Threads = 0;
  bool m_Started = false;
};

struct Row {
  Call call;
  int time;            // in the course of one job
  const char* logged;  // an entry of the application log
  const char* stages;
  const char* error;  // of the printing thread and of the ticket; null if no print began
};

constexpr const char* UpToTheRip = "started, ripping, ripped, completed";
constexpr const char* UpToTheEngine = "started, ripping, ripped, printing, printed, completed";

TEST_F(FailingCall, has_its_message_its_error_and_its_end) {
  const Row rows[] = {
      {Event, 1, "[Print]: Couldn't set up synchronization", "", nullptr},
      {Poll, 1, "[Print]: Couldn't set up synchronization", "", nullptr},
      {Pipe, 1, "[Print]: Couldn't create pipes (1).", UpToTheRip, "low resources"},
      {Pipe, 2, "[Print]: Couldn't create pipes (1).", UpToTheRip, "low resources"},
      {Duplicate, 1, "[Print]: Couldn't set pipes non inheritable.", UpToTheRip, "low resources"},
      {Duplicate, 2, "[Print]: Couldn't set pipes non inheritable.", UpToTheRip, "low resources"},
      {Spawn, 1, "[Print]: Couldn't start rip", UpToTheRip, "rip not started"},
      {Spawn, 1, "[Print]: Didn't start the rip", UpToTheRip, "rip not started"},
      {Open, 1, "[Print]: Couldn't start rip", UpToTheRip, "rip not started"},
      {Event, 2, "[Print]: Couldn't start parsers.", UpToTheRip, "low resources"},
      {Event, 2, "[Print]: Couldn't set up synchronization", UpToTheRip, "low resources"},
      {Event, 3, "[Print]: Couldn't start parsers.", UpToTheRip, "low resources"},
      {Thread, 2, "[Print]: Couldn't start rip", UpToTheRip, "rip not started"},
      {Thread, 3, "[Print]: Couldn't start parsers.", UpToTheRip, "low resources"},
      {Thread, 4, "[Print]: Couldn't start parsers.", UpToTheRip, "low resources"},
      {Pipe, 3, "[Print]: Couldn't create pipes (2).", UpToTheEngine, "low resources"},
      {Pipe, 4, "[Print]: Couldn't create pipes (3).", UpToTheEngine, "low resources"},
      {Pipe, 5, "[Print]: Couldn't create pipes (3).", UpToTheEngine, "low resources"},
      {Spawn, 2, "[Print]: Couldn't start odalis", UpToTheEngine, "odalis not started"},
      {Spawn, 2, "[Print]: Didn't start odalis", UpToTheEngine, "odalis not started"},
      {Open, 2, "[Print]: Couldn't start odalis", UpToTheEngine, "odalis not started"},
      {Event, 4, "[Print]: Couldn't create pipe parser.", UpToTheEngine, "low resources"},
      {Thread, 5, "[Print]: Couldn't start odalis", UpToTheEngine, "odalis not started"},
      {Thread, 6, "[Print]: Couldn't create pipe parser.", UpToTheEngine, "low resources"},
  };
  std::size_t stagesBefore = 0;
  std::size_t errorsBefore = 0;
  for (const Row& row : rows) {
    Renew();
    PrintWithout(row.call, row.time);
    const std::string where = std::string(CallNames[row.call]) + " " + std::to_string(row.time);
    EXPECT_TRUE(HasLogged(row.logged)) << where;
    std::string stages = m_Ticket.m_Told.Stages().substr(stagesBefore);
    if (stages.starts_with(", ")) stages.erase(0, 2);
    EXPECT_EQ(stages, row.stages) << where;
    const Lines errors = Errors();
    const bool begins = row.error != nullptr;
    const std::string error = begins ? row.error : "";
    EXPECT_EQ(Lines(errors.begin() + static_cast<std::ptrdiff_t>(errorsBefore), errors.end()),
              begins ? Lines{"system: " + error} : Lines{})
        << where;
    EXPECT_EQ(End(), begins ? "holding: " + error : "idle: no error") << where;
    EXPECT_EQ(m_Started, begins) << where;
    EXPECT_EQ(m_Ticket.GetPrintThread(), nullptr) << where;
    ExpectNothingLeft(where);
    stagesBefore = m_Ticket.m_Told.Stages().size();
    errorsBefore = errors.size();
    rastrel::test::RemoveTree(Root().Path("pages"));
  }
}

TEST_F(FailingCall, of_the_printing_thread_does_not_start_the_print) {
  PrintWithout(Thread, 1);
  EXPECT_FALSE(m_Started);
  EXPECT_EQ(End(), "idle: no error");
  EXPECT_EQ(m_Ticket.m_Told.All(), (Lines{"Log START: Print Job Thread"}));
  Arm(CallCount, 0);
  Print();
  EXPECT_EQ(End(), "active: no error");
}

TEST_F(FailingCall, in_the_output_stage_deletes_the_rips_pages) {
  for (const auto& [call, time] : {std::pair{Pipe, 3}, {Pipe, 4}, {Spawn, 2}, {Thread, 6}}) {
    Renew();
    PrintWithout(call, time);
    EXPECT_FALSE(Root().Has("pages")) << CallNames[call] << time;
    EXPECT_TRUE(HasLogged("[Print]: Odalis failed. Deleting CFM."));
  }
}

TEST_F(FailingCall, of_a_start_is_reported_with_the_program_and_the_error) {
  PrintWithout(Spawn, 1);
  EXPECT_TRUE(HasLogged("[Print] Couldn't start '" + Root().Path() +
                        "/Queue\\rip\\corerast.exe', error: " + std::to_string(EAGAIN) + "|"));
}

TEST_F(FailingCall, of_the_engines_standard_error_is_only_reported_by_its_reader) {
  PrintWithout(Duplicate, 3);
  EXPECT_TRUE(HasLogged("[Print] Pipe terminated with error: " + std::to_string(EBADF) + "|"));
  EXPECT_EQ(End(), "active: no error");
}

TEST_F(FailingCall, of_the_engines_input_aborts_the_job) {
  PrintWithout(Duplicate, 4);
  EXPECT_TRUE(
      HasLogged("[Print] Couldn't write CFM2 to Odalis, errno: " + std::to_string(EBADF) + "|"));
  EXPECT_EQ(m_Ticket.m_Told.Stages(), "started, ripping, ripped, printing, printed, aborted");
  EXPECT_EQ(End(), "holding: aborted");
}

TEST_F(FailingCall, of_the_rips_wait_ends_the_rip_and_leaves_an_invalid_document) {
  Rip(Hang);
  PrintWithout(Wait, 1);
  EXPECT_TRUE(
      HasLogged("[Print]: WaitForMultipleObjects failed. Error: " + std::to_string(ENOMEM) + "|"));
  EXPECT_EQ(m_Ticket.m_Told.Stages(), "started, ripping, ripped, completed");
  EXPECT_EQ(Errors(), Lines{"system: spool invalid"});
  EXPECT_EQ(End(), "holding: spool invalid");
}

// The interface has it so: a child that is ended counts as a good one.
TEST_F(FailingCall, of_the_engines_wait_ends_the_engine_which_counts_as_well) {
  GivePages();
  Engine(Hang);
  PrintWithout(Wait, 1);
  EXPECT_TRUE(
      HasLogged("[Print]: WaitForMultipleObjects failed. Error: " + std::to_string(ENOMEM) + "|"));
  EXPECT_EQ(m_Ticket.m_Told.Stages(), "started, printing, printed, completed");
  EXPECT_EQ(End(), "active: no error");
}

TEST_F(FailingCall, of_asking_for_the_rips_status_is_an_abnormal_exit) {
  PrintWithout(WaitProcess, 1);
  EXPECT_TRUE(
      HasLogged("[Print]: GetExitCodeProcess failed on rip: " + std::to_string(ECHILD) + "|"));
  EXPECT_TRUE(HasLogged("[Print]: Rip exited"));
  EXPECT_EQ(Errors(), Lines{"rip: rip exit"});
  EXPECT_EQ(End(), "holding: rip exit");
  rastrel::test::AwaitLeftChildren();
}

TEST_F(FailingCall, of_asking_for_the_engines_status_is_an_abnormal_exit) {
  PrintWithout(WaitProcess, 2);
  EXPECT_TRUE(
      HasLogged("[Print]: GetExitCodeProcess failed on odalis: " + std::to_string(ECHILD) + "|"));
  EXPECT_EQ(Errors(), Lines{"odalis: odalis exit"});
  EXPECT_EQ(End(), "holding: odalis exit");
  EXPECT_FALSE(Root().Has("pages"));
  rastrel::test::AwaitLeftChildren();
}

std::string releaseMark;

TEST_F(FailingCall, of_ending_the_rip_is_reported_and_the_abort_holds_the_job) {
  Rip("echo 'INFO: READY' >&2; until [ -e \"$RASTREL_HOME/go\" ]; do sleep 0.01; done\n");
  releaseMark = Root().Path("go");
  os::Calls().pidfd_send_signal = [](int, int, siginfo_t*, unsigned) {
    std::ofstream(releaseMark).flush();  // else the child would run for ever
    errno = EPERM;
    return -1;
  };
  AbortAt("Info 257 rip");
  Print();
  EXPECT_TRUE(HasLogged("[Print]: Couldn't terminate rip: " + std::to_string(EPERM) + "|"));
  EXPECT_EQ(m_Ticket.m_Told.Stages(), "started, ripping, ripped, aborted");
  EXPECT_EQ(Errors(), Lines{"rip: rip exit"});
  EXPECT_EQ(End(), "holding: aborted");
  rastrel::test::AwaitLeftChildren();
}

TEST_F(FailingCall, of_ending_the_engine_is_reported_and_the_abort_holds_the_job) {
  GivePages();
  Engine("echo 'INFO: READY' >&2; until [ -e \"$RASTREL_HOME/go\" ]; do sleep 0.01; done\n");
  releaseMark = Root().Path("go");
  os::Calls().pidfd_send_signal = [](int, int, siginfo_t*, unsigned) {
    std::ofstream(releaseMark).flush();
    errno = EPERM;
    return -1;
  };
  AbortAt("Info 257 odalis");
  Print();
  EXPECT_TRUE(HasLogged("[Print]: Couldn't terminate odalis: " + std::to_string(EPERM) + "|"));
  EXPECT_EQ(Errors(), Lines{"odalis: odalis exit"});
  EXPECT_EQ(End(), "holding: aborted");
  rastrel::test::AwaitLeftChildren();
}

bool IsEngineInput(const void* bytes, std::size_t count) {
  return std::string_view(static_cast<const char*>(bytes), count).starts_with(">> --");
}

TEST_F(FailingCall, of_the_write_to_the_engine_aborts_the_job_with_no_error_of_its_own) {
  os::Calls().write = [](int descriptor, const void* bytes, std::size_t count) -> ssize_t {
    if (!IsEngineInput(bytes, count)) return ::write(descriptor, bytes, count);
    errno = ENOSPC;
    return -1;
  };
  Print();
  EXPECT_TRUE(
      HasLogged("[Print] Couldn't write CFM2 to Odalis, errno: " + std::to_string(ENOSPC) + "|"));
  EXPECT_EQ(m_Ticket.m_Told.Stages(), "started, ripping, ripped, printing, printed, aborted");
  EXPECT_EQ(Errors(), Lines{});
  EXPECT_EQ(End(), "holding: aborted");
  EXPECT_FALSE(Root().Has("pages"));
}

TEST_F(FailingCall, that_writes_less_to_the_engine_aborts_the_job) {
  os::Calls().write = [](int descriptor, const void* bytes, std::size_t count) {
    return ::write(descriptor, bytes, count - (IsEngineInput(bytes, count) ? 1 : 0));
  };
  Print();
  EXPECT_TRUE(
      HasLogged("[Print] Couldn't write CFM2 to Odalis, errno: " + std::to_string(EIO) + "|"));
  EXPECT_EQ(End(), "holding: aborted");
}

TEST_F(FailingCall, of_a_larger_pipe_costs_nothing) {
  os::Calls().set_pipe_size = [](int, int) {
    errno = EPERM;
    return -1;
  };
  GivePages();
  m_Ticket.m_Copies = 1000;
  Engine("sleep 0.05; cat > \"$RASTREL_HOME/engine.input\"\n");
  Print();
  EXPECT_EQ(End(), "active: no error");
  const std::string input = Root().Read("engine.input");
  EXPECT_GT(input.size(), 100'000U);
  EXPECT_TRUE(input.ends_with("end   \n"));
}

TEST_F(FailingCall, of_a_larger_pipe_and_of_memory_has_no_input_to_give) {
  os::Calls().set_pipe_size = [](int, int) { return 4096; };
  os::Calls().memory_file = [](const char*, unsigned) {
    errno = ENOMEM;
    return -1;
  };
  GivePages();
  m_Ticket.m_Copies = 1000;
  Print();
  EXPECT_TRUE(HasLogged("[Print]: Couldn't create pipes (3)."));
  EXPECT_EQ(End(), "holding: low resources");
}

// Every call that a good job makes fails once. The reports are tested above for those that
// matter; here no failure may hang, leave something, or keep the next job from printing.
TEST_F(FailingCall, of_any_kind_at_any_time_leaves_nothing_and_the_next_job_prints) {
  Print();
  std::array<int, CallCount> times{};
  for (int call = 0; call < CallCount; ++call)
    times[static_cast<std::size_t>(call)] = made[static_cast<std::size_t>(call)];
  for (int call = 0; call < CallCount; ++call) {
    for (int time = 1; time <= times[static_cast<std::size_t>(call)]; ++time) {
      Renew();
      Arm(call, time);
      m_Ticket.PrintJob();
      m_Ticket.EndPrint();
      const std::string where =
          std::string(CallNames[static_cast<std::size_t>(call)]) + " " + std::to_string(time);
      if (call == WaitProcess) rastrel::test::AwaitLeftChildren();
      ExpectNothingLeft(where);
      rastrel::test::RemoveTree(Root().Path("pages"));
    }
    Renew();
    Arm(CallCount, 0);
    Print();
    EXPECT_EQ(End(), "active: no error") << CallNames[static_cast<std::size_t>(call)];
  }
}

}  // namespace
