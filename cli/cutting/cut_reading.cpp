#include <string>
#include <utility>

#include "cli/console/exit_status.h"
#include "cli/cutting/captured_job.h"
#include "cli/cutting/cut_pipeline.h"
#include "cli/cutting/drawing_input.h"
#include "cutting/job/job_file.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::cli {
namespace {

Expected<cutting::CutJob> ReadJob(const std::string& path) {
  const auto text = os::ReadWholeFile(os::FromNative(path), cutting::MaximumJobBytes);
  if (text) return cutting::ReadJobFile(*text, path);
  Failure failure = FailureAt(path, text.Error());
  failure.code = FailureCode::BadInput;
  return failure;
}

}  // namespace

Expected<void> ReadCutJob(CutRun& run) {
  const std::string& path = run.invocation.operand;
  auto job = path.ends_with(".json") ? ReadJob(path)
             : IsDrawingName(path)   ? JobOfDrawing(run)
                                     : CapturedJob(run, run.wish);
  if (!job) return job.Error();
  run.job = *std::move(job);
  return {};
}

}  // namespace rastrel::cli
