#pragma once

#include <cstdint>

#include "rastrel/platform/mfc/archive.h"

namespace rastrel::job {

/// Each record of a job begins with a version of its own, 32 bits. This is the only one known.
inline constexpr std::uint32_t RecordVersion = 1;

/// Reads a version; true if it is the known one.
[[nodiscard]] inline bool ReadRecordVersion(CArchive& archive) {
  std::uint32_t version = 0;
  archive >> version;
  return version == RecordVersion;
}

}  // namespace rastrel::job
