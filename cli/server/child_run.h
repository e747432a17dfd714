#pragma once

#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/process.h"
#include "server/queue/job_queue.h"

namespace rastrel::cli {

/// The end of a program of the installation that was started for a job, and its lines.
struct ChildRun {
  enum class End { ByItself, Canceled, Stopped };
  End end = End::ByItself;
  os::ExitState state{};           ///< of an end by itself
  std::vector<std::string> lines;  ///< that it wrote, both streams together, as they came; at most
                                   ///< 64 KiB of text
};

/// Runs `program` of the installation's programs with `arguments`, the first its own name, and
/// waits for its end, reading its output. It gets no input, and ends with this process; it is
/// ended when a person cancels the job, or the server stops. Fails if it can't be started.
[[nodiscard]] Expected<ChildRun> RunChild(server::JobQueue& queue, const server::Job& job,
                                          const std::string& program,
                                          const std::vector<std::string>& arguments);

}  // namespace rastrel::cli
