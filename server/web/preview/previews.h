#pragma once

#include "server/web/http/router.h"
#include "server/web/shop.h"

namespace rastrel::server::web {

/// Adds pictures of jobs, below /api/v1/jobs/{id}/pages. The shop outlives the router.
void AddPreviews(Router& router, Shop& shop);

}  // namespace rastrel::server::web
