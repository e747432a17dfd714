#include "interpreter/guardian.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <map>
#include <string_view>
#include <utility>
#include <vector>

#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::interpreter {
namespace {

// First byte of a message; the rest is a path, or a process id in decimal.
enum class Order : char {
  GuardPath = 'P',
  ReleasePath = 'p',
  ReleaseAllPaths = 'k',
  GuardGroup = 'G',
  ReleaseGroup = 'g',
};

constexpr std::size_t MessageLimit = 16384;  // longer than any path that the kernel takes
constexpr std::chrono::seconds KillTimeout{10};

bool Send(int descriptor, Order order, std::string_view text) noexcept {
  char message[MessageLimit];
  if (text.size() + 1 > sizeof message) {
    errno = ENAMETOOLONG;
    return false;
  }
  message[0] = static_cast<char>(order);
  if (!text.empty()) std::memcpy(message + 1, text.data(), text.size());
  ssize_t sent = 0;
  do {
    sent = send(descriptor, message, text.size() + 1, MSG_NOSIGNAL);
  } while (sent < 0 && errno == EINTR);
  return sent == static_cast<ssize_t>(text.size() + 1);
}

// Decimal text without an allocation: a forked child may call this before its exec.
bool SendNumber(int descriptor, Order order, pid_t number) noexcept {
  char digits[24];
  std::size_t first = sizeof digits;
  long rest = number;
  if (rest <= 1) return false;  // 0 and 1 would reach far more than one group
  while (rest > 0) {
    digits[--first] = static_cast<char>('0' + rest % 10);
    rest /= 10;
  }
  return Send(descriptor, order, std::string_view(digits + first, sizeof digits - first));
}

void RemovePath(const std::string& path) {
  std::error_code error;
  std::filesystem::remove_all(path, error);
  if (error) {
    os::WriteToStandardError("WARNING: What a broken-off run left could not be removed: " + path +
                             ": " + DescribeError(error.value()) + "\n");
  }
}

// The other process.
class Watch {
 public:
  explicit Watch(int descriptor) : m_Descriptor(descriptor) {}

  void Run() {
    Receive();
    for (auto& [leader, process] : m_Groups) EndGroup(leader, process.Get());
    for (const std::string& path : m_Paths) RemovePath(path);
  }

 private:
  // Returns when the last copy of the other end is closed. Messages sent before that are all seen.
  void Receive() {
    std::vector<char> message(MessageLimit);
    while (true) {
      const ssize_t count = recv(m_Descriptor, message.data(), message.size(), 0);
      if (count < 0 && errno == EINTR) continue;
      if (count <= 0) return;
      Obey(static_cast<Order>(message[0]),
           std::string(message.data() + 1, static_cast<std::size_t>(count) - 1));
    }
  }

  void Obey(Order order, const std::string& text) {
    switch (order) {
      case Order::GuardPath: m_Paths.insert(text); break;
      case Order::ReleasePath: m_Paths.erase(text); break;
      case Order::ReleaseAllPaths: m_Paths.clear(); break;
      case Order::GuardGroup: {
        const pid_t leader = static_cast<pid_t>(std::stol(text));
        m_Groups[leader].Reset(static_cast<int>(syscall(SYS_pidfd_open, leader, 0)));
        break;
      }
      case Order::ReleaseGroup: m_Groups.erase(static_cast<pid_t>(std::stol(text))); break;
    }
  }

  // Files can only be removed for good when nobody makes new ones, so the leader's end is awaited.
  static void EndGroup(pid_t leader, int process) {
    kill(-leader, SIGKILL);
    if (process < 0) return;
    syscall(SYS_pidfd_send_signal, process, SIGKILL, nullptr, 0);
    pollfd entry{process, POLLIN, 0};
    const auto deadline = os::Deadline::After(KillTimeout);
    while (poll(&entry, 1, deadline.PollTimeout()) < 0 && errno == EINTR) {
    }
  }

  int m_Descriptor;
  std::set<std::string> m_Paths;
  std::map<pid_t, os::FileDescriptor> m_Groups;
};

void KeepOnly(int socket, bool holdOutput) {
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  dup2(nothing, STDIN_FILENO);
  if (!holdOutput) dup2(nothing, STDOUT_FILENO);
  if (socket > 3) close_range(3, static_cast<unsigned>(socket) - 1, 0);
  close_range(static_cast<unsigned>(std::max(socket, 2)) + 1, ~0U, 0);
}

[[noreturn]] void RunGuardian(int socket, bool holdOutput) {
  setsid();
  for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGPIPE, SIGUSR1, SIGUSR2}) {
    std::signal(signal, SIG_IGN);
  }
  prctl(PR_SET_NAME, "guardian");
  KeepOnly(socket, holdOutput);
  if (chdir("/") != 0) errno = 0;  // only so as not to hold a directory
  try {
    Watch(socket).Run();
  } catch (...) {
    _exit(1);
  }
  _exit(0);
}

}  // namespace

Expected<Guardian> Guardian::Start(bool holdOutput) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
    return Failure{"socketpair", "guardian", errno};
  }
  const pid_t process = fork();
  if (process < 0) {
    const int error = errno;
    close(ends[0]);
    close(ends[1]);
    return Failure{"fork", "guardian", error};
  }
  if (process == 0) {
    close(ends[0]);
    RunGuardian(ends[1], holdOutput);
  }
  close(ends[1]);
  return Guardian(ends[0], process);
}

Guardian::Guardian(Guardian&& other) noexcept
    : m_Descriptor(std::exchange(other.m_Descriptor, -1)),
      m_Process(std::exchange(other.m_Process, -1)),
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
  for (const std::string& path : m_Paths) RemovePath(path);
}

bool Guardian::Guard(const std::string& path) {
  if (path.empty() || path.front() != '/') return false;
  m_Paths.insert(path);
  return Send(m_Descriptor, Order::GuardPath, path);
}

bool Guardian::Release(const std::string& path) {
  m_Paths.erase(path);
  return Send(m_Descriptor, Order::ReleasePath, path);
}

bool Guardian::ReleaseAll() {
  m_Paths.clear();
  return Send(m_Descriptor, Order::ReleaseAllPaths, {});
}

bool Guardian::GuardGroup(pid_t leader) { return GuardGroup(m_Descriptor, leader); }

bool Guardian::GuardGroup(int guardianDescriptor, pid_t leader) noexcept {
  return SendNumber(guardianDescriptor, Order::GuardGroup, leader);
}

bool Guardian::ReleaseGroup(pid_t leader) {
  return SendNumber(m_Descriptor, Order::ReleaseGroup, leader);
}

}  // namespace rastrel::interpreter
