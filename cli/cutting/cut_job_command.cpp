#include "cli/cutting/cut_job_command.h"

#include <cstdint>
#include <string>
#include <vector>

#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/cutting/cut_delivery.h"
#include "cli/cutting/cut_files.h"
#include "cli/cutting/cut_pipeline.h"

namespace rastrel::cli {
namespace {

void CheckUse(const Invocation& invocation) {
  for (const OptionId id : {OptionId::CutColor, OptionId::HalfCutColor, OptionId::CutPreview})
    if (invocation.Has(id))
      throw CommandError(ExitStatus::WrongUse,
                         std::string(OptionOf(id).name) +
                             " goes with no rules and no cut job; name the colour in a rule");
}

void WriteDone(const CutRun& run) {
  if (!run.invocation.Has(OptionId::Json)) {
    for (const std::string& path : run.written) WriteOutPath(path);
    return;
  }
  // The end of a job that goes to a device is the device's.
  JsonLine line(run.invocation.Has(OptionId::CutDevice) ? "written" : "done");
  if (!run.invocation.Has(OptionId::CutDevice)) line.Add("exit", 0);
  line.Add("paths", run.written)
      .AddNumber("width_mm", run.job.width)
      .AddNumber("height_mm", run.job.height)
      .Add("cut_paths", static_cast<std::int64_t>(run.job.paths.size()))
      .Write();
}

}  // namespace

ExitStatus CutJobCommand(const Invocation& invocation) {
  CheckUse(invocation);
  if (invocation.operands.size() > 1) return CutFileByFile(invocation);
  // The done report would come in the middle of the result.
  if (invocation.ValueOr(OptionId::ResultOutput, "") == StandardOutputName)
    OrEnd(ExitStatus::WrongUse, KeepOutputForResult());
  const CutFile file = TakeCutFile(invocation);
  CutRun run(file.invocation);
  run.replacesResult = !file.hasMadeName || invocation.Has(OptionId::Force);
  RunPipeline(run);
  if (run.ended) return run.status;
  WriteDone(run);
  return invocation.Has(OptionId::CutDevice) ? SendCutJob(run) : run.status;
}

}  // namespace rastrel::cli
