#pragma once

#include <string>

#include "cli/server/job_observer.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// The template and the table of a job that is a merge. One of them is the job's own file, and the
/// other its option `template` or `data`, a full path, which is read when the job runs.
struct MergeFiles {
  std::string merged;  ///< the template
  std::string table;
};

/// Throws CommandError(WrongUse) unless exactly one of the two options is there, with a full path.
[[nodiscard]] MergeFiles MergeFilesOf(const server::Job& job);

/// Fails, with the reason, for a template or table that can't be opened: whether the two fit is
/// known when the job runs.
[[nodiscard]] Expected<void> CheckMergeInput(const std::string& path);

/// Makes the pages of a job that is a merge as a PDF at `result`, which is replaced: `rastrel
/// merge` with the job's template, table, sheet and blank, as a process of its own, which ends with
/// this one. Its lines on rows that are not as they should be become the job's messages, with
/// the table's rows; the reason of a failure is the first row that was not placed, else the error.
/// Ends the child when a person cancels the job, or the server stops. Throws CommandError.
[[nodiscard]] TicketEnd MakeMergedPages(server::JobQueue& queue, const server::Job& job,
                                        const std::string& result);

}  // namespace rastrel::cli
