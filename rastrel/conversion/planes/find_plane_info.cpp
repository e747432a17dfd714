#include "rastrel/conversion/planes/find_plane_info.h"

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/tree.h"
#include "rastrel/platform/os/tree_walk.h"

namespace rastrel::conversion {
namespace {

constexpr const wchar_t* InfoName = L".info";

// The file in the directory itself. The path ends in a separator.
std::wstring InfoIn(const std::wstring& directory) {
  std::wstring path = directory + InfoName;
  return os::Exists(path) && !os::IsDirectory(path) ? path : std::wstring();
}

// The first file below the directory, whose path ends in a separator.
std::wstring FindBelow(const std::wstring& directory, unsigned levels) {
  if (levels == 0) return {};
  const auto names = os::ListDirectory(directory);
  if (!names) return {};
  for (const std::wstring& name : *names) {
    const std::wstring below = directory + name;
    // A link may lead back up, and out of the directory in any case.
    if (os::IsLink(below) || !os::IsDirectory(below)) continue;
    std::wstring found = InfoIn(below + L'\\');
    if (found.empty()) found = FindBelow(below + L'\\', levels - 1);
    if (!found.empty()) return found;
  }
  return {};
}

}  // namespace

std::wstring FindPlaneInfo(const std::wstring& cfmPath) {
  if (cfmPath.empty()) return {};
  const std::wstring directory = os::WithClosingBackslash(cfmPath);
  std::wstring found = InfoIn(directory);
  return found.empty() ? FindBelow(directory, os::TreeDepthLimit) : found;
}

}  // namespace rastrel::conversion
