#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "rastrel/platform/os/directory_entries.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/tree.h"
#include "rastrel/platform/os/tree_walk.h"

namespace rastrel::os {
namespace {

// Goes through a tree without following a link. `onFile` takes the directory's descriptor, the name
// and the state of each entry that is no directory; `onDirectory` the descriptor of each directory,
// after its entries. A failure of either ends the walk, and gets the path that it ended at.
template <typename OnFile, typename OnDirectory>
Expected<void> Walk(int parent, const std::string& name, const std::string& path, unsigned depth,
                    const OnFile& onFile, const OnDirectory& onDirectory) {
  if (depth >= TreeDepthLimit) return Failure{"opendir", path, ELOOP};
  auto reader = DirectoryReader::Open(parent, name.c_str(), depth == 0);
  if (!reader) return FailureAt(path, reader.Error());
  std::vector<DirectoryEntry> entries;
  do {
    if (const auto read = reader->ReadPiece(entries); !read) return FailureAt(path, read.Error());
    for (const DirectoryEntry& entry : entries) {
      struct stat state {};
      const std::string below = path + "/" + entry.name;
      const int directory = reader->Descriptor();
      if (::fstatat(directory, entry.name.c_str(), &state, AT_SYMLINK_NOFOLLOW) != 0)
        return Failure{"stat", below, errno};
      if (S_ISDIR(state.st_mode)) {
        auto walked = Walk(directory, entry.name, below, depth + 1, onFile, onDirectory);
        if (!walked) return walked;
      } else if (const auto done = onFile(directory, entry.name.c_str(), state); !done) {
        return FailureAt(below, done.Error());
      }
    }
  } while (!entries.empty());
  const auto done = onDirectory(reader->Descriptor());
  if (!done) return FailureAt(path, done.Error());
  return {};
}

Expected<void> FlushFile(int directory, const char* name, const struct stat& state) {
  if (!S_ISREG(state.st_mode)) return {};
  constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  const auto file = TakeDescriptor(::openat(directory, name, flags), "open", name);
  if (!file) return file.Error();
  if (::fsync(file->Get()) != 0) return Failure{"fsync", name, errno};
  return {};
}

// Not every file system lets a directory be flushed.
Expected<void> FlushDirectory(int directory) {
  if (::fsync(directory) != 0 && errno != EINVAL) return Failure{"fsync", {}, errno};
  return {};
}

}  // namespace

Expected<TreeMeasure> MeasureTree(const std::string& path) {
  TreeMeasure measure;
  const auto count = [&](int, const char*, const struct stat& state) -> Expected<void> {
    ++measure.files;
    if (S_ISREG(state.st_mode)) measure.bytes += static_cast<std::uint64_t>(state.st_size);
    return {};
  };
  const auto walked =
      Walk(AT_FDCWD, path, path, 0, count, [](int) -> Expected<void> { return {}; });
  if (!walked) return walked.Error();
  return measure;
}

Expected<void> FlushTree(const std::string& path) {
  return Walk(AT_FDCWD, path, path, 0, FlushFile, FlushDirectory);
}

Expected<void> FlushNamesIn(const std::string& directory) {
  constexpr int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
  const auto opened = TakeDescriptor(::open(directory.c_str(), flags), "open", directory);
  if (!opened) return opened.Error();
  const auto flushed = FlushDirectory(opened->Get());
  if (!flushed) return FailureAt(directory, flushed.Error());
  return {};
}

}  // namespace rastrel::os
