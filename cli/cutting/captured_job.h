#pragma once

#include "cli/console/options.h"
#include "cutting/job/cut_job.h"
#include "interpreter/interpreter.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

struct CutRun;
struct CaptureWish;

/// Interprets the command's PostScript, EPS or PDF file once, and returns the wanted paths of its
/// page (--page, --box and --password-file count) with their paint, in millimetres. Text becomes
/// its outlines. Warnings of the interpreter go to the run's person. The file is only read. A file
/// that is none of these, or fails as a program, is BadInput.
///
/// With --print or --show the run gets the picture of the page, of --dpi pixels an inch, without
/// these paths.
[[nodiscard]] Expected<cutting::CutJob> CapturedJob(CutRun& run, const CaptureWish& wish);

}  // namespace rastrel::cli
