#include "rastrel/platform/os/program_search.h"

#include <algorithm>

#include "rastrel/platform/os/native_file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::os {

std::string FindProgram(std::string_view name) {
  const std::string search = EnvironmentValue("PATH");
  std::string_view rest = search;
  while (!rest.empty()) {
    const std::string_view directory = rest.substr(0, rest.find(':'));
    rest.remove_prefix(std::min(directory.size() + 1, rest.size()));
    if (!directory.starts_with('/')) continue;
    std::string candidate = std::string(directory) + "/" + std::string(name);
    if (IsProgram(candidate)) return candidate;
  }
  return {};
}

}  // namespace rastrel::os
