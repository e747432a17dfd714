#include "rastrel/platform/os/reaper.h"

#include <poll.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "rastrel/platform/os/system_calls.h"
#include "rastrel/platform/os/thread.h"

namespace rastrel::os {
namespace {

constexpr std::size_t ReaperStack = std::size_t{128} << 10;
// ThreadSanitizer takes a reaper for a fork and ends the program. Built with it, the child's thread
// starts the child and waits for it, so all else is as ever.
#if defined(__SANITIZE_THREAD__)
constexpr bool HasReapers = false;
#else
constexpr bool HasReapers = true;
#endif
constexpr int LooksForEnd = 200;
constexpr const char* ReaperName = "rastrel-reaper";  // at most 15 bytes

Failure NoEnd(HANDLE process, int error) {
  return {"waitid", "process handle " + std::to_string(process), error};
}

ExitState StateFrom(const siginfo_t& information) {
  return {.running = false,
          .byItself = information.si_code == CLD_EXITED,
          .status = information.si_status};
}

class Reaper {
 public:
  explicit Reaper(std::function<Expected<ChildProcess>()> start) : m_Start(std::move(start)) {}

  /// False if there is no thread.
  [[nodiscard]] bool Begin() {
    m_Thread = Thread::Start([this] { Keep(); });
    return m_Thread != nullptr;
  }
  Expected<ChildProcess> WaitForStart() {
    std::unique_lock lock(m_Mutex);
    m_Changed.wait(lock, [this] { return m_Started.has_value(); });
    return *m_Started;
  }
  // Who waits has seen the child end, which wakes the reaper at the same moment: its answer is a
  // few microseconds off, less than a sleep and a wakeup take.
  Expected<ExitState> WaitForEnd() {
    for (int look = 0; look < LooksForEnd && !HasEnded(); ++look) std::this_thread::yield();
    std::unique_lock lock(m_Mutex);
    m_Changed.wait(lock, [this] { return m_End.has_value(); });
    return *m_End;
  }
  [[nodiscard]] bool HasEnded() {
    const std::scoped_lock lock(m_Mutex);
    return m_End.has_value();
  }
  void Join() {
    std::call_once(m_Joined, [this] { m_Thread->Join(); });
  }

 private:
  void Keep();
  static int Main(void* reaper);
  void KeepChild();
  Expected<ChildProcess> StartChild();
  void TakeEnd(const ChildProcess& child);
  template <typename Result>
  void Publish(std::optional<Expected<Result>>& place, Expected<Result> result) {
    const std::scoped_lock lock(m_Mutex);
    if (place) return;
    place.emplace(std::move(result));
    m_Changed.notify_all();
  }

