#pragma once

#include <sys/types.h>

#include <cstdint>

#include "interpreter/job_use.h"
#include "interpreter/run_directory.h"
#include "interpreter/settings.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::interpreter {

/// The limits of a run that the kernel does not hold: its time on the clock, the room of the files
/// in its work directories, where the job can write, and the resources of all interpreters of the
/// job. Times are of the monotonic clock.
class WorkWatch {
 public:
  /// The time begins now. Borrows all; `number` is the run's in `use`. `isFirst`: the run could go
  /// on alone, so of files and memory only its own count.
  WorkWatch(const RunDirectory& directory, const Settings& settings, pid_t interpreter, JobUse& use,
            std::size_t number, bool isFirst);

  /// Nanoseconds that the run has left; 0 or less if its time is over.
  [[nodiscard]] std::int64_t Left() const;
  /// The failure of a run whose time is over.
  [[nodiscard]] Failure TimeOver() const;
  /// Looks at files, memory and processor time now and then. The failure says which limit they have
  /// met.
  [[nodiscard]] Expected<void> CheckUse();
  /// The failure of a run that has used up its processor time.
  [[nodiscard]] Failure ProcessorTimeOver() const;

  /// Nanoseconds between two looks. A disk takes a gigabyte in a second, so a job can go that share
  /// of it beyond the limit.
  static constexpr std::int64_t Interval = 100'000'000;

 private:
  const RunDirectory& m_Directory;
  const Settings& m_Settings;
  pid_t m_Interpreter;
  JobUse& m_Use;
  std::size_t m_Number;
  bool m_IsFirst;
  std::int64_t m_Deadline;
  std::int64_t m_NextLook = 0;
};

}  // namespace rastrel::interpreter
