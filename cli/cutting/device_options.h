#pragma once

#include <string>

#include "cutting/device/device_file.h"
#include "cutting/job/cut_job.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// The job in the form that the device takes, with its tools, limits and origin. Fails for a job
/// that the device can't have.
[[nodiscard]] Expected<std::string> FileForDevice(const cutting::Device& device,
                                                  const cutting::CutJob& job);

}  // namespace rastrel::cli