  std::function<Expected<ChildProcess>()> m_Start;
  std::unique_ptr<Thread> m_Thread;
  std::once_flag m_Joined;
  decltype(SystemCalls::waitid) m_WaitId = nullptr;
  std::mutex m_Mutex;
  std::condition_variable m_Changed;
  std::optional<Expected<ChildProcess>> m_Started;
  std::optional<Expected<ExitState>> m_End;
};

// On the child's thread.
void Reaper::Keep() {
  // The reaper inherits the mask: a signal that a terminal sends to all must not end it.
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, nullptr);
  if (!HasReapers) return KeepChild();
  alignas(std::max_align_t) std::array<std::byte, ReaperStack> stack;
  // No signal for its end. The call returns when it is gone.
  const int id =
      Calls().clone(Main, stack.data() + stack.size(), CLONE_VM | CLONE_VFORK | CLONE_FILES, this);
  const int error = errno;
  if (id > 0) {
    while (::waitpid(id, nullptr, __WALL) < 0 && errno == EINTR) {
    }
  }
  // Both are there already, unless there was no reaper or somebody has killed it.
  Publish<ChildProcess>(m_Started, Failure{"clone", {}, id < 0 ? error : ECHILD});
  Publish<ExitState>(m_End, Failure{"waitid", {}, ECHILD});
}

// In the reaper.
int Reaper::Main(void* reaper) {
  // Sent when the child's thread ends, which it can't before this process but with the host.
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  ::prctl(PR_SET_NAME, ReaperName);  // for `ps`, and for StarterProcessId
  // The handlers are copies. A host that ignores the signal would lose the status here, too.
  struct sigaction standard {};
  standard.sa_handler = SIG_DFL;
  ::sigaction(SIGCHLD, &standard, nullptr);
  static_cast<Reaper*>(reaper)->KeepChild();
  ::_exit(0);
}

void Reaper::KeepChild() {
  m_WaitId = Calls().waitid;  // now: a test may put the calls back while the child runs
  const Expected<ChildProcess> child = StartChild();
  Publish<ChildProcess>(m_Started, child);
  if (child) TakeEnd(*child);
}

Expected<ChildProcess> Reaper::StartChild() {
  try {
    return m_Start();
  } catch (const std::exception&) {  // no memory
    return Failure{"posix_spawn", {}, ENOMEM};
  }
}

void Reaper::TakeEnd(const ChildProcess& child) {
  siginfo_t information{};
  const auto id = static_cast<id_t>(child.id);
  int result = 0;
  do {
    result = m_WaitId(P_PID, id, &information, WEXITED);
  } while (result != 0 && errno == EINTR);
  if (result == 0) {
    Publish<ExitState>(m_End, StateFrom(information));
  } else {
    Publish<ExitState>(m_End, NoEnd(child.process, errno));
  }
}

// The reapers by the handles of their children. A handle that its owner closed without taking the
// child's end may come back as another child's; the reaper then stays until its child has ended.
class Reapers {
 public:
  void Add(HANDLE process, std::shared_ptr<Reaper> reaper) {
    const std::scoped_lock lock(m_Mutex);
    if (auto& place = m_ByHandle[process]; place) {
      m_Left.push_back(std::exchange(place, std::move(reaper)));
    } else {
      place = std::move(reaper);
    }
  }
  std::shared_ptr<Reaper> Find(HANDLE process) {
    const std::scoped_lock lock(m_Mutex);
    const auto found = m_ByHandle.find(process);
    return found == m_ByHandle.end() ? nullptr : found->second;
  }
  /// Nothing if another thread has removed it.
  void Remove(HANDLE process, const std::shared_ptr<Reaper>& reaper) {
    const std::scoped_lock lock(m_Mutex);
    const auto found = m_ByHandle.find(process);
    if (found == m_ByHandle.end() || found->second != reaper) return;
    m_ByHandle.erase(found);
    m_Left.push_back(reaper);
  }
  /// Waits for the threads of those whose child has ended.
  void JoinEnded() {
    std::vector<std::shared_ptr<Reaper>> ended;
    {
      const std::scoped_lock lock(m_Mutex);
      const auto first = std::partition(m_Left.begin(), m_Left.end(),
                                        [](const auto& left) { return !left->HasEnded(); });
      ended.assign(first, m_Left.end());
      m_Left.erase(first, m_Left.end());
      // Their handle may have been closed by an owner that could not end the child.
      for (const auto& [process, reaper] : m_ByHandle)
        if (reaper->HasEnded()) ended.push_back(reaper);
    }
    for (const auto& reaper : ended) reaper->Join();
  }

 private:
  std::mutex m_Mutex;
  std::map<HANDLE, std::shared_ptr<Reaper>> m_ByHandle;
  std::vector<std::shared_ptr<Reaper>> m_Left;
};

// Never destroyed: at the process's end children may still run.
Reapers& AllReapers() {
  static auto* const reapers = new Reapers;
  return *reapers;
}

bool HasEnded(HANDLE process) {
  pollfd entry{.fd = process, .events = POLLIN, .revents = 0};
  return ::poll(&entry, 1, 0) == 1;
}

}  // namespace

Expected<ChildProcess> StartInReaper(std::function<Expected<ChildProcess>()> start) {
  auto reaper = std::make_shared<Reaper>(std::move(start));
  JoinEndedReapers();
  if (!reaper->Begin()) return Failure{"pthread_create", {}, EAGAIN};
  Expected<ChildProcess> child = reaper->WaitForStart();
  if (child) {
    AllReapers().Add(child->process, std::move(reaper));
  } else {
    reaper->Join();
  }
  return child;
}

Expected<ExitState> TakeEndFromReaper(HANDLE process, bool wait) {
  const auto reaper = AllReapers().Find(process);
  if (!reaper) return NoEnd(process, ECHILD);
  if (!wait && !reaper->HasEnded() && !HasEnded(process)) return ExitState{.running = true};
  Expected<ExitState> end = reaper->WaitForEnd();
  AllReapers().Remove(process, reaper);
  return end;
}

void JoinEndedReapers() { AllReapers().JoinEnded(); }

std::uint32_t StarterProcessId() {
  const auto parent = static_cast<std::uint32_t>(::getppid());
  std::ifstream status("/proc/" + std::to_string(parent) + "/status");
  const std::string parentField = "PPid:";
  bool isReaper = false;
  for (std::string line; std::getline(status, line);) {
    if (line == std::string("Name:\t") + ReaperName) isReaper = true;
    if (isReaper && line.starts_with(parentField))
      return static_cast<std::uint32_t>(
          std::strtoul(line.c_str() + parentField.size(), nullptr, 10));
  }
  return parent;
}

}  // namespace rastrel::os
