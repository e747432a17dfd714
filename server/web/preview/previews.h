#pragma once

#include "server/web/http/router.h"
#include "server/web/shop.h"

namespace rastrel::server::web {

/// Adds pictures of jobs. The shop outlives the router.
inline void AddPreviews(Router&, Shop&) {}

}  // namespace rastrel::server::web
