#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "rastrel/platform/os/directory_entries.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/tree.h"
#include "rastrel/platform/os/tree_walk.h"

namespace rastrel::os {
namespace {

// Answers whether copying and deleting a tree would have passed nothing over, lost nothing and
// failed nowhere. Only this user's files are judged, since for them the mode bits decide.
class MoveJudge {
 public:
  explicit MoveJudge(dev_t device) : m_Device(device) {}

  [[nodiscard]] bool IsPlainDirectory(const struct stat& state) const {
    return S_ISDIR(state.st_mode) && IsOwn(state) && Permits(state, S_IRWXU);
  }

  [[nodiscard]] bool IsPlainTree(int parent, const char* name, unsigned depth) const {
    auto reader = DirectoryReader::Open(parent, name, false);
    if (!reader || depth >= TreeDepthLimit) return false;
    std::vector<DirectoryEntry> entries;
    do {
      if (!reader->ReadPiece(entries)) return false;
      for (const DirectoryEntry& entry : entries)
        if (!IsPlainEntry(reader->Descriptor(), entry.name.c_str(), depth)) return false;
    } while (!entries.empty());
    return true;
  }

 private:
  [[nodiscard]] bool IsPlainEntry(int directory, const char* name, unsigned depth) const {
    struct stat state {};
    if (::fstatat(directory, name, &state, AT_SYMLINK_NOFOLLOW) != 0) return false;
    if (IsPlainDirectory(state)) return IsPlainTree(directory, name, depth + 1);
    return S_ISREG(state.st_mode) && IsOwn(state) && state.st_nlink == 1 &&
           (state.st_mode & (S_ISUID | S_ISGID)) == 0 && Permits(state, S_IRUSR);
  }

  // A mounted file system would be copied, and could not be removed.
  [[nodiscard]] bool IsOwn(const struct stat& state) const {
    return state.st_dev == m_Device && state.st_uid == m_User;
  }

  [[nodiscard]] bool Permits(const struct stat& state, mode_t bits) const {
    return m_User == 0 || (state.st_mode & bits) == bits;
  }

  dev_t m_Device;
  uid_t m_User = ::geteuid();
};

std::string WithoutClosingSlashes(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

std::string ParentOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return path.substr(0, slash + 1);
}

}  // namespace

bool TryRenameTree(std::wstring_view source, std::wstring_view target) {
  const std::string from = WithoutClosingSlashes(ToNative(source));
  const std::string to = WithoutClosingSlashes(ToNative(target));
  if (from.empty() || to.empty()) return false;
  struct stat tree {};
  struct stat place {};
  if (::lstat(from.c_str(), &tree) != 0 || ::lstat(to.c_str(), &place) == 0 || errno != ENOENT)
    return false;
  if (::stat(ParentOf(to).c_str(), &place) != 0 || place.st_dev != tree.st_dev) return false;
  const MoveJudge judge(tree.st_dev);
  if (!judge.IsPlainDirectory(tree) || !judge.IsPlainTree(AT_FDCWD, from.c_str(), 0)) return false;
  return ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0;
}

}  // namespace rastrel::os
