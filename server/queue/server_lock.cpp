#include "server/queue/server_lock.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace rastrel::server {

Expected<os::FileDescriptor> LockServer(const std::string& dataRoot) {
  const std::string path = dataRoot + "/server/lock";
  os::FileDescriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (!file.IsOpen()) return Failure{"open", path, errno};
  if (::flock(file.Get(), LOCK_EX | LOCK_NB) == 0) return file;
  if (errno == EWOULDBLOCK) return FailureOf("another server of this data root runs");
  return Failure{"lock", path, errno};
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
