#pragma once

#include "server/web/http/request.h"
#include "server/web/http/response.h"
#include "server/web/pages/words.h"
#include "server/web/shop.h"

namespace rastrel::server::web {

/// A job with its pages, one of which is shown (?page=2), its settings and its story; 404 as a page
/// if the caller sees no such job. REQUIRES: the caller is somebody.
[[nodiscard]] Response JobPage(Shop& shop, const Request& request, const Words& words);

/// Where people sign in. Needs no script.
[[nodiscard]] Response SignInPage(const Request& request, const Words& words);

}  // namespace rastrel::server::web
