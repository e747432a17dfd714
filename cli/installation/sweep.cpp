#include "cli/installation/sweep.h"

#include <filesystem>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <system_error>

#include "cli/installation/installation.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/owner.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::cli {
namespace {

namespace fs = std::filesystem;

constexpr int NameLimit = 10'000;  // looked at in one place
constexpr int RemovalLimit = 100;  // in one place

// Calls `remove` for each name in a directory until it has removed enough.
void SweepPlace(const std::string& place, const std::function<bool(const std::string&)>& remove) {
  std::error_code error;
  int seen = 0;
  int removed = 0;
  for (fs::directory_iterator entry(place, error), last;
       !error && entry != last && seen < NameLimit && removed < RemovalLimit;
       entry.increment(error)) {
    ++seen;
    if (remove(entry->path().filename().string())) ++removed;
  }
}

bool IsAbandoned(const std::string& directory) {
  const auto owner = os::ReadOwner(directory);
  return owner && !os::MayBeAlive(*owner);
}

bool RemoveAbandoned(const std::string& directory) {
  return IsAbandoned(directory) && os::RemoveNativeTree(directory);
}

bool RemoveTemporary(const std::string& place, const std::string& name) {
  const std::string path = place + "/" + name;
  return os::IsAbandonedTemporaryName(name) &&
         (os::RemoveFile(os::FromNative(path)) || os::RemoveNativeTree(path));
}

// A name that was taken before there were pages. Pages beside the RIP's are left to be repaired,
// and a copy that did not come to its end is made anew from them.
bool RemoveFromSpool(const std::string& name) {
  const std::string directory = SpoolDirectory() + "/" + name;
  if (name.starts_with('.')) return RemoveAbandoned(directory);
  if (!IsAbandoned(directory) || !os::RemoveOwner(directory)) return false;
  return static_cast<bool>(os::RemoveEmptyDirectory(os::FromNative(directory)));
}

}  // namespace

void SweepLeftovers() {
  static std::mutex mutex;
  static std::set<std::string> swept;
  const std::lock_guard lock(mutex);
  if (!swept.insert(os::DataRoot()).second) return;
  for (const std::string& place : {JobsDirectory(), PagesDirectory(), SeparationDirectory()})
    SweepPlace(place, [&](const std::string& name) { return RemoveAbandoned(place + "/" + name); });
  SweepPlace(SpoolDirectory(), RemoveFromSpool);
  for (const std::string& place :
       {os::DataRoot(), os::DataRoot() + "/Queue", RipDirectory(), JobsDirectory(),
        PagesDirectory(), SpoolDirectory(), SeparationDirectory()})
    SweepPlace(place, [&](const std::string& name) { return RemoveTemporary(place, name); });
}

void RemoveOwnPages() {
  const auto own = os::IdentityOfProcess(os::CurrentProcessId());
  if (!own) return;
  SweepPlace(PagesDirectory(), [&](const std::string& name) {
    const std::string directory = PagesDirectory() + "/" + name;
    const auto owner = os::ReadOwner(directory);
    return owner && *owner == *own && os::RemoveNativeTree(directory);
  });
}

}  // namespace rastrel::cli
