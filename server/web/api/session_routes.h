#pragma once

#include "server/web/access/gate.h"
#include "server/web/http/router.h"

namespace rastrel::server::web {

/// The sessions of browsers. The gate outlives the router.
///
///     GET    /api/v1/session    who the caller is, and the token that its changes need
///     POST   /api/v1/session    {"token":..} or {"name":..,"password":..}, as JSON or as a form;
///                               a form with "next", a path, goes on there (303)
///     DELETE /api/v1/session    ends it
///     POST   /api/v1/handover   a code that begins one session within a minute
void AddSessions(Router& router, Gate& gate);

}  // namespace rastrel::server::web
