#pragma once

#include "server/web/shop.h"

namespace rastrel::cli {

/// The shop of the HTTP interface, with the commands' own checks and tables. The queue outlives it.
[[nodiscard]] server::web::Shop ShopOf(server::JobQueue& queue,
                                       const server::ServerSettings& settings);

}  // namespace rastrel::cli
