#pragma once

#include "server/web/http/router.h"
#include "server/web/shop.h"

namespace rastrel::server::web {

/// Adds the pages that are read without a script. The shop outlives the router.
inline void AddPages(Router&, Shop&) {}

}  // namespace rastrel::server::web
