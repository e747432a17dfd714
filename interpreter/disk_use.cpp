#include "interpreter/disk_use.h"

#include <sys/stat.h>

#include <filesystem>

namespace rastrel::interpreter {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t BlockSize = 512;  // of st_blocks, whatever the file system's is

template <typename Counts>
DiskUse Sum(const std::string& directory, int (*look)(const char*, struct stat*), Counts counts) {
  DiskUse use;
  std::error_code error;
  for (fs::directory_iterator entry(directory, error), last; !error && entry != last;
       entry.increment(error)) {
    struct stat state {};
    if (look(entry->path().c_str(), &state) != 0 || !counts(state)) continue;
    use.bytes += static_cast<std::uint64_t>(state.st_blocks) * BlockSize;
    ++use.files;
  }
  return use;
}

}  // namespace

DiskUse UseOf(const std::string& directory) {
  return Sum(directory, lstat, [](const struct stat&) { return true; });
}

DiskUse UseOfAnonymous(pid_t process) {
  return Sum("/proc/" + std::to_string(process) + "/fd", stat, [](const struct stat& state) {
    return S_ISREG(state.st_mode) && state.st_nlink == 0;
  });
}

}  // namespace rastrel::interpreter
