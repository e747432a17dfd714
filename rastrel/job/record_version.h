#pragma once

#include <cstdint>

#include "rastrel/platform/mfc/archive.h"

namespace rastrel::job {

/// Each record of a job begins with a version word of its own, and only this one is known.
inline constexpr std::uint32_t RecordVersion = 1;

/// Reads a version word; true if it is the known one.
[[nodiscard]] inline bool ReadRecordVersion(CArchive& archive) {
  std::uint32_t version = 0;
  archive >> version;
  return version == RecordVersion;
}

}  // namespace rastrel::job
