#pragma once

#include "cli/cutting/cut_pipeline.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// The first stage: throws CommandError(NotInstalled) if --show is there, and no window can be
/// shown; with a sentence that says why.
[[nodiscard]] Expected<void> CheckWindow(CutRun& run);
/// With --show: shows the job and its print in a window, and goes on when its user closes it. A job
/// that was fitted to measured marks has no print, since that does not lie on its page.
[[nodiscard]] Expected<void> ShowCut(CutRun& run);

}  // namespace rastrel::cli
