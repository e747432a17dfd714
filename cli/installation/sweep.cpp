#include "cli/installation/sweep.h"

#include <filesystem>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <system_error>

#include "cli/installation/installation.h"
#include "rastrel/platform/host/settings.h"
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

constexpr std::chrono::hours ConversionAge{24};

// A name that os::CompleteTemporaryName has completed with six characters, and its ending.
bool IsTemporaryName(std::string_view name, std::string_view start,
                     const std::function<bool(std::string_view)>& isEnding) {
  constexpr std::string_view Drawn = "abcdefghijklmnopqrstuvwxyz012345";
  constexpr std::size_t Length = 6;
  if (!name.starts_with(start)) return false;
  name.remove_prefix(start.size());
  if (name.size() < Length || name.find_first_not_of(Drawn) < Length) return false;
  return isEnding(name.substr(Length));
}

// "vkabcdef.ps" and the files that are named after it, and "vktmpabcdef" of the header's writer.
bool IsConversionName(std::string_view name) {
  static const std::set<std::string, std::less<>> endings{".ps",  ".pdf", ".jhdr",
                                                          ".cfm", ".cut", "_Color.bmp"};
  return IsTemporaryName(name, "vk", [](auto ending) { return endings.contains(ending); }) ||
         IsTemporaryName(name, "vktmp", [](auto ending) { return ending.empty(); });
}

bool RemoveForgotten(const std::string& path, std::chrono::system_clock::time_point now) {
  const auto changed = os::LastChangeOf(os::FromNative(path));
  if (!changed) return false;
  const std::chrono::sys_time<std::chrono::nanoseconds> time{std::chrono::nanoseconds(*changed)};
  if (now - time <= ConversionAge) return false;
  return os::RemoveFile(os::FromNative(path)) || os::RemoveNativeTree(path);
}

}  // namespace

void SweepConversions(std::chrono::system_clock::time_point now) {
  if (GetIntKorvane(L"RASTREL", L"Keep PS Files", 0, DS_USER, nullptr) != 0) return;
  const std::string place = RipDirectory();
  SweepPlace(place, [&](const std::string& name) {
    return IsConversionName(name) && RemoveForgotten(place + "/" + name, now);
  });
}

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
  SweepConversions(std::chrono::system_clock::now());
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
