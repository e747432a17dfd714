#pragma once

#include <string>

#include "server/queue/job_queue.h"

namespace rastrel::cli {

/// First arguments of a worker, which no command has.
inline constexpr const char* InterpretingWorker = ":interpret";
inline constexpr const char* DeliveringWorker = ":deliver";

/// A process of the server that claims job after job and runs it. It ends by itself when there has
/// been nothing to do for a while, at SIGTERM, which aborts its job, and with the server. Returns
/// the exit status of main.
[[nodiscard]] int RunInterpreter();
[[nodiscard]] int RunDeliverer(const std::string& device);

/// Interprets a job that was claimed, and keeps its pages. Reports its end to the queue.
[[nodiscard]] Expected<void> InterpretJob(server::JobQueue& queue, const server::Job& job);
/// Delivers the kept pages of a job that was claimed. Reports its end to the queue.
[[nodiscard]] Expected<void> DeliverJob(server::JobQueue& queue, const server::Job& job);

/// Whether SIGTERM has come: the job that runs is to be aborted and given back.
[[nodiscard]] bool IsStopAsked();

/// Removes kept pages by their name in the spool, if they are there.
void RemoveKeptPages(const std::string& spool);

}  // namespace rastrel::cli
