#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/standalone/data_root.h"

namespace rastrel::standalone {
namespace {

std::string IfDirectory(const std::string& path) {
  return os::IsDirectory(os::FromNative(path)) ? path : std::string();
}

Resources BelowPrefix(const std::string& prefix) {
  return {.programs = IfDirectory(prefix + "/libexec/rastrel"),
          .files = IfDirectory(prefix + "/share/rastrel")};
}

bool IsAny(const Resources& resources) {
  return !resources.programs.empty() || !resources.files.empty();
}

std::string ParentOf(const std::string& path) { return path.substr(0, path.rfind('/')); }

}  // namespace

Resources FindResources() {
  const std::string chosen = os::EnvironmentValue("RASTREL_RESOURCES");
  if (!chosen.empty()) return BelowPrefix(chosen);
  // The library lies in <prefix>/lib or below it, for instance in lib/x86_64-linux-gnu; a program
  // that holds it, in <prefix>/bin or, in a build tree, a few folders down.
  constexpr int levels = 4;
  std::string prefix = ParentOf(os::ModulePath());
  for (int level = 0; level < levels && !prefix.empty(); ++level) {
    prefix = ParentOf(prefix);
    Resources found = BelowPrefix(prefix);
    if (IsAny(found)) return found;
  }
  return {};
}

}  // namespace rastrel::standalone
