// The cost of a print beyond its children, and how soon a supervisor hears of its child and of an
// abort. The children are tools of the system that end at once, so that little of the time is
// theirs. The process holds 1 GiB, since a host does, and a start that copied page tables would
// show.

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <spawn.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "bench/data_root.h"
#include "bench/measure.h"
#include "bench/require.h"
#include "rastrel/job/app_log.h"
#include "rastrel/job/job_ticket.h"
#include "rastrel/platform/os/system_calls.h"
#include "rastrel/printing/printing_thread.h"

namespace {

namespace os = rastrel::os;
namespace bench = rastrel::bench;
using Clock = std::chrono::steady_clock;

constexpr std::size_t TouchedBytes = std::size_t{1} << 30;
constexpr int PrintTurns = 301;
constexpr int WaitTurns = 151;
constexpr double LimitOfRatio = 1.5;

double Milliseconds(Clock::duration duration) {
  return std::chrono::duration<double, std::milli>(duration).count();
}

void Report(const char* name, const std::vector<double>& ours, const char* peerName,
            const std::vector<double>& peer, const char* unit, double scale) {
  bench::Print({name, bench::Median(ours) * scale, unit, peerName, bench::Median(peer) * scale,
                LimitOfRatio});
}

[[noreturn]] void Fail(const char* what) {
  bench::Fail(std::string(what) + ": " + std::strerror(errno));
}

/// A data root with two children.
class Root : public bench::DataRoot {
 public:
  Root() {
    ::setenv("RASTREL_RESOURCES", Path().c_str(), 1);  // holds none
    for (const char* folder : {"Queue/rip/System/c-out", "Queue/rip/CFM", "job"})
      std::filesystem::create_directories(Path(folder));
    Write("job/sign.ps", "%!PS\n");
    // The format is a page list; the printf of coreutils passes over the arguments with a warning.
    WriteScript(
        "Queue/rip/quick",
        "#!/usr/bin/printf begin := once\\nid := 1\\ndir := /none/\\ntitle := A\\nend\\n\n");
    WriteScript("Queue/rip/slow", "#!/bin/sh\nexec sleep 1000\n");
    // It ends once it has seen its input: a write to one that is gone already aborts the job.
    WriteScript("Queue/rip/coreodalis.exe", "#!/bin/sh\nread -r line\nexit 0\n");
    UseRip("quick");
  }

  void UseRip(const char* name) const {
    const std::string rip = Path("Queue/rip/corerast.exe");
    std::filesystem::remove(rip);
    std::filesystem::create_symlink(name, rip);
  }
  [[nodiscard]] std::wstring JobFile() const { return Wide("job/sign.ps"); }

