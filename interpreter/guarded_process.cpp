#include "interpreter/guarded_process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <utility>

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

bool PlaceDescriptors(const std::vector<int>& wanted) {
  std::vector<int> copies;
  for (const int descriptor : wanted) {
    const int source = descriptor >= 0 ? descriptor : open("/dev/null", O_RDWR | O_CLOEXEC);
    copies.push_back(fcntl(source, F_DUPFD_CLOEXEC, LowestOwn));
    if (copies.back() < 0) return false;
  }
  for (std::size_t target = 0; target < copies.size(); ++target) {
    if (dup2(copies[target], static_cast<int>(target)) < 0) return false;
  }
  return close_range(static_cast<unsigned>(copies.size()), ~0U, CLOSE_RANGE_CLOEXEC) == 0;
}

void Limit(__rlimit_resource resource, std::uint64_t value) {
  if (value == 0) return;
  const rlimit limit{value, value};
  setrlimit(resource, &limit);
}

// In the forked process. Returns only if something failed, with errno set.
void BecomeProgram(const ProcessRequest& request, int guardian, pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(0);  // it died before the line above
  setpgid(0, 0);
  if (!Guardian::GuardGroup(guardian, getpid())) return;
  std::signal(SIGPIPE, SIG_DFL);
  Limit(RLIMIT_FSIZE, request.fileSizeLimit);
  Limit(RLIMIT_CPU, request.processorLimit);
  Limit(RLIMIT_CORE, 1);
  if (!request.directory.empty() && chdir(request.directory.c_str()) != 0) return;
  if (!PlaceDescriptors(request.descriptors)) return;
  const std::vector<char*> arguments = Pointers(request.arguments);
  const std::vector<char*> environment = Pointers(request.environment);
  execve(request.executable.c_str(), arguments.data(), environment.data());
}

// The error number that came through the pipe, or 0 once the exec has closed it.
int ReadStartError(int pipe) {
  int error = 0;
  ssize_t count = 0;
  do {
    count = read(pipe, &error, sizeof error);
  } while (count < 0 && errno == EINTR);
  return count == static_cast<ssize_t>(sizeof error) ? error : 0;
}

}  // namespace

Expected<GuardedProcess> GuardedProcess::Start(const ProcessRequest& request, Guardian& guardian) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return Failure{"pipe", request.executable, errno};
  const os::FileDescriptor reading(ends[0]);
  os::FileDescriptor writing(fcntl(ends[1], F_DUPFD_CLOEXEC, LowestOwn));
  close(ends[1]);
  const pid_t parent = getpid();
  const pid_t process = fork();
  if (process < 0) return Failure{"fork", request.executable, errno};
  if (process == 0) {
    const int channel = fcntl(guardian.Descriptor(), F_DUPFD_CLOEXEC, LowestOwn);
    BecomeProgram(request, channel, parent);
    const int error = errno;
    if (write(writing.Get(), &error, sizeof error) < 0) _exit(126);
    _exit(127);
  }
  writing.Reset();
  const int error = ReadStartError(reading.Get());
  const auto descriptor = static_cast<int>(syscall(SYS_pidfd_open, process, 0));
  GuardedProcess started(process, descriptor, guardian);
  if (error != 0) return Failure{"execute", request.executable, error};
  if (descriptor < 0) return Failure{"pidfd_open", request.executable, errno};
  return started;
}

GuardedProcess::GuardedProcess(GuardedProcess&& other) noexcept
    : m_Process(std::exchange(other.m_Process, -1)),
      m_Descriptor(std::move(other.m_Descriptor)),
      m_Guardian(other.m_Guardian),
      m_End(other.m_End) {}

GuardedProcess::~GuardedProcess() {
  Kill();
  Wait();
}

void GuardedProcess::Kill() {
  if (m_Process <= 0) return;
  kill(-m_Process, SIGKILL);
  kill(m_Process, SIGKILL);  // for the moment before it has a group
}

ProcessEnd GuardedProcess::Wait() {
  if (m_Process <= 0) return m_End;
  siginfo_t state{};
  const auto process = static_cast<id_t>(m_Process);
  // It stays a zombie until the guardian has let go, so that its number stays its own.
  while (waitid(P_PID, process, &state, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
  }
  kill(-m_Process, SIGKILL);
  if (!m_Guardian->ReleaseGroup(m_Process)) errno = 0;  // a guardian that is gone kills nobody
  while (waitid(P_PID, process, &state, WEXITED) != 0 && errno == EINTR) {
  }
  m_Process = -1;
  m_End = {state.si_code == CLD_EXITED, state.si_status};
  return m_End;
}

}  // namespace rastrel::interpreter
