#include "server/queue/server_lock.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <thread>

#include "rastrel/platform/os/deadline.h"

namespace rastrel::server {
namespace {

using namespace std::chrono_literals;

constexpr auto TakeoverLimit = 5s;

}  // namespace

Expected<os::FileDescriptor> LockServer(const std::string& dataRoot) {
  const std::string path = dataRoot + "/server/lock";
  os::FileDescriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (!file.IsOpen()) return Failure{"open", path, errno};
  // Of a server that was killed, the processes that watched its workers end a moment later.
  const auto limit = os::Deadline::After(TakeoverLimit);
  while (::flock(file.Get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK) return Failure{"lock", path, errno};
    if (limit.HasPassed()) return FailureOf("another server of this data root runs");
    std::this_thread::sleep_for(10ms);
  }
  return file;
}

bool IsServerRunning(const std::string& dataRoot) {
  const std::string path = dataRoot + "/server/lock";
  const os::FileDescriptor file(::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW));
  return file.IsOpen() && ::flock(file.Get(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

std::string OwnUserName() {
  passwd entry{};
  passwd* found = nullptr;
  std::array<char, 16384> texts{};
  if (::getpwuid_r(::getuid(), &entry, texts.data(), texts.size(), &found) == 0 && found)
    return found->pw_name;
  return std::to_string(::getuid());
}

}  // namespace rastrel::server
