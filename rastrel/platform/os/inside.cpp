#include "rastrel/platform/os/inside.h"

#include <sys/stat.h>

#include <algorithm>

#include "rastrel/platform/os/path.h"

namespace rastrel::os {

std::optional<std::string> ForeignBelow(std::wstring_view folder, std::wstring_view rest) {
  const std::string path = ToNative(std::wstring(folder) + std::wstring(rest));
  std::size_t end = ToNative(folder).size();
  while (end < path.size()) {
    end = std::min(path.find('/', end + 1), path.size());
    const std::string part = path.substr(0, end);
    struct stat state {};
    if (::lstat(part.c_str(), &state) != 0) return {};
    if (!S_ISDIR(state.st_mode) && !S_ISREG(state.st_mode)) return part;
  }
  return {};
}

}  // namespace rastrel::os
