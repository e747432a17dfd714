#pragma once

#include <string>
#include <string_view>

namespace rastrel::server {

/// The record of the printers and their jobs, as the IPP library writes it, with each job that was
/// under way as one that waits: the library reads such a job back and never goes on with it.
[[nodiscard]] std::string RecordWithWaitingJobs(std::string_view record);

}  // namespace rastrel::server
