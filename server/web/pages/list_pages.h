#pragma once

#include "server/web/http/request.h"
#include "server/web/http/response.h"
#include "server/web/pages/words.h"
#include "server/web/shop.h"

/// The pages that list something. REQUIRES: the caller is somebody.
namespace rastrel::server::web {

/// Jobs that wait, run or need a person, the devices, and the way to bring files.
[[nodiscard]] Response OverviewPage(Shop& shop, const Request& request, const Words& words);
/// All jobs, by the filter of the query, in pieces.
[[nodiscard]] Response JobsPage(Shop& shop, const Request& request, const Words& words);
[[nodiscard]] Response DevicesPage(Shop& shop, const Request& request, const Words& words);

}  // namespace rastrel::server::web
