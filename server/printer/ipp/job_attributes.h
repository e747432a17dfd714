#pragma once

#include <pappl/pappl.h>

#include <string>
#include <vector>

#include "server/printer/ipp/shop_printer.h"

namespace rastrel::server {

/// The name of the attribute by which a sender chooses a print mode.
inline constexpr const char* ModeAttribute = "rastrel-mode";

/// Beginning of a printer's device address; the device's name as hexadecimal digits follows.
inline constexpr const char* DeviceScheme = "rastrel";

/// The device's address of a name, and the name of an address.
[[nodiscard]] std::string DeviceAddressOf(const std::string& device);
[[nodiscard]] std::string DeviceOfAddress(const std::string& address);

/// A job of the printer as a document, with the sender's wishes as options.
[[nodiscard]] ReceivedDocument DocumentOf(pappl_job_t* job, const std::vector<OfferedMode>& modes);

}  // namespace rastrel::server
