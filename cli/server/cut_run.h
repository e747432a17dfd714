#pragma once

#include <string>

#include "cli/server/job_observer.h"

namespace rastrel::cli {

/// Makes the cut file of a job in a directory: `rastrel cut` with the job's rules, as a process of
/// its own, which ends with this one. The file has the job's name and is HPGL. The child's lines
/// become the job's messages; the last one is the reason of a failure. Ends the child when a person
/// cancels the job, or the server stops. Throws CommandError(WrongUse) for an option that a cut
/// doesn't have, and for a job without rules.
[[nodiscard]] TicketEnd RunCut(server::JobQueue& queue, const server::Job& job,
                               const std::string& directory);

}  // namespace rastrel::cli
