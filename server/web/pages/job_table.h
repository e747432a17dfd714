#pragma once

#include <string>
#include <vector>

#include "server/queue/job.h"
#include "server/web/pages/words.h"

namespace rastrel::server::web {

/// A job's state as markup, with its progress while it runs.
[[nodiscard]] std::string StateMarkup(const Job& job, const Words& words);

/// The table of jobs, for one who sees those of `owner` (Caller::VisibleOwner). `query` is that of
/// the interface by which the script makes its rows anew: encoded, and escaped here.
[[nodiscard]] std::string JobTable(const std::vector<Job>& jobs, const std::string& caption,
                                   const std::string& query, const std::string& owner,
                                   const Words& words);

}  // namespace rastrel::server::web
