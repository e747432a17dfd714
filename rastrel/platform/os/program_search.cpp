#include "rastrel/platform/os/program_search.h"

#include <sys/stat.h>

#include <algorithm>

#include "rastrel/platform/os/native_file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::os {

namespace {

// The first path of that name in $PATH that `fits`.
std::string FindOnPath(std::string_view name, bool (*fits)(const std::string&)) {
  const std::string search = EnvironmentValue("PATH");
  std::string_view rest = search;
  while (!rest.empty()) {
    const std::string_view directory = rest.substr(0, rest.find(':'));
    rest.remove_prefix(std::min(directory.size() + 1, rest.size()));
    if (!directory.starts_with('/')) continue;
    std::string candidate = std::string(directory) + "/" + std::string(name);
    if (fits(candidate)) return candidate;
  }
  return {};
}

bool IsRegularFile(const std::string& path) {
  struct stat state {};
  return ::stat(path.c_str(), &state) == 0 && S_ISREG(state.st_mode);
}

}  // namespace

std::string FindProgram(std::string_view name) { return FindOnPath(name, IsProgram); }

std::string FindFileOnPath(std::string_view name) { return FindOnPath(name, IsRegularFile); }

}  // namespace rastrel::os
