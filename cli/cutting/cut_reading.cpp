#include "cli/console/exit_status.h"
#include "cli/cutting/cut_pipeline.h"
#include "cutting/job/job_file.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::cli {

Expected<void> ReadCutJob(CutRun& run) {
  const std::string& path = run.invocation.operand;
  auto text = os::ReadWholeFile(os::FromNative(path), cutting::MaximumJobBytes);
  if (!text) {
    Failure failure = FailureAt(path, text.Error());
    failure.code = FailureCode::BadInput;
    return failure;
  }
  auto job = cutting::ReadJobFile(*text, path);
  if (!job) return job.Error();
  run.job = *std::move(job);
  return {};
}

}  // namespace rastrel::cli
