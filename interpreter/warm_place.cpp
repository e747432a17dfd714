#include "interpreter/warm_place.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <utility>

#include "interpreter/warm_message.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::interpreter {
namespace {

constexpr time_t WishSeconds = 60;
constexpr time_t ReplySeconds = 5;
constexpr int WaitingConnections = 64;
constexpr std::string_view LockEnd = ".lock";
constexpr const char* StartLock = "start.lock";

sockaddr_un AddressOf(int directory, const std::string& name) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string path = "/proc/self/fd/" + std::to_string(directory) + "/" + name;
  std::memcpy(address.sun_path, path.data(), std::min(path.size(), sizeof address.sun_path - 1));
  return address;
}

Expected<os::FileDescriptor> MakeSocket(int more) {
  os::FileDescriptor made(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | more, 0));
  if (!made.IsOpen()) return Failure{"socket", {}, errno};
  return made;
}

}  // namespace

std::string WarmPlace::Path() { return os::DataRoot() + "/warm"; }

Expected<WarmPlace> WarmPlace::Open(const std::string& directory) {
  os::FileDescriptor opened(
      open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!opened.IsOpen()) return Failure{"open", directory, errno};
  struct stat state {};
  if (fstat(opened.Get(), &state) != 0) return Failure{"stat", directory, errno};
  if (state.st_uid != geteuid() || (state.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
    return Failure{"use", directory, 0, "it is another user's, or open to others"};
  }
  return WarmPlace(std::move(opened));
}

Expected<os::FileDescriptor> WarmPlace::Connect(const std::string& name) const {
  auto made = MakeSocket(0);
  if (!made) return made;
  // A full queue is no reason to wait either.
  const timeval limit{ReplySeconds, 0};
  setsockopt(made->Get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  setsockopt(made->Get(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
  const sockaddr_un address = AddressOf(Descriptor(), name);
  if (connect(made->Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    return Failure{"connect", name, errno};
  }
  if (!IsOwnPeer(made->Get())) return Failure{"connect", name, EPERM};
  return made;
}

Expected<os::FileDescriptor> WarmPlace::Listen(const std::string& name) const {
  auto made = MakeSocket(SOCK_NONBLOCK);
  if (!made) return made;
  // It gets its name when it listens: a socket that does not yet would refuse connections.
  const std::string early = name + ".new";
  Remove(early);
  const sockaddr_un address = AddressOf(Descriptor(), early);
  if (fchmod(made->Get(), S_IRUSR | S_IWUSR) != 0) return Failure{"fchmod", early, errno};
  if (bind(made->Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    return Failure{"bind", early, errno};
  }
  if (listen(made->Get(), WaitingConnections) != 0) return Failure{"listen", early, errno};
  if (renameat(Descriptor(), early.c_str(), Descriptor(), name.c_str()) != 0) {
    return Failure{"rename", early, errno};
  }
  return made;
}

bool WarmPlace::Has(const std::string& name, ino_t inode) const {
  struct stat state {};
  return fstatat(Descriptor(), name.c_str(), &state, AT_SYMLINK_NOFOLLOW) == 0 &&
         state.st_ino == inode;
}

Expected<os::FileDescriptor> WarmPlace::Lock(const std::string& file, bool wait) const {
  os::FileDescriptor opened(openat(Descriptor(), file.c_str(),
                                   O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
  if (!opened.IsOpen()) return Failure{"open", file, errno};
  while (flock(opened.Get(), wait ? LOCK_EX : LOCK_EX | LOCK_NB) != 0) {
    if (errno != EINTR) return Failure{"flock", file, errno};
  }
  return opened;
}

bool WarmPlace::IsHeld(const std::string& name) const {
  const std::string file = name + std::string(LockEnd);
  const os::FileDescriptor opened(
      openat(Descriptor(), file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  return opened.IsOpen() && flock(opened.Get(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

std::vector<std::string> WarmPlace::Living() const {
  std::vector<std::pair<std::int64_t, std::string>> found;
  std::error_code error;
  const std::string own = "/proc/self/fd/" + std::to_string(Descriptor());
  for (std::filesystem::directory_iterator entry(own, error), last; !error && entry != last;
       entry.increment(error)) {
    const std::string file = entry->path().filename().string();
    if (!file.ends_with(LockEnd) || file == StartLock) continue;
    const std::string name = file.substr(0, file.size() - LockEnd.size());
    struct stat state {};
    if (!IsHeld(name) || fstatat(Descriptor(), file.c_str(), &state, AT_SYMLINK_NOFOLLOW) != 0) {
      continue;
    }
    constexpr std::int64_t second = 1'000'000'000;
    found.emplace_back(state.st_mtim.tv_sec * second + state.st_mtim.tv_nsec, name);
  }
  std::ranges::sort(found);
  std::vector<std::string> names;
  for (auto& [time, name] : found) names.push_back(std::move(name));
  return names;
}

bool WarmPlace::Wish(const std::string& name) const {
  const std::string file = name + ".wish";
  struct stat state {};
  const bool known = fstatat(Descriptor(), file.c_str(), &state, AT_SYMLINK_NOFOLLOW) == 0;
  if (known && std::time(nullptr) - state.st_mtim.tv_sec <= WishSeconds) {
    // Of several, one removes it.
    return unlinkat(Descriptor(), file.c_str(), 0) == 0;
  }
  const os::FileDescriptor made(
      openat(Descriptor(), file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (made.IsOpen()) futimens(made.Get(), nullptr);
  return false;
}

void WarmPlace::Remove(const std::string& file) const {
  if (unlinkat(Descriptor(), file.c_str(), 0) != 0) errno = 0;  // it was not there
}

}  // namespace rastrel::interpreter
