#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

namespace rastrel::interpreter {

/// The room of files on the disk.
struct DiskUse {
  std::uint64_t bytes = 0;
  std::uint64_t files = 0;
};

/// Of the files in that directory, which has none below it. Files that can't be read count as
/// nothing.
[[nodiscard]] DiskUse UseOf(const std::string& directory);

/// Of anonymous files that the process holds open: deleted ones, which take their room until
/// they are closed.
[[nodiscard]] DiskUse UseOfAnonymous(pid_t process);

}  // namespace rastrel::interpreter
