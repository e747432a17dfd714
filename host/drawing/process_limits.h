#pragma once

#include <chrono>
#include <cstdint>
#include <string>

/// The limits that the drawing program puts on itself before it reads anything.
namespace rastrel::drawing {

/// As graphics::DrawingLimits has them.
struct ProcessLimits {
  std::chrono::seconds fileTime{0};
  std::chrono::seconds time{0};
  std::uint64_t memory = 0;
};

/// Puts the limits in force for good: memory, processor time, no files written, no core file, the
/// end of the caller ends this process, and no program that it could start has more rights.
void LimitProcess(const ProcessLimits& limits);

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
