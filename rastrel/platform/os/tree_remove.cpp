#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <mutex>
#include <utility>
#include <vector>

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
  Expected<void> RemoveContent(int parent, const char* name, bool followLink, unsigned depth) {
    if (depth >= TreeDepthLimit) return Failure{"opendir", name, ELOOP};
    auto reader = DirectoryReader::Open(parent, name, followLink);
    if (!reader) return reader.Error();
    std::vector<DirectoryEntry> entries;
    do {
      if (const auto read = reader->ReadPiece(entries); !read) return FailureAt(name, read.Error());
      if (auto removed = RemoveEntries(reader->Descriptor(), entries, depth); !removed)
        return removed;
    } while (!entries.empty());
    return {};
  }

 private:
  // The first failure of several threads.
  Expected<void> RemoveEntries(int directory, const std::vector<DirectoryEntry>& entries,
                               unsigned depth) {
    std::mutex mutex;
    Expected<void> result;
    const auto removeOne = [&](std::size_t index) {
      auto removed = RemoveEntry(directory, entries[index], depth);
      if (removed) return true;
      const std::scoped_lock lock(mutex);
      KeepFirst(result, removed.Error());
      return false;
    };
    m_Workers.ForEach(entries.size(), WorthwhileEntries, removeOne);
    return result;
  }

  Expected<void> RemoveEntry(int directory, const DirectoryEntry& entry, unsigned depth) {
    const char* name = entry.name.c_str();
    const bool isDirectory = IsDirectoryEntry(directory, entry);
    if (isDirectory) {
      if (auto removed = RemoveContent(directory, name, false, depth + 1); !removed) return removed;
    }
    if (::unlinkat(directory, name, isDirectory ? AT_REMOVEDIR : 0) != 0)
      return Failure{isDirectory ? "rmdir" : "unlink", name, errno};
    return {};
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

Expected<void> RemoveTree(std::wstring_view path) {
  const std::string native = ToNative(path);
  auto removed = Remover().RemoveContent(AT_FDCWD, native.c_str(), true, 0);
  if (!removed) return removed;
  if (::rmdir(native.c_str()) != 0) return Failure{"rmdir", native, errno};
  return {};
}

}  // namespace rastrel::os
