#pragma once

#include "cli/cutting/cut_pipeline.h"

/// The stages of the frame that print and knife share.
namespace rastrel::cli {

/// --marks: puts registration marks around the page, and notes how much it has grown.
[[nodiscard]] Expected<void> AddMarks(CutRun& run);

/// --print: writes the picture of the page, with its marks, as a TIFF.
[[nodiscard]] Expected<void> PrintWithMarks(CutRun& run);

/// --measured and --measurements: maps the job to the places where the cutter has found its marks,
/// and notes the map and the residual of each. The job has no marks then: it lies in the cutter's
/// frame.
[[nodiscard]] Expected<void> FitToMeasuredMarks(CutRun& run);

/// Moves a job with marks so that the first is at the origin. A cut job that is written again keeps
/// the page's frame, since its picture has that.
[[nodiscard]] Expected<void> CountFromFirstMark(CutRun& run);

}  // namespace rastrel::cli
