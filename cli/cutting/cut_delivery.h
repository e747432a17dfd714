#pragma once

#include "cli/console/exit_status.h"
#include "cli/cutting/cut_pipeline.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// Longer side of a picture of the job as PNG.
inline constexpr int CutPicturePixels = 2400;

/// The stage of --picture: a picture of how the job is cut, as .svg or .png.
[[nodiscard]] Expected<void> WriteCutPicture(CutRun& run);

/// Sends the finished job to the device of --device. Returns and ends as SendDeviceJob.
[[nodiscard]] ExitStatus SendCutJob(const CutRun& run);

}  // namespace rastrel::cli
