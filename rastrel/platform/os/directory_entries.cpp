#include "rastrel/platform/os/directory_entries.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::os {

Expected<DirectoryReader> DirectoryReader::Open(int parent, const char* name, bool followLink) {
  const int link = followLink ? 0 : O_NOFOLLOW;
  FileDescriptor directory(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | link));
  DIR* const stream = directory.IsOpen() ? ::fdopendir(directory.Get()) : nullptr;
  if (stream == nullptr) return Failure{"opendir", name, errno};
  static_cast<void>(directory.Release());
  return DirectoryReader(stream);
}

Expected<void> DirectoryReader::ReadPiece(std::vector<DirectoryEntry>& entries) {
  entries.clear();
  while (entries.size() < PieceEntries) {
    errno = 0;
    const dirent* entry = ::readdir(m_Stream.get());
    if (entry == nullptr && errno != 0) return Failure{"readdir", {}, errno};
    if (entry == nullptr) break;
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") entries.push_back({std::string(name), entry->d_type});
  }
  return {};
}

}  // namespace rastrel::os
