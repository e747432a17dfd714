#pragma once

#include <string>

#include "server/queue/job.h"

/// The table of jobs, as `rastrel jobs export` writes it.
namespace rastrel::cli {

/// The row of the columns' names, with its line end.
[[nodiscard]] std::string JobTableHead();
/// The row of a job.
[[nodiscard]] std::string JobTableRow(const server::Job& job);

}  // namespace rastrel::cli
