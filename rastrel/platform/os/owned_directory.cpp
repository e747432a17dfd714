#include "rastrel/platform/os/owned_directory.h"

#include <sys/stat.h>

#include <cerrno>

#include "rastrel/platform/os/owner.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/system_calls.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::os {
namespace {

// A machine that does not say who this process is, or a file system that can't rename to a new name
// alone, gets a plain directory.
Expected<void> MakePlainDirectory(const std::string& path) {
  if (::mkdir(path.c_str(), 0700) != 0) return Failure{"mkdir", path, errno};
  if (const auto own = IdentityOfProcess(CurrentProcessId()))
    static_cast<void>(WriteOwner(path, *own));
  return {};
}

}  // namespace

Expected<void> MakeOwnedDirectory(const std::string& path) {
  const auto own = IdentityOfProcess(CurrentProcessId());
  if (!own) return MakePlainDirectory(path);
  const std::string hidden = path.substr(0, path.rfind('/') + 1) + OwnTemporaryName();
  if (::mkdir(hidden.c_str(), 0700) != 0) return Failure{"mkdir", path, errno};
  const auto named = [&]() -> Expected<void> {
    if (auto written = WriteOwner(hidden, *own); !written) return written;
    if (Calls().rename_new(hidden.c_str(), path.c_str()) != 0) return Failure{"mkdir", path, errno};
    return {};
  }();
  if (named) return named;
  static_cast<void>(RemoveNativeTree(hidden));
  return named.Error().error == EEXIST ? named : MakePlainDirectory(path);
}

}  // namespace rastrel::os
