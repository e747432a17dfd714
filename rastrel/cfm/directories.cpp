#include "rastrel/cfm/directories.h"

#include <string_view>

#include "rastrel/platform/os/tree.h"

bool DeleteDirectory(const wchar_t* path) {
  const std::wstring_view text = path == nullptr ? std::wstring_view() : path;
  return text.size() >= ShortestRemovablePath && rastrel::os::RemoveTree(text);
}

bool CopyTree(const wchar_t* source, const wchar_t* destination) {
  return source != nullptr && destination != nullptr &&
         rastrel::os::CopyTreeInto(source, destination);
}

bool MakeDirectoryPath(const wchar_t* path) {
  return path != nullptr && rastrel::os::MakePath(path, rastrel::os::Access::Private);
}

std::uint64_t GetTreeSize(const wchar_t* path) {
  return path == nullptr ? 0 : rastrel::os::TreeSize(path);
}
