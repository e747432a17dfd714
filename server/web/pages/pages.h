#pragma once

#include "server/web/http/router.h"
#include "server/web/shop.h"

namespace rastrel::server::web {

/// Adds the pages that are read without a script: /, /jobs, /jobs/{id}, /devices and /login. Who
/// has not signed in is sent there. The shop outlives the router.
void AddPages(Router& router, Shop& shop);

}  // namespace rastrel::server::web
