#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "rastrel/platform/os/directory_entries.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/tree.h"
#include "rastrel/platform/os/tree_walk.h"
#include "rastrel/platform/os/tree_workers.h"

namespace rastrel::os {
namespace {

// Entries of a directory from which a second thread is faster than none.
constexpr std::size_t WorthwhileEntries = 256;

class Remover {
 public:
  // Removes the directory `name` of `parent` and all in it. O_NOFOLLOW holds at every level, the
  // first one included, so that a link that takes a directory's place meanwhile is not followed.
  bool RemoveDirectory(int parent, const char* name, unsigned depth) {
    return RemoveContent(parent, name, depth) && ::unlinkat(parent, name, AT_REMOVEDIR) == 0;
  }

 private:
  bool RemoveContent(int parent, const char* name, unsigned depth) {
    if (depth >= TreeDepthLimit) {
      errno = ELOOP;
      return false;
    }
    DirectoryReader reader(parent, name, false);
    if (!reader.IsOpen()) return false;
    std::vector<DirectoryEntry> entries;
    do {
      if (!reader.ReadPiece(entries)) return false;
      const auto removeOne = [&](std::size_t index) {
        return RemoveEntry(reader.Descriptor(), entries[index], depth);
      };
      if (!m_Workers.ForEach(entries.size(), WorthwhileEntries, removeOne)) return false;
    } while (!entries.empty());
    return true;
  }

  bool RemoveEntry(int directory, const DirectoryEntry& entry, unsigned depth) {
    const char* name = entry.name.c_str();
    if (!IsDirectoryEntry(directory, entry)) return ::unlinkat(directory, name, 0) == 0;
    return RemoveDirectory(directory, name, depth + 1);
  }

  static bool IsDirectoryEntry(int directory, const DirectoryEntry& entry) {
    if (entry.type != DT_UNKNOWN) return entry.type == DT_DIR;
    struct stat state {};
    return ::fstatat(directory, entry.name.c_str(), &state, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISDIR(state.st_mode);
  }

  TreeWorkers m_Workers;
};

// A closing slash would make the system follow a link.
std::string WithoutClosingSlashes(std::string path) {
  while (!path.empty() && path.back() == '/') path.pop_back();
  return path;
}

// "/", "." and "..", by which no directory can be removed though its content could.
bool HasNoName(const std::string& path) {
  const std::string name = path.substr(path.rfind('/') + 1);
  return name.empty() || name == "." || name == "..";
}

}  // namespace

Expected<void> RemoveNativeTree(const std::string& path) {
  const std::string plain = WithoutClosingSlashes(path);
  if (HasNoName(plain)) {
    errno = EINVAL;
    return Failure{"remove", path, errno};
  }
  if (!Remover().RemoveDirectory(AT_FDCWD, plain.c_str(), 0)) return Failure{"remove", path, errno};
  return {};
}

bool RemoveTree(std::wstring_view path) {
  return static_cast<bool>(RemoveNativeTree(ToNative(path)));
}

bool RemoveEmptyDirectory(std::wstring_view path) { return ::rmdir(ToNative(path).c_str()) == 0; }

}  // namespace rastrel::os
