#pragma once

#include <string>
#include <vector>

#include "children/devices/devices.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// The printer that is used if none is named.
inline constexpr const char* DefaultPrinter = "KVI Tiff Screen Preview";

/// The devices of the data root, as the output engine reads them. Fails if the file is missing or
/// holds a fault.
[[nodiscard]] Expected<std::vector<devices::Device>> ReadPrinters();

/// Fails, with the names that there are, unless a section of the devices has the name. The section
/// "*" takes any name from a host, but a name that a person types and that no section has is more
/// likely a slip.
[[nodiscard]] Expected<void> CheckPrinter(const std::vector<devices::Device>& devices,
                                          const std::string& name);

/// Fails, with a sentence for the user, unless the printer takes the pages of several files at the
/// same time and has a directory of the user's for them: its pages are files whose names begin with
/// {output} and hold {job}.
[[nodiscard]] Expected<void> CheckTakesSeveral(const std::vector<devices::Device>& devices,
                                               const std::string& name);

/// "TIFF files" or "PDF, given to a program: /usr/bin/lp".
[[nodiscard]] std::string DescribeDevice(const devices::Device& device);

}  // namespace rastrel::cli
