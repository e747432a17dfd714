#include "interpreter/guardian_watch.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <string_view>

#include "interpreter/removal.h"
#include "rastrel/platform/os/deadline.h"

namespace rastrel::interpreter {
namespace {

constexpr std::size_t MessageLimit = 16384;  // longer than any path that the kernel takes
constexpr std::size_t FirstRoom = 65536;
constexpr std::chrono::seconds KillTimeout{10};

// Bytes that grow, in memory straight from the system.
class Bytes {
 public:
  [[nodiscard]] char* Begin() const { return m_Begin; }
  [[nodiscard]] char* End() const { return m_Begin + m_Size; }

  // False if there is no memory.
  bool Append(const void* bytes, std::size_t count) {
    while (m_Size + count > m_Room) {
      const std::size_t room = m_Room == 0 ? FirstRoom : m_Room * 2;
      void* const begin = m_Begin == nullptr ? mmap(nullptr, room, PROT_READ | PROT_WRITE,
                                                    MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)
                                             : mremap(m_Begin, m_Room, room, MREMAP_MAYMOVE);
      if (begin == MAP_FAILED) return false;
      m_Begin = static_cast<char*>(begin);
      m_Room = room;
    }
    std::memcpy(End(), bytes, count);
    m_Size += count;
    return true;
  }

  void Erase(char* begin, std::size_t count) {
    std::memmove(begin, begin + count, static_cast<std::size_t>(End() - begin) - count);
    m_Size -= count;
  }

  void Clear() { m_Size = 0; }

 private:
  char* m_Begin = nullptr;
  std::size_t m_Size = 0;
  std::size_t m_Room = 0;
};

struct Group {
  pid_t leader;
  int process;  // the leader's pidfd
};

class Watch {
 public:
  explicit Watch(int descriptor) : m_Descriptor(descriptor) {}

  // False if something was to be guarded that there was no memory for.
  bool Run() {
    const bool keptAll = Receive();
    for (char* at = m_Groups.Begin(); at != m_Groups.End(); at += sizeof(Group)) EndGroup(At(at));
    for (char* at = m_Paths.Begin(); at != m_Paths.End(); at += std::strlen(at) + 1) {
      RemoveGuarded(at);
    }
    return keptAll;
  }

 private:
  // Returns when the last copy of the other end is closed. Messages sent before that are all seen.
  // False, and at once, if there is no memory for one: its sender learns that at the next message,
  // and clears away by itself.
  bool Receive() {
    static char message[MessageLimit + 1];
    while (true) {
      const ssize_t count = recv(m_Descriptor, message, MessageLimit, 0);
      if (count < 0 && errno == EINTR) continue;
      if (count <= 0) return count == 0;
      const auto size = static_cast<std::size_t>(count) - 1;
      message[count] = '\0';
      if (!Obey(static_cast<GuardianOrder>(message[0]), message + 1, size)) return false;
    }
  }

  bool Obey(GuardianOrder order, const char* text, std::size_t size) {
    switch (order) {
      case GuardianOrder::GuardPath: return m_Paths.Append(text, size + 1);
      case GuardianOrder::ReleasePath: ReleasePath(text, size + 1); return true;
      case GuardianOrder::ReleaseAllPaths: m_Paths.Clear(); return true;
      case GuardianOrder::GuardGroup: {
        const pid_t leader = LeaderIn(text);
        const Group group{leader, static_cast<int>(syscall(SYS_pidfd_open, leader, 0))};
        const bool kept = m_Groups.Append(&group, sizeof group);
        if (!kept) EndGroup(group);
        return kept;
      }
      case GuardianOrder::ReleaseGroup: ReleaseGroup(LeaderIn(text)); return true;
    }
    return true;
  }

  static pid_t LeaderIn(const char* text) {
    pid_t leader = 0;
    std::memcpy(&leader, text, sizeof leader);
    return leader;
  }

  static Group At(const char* place) {
    Group group{};
    std::memcpy(&group, place, sizeof group);
    return group;
  }

  void ReleasePath(const char* path, std::size_t size) {
    for (char* at = m_Paths.Begin(); at != m_Paths.End();) {
      const std::size_t length = std::strlen(at) + 1;
      if (length == size && std::memcmp(at, path, size) == 0) {
        m_Paths.Erase(at, length);
      } else {
        at += length;
      }
    }
  }

  void ReleaseGroup(pid_t leader) {
    for (char* at = m_Groups.Begin(); at != m_Groups.End();) {
      const Group group = At(at);
      if (group.leader == leader) {
        if (group.process >= 0) close(group.process);
        m_Groups.Erase(at, sizeof group);
      } else {
        at += sizeof group;
      }
    }
  }

  // Files can only be removed for good when nobody makes new ones, so the leader's end is awaited.
  static void EndGroup(const Group& group) {
    kill(-group.leader, SIGKILL);
    if (group.process < 0) return;
    syscall(SYS_pidfd_send_signal, group.process, SIGKILL, nullptr, 0);
    pollfd entry{group.process, POLLIN, 0};
    const auto deadline = os::Deadline::After(KillTimeout);
    while (poll(&entry, 1, deadline.PollTimeout()) < 0 && errno == EINTR) {
    }
  }

  int m_Descriptor;
  Bytes m_Paths;   // each with a zero byte at its end
  Bytes m_Groups;  // Group after Group
};

void KeepOnly(int socket, HeldStreams held) {
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  dup2(nothing, STDIN_FILENO);
  if (held != HeldStreams::OutputAndError) dup2(nothing, STDOUT_FILENO);
  if (held == HeldStreams::None) dup2(nothing, STDERR_FILENO);
  if (socket > 3) close_range(3, static_cast<unsigned>(socket) - 1, 0);
  close_range(static_cast<unsigned>(socket) + 1, ~0U, 0);
}

void WriteToError(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace

bool SendToGuardian(int descriptor, GuardianOrder order, const void* text,
                    std::size_t size) noexcept {
  char message[MessageLimit];
  if (size + 1 > sizeof message) {
    errno = ENAMETOOLONG;
    return false;
  }
  message[0] = static_cast<char>(order);
  if (size > 0) std::memcpy(message + 1, text, size);
  ssize_t sent = 0;
  do {
    sent = send(descriptor, message, size + 1, MSG_NOSIGNAL);
  } while (sent < 0 && errno == EINTR);
  return sent == static_cast<ssize_t>(size + 1);
}

bool SendToGuardian(int descriptor, GuardianOrder order, pid_t leader) noexcept {
  if (leader > 1) return SendToGuardian(descriptor, order, &leader, sizeof leader);
  errno = EINVAL;  // 0, 1 and negative numbers would reach far more than one group
  return false;
}

void RemoveGuarded(const char* path) noexcept {
  const int error = RemoveAll(path);
  if (error == 0) return;
  const char* const reason = strerrordesc_np(error);
  WriteToError("WARNING: What a broken-off run left could not be removed: ");
  WriteToError(path);
  WriteToError(": ");
  WriteToError(reason != nullptr ? reason : "unknown error");
  WriteToError("\n");
}

void RunGuardian(int socket, HeldStreams held) noexcept {
  setsid();
  prctl(PR_SET_NAME, "guardian");
  socket = fcntl(socket, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);  // none of the streams may be it
  KeepOnly(socket, held);
  if (chdir("/") != 0) errno = 0;  // only so as not to hold a directory
  // The starter takes this status for its word that nothing is left to be removed.
  _exit(Watch(socket).Run() ? 0 : 1);
}

}  // namespace rastrel::interpreter
