#pragma once

#include <pappl/pappl.h>

namespace rastrel::server {

class NetworkPrinter;

/// The name of the one driver, which brings documents into the queue.
inline constexpr const char* ShopDriver = "rastrel";

/// Adds the driver, its formats and the scheme of its devices. The printer must outlive the system.
void AddShopDriver(pappl_system_t* system, NetworkPrinter& printer);

}  // namespace rastrel::server
