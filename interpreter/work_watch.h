#pragma once

#include <sys/types.h>

#include <cstdint>

#include "interpreter/run_directory.h"
#include "interpreter/settings.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::interpreter {

/// The limits of a run that the kernel does not hold: its time on the clock, and the room of the
/// files in its work directories, where the job can write. Times are of the monotonic clock.
class WorkWatch {
 public:
  /// The time begins now. Borrows directory and settings.
  WorkWatch(const RunDirectory& directory, const Settings& settings, pid_t interpreter);

  /// Nanoseconds that the run has left; 0 or less if its time is over.
  [[nodiscard]] std::int64_t Left() const;
  /// The failure of a run whose time is over.
  [[nodiscard]] Failure TimeOver() const;
  /// Looks at the files now and then. The failure says which limit they have met.
  [[nodiscard]] Expected<void> CheckFiles();

  /// Nanoseconds between two looks. A disk takes a gigabyte in a second, so a job can go that share
  /// of it beyond the limit.
  static constexpr std::int64_t Interval = 100'000'000;

 private:
  const RunDirectory& m_Directory;
  const Settings& m_Settings;
  pid_t m_Interpreter;
  std::int64_t m_Deadline;
  std::int64_t m_NextLook = 0;
};

}  // namespace rastrel::interpreter
