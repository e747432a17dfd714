#pragma once

#include "server/web/http/router.h"
#include "server/web/shop.h"
#include "server/web/templates/templates.h"

namespace rastrel::server::web {

/// Adds the pages of templates: /templates, the list, and /templates/{name}, a form for the fields
/// of one with the picture of its plate. They need no script: the form is sent to its own address,
/// with the button that was pressed, and comes back with the values that were typed, their faults
/// beside the fields, and the picture; or it leads to the new job. Shop and templates outlive the
/// router.
void AddTemplatePages(Router& router, Shop& shop, Templates& templates);

}  // namespace rastrel::server::web
