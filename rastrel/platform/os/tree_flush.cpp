#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "rastrel/platform/os/directory_entries.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/tree.h"
#include "rastrel/platform/os/tree_walk.h"

namespace rastrel::os {
namespace {

// Goes through a tree without following a link. `onFile` takes the directory's descriptor, the name
// and the state of each entry that is no directory; `onDirectory` the descriptor of each directory,
// after its entries. Both return false with errno set to end the walk. The result is the path that
// it ended at, or empty.
template <typename OnFile, typename OnDirectory>
std::string Walk(int parent, const std::string& name, const std::string& path, unsigned depth,
                 const OnFile& onFile, const OnDirectory& onDirectory) {
  if (depth >= TreeDepthLimit) {
    errno = ELOOP;
    return path;
  }
  DirectoryReader reader(parent, name.c_str(), depth == 0);
  if (!reader.IsOpen()) return path;
  std::vector<DirectoryEntry> entries;
  do {
    if (!reader.ReadPiece(entries)) return path;
    for (const DirectoryEntry& entry : entries) {
      struct stat state {};
      const std::string below = path + "/" + entry.name;
      const int directory = reader.Descriptor();
      if (::fstatat(directory, entry.name.c_str(), &state, AT_SYMLINK_NOFOLLOW) != 0) return below;
      if (S_ISDIR(state.st_mode)) {
        const std::string end = Walk(directory, entry.name, below, depth + 1, onFile, onDirectory);
        if (!end.empty()) return end;
      } else if (!onFile(directory, entry.name.c_str(), state)) {
        return below;
      }
    }
  } while (!entries.empty());
  return onDirectory(reader.Descriptor()) ? std::string() : path;
}

bool FlushFile(int directory, const char* name, const struct stat& state) {
  if (!S_ISREG(state.st_mode)) return true;
  const FileDescriptor file(
      ::openat(directory, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  return file.IsOpen() && ::fsync(file.Get()) == 0;
}

// Not every file system lets a directory be flushed.
bool FlushDirectory(int directory) { return ::fsync(directory) == 0 || errno == EINVAL; }

}  // namespace

Expected<TreeMeasure> MeasureTree(const std::string& path) {
  TreeMeasure measure;
  const std::string end = Walk(
      AT_FDCWD, path, path, 0,
      [&](int, const char*, const struct stat& state) {
        ++measure.files;
        if (S_ISREG(state.st_mode)) measure.bytes += static_cast<std::uint64_t>(state.st_size);
        return true;
      },
      [](int) { return true; });
  if (!end.empty()) return Failure{"read", end, errno};
  return measure;
}

Expected<void> FlushTree(const std::string& path) {
  const std::string end = Walk(AT_FDCWD, path, path, 0, FlushFile, FlushDirectory);
  if (!end.empty()) return Failure{"fsync", end, errno};
  return {};
}

Expected<void> FlushNamesIn(const std::string& directory) {
  const FileDescriptor opened(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!opened.IsOpen()) return Failure{"open", directory, errno};
  if (!FlushDirectory(opened.Get())) return Failure{"fsync", directory, errno};
  return {};
}

}  // namespace rastrel::os
