#include "cli/cutting/device_place.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include "cutting/toml/strict_toml.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/standalone/data_root.h"

namespace rastrel::cli {
namespace {

constexpr const char* Directory = "/cut-devices";
constexpr const char* Ending = ".toml";

/// The user's own first.
std::vector<std::string> Places() {
  std::vector<std::string> places{os::DataRoot() + Directory};
  const std::string files = standalone::FindResources().files;
  if (!files.empty()) places.push_back(files + Directory);
  return places;
}

}  // namespace

Expected<std::string> FindDevice(const std::string& name) {
  if (name.find('/') != std::string::npos) return name;
  const std::vector<std::string> places = Places();
  for (const std::string& place : places) {
    const std::string path = place + "/" + name + Ending;
    std::error_code ignored;
    if (!name.empty() && std::filesystem::exists(path, ignored)) return path;
  }
  Failure failure =
      FailureOf("there is no device '" + name + "': no " + name + Ending + " is in '" +
                    places.front() + "' or installed; `rastrel send --list` lists the devices",
                FailureCode::BadInput);
  return failure;
}

std::vector<FoundDevice> FoundDevices() {
  std::vector<FoundDevice> found;
  for (const std::string& place : Places()) {
    std::error_code error;
    for (std::filesystem::directory_iterator at(place, error), end; !error && at != end;
         at.increment(error)) {
      const std::filesystem::path& path = at->path();
      const std::string name = path.stem().string();
      if (path.extension() != Ending ||
          std::ranges::find(found, name, &FoundDevice::name) != found.end()) {
        continue;
      }
      found.push_back({name, path.string()});
    }
  }
  std::ranges::sort(found, {}, &FoundDevice::name);
  return found;
}

Expected<cutting::Device> ReadDeviceFile(const std::string& path) {
  auto text = os::ReadWholeFile(os::FromNative(path), cutting::TomlFileLimit);
  if (!text) {
    Failure failure = FailureAt(path, text.Error());
    failure.code = FailureCode::BadInput;
    return failure;
  }
  return cutting::ReadDevice(*text, path);
}

}  // namespace rastrel::cli
