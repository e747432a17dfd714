#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "rastrel/platform/os/copy_file.h"
#include "rastrel/platform/os/directory_entries.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/tree.h"
#include "rastrel/platform/os/tree_walk.h"
#include "rastrel/platform/os/tree_workers.h"

namespace rastrel::os {
namespace {

// Entries of a directory from which a second thread is faster than none.
constexpr std::size_t WorthwhileEntries = 16;

struct Identity {
  dev_t device = 0;
  ino_t node = 0;
  bool operator==(const Identity&) const = default;
};

Identity IdentityOf(int descriptor) {
  struct stat state {};
  if (::fstat(descriptor, &state) != 0) return {};
  return {state.st_dev, state.st_ino};
}

FileDescriptor OpenDirectory(int parent, const char* name) {
  return FileDescriptor(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

class Copier {
 public:
  // Copies the entries of `source` into `target`, except those that can't be copied.
  void CopyContent(DirectoryReader& source, int target, unsigned depth) {
    if (depth == 0) m_TargetRoot = IdentityOf(target);
    if (IdentityOf(source.Descriptor()) == IdentityOf(target)) return;
    std::vector<DirectoryEntry> entries;
    while (source.ReadPiece(entries) && !entries.empty()) {
      m_Workers.ForEach(entries.size(), WorthwhileEntries, [&](std::size_t index) {
        CopyEntry(source.Descriptor(), target, entries[index], depth);
        return true;
      });
    }
  }

 private:
  void CopyEntry(int source, int target, const DirectoryEntry& entry, unsigned depth) {
    const char* name = entry.name.c_str();
    unsigned char type = entry.type;
    struct stat state {};
    if (type == DT_DIR || type == DT_UNKNOWN) {
      if (::fstatat(source, name, &state, AT_SYMLINK_NOFOLLOW) != 0) return;
      type = static_cast<unsigned char>(IFTODT(state.st_mode));
    }
    if (type == DT_DIR) CopyDirectory(source, target, name, state.st_mode, depth);
    if (type == DT_REG)
      static_cast<void>(CopyFileAt({source, name}, {target, name}, LinksInSource::Refused));
  }

  void CopyDirectory(int source, int target, const char* name, mode_t mode, unsigned depth) {
    if (depth + 1 >= TreeDepthLimit) return;
    auto from = DirectoryReader::Open(source, name, false);
    // A directory that lies in its own copy would be copied into itself without an end.
    if (!from || IdentityOf(from->Descriptor()) == m_TargetRoot) return;
    if (::mkdirat(target, name, (mode & 0777U) | S_IRWXU) != 0 && errno != EEXIST) return;
    const FileDescriptor to = OpenDirectory(target, name);
    if (to.IsOpen()) CopyContent(*from, to.Get(), depth + 1);
  }

  TreeWorkers m_Workers;
  Identity m_TargetRoot;
};

}  // namespace

Expected<void> CopyTreeInto(std::wstring_view source, std::wstring_view destination) {
  if (auto made = MakePath(destination, Access::Private); !made) return made;
  auto from = DirectoryReader::Open(AT_FDCWD, ToNative(source).c_str(), true);
  if (!from) return from.Error();
  const FileDescriptor to = OpenDirectory(AT_FDCWD, ToNative(destination).c_str());
  if (to.IsOpen()) Copier().CopyContent(*from, to.Get(), 0);
  return {};
}

}  // namespace rastrel::os
