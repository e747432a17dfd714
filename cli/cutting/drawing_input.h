#pragma once

#include <string>

#include "cli/cutting/cut_pipeline.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// Whether a file is read as a vector drawing: its name ends in .svg or .dxf, in any case.
[[nodiscard]] bool IsDrawingName(const std::string& path);

/// Reads the command's vector drawing as a cut job. The parts that are not read are warned of, with
/// their lines. A file that can't be read is BadInput.
[[nodiscard]] Expected<cutting::CutJob> JobOfDrawing(const CutRun& run);

}  // namespace rastrel::cli
