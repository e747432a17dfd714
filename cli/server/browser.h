#pragma once

#include <functional>

#include "server/settings/server_settings.h"

namespace rastrel::cli {

/// Waits until the HTTP interface of this data root answers, and writes the address that begins a
/// session, once and within a minute: `http://127.0.0.1:8632/#token=...`. On a desktop it opens the
/// browser there. Writes why if it can't. Returns sooner if `stops` does.
void OpenInBrowser(const server::WebSettings& settings, const std::function<bool()>& stops);

}  // namespace rastrel::cli
