#pragma once

#include "server/web/http/router.h"
#include "server/web/shop.h"
#include "server/web/templates/templates.h"

namespace rastrel::server::web {

/// Templates for programs: /api/v1/templates. Shop and templates outlive the router.
void AddTemplates(Router& router, Shop& shop, Templates& templates);

}  // namespace rastrel::server::web
