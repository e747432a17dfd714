#include "interpreter/guarded_process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <utility>

#include "interpreter/exec_permit.h"
#include "interpreter/signal_block.h"
#include "interpreter/warm_message.h"
#include "rastrel/platform/os/system_calls.h"

namespace rastrel::interpreter {
namespace {

// Above every number that a program is given, so that putting one in place never hits another.
constexpr int LowestOwn = 100;

std::vector<char*> Pointers(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (const std::string& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

// All that the child needs, made before the fork: after it, only system calls are safe, since
// another thread may have held a lock of the C library's.
struct Launch {
  const ProcessRequest& request;
  Wall wall;
  std::vector<char*> arguments = Pointers(request.arguments);
  std::vector<char*> environment = Pointers(request.environment);
  std::vector<int> sources = request.descriptors;  // -1 replaced
  std::vector<int> copies = std::vector<int>(request.descriptors.size());
  pid_t parent = getpid();
};

bool PlaceDescriptors(Launch& launch) noexcept {
  const std::size_t count = launch.sources.size();
  for (std::size_t i = 0; i < count; ++i) {
    launch.copies[i] = fcntl(launch.sources[i], F_DUPFD_CLOEXEC, LowestOwn);
    if (launch.copies[i] < 0) return false;
  }
  for (std::size_t target = 0; target < count; ++target) {
    if (dup2(launch.copies[target], static_cast<int>(target)) < 0) return false;
  }
  return close_range(static_cast<unsigned>(count), ~0U, CLOSE_RANGE_CLOEXEC) == 0;
}

void ResetSignals() noexcept {
  for (int signal = 1; signal < NSIG; ++signal) std::signal(signal, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

// In the forked process. Returns only if something failed, with errno set.
void BecomeProgram(Launch& launch, int guardian, int starter) noexcept {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != launch.parent) _exit(0);  // it died before the line above
  setsid();
  if (!Guardian::GuardGroup(guardian, getpid())) return;
  ResetSignals();
  umask(S_IRWXG | S_IRWXO);  // its files show the job's content
  const std::string& directory = launch.request.directory;
  if (!directory.empty() && chdir(directory.c_str()) != 0) return;
  if (!PlaceDescriptors(launch)) return;
  const int listener = launch.wall.Enter();
  if (listener >= 0 && !SendListener(starter, listener)) return;
  execve(launch.request.executable.c_str(), launch.arguments.data(), launch.environment.data());
}

// The error number that came from the started process, or of its permission, or 0 once the exec has
// closed its socket. After an error the process may still wait, and must be killed.
int AwaitStart(int socket) {
  for (;;) {
    const StartMessage message = ReceiveStart(socket);
    if (!message.listener.IsOpen()) return message.error;
    if (const int error = PermitExec(message.listener, socket); error != 0) return error;
  }
}

pid_t Fork(Launch& launch, int guardian, int starter) {
  const SignalBlock blocked;
  const pid_t process = os::Calls().fork();
  if (process != 0) return process;
  BecomeProgram(launch, fcntl(guardian, F_DUPFD_CLOEXEC, LowestOwn), starter);
  const int error = errno;
  if (write(starter, &error, sizeof error) < 0) _exit(126);
  _exit(127);
}

}  // namespace

Expected<GuardedProcess> GuardedProcess::Start(const ProcessRequest& request, Guardian& guardian) {
  auto wall = Wall::Build(request.wall);
  if (!wall) return wall.Error();
  const os::FileDescriptor nothing(open("/dev/null", O_RDWR | O_CLOEXEC));
  if (!nothing.IsOpen()) return Failure{"open", "/dev/null", errno};
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
    return Failure{"socketpair", request.executable, errno};
  }
  const os::FileDescriptor own(ends[0]);
  os::FileDescriptor childs(fcntl(ends[1], F_DUPFD_CLOEXEC, LowestOwn));
  close(ends[1]);
  Launch launch{request, std::move(*wall)};
  for (int& source : launch.sources) {
    if (source < 0) source = nothing.Get();
  }
  const pid_t process = Fork(launch, guardian.Descriptor(), childs.Get());
  if (process < 0) return Failure{"fork", request.executable, errno};
  childs.Reset();
  const int error = AwaitStart(own.Get());
  const auto descriptor = static_cast<int>(syscall(SYS_pidfd_open, process, 0));
  GuardedProcess started(process, descriptor, guardian);
  if (error != 0) return Failure{"execute", request.executable, error};
  if (descriptor < 0) return Failure{"pidfd_open", request.executable, errno};
  return started;
}

GuardedProcess GuardedProcess::OfWarm(pid_t process, os::FileDescriptor descriptor,
                                      os::FileDescriptor connection, os::FileDescriptor lifetime,
                                      Guardian& guardian) {
  GuardedProcess started(process, descriptor.Release(), guardian);
  started.m_Connection = std::move(connection);
  started.m_Lifetime = std::move(lifetime);
  return started;
}

GuardedProcess::GuardedProcess(GuardedProcess&& other) noexcept
    : m_Process(std::exchange(other.m_Process, -1)),
      m_Descriptor(std::move(other.m_Descriptor)),
      m_Connection(std::move(other.m_Connection)),
      m_Lifetime(std::move(other.m_Lifetime)),
      m_Guardian(other.m_Guardian),
      m_End(std::move(other.m_End)) {}

GuardedProcess::~GuardedProcess() {
  Kill();
  if (!Wait()) errno = 0;  // nobody is left to hear of it
}

void GuardedProcess::Kill() {
  if (m_Process <= 0) return;
  // A warm interpreter that was killed keeps no number for its job's process: if that one has ended
  // as well, the number may be another's.
  if (IsWarm() && syscall(SYS_pidfd_send_signal, m_Descriptor.Get(), SIGKILL, nullptr, 0) != 0) {
    return;
  }
  kill(-m_Process, SIGKILL);
  kill(m_Process, SIGKILL);  // for the moment before it has a group
}

void GuardedProcess::Pause() const {
  if (m_Process > 0) kill(-m_Process, SIGSTOP);
}

void GuardedProcess::Resume() const {
  if (m_Process > 0) kill(-m_Process, SIGCONT);
}

Expected<ProcessEnd> GuardedProcess::Wait() {
  if (m_Process <= 0) return m_End;
  if (IsWarm()) return WaitForWarm();
  siginfo_t state{};
  const auto process = static_cast<id_t>(m_Process);
  const auto wait = [&](int options) {
    int result = 0;
    do {
      result = waitid(P_PID, process, &state, WEXITED | options);
    } while (result != 0 && errno == EINTR);
    return result == 0;
  };
  // It stays a zombie until the guardian has let go, so that its number stays its own.
  if (wait(WNOWAIT)) kill(-m_Process, SIGKILL);
  if (!m_Guardian->ReleaseGroup(m_Process)) errno = 0;  // a guardian that is gone kills nobody
  if (wait(0)) {
    m_End = ProcessEnd{state.si_code == CLD_EXITED, state.si_status};
  } else {
    m_End = Failure{"waitid", "process " + std::to_string(m_Process), errno};
  }
  m_Process = -1;
  return m_End;
}

// The warm interpreter keeps the ended process's number until the connection is closed.
Expected<ProcessEnd> GuardedProcess::WaitForWarm() {
  pollfd entry{m_Descriptor.Get(), POLLIN, 0};
  while (poll(&entry, 1, -1) < 0 && errno == EINTR) {
  }
  Kill();  // the rest of its group
  if (!m_Guardian->ReleaseGroup(m_Process)) errno = 0;
  // Where neither the process nor the warm interpreter has said how it ended, both were killed.
  m_End = ProcessEnd{false, SIGKILL};
  const auto received = ReceiveWarm(m_Connection.Get());
  if (const auto reply = received ? WarmReplyOf(*received) : Expected<WarmReply>(WarmReply{})) {
    if (reply->news == WarmNews::Exited) m_End = ProcessEnd{true, reply->value};
    if (reply->news == WarmNews::Killed) m_End = ProcessEnd{false, reply->value};
  }
  m_Connection.Reset();
  m_Lifetime.Reset();
  m_Process = -1;
  return m_End;
}

}  // namespace rastrel::interpreter
