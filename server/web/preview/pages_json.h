#pragma once

#include <string>

#include "pages/page_info.h"
#include "server/queue/job.h"
#include "server/web/preview/kept_pages.h"

namespace rastrel::server::web {

/// The answer to GET /api/v1/jobs/{id}/pages: the pages with their sizes and inks, or the reason
/// why there are none. A page whose description can't be read has a "reason" as well.
[[nodiscard]] std::string PagesJson(const Job& job, const Expected<KeptPages>& pages);

}  // namespace rastrel::server::web
