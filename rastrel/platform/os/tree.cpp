#include "rastrel/platform/os/tree.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "rastrel/platform/os/directory_entries.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/os/tree_walk.h"

namespace rastrel::os {
namespace {

// The first character of the first element that may be created; the path's length if there is none.
std::size_t FirstElement(std::wstring_view path) {
  const auto skipSeparators = [&](std::size_t position) {
    while (position < path.size() && IsSeparator(path[position])) ++position;
    return position;
  };
  if (path.starts_with(L"\\\\")) {
    // The server can't be made. A slash ends its name even after a backslash.
    std::size_t end = path.find(L'/', 2);
    if (end == std::wstring_view::npos) end = path.find(L'\\', 2);
    return end == std::wstring_view::npos ? path.size() : skipSeparators(end);
  }
  if (path.size() >= 3 && path[1] == L':') return skipSeparators(3);
  return 0;
}

// Somebody else may make the same directory between the two questions.
Expected<void> MakeElement(std::wstring_view path, Access access) {
  if (path.empty() || Exists(path)) return {};
  auto made = MakeDirectory(path, access);
  if (!made && IsDirectory(path)) return {};
  return made;
}

std::uint64_t SizeOf(int parent, const char* name, bool followLink, unsigned depth) {
  auto reader = DirectoryReader::Open(parent, name, followLink);
  if (!reader || depth >= TreeDepthLimit) return 0;
  std::uint64_t sum = 0;
  std::vector<DirectoryEntry> entries;
  while (reader->ReadPiece(entries) && !entries.empty()) {
    for (const DirectoryEntry& entry : entries) {
      struct stat state {};
      if (entry.type == DT_DIR) {
        sum += SizeOf(reader->Descriptor(), entry.name.c_str(), false, depth + 1);
      } else if (::fstatat(reader->Descriptor(), entry.name.c_str(), &state, AT_SYMLINK_NOFOLLOW) ==
                 0) {
        if (S_ISREG(state.st_mode)) sum += static_cast<std::uint64_t>(state.st_size);
        if (S_ISDIR(state.st_mode))
          sum += SizeOf(reader->Descriptor(), entry.name.c_str(), false, depth + 1);
      }
    }
  }
  return sum;
}

}  // namespace

Expected<std::vector<std::wstring>> ListDirectory(std::wstring_view path) {
  const std::string native = ToNative(path);
  auto reader = DirectoryReader::Open(AT_FDCWD, native.c_str(), true);
  if (!reader) return reader.Error();
  std::vector<std::wstring> names;
  std::vector<DirectoryEntry> entries;
  do {
    if (const auto read = reader->ReadPiece(entries); !read) return FailureAt(native, read.Error());
    for (const DirectoryEntry& entry : entries) names.push_back(FromNative(entry.name));
  } while (!entries.empty());
  return names;
}

Expected<void> MakePath(std::wstring_view path, Access access) {
  if (path.empty()) return Failure{"mkdir", {}, ENOENT};
  if (Exists(path)) return {};
  std::size_t begin = FirstElement(path);
  if (begin >= path.size()) return Failure{"mkdir", ToNative(path), errno};
  while (begin < path.size()) {
    const std::size_t end = std::min(path.find_first_of(L"/\\", begin), path.size());
    const std::wstring_view element = path.substr(0, end);
    if (auto made = MakeElement(element, access); !made) return made;
    begin = end + 1;
  }
  return {};
}

std::uint64_t TreeSize(std::wstring_view path) {
  return SizeOf(AT_FDCWD, ToNative(path).c_str(), true, 0);
}

}  // namespace rastrel::os
