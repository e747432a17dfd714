#pragma once

#include <string>
#include <vector>

#include "cutting/device/device_file.h"
#include "rastrel/platform/os/expected.h"

/// Where the device files of this user and of the installation are.
namespace rastrel::cli {

struct FoundDevice {
  std::string name;  ///< by which it is asked for
  std::string path;  ///< native
};

/// The path of a device's file: `name` itself if it has a slash, else that of NAME.toml in the data
/// root's directory `cut-devices`, else in the installed one. Fails if there is none.
[[nodiscard]] Expected<std::string> FindDevice(const std::string& name);

/// All that FindDevice finds by a name alone, sorted.
[[nodiscard]] std::vector<FoundDevice> FoundDevices();

/// Reads a device file. Its name in failures is `path`. The code of each is BadInput.
[[nodiscard]] Expected<cutting::Device> ReadDeviceFile(const std::string& path);

}  // namespace rastrel::cli
