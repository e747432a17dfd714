#pragma once

#include "cutting/device/device_file.h"
#include "cutting/device/sender.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::cutting {

/// A way to a device that is open and does not block.
struct Connection {
  os::FileDescriptor descriptor;
  bool isCancelled = false;  ///< by the order, before it was open
};

/// Connects to host and port of the device within its timeout. Looking a name up takes as long as
/// the system's resolver allows, and cancelling waits for that.
[[nodiscard]] Expected<Connection> ConnectTo(const DeviceReach& reach, const SendControl& control);

/// Opens a serial port and gives it the device's settings. Fails for a path that is no port.
[[nodiscard]] Expected<Connection> OpenSerial(const DeviceReach& reach);

/// Opens the node of a port, or a pipe, by its path.
[[nodiscard]] Expected<Connection> OpenNode(const std::string& path);

}  // namespace rastrel::cutting
