#include "interpreter/warm/keeper.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <utility>
#include <vector>

#include "interpreter/ghostscript_files.h"
#include "interpreter/warm_start.h"
#include "rastrel/platform/os/system_calls.h"

namespace rastrel::interpreter::warm {
namespace {

constexpr int LowestOwn = 100;           // above every number that a job is given
constexpr std::size_t MaximumJobs = 64;  // at a time; whoever asks for more starts a program
constexpr int LookInterval = 5000;       // milliseconds between looks at the socket's name

// A signal might reach another process that has the number by now, so the one to end is asked by
// the name of its socket.
void EndLeastUsed(const WarmPlace& place, const std::string& own) {
  std::vector<std::string> others = place.Living();
  std::erase(others, own);
  // One without a name ends after the jobs that it has.
  for (std::size_t i = 0; i + MaximumWarmInterpreters <= others.size(); ++i) {
    place.Remove(others[i]);
  }
}

sigset_t Awaited() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGCHLD);
  sigaddset(&set, SIGTERM);
  return set;
}

Expected<os::FileDescriptor> Raised(os::FileDescriptor descriptor) {
  os::FileDescriptor raised(fcntl(descriptor.Get(), F_DUPFD_CLOEXEC, LowestOwn));
  if (!raised.IsOpen()) return Failure{"dup", {}, errno};
  return raised;
}

}  // namespace

Expected<Keeper> Keeper::Make(WarmPlace place, const WarmOptions& options, Lifetime lifetime) {
  const auto starting = place.Lock("start.lock", true);
  if (!starting) return starting.Error();
  JobBase base;
  base.identity = WarmIdentity(options);
  base.ownFiles = GhostscriptFiles(options.program);
  std::string name = WarmName(base.identity);
  auto lock = place.Lock(name + ".lock", false);
  if (!lock) return lock.Error();
  EndLeastUsed(place, name);
  auto raised = Raised(std::move(*lock));
  if (!raised) return raised.Error();
  return Keeper(std::move(place), std::move(name), std::move(base), lifetime, std::move(*raised));
}

Expected<void> Keeper::Serve(Library& library) {
  const sigset_t awaited = Awaited();
  sigprocmask(SIG_BLOCK, &awaited, nullptr);
  auto signals = Raised(os::FileDescriptor(signalfd(-1, &awaited, SFD_CLOEXEC | SFD_NONBLOCK)));
  if (!signals) return signals.Error();
  m_Signals = std::move(*signals);
  auto listening = m_Place.Listen(m_Name);
  if (!listening) return listening.Error();
  auto raised = Raised(std::move(*listening));
  if (!raised) return raised.Error();
  m_Listening = std::move(*raised);
  struct stat state {};
  const std::string path = "/proc/self/fd/" + std::to_string(m_Place.Descriptor()) + "/" + m_Name;
  if (lstat(path.c_str(), &state) != 0) return Failure{"stat", m_Name, errno};
  m_Inode = state.st_ino;
  m_Rest = os::Deadline::After(std::chrono::seconds(m_Lifetime.restSeconds));
  while (!m_Jobs.empty() || !MustEnd()) {
    if (MustEnd()) StopListening();
    Wait();
    TakeEnds();
    if (m_Listening.IsOpen()) Accept(library);
  }
  StopListening();
  return {};
}

bool Keeper::MustEnd() const {
  return m_Ends || m_Done >= m_Lifetime.jobs || (m_Jobs.empty() && m_Rest.HasPassed()) ||
         !IsStillNamed();
}

// Another may have taken the name, or the whole data root may be gone.
bool Keeper::IsStillNamed() const { return !m_Listening.IsOpen() || m_Place.Has(m_Name, m_Inode); }

void Keeper::StopListening() {
  if (!m_Listening.IsOpen()) return;
  const auto starting = m_Place.Lock("start.lock", true);
  if (IsStillNamed()) m_Place.Remove(m_Name);
  m_Ends = true;
  m_Listening.Reset();
  // The lock goes with its file: the next of the name makes another one.
  m_Place.Remove(m_Name + ".lock");
  m_Lock.Reset();
}

// Until there is something to do, or it is time to look whether there is.
void Keeper::Wait() {
  std::vector<pollfd> entries{{m_Listening.Get(), POLLIN, 0}, {m_Signals.Get(), POLLIN, 0}};
  for (const Job& job : m_Jobs) entries.push_back({job.connection.Get(), 0, 0});
  const int rest = m_Jobs.empty() ? m_Rest.PollTimeout() : -1;
  const int timeout = rest < 0 ? LookInterval : std::min(rest, LookInterval);
  if (os::Calls().poll(entries.data(), entries.size(), timeout) <= 0) return;
  std::size_t place = 2;
  for (auto job = m_Jobs.begin(); job != m_Jobs.end(); ++place) {
    const bool isLeft = (entries[place].revents & (POLLHUP | POLLERR)) != 0;
    const auto present = job++;
    if (!isLeft) continue;
    TakeLeft(*present);
    m_Jobs.erase(present);
  }
  signalfd_siginfo signal{};
  while (read(m_Signals.Get(), &signal, sizeof signal) == static_cast<ssize_t>(sizeof signal)) {
    if (signal.ssi_signo == SIGTERM) m_Ends = true;
  }
}

// Nobody waits for the job any more, or has its end: its number may go.
void Keeper::TakeLeft(Job& job) {
  kill(-job.process, SIGKILL);
  kill(job.process, SIGKILL);
  while (waitpid(job.process, nullptr, 0) < 0 && errno == EINTR) {
  }
  ++m_Done;
  m_Rest = os::Deadline::After(std::chrono::seconds(m_Lifetime.restSeconds));
  if (m_Lock.IsOpen()) futimens(m_Lock.Get(), nullptr);
}

void Keeper::TakeEnds() {
  for (Job& job : m_Jobs) {
    siginfo_t state{};
    // It stays a zombie, so that its number stays its own as long as somebody may use it.
    if (job.hasEnded ||
        waitid(P_PID, static_cast<id_t>(job.process), &state, WEXITED | WNOHANG | WNOWAIT) != 0 ||
        state.si_pid == 0) {
      continue;
    }
    job.hasEnded = true;
    const WarmReply reply{state.si_code == CLD_EXITED ? WarmNews::Exited : WarmNews::Killed,
                          state.si_status};
    static_cast<void>(SendWarm(job.connection.Get(), reply));
  }
}

void Keeper::Accept(Library& library) {
  os::FileDescriptor connection(
      accept4(m_Listening.Get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  if (!connection.IsOpen()) return;
  if (!IsOwnPeer(connection.Get()) || m_Jobs.size() >= MaximumJobs) return;
  auto raised = Raised(std::move(connection));
  if (!raised) return;
  const pid_t process = os::Calls().fork();
  if (process == 0) {
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    fcntl(raised->Get(), F_SETFL, 0);  // it waits for its request
    LiveAsJob(std::move(*raised), m_Base, library);
  }
  if (process > 0) m_Jobs.push_back({process, std::move(*raised)});
}

}  // namespace rastrel::interpreter::warm
