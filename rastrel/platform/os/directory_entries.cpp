#include "rastrel/platform/os/directory_entries.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::os {

DirectoryReader::DirectoryReader(int parent, const char* name, bool followLink) {
  const int link = followLink ? 0 : O_NOFOLLOW;
  FileDescriptor directory(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | link));
  if (!directory.IsOpen()) return;
  m_Stream.reset(::fdopendir(directory.Get()));
  if (m_Stream) static_cast<void>(directory.Release());
}

bool DirectoryReader::ReadPiece(std::vector<DirectoryEntry>& entries) {
  entries.clear();
  while (entries.size() < PieceEntries) {
    errno = 0;
    const dirent* entry = ::readdir(m_Stream.get());
    if (entry == nullptr) return errno == 0;
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") entries.push_back({std::string(name), entry->d_type});
  }
  return true;
}

}  // namespace rastrel::os
