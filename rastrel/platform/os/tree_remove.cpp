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
  bool RemoveContent(int parent, const char* name, bool followLink, unsigned depth) {
    if (depth >= TreeDepthLimit) {
      errno = ELOOP;
      return false;
    }
    DirectoryReader reader(parent, name, followLink);
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

 private:
  bool RemoveEntry(int directory, const DirectoryEntry& entry, unsigned depth) {
    const char* name = entry.name.c_str();
    if (!IsDirectoryEntry(directory, entry)) return ::unlinkat(directory, name, 0) == 0;
    return RemoveContent(directory, name, false, depth + 1) &&
           ::unlinkat(directory, name, AT_REMOVEDIR) == 0;
  }

  static bool IsDirectoryEntry(int directory, const DirectoryEntry& entry) {
    if (entry.type != DT_UNKNOWN) return entry.type == DT_DIR;
    struct stat state {};
    return ::fstatat(directory, entry.name.c_str(), &state, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISDIR(state.st_mode);
  }

  TreeWorkers m_Workers;
};

}  // namespace

bool RemoveTree(std::wstring_view path) {
  const std::string native = ToNative(path);
  return Remover().RemoveContent(AT_FDCWD, native.c_str(), true, 0) && ::rmdir(native.c_str()) == 0;
}

}  // namespace rastrel::os
