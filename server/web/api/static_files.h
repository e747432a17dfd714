#pragma once

#include "server/web/http/router.h"
#include "server/web/shop.h"

namespace rastrel::server::web {

/// The files of the page, for everybody: they show nothing of the shop. Each file of the shop's
/// `pageFiles`, without its folders, is /static/NAME. Their
/// names and contents are those of the start: a file that came or changed since is found after the
/// next one.
///
/// Also GET /api/v1/health, and /api/v1/openapi.json, the file openapi.json.
void AddStaticFiles(Router& router, Shop& shop);

}  // namespace rastrel::server::web
