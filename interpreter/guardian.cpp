#include "interpreter/guardian.h"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <utility>

#include "interpreter/removal.h"
#include "interpreter/signal_block.h"
#include "rastrel/platform/os/system_calls.h"

namespace rastrel::interpreter {

Expected<Guardian> Guardian::Start(HeldStreams held) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
    return Failure{"socketpair", "guardian", errno};
  }
  // A handler of this process's must not run in the copy.
  const SignalBlock blocked;
  const pid_t process = os::Calls().fork();
  if (process < 0) {
    const int error = errno;
    close(ends[0]);
    close(ends[1]);
    return Failure{"fork", "guardian", error};
  }
  if (process == 0) {
    close(ends[0]);
    RunGuardian(ends[1], held);
  }
  close(ends[1]);
  return Guardian(ends[0], process, held);
}

Guardian::Guardian(Guardian&& other) noexcept
    : m_Descriptor(std::exchange(other.m_Descriptor, -1)),
      m_Process(std::exchange(other.m_Process, -1)),
      m_Held(other.m_Held),
      m_Paths(std::move(other.m_Paths)) {}

Guardian::~Guardian() {
  if (m_Descriptor < 0) return;
  close(m_Descriptor);
  int status = 0;
  pid_t waited = 0;
  do {
    waited = waitpid(m_Process, &status, 0);
  } while (waited < 0 && errno == EINTR);
  const bool cleared = waited == m_Process && WIFEXITED(status) && WEXITSTATUS(status) == 0;
  if (cleared) return;
  for (const std::string& path : m_Paths) {
    if (m_Held != HeldStreams::None) {
      RemoveGuarded(path.c_str());
    } else if (RemoveAll(path.c_str()) != 0) {
      errno = 0;  // the streams are a host's, who has not asked for reports
    }
  }
}

bool Guardian::Guard(const std::string& path) {
  if (path.empty() || path.front() != '/' || path.find('\0') != path.npos) return false;
  m_Paths.insert(path);
  return SendToGuardian(m_Descriptor, GuardianOrder::GuardPath, path.data(), path.size());
}

bool Guardian::Release(const std::string& path) {
  m_Paths.erase(path);
  return SendToGuardian(m_Descriptor, GuardianOrder::ReleasePath, path.data(), path.size());
}

bool Guardian::ReleaseAll() {
  m_Paths.clear();
  return SendToGuardian(m_Descriptor, GuardianOrder::ReleaseAllPaths, nullptr, 0);
}

bool Guardian::GuardGroup(pid_t leader) { return GuardGroup(m_Descriptor, leader); }

bool Guardian::GuardGroup(int guardianDescriptor, pid_t leader) noexcept {
  return SendToGuardian(guardianDescriptor, GuardianOrder::GuardGroup, leader);
}

bool Guardian::ReleaseGroup(pid_t leader) {
  return SendToGuardian(m_Descriptor, GuardianOrder::ReleaseGroup, leader);
}

}  // namespace rastrel::interpreter
