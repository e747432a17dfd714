#include "rastrel/platform/os/claimed_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <mutex>
#include <utility>
#include <vector>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/owner.h"
#include "rastrel/platform/os/pipe.h"

namespace rastrel::os {
namespace {

constexpr const char* OwnerAttribute = "user.rastrel.owner";

Expected<FileDescriptor> Open(const std::string& path, int flags) {
  constexpr int common = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  return TakeDescriptor(::open(path.c_str(), flags | common, 0666), "open", path);
}

bool BeginsWith(int descriptor, std::string_view head) {
  std::string bytes(head.size(), '\0');
  const ssize_t count = ::pread(descriptor, bytes.data(), bytes.size(), 0);
  return count == static_cast<ssize_t>(head.size()) && bytes == head;
}

// A claim of this process is found in its own list, so that only others count here.
bool IsOthers(int descriptor) {
  std::array<char, 512> text{};
  const ssize_t length = ::fgetxattr(descriptor, OwnerAttribute, text.data(), text.size());
  if (length <= 0) return false;
  const std::string_view tag(text.data(), static_cast<std::size_t>(length));
  return tag != OwnTag() && OwnerOfTag(tag) == TagOwner::MayLive;
}

void NameOwner(int descriptor) {
  const std::string tag = OwnTag();
  // Not every file system has attributes.
  static_cast<void>(::fsetxattr(descriptor, OwnerAttribute, tag.data(), tag.size(), 0));
}

}  // namespace

// The files that objects of this process claim.
struct ClaimedFile::Claims {
  std::mutex mutex;
  std::vector<Identity> files;

  static Claims& Instance() {
    static Claims claims;
    return claims;
  }
  void Add(const Identity& file) {
    const std::lock_guard lock(mutex);
    files.push_back(file);
  }
  bool AddIfFree(const Identity& file) {
    const std::lock_guard lock(mutex);
    if (std::ranges::find(files, file) != files.end()) return false;
    files.push_back(file);
    return true;
  }
  // One of them: a new file may have the number of one that was removed and not dropped yet.
  void Drop(const Identity& file) {
    const std::lock_guard lock(mutex);
    const auto found = std::ranges::find(files, file);
    if (found != files.end()) files.erase(found);
  }
};

ClaimedFile::Identity ClaimedFile::IdentityOf(const struct stat& state) {
  return {state.st_dev, state.st_ino};
}

ClaimedFile::Identity ClaimedFile::IdentityOf(int descriptor) {
  struct stat state {};
  return ::fstat(descriptor, &state) == 0 ? IdentityOf(state) : Identity{};
}

Expected<ClaimedFile> ClaimedFile::Create(std::string path) {
  const auto file = Open(path, O_RDWR | O_CREAT | O_EXCL);
  if (!file) return file.Error();
  const Identity identity = IdentityOf(file->Get());
  Claims::Instance().Add(identity);
  NameOwner(file->Get());
  return ClaimedFile(std::move(path), identity);
}

Expected<ClaimedFile> ClaimedFile::TakeOver(std::string path, std::string_view head) {
  struct stat state {};
  if (::lstat(path.c_str(), &state) != 0) return Failure{"open", path, errno};
  const Failure taken{"open", path, EEXIST};
  if (!S_ISREG(state.st_mode)) return taken;
  const auto file = Open(path, O_RDWR);
  // The lock ends with the descriptor; by then the file names its owner.
  if (!file || ::flock(file->Get(), LOCK_EX | LOCK_NB) != 0) return taken;
  if (::fstat(file->Get(), &state) != 0 || !S_ISREG(state.st_mode) || state.st_nlink != 1)
    return taken;
  if (!BeginsWith(file->Get(), head) || IsOthers(file->Get())) return taken;
  const Identity identity = IdentityOf(file->Get());
  if (!Claims::Instance().AddIfFree(identity)) return taken;
  NameOwner(file->Get());
  return ClaimedFile(std::move(path), identity);
}

ClaimedFile::ClaimedFile(ClaimedFile&& other) noexcept
    : m_Path(std::exchange(other.m_Path, {})), m_File(other.m_File) {}

ClaimedFile::~ClaimedFile() {
  if (m_Path.empty()) return;
  const auto file = Open(m_Path, O_WRONLY);
  if (file && IdentityOf(file->Get()) == m_File)
    static_cast<void>(::fremovexattr(file->Get(), OwnerAttribute));
  Claims::Instance().Drop(m_File);
}

Expected<void> ClaimedFile::Write(std::string_view content) {
  const auto file = Open(m_Path, O_WRONLY);
  if (!file) return file.Error();
  struct stat state {};
  if (::fstat(file->Get(), &state) != 0) return Failure{"fstat", m_Path, errno};
  if (!(IdentityOf(state) == m_File)) return Failure{"open", m_Path, EEXIST};
  // A new file has nothing to cut off, and ext4 would write it to the disk at once for the cut.
  if (state.st_size > 0 && ::ftruncate(file->Get(), 0) != 0)
    return Failure{"ftruncate", m_Path, errno};
  if (const auto written = WriteAll(file->Get(), content); !written)
    return FailureAt(m_Path, written.Error());
  return {};
}

Expected<void> ClaimedFile::Remove() {
  if (m_Path.empty()) return {};
  struct stat state {};
  if (::lstat(m_Path.c_str(), &state) != 0) {
    if (errno == ENOENT) return {};
    return Failure{"lstat", m_Path, errno};
  }
  if (!(IdentityOf(state) == m_File)) return {};
  if (::unlink(m_Path.c_str()) != 0) return Failure{"unlink", m_Path, errno};
  Claims::Instance().Drop(m_File);
  m_Path.clear();
  return {};
}

}  // namespace rastrel::os
