#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "rastrel/platform/os/expected.h"

/// The limits and walls that the drawing program puts around itself before it reads anything.
namespace rastrel::drawing {

/// As graphics::DrawingLimits has them.
struct ProcessLimits {
  std::chrono::seconds fileTime{0};
  std::chrono::seconds time{0};
  std::uint64_t memory = 0;
};

/// Puts them in force for good: memory, processor time, no files written, no core file, and the end
/// of the caller ends this process. Then the walls (interpreter/wall.h): it opens libraries and
/// fonts (DrawingFiles) and no other file, makes no sockets, reaches no other process, and executes
/// no program. A wall that the kernel lacks is left out; any other failure is one.
/// REQUIRES: one thread.
[[nodiscard]] Expected<void> LimitProcess(const ProcessLimits& limits);

/// While it lives, a foreign file is read or drawn: the caller knows its name, and the processor
/// time of one file is the limit. Not to be nested.
class ForeignFile {
 public:
  explicit ForeignFile(const std::string& name);
  ~ForeignFile();
  ForeignFile(const ForeignFile&) = delete;
  ForeignFile& operator=(const ForeignFile&) = delete;
};

}  // namespace rastrel::drawing
