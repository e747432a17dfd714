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
  // Removes the directory `name` of `parent` and all in it. O_NOFOLLOW holds at every level, the
  // first one included, so that a link that takes a directory's place meanwhile is not followed.
  Expected<void> RemoveDirectory(int parent, const char* name, unsigned depth) {
    if (auto removed = RemoveContent(parent, name, depth); !removed) return removed;
    return RemoveName(parent, name, AT_REMOVEDIR);
  }

 private:
  Expected<void> RemoveContent(int parent, const char* name, unsigned depth) {
    if (depth >= TreeDepthLimit) return Failure{"opendir", name, ELOOP};
    auto reader = DirectoryReader::Open(parent, name, false);
    if (!reader) return reader.Error();
    std::vector<DirectoryEntry> entries;
    do {
      if (const auto read = reader->ReadPiece(entries); !read) return FailureAt(name, read.Error());
      if (auto removed = RemoveEntries(reader->Descriptor(), entries, depth); !removed)
        return removed;
    } while (!entries.empty());
    return {};
  }

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
    if (!IsDirectoryEntry(directory, entry)) return RemoveName(directory, name, 0);
    return RemoveDirectory(directory, name, depth + 1);
  }

  static Expected<void> RemoveName(int directory, const char* name, int flags) {
    if (::unlinkat(directory, name, flags) == 0) return {};
    return Failure{flags == AT_REMOVEDIR ? "rmdir" : "unlink", name, errno};
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
  if (HasNoName(plain)) return Failure{"rmdir", path, EINVAL};
  return Remover().RemoveDirectory(AT_FDCWD, plain.c_str(), 0);
}

Expected<void> RemoveTree(std::wstring_view path) { return RemoveNativeTree(ToNative(path)); }

Expected<void> RemoveEmptyDirectory(std::wstring_view path) {
  const std::string native = ToNative(path);
  if (::rmdir(native.c_str()) != 0) return Failure{"rmdir", native, errno};
  return {};
}

}  // namespace rastrel::os