 private:
  void WriteScript(const char* name, const char* content) const {
    std::filesystem::permissions(File(name, content), std::filesystem::perms::owner_all);
  }
};

/// Both ends of a pipe; those still open are closed at the end.
class Pipe {
 public:
  Pipe() {
    if (::pipe2(m_Ends.data(), O_CLOEXEC) != 0) Fail("pipe2");
  }
  ~Pipe() {
    CloseRead();
    CloseWrite();
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  [[nodiscard]] int Read() const { return m_Ends[0]; }
  [[nodiscard]] int Write() const { return m_Ends[1]; }
  void CloseRead() { Close(m_Ends[0]); }
  void CloseWrite() { Close(m_Ends[1]); }

 private:
  static void Close(int& end) {
    if (end >= 0) ::close(end);
    end = -1;
  }
  std::array<int, 2> m_Ends{-1, -1};
};

pid_t Spawn(const std::string& program, const std::vector<std::string>& words, int in, int out,
            int error) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  if (in >= 0) posix_spawn_file_actions_adddup2(&actions, in, 0);
  if (out >= 0) posix_spawn_file_actions_adddup2(&actions, out, 1);
  if (error >= 0) posix_spawn_file_actions_adddup2(&actions, error, 2);
  std::vector<char*> arguments = {const_cast<char*>(program.c_str())};
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  pid_t child = 0;
  const int failure =
      ::posix_spawn(&child, program.c_str(), &actions, nullptr, arguments.data(), ::environ);
  posix_spawn_file_actions_destroy(&actions);
  if (failure != 0) {
    errno = failure;
    Fail("posix_spawn");
  }
  return child;
}

/// Reads both until both have ended.
void Drain(int first, int second) {
  std::array<pollfd, 2> entries{pollfd{first, POLLIN, 0}, pollfd{second, POLLIN, 0}};
  std::array<char, 4096> buffer{};
  int open = (first >= 0 ? 1 : 0) + (second >= 0 ? 1 : 0);
  while (open > 0) {
    if (::poll(entries.data(), entries.size(), -1) < 0) Fail("poll");
    for (pollfd& entry : entries) {
      if (entry.fd < 0 || entry.revents == 0) continue;
      if (::read(entry.fd, buffer.data(), buffer.size()) > 0) continue;
      entry.fd = -1;
      --open;
    }
  }
}

void RunBare(const Root& root) {
  const std::string job = root.Path("job/sign.ps");
  {
    Pipe out;
    Pipe error;
    const pid_t rip = Spawn(root.Path("Queue/rip/corerast.exe"),
                            {"-M", "-Q", "-m128", root.Path("job/sign.psp"), job}, -1, out.Write(),
                            error.Write());
    out.CloseWrite();
    error.CloseWrite();
    Drain(out.Read(), error.Read());
    if (::waitpid(rip, nullptr, 0) != rip) Fail("waitpid");
  }
  Pipe in;
  Pipe error;
  const pid_t engine = Spawn(root.Path("Queue/rip/coreodalis.exe"),
                             {"-M", "-Q", "-k400", "-N", "-"}, in.Read(), -1, error.Write());
  if (::write(in.Write(), "page\n", 5) != 5) Fail("write");
  in.CloseWrite();
  error.CloseWrite();
  Drain(error.Read(), -1);
  if (::waitpid(engine, nullptr, 0) != engine) Fail("waitpid");
}

/// One print, which must end well.
void RunOurs(const Root& root) {
  CJobTicket ticket;
  ticket.OpenLog([](const wchar_t*) {});
  ticket.SetJobFile(root.JobFile());
  if (!ticket.PrintJob()) Fail("the print did not start");
  ticket.EndPrint();
  if (ticket.m_Status != JS_ACTIVE || ticket.m_Error != JTE_NONE) Fail("a print did not end well");
}

void MeasurePrint(const Root& root) {
  std::vector<double> ours;
  std::vector<double> peer;
  for (int turn = 0; turn < PrintTurns; ++turn) {
    const auto start = Clock::now();
    RunBare(root);
    const auto middle = Clock::now();
    RunOurs(root);
    const auto end = Clock::now();
    peer.push_back(Milliseconds(middle - start));
    ours.push_back(Milliseconds(end - middle));
  }
  Report("print, two children that end at once", ours, "bare spawn, drain and reap", peer, "ms", 1);
}

// Of the child that a supervisor started last.
std::atomic<pid_t> startedChild = 0;
std::atomic<Clock::rep> knownAt = 0;

void CatchChild() {
  os::Calls().spawn = [](pid_t* id, const char* path, const posix_spawn_file_actions_t* actions,
                         const posix_spawnattr_t* attributes, char* const arguments[],
                         char* const environment[]) {
    const int error = ::posix_spawn(id, path, actions, attributes, arguments, environment);
    startedChild = *id;
    return error;
  };
}

pid_t WaitForChild() {
  while (startedChild == 0) std::this_thread::yield();
  // The one that waits is to be asleep, and the child past its start.
  std::this_thread::sleep_for(std::chrono::milliseconds(5));
  return startedChild.exchange(0);
}

double Since(Clock::rep start, Clock::rep end) {
  return Milliseconds(Clock::duration(end - start));
}

double OursToKnowOfEnd(const Root& root) {
  CJobTicket ticket;
  ticket.OpenLog([](const wchar_t* text) {
    if (std::wcsncmp(text, L"Rip exited", 10) == 0)
      knownAt = Clock::now().time_since_epoch().count();
  });
  ticket.SetJobFile(root.JobFile());
  if (!ticket.PrintJob()) Fail("the print did not start");
  const pid_t child = WaitForChild();
  const auto start = Clock::now().time_since_epoch().count();
  ::kill(child, SIGKILL);
  ticket.EndPrint();
  return Since(start, knownAt);
}

double BareToKnowOfEnd(const Root& root) {
  const pid_t child = Spawn(root.Path("Queue/rip/corerast.exe"), {}, -1, -1, -1);
  const int process = os::Calls().pidfd_open(child, 0);
  std::thread waiter([process] {
    pollfd entry{process, POLLIN, 0};
    ::poll(&entry, 1, -1);
    knownAt = Clock::now().time_since_epoch().count();
  });
  startedChild = child;
  WaitForChild();
  const auto start = Clock::now().time_since_epoch().count();
  ::kill(child, SIGKILL);
  waiter.join();
  ::close(process);
  ::waitpid(child, nullptr, 0);
  return Since(start, knownAt);
}

/// Notes when a process has died, on a thread of its own.
class Observer {
 public:
  explicit Observer(pid_t child) : m_Process(os::Calls().pidfd_open(child, 0)) {
    m_Thread = std::thread([this] {
      pollfd entry{m_Process, POLLIN, 0};
      ::poll(&entry, 1, -1);
      m_Died = Clock::now().time_since_epoch().count();
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  ~Observer() { ::close(m_Process); }
  Observer(const Observer&) = delete;
  Observer& operator=(const Observer&) = delete;
  Clock::rep Died() {
    m_Thread.join();
    return m_Died;
  }

 private:
  int m_Process;
  Clock::rep m_Died = 0;
  std::thread m_Thread;
};

double OursFromAbortToDeath(const Root& root) {
  CJobTicket ticket;
  ticket.OpenLog([](const wchar_t*) {});
  ticket.SetJobFile(root.JobFile());
  if (!ticket.PrintJob()) Fail("the print did not start");
  Observer observer(WaitForChild());
  const auto start = Clock::now().time_since_epoch().count();
  ticket.GetPrintThread()->Abort();
  const auto died = observer.Died();
  ticket.EndPrint();
  return Since(start, died);
}

double BareFromAbortToDeath(const Root& root) {
  const pid_t child = Spawn(root.Path("Queue/rip/corerast.exe"), {}, -1, -1, -1);
  const int process = os::Calls().pidfd_open(child, 0);
  const int abort = ::eventfd(0, EFD_CLOEXEC);
  std::thread waiter([process, abort] {
    std::array<pollfd, 2> entries{pollfd{abort, POLLIN, 0}, pollfd{process, POLLIN, 0}};
    ::poll(entries.data(), entries.size(), -1);
    os::Calls().pidfd_send_signal(process, SIGKILL, nullptr, 0);
  });
  startedChild = child;
  WaitForChild();
  Observer observer(child);
  const auto start = Clock::now().time_since_epoch().count();
  ::eventfd_write(abort, 1);
  const auto died = observer.Died();
  waiter.join();
  ::close(abort);
  ::close(process);
  ::waitpid(child, nullptr, 0);
  return Since(start, died);
}

void MeasureWaits(const Root& root) {
  root.UseRip("slow");
  const os::SystemCallsGuard guard;
  CatchChild();
  std::vector<double> ourEnd;
  std::vector<double> bareEnd;
  std::vector<double> ourAbort;
  std::vector<double> bareAbort;
  for (int turn = 0; turn < WaitTurns; ++turn) {
    ourEnd.push_back(OursToKnowOfEnd(root));
    bareEnd.push_back(BareToKnowOfEnd(root));
    ourAbort.push_back(OursFromAbortToDeath(root));
    bareAbort.push_back(BareFromAbortToDeath(root));
  }
  Report("a child's end to the supervisor's knowing it", ourEnd, "bare poll on a pidfd", bareEnd,
         "us", 1000);
  Report("abort to the child's death", ourAbort, "bare poll on an eventfd and a pidfd", bareAbort,
         "us", 1000);
}

// On a machine that is busy with other things, whoever wakes more threads waits more often for a
// processor, by milliseconds: what would be measured is the others. Both sides and their children
// run ahead of them, if the system permits it.
void RunAheadOfOthers() {
  const sched_param parameters{.sched_priority = 1};
  if (::sched_setscheduler(0, SCHED_RR, &parameters) != 0)
    std::printf("real-time scheduling refused: wants a machine that does nothing else\n");
}

}  // namespace

int main() {
  RunAheadOfOthers();
  void* memory =
      ::mmap(nullptr, TouchedBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) Fail("mmap");
  std::memset(memory, 1, TouchedBytes);
  const Root root;
  RunBare(root);
  RunOurs(root);
  MeasurePrint(root);
  MeasureWaits(root);
}
