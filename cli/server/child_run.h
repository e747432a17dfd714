#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/process_limits.h"
#include "server/queue/job_queue.h"

namespace rastrel::cli {

/// The end of a program of the installation that was started for a job, and its lines.
struct ChildRun {
  enum class End { ByItself, Canceled, Stopped };
  End end = End::ByItself;
  os::ExitState state{};  ///< of an end by itself
  /// That it wrote, both streams together, as they came, each of at most 4 KiB: the first hundred
  /// and the last ten of those that were wanted.
  std::vector<std::string> lines;
  std::size_t omitted = 0;  ///< lines between these
};

/// Whether a line is wanted.
using LineFilter = std::function<bool(const std::string&)>;

/// Runs `program` of the installation's programs with `arguments`, the first its own name, and
/// waits for its end, reading its output. It gets no input, and ends with this process; it is
/// ended when a person cancels the job, or the server stops. Fails if it can't be started.
[[nodiscard]] Expected<ChildRun> RunChild(server::JobQueue& queue, const server::Job& job,
                                          const std::string& program,
                                          const std::vector<std::string>& arguments,
                                          const LineFilter& isWanted);

/// All that a program wrote, both streams together, at most 4 MiB, and its end.
struct LimitedRun {
  os::ExitState state{};
  std::string output;
};

/// Runs a program as RunChild does, for no job, and with limits. Fails also if it has not ended
/// before the deadline, or wrote more; it is ended then. Any thread.
[[nodiscard]] Expected<LimitedRun> RunLimited(const std::string& program,
                                              const std::vector<std::string>& arguments,
                                              os::Deadline deadline,
                                              const os::ProcessLimits& limits);

}  // namespace rastrel::cli
