#pragma once

#include <string>
#include <string_view>

#include "cli/console/exit_status.h"
#include "cli/console/options.h"
#include "cutting/device/device_file.h"

namespace rastrel::cli {

/// A file on its way to a device. Texts are native paths and names.
struct DeviceJob {
  const cutting::Device& device;
  std::string devicePath;  ///< of the device's file
  std::string_view bytes;
  std::string name;  ///< of the job, for people and for the file in a directory
  std::string file;  ///< with the bytes, if they lie in one
};

/// Sends it by the way that the device names. On a terminal it shows progress, P pauses and goes
/// on, and Ctrl-C cancels; with --json each step is an object. Returns Done or Cancelled, and ends
/// the command with JobFailed otherwise.
[[nodiscard]] ExitStatus SendDeviceJob(const DeviceJob& job, const Invocation& invocation);

}  // namespace rastrel::cli
