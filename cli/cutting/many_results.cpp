#include "cli/cutting/many_results.h"

#include <filesystem>
#include <utility>

#include "cli/console/exit_status.h"
#include "cli/cutting/cut_pipeline.h"
#include "cli/cutting/frame_stages.h"
#include "cli/cutting/rules_stage.h"

namespace rastrel::cli {

std::string NumberedName(const std::string& path, std::size_t number) {
  const std::filesystem::path name(path);
  return (name.parent_path() /
          (name.stem().string() + "-" + std::to_string(number) + name.extension().string()))
      .string();
}

CutPage PageOfFile(const Invocation& invocation, const std::string& file) {
  Invocation own = invocation;
  own.operand = file;
  own.operands = {file};
  CutRun run(own);
  for (const CutStage stage : {CutStage{ReadRuleFile}, CutStage{ReadCutJob}, CutStage{ApplyRules}})
    OrEndByCode(ExitStatus::JobFailed, stage(run));
  if (invocation.Has(OptionId::CutPrint) && !run.picture)
    throw CommandError(ExitStatus::WrongUse,
                       "'" + file + "' is a cut job, which has no picture that --print could make");
  return {std::move(run.job), std::move(run.picture)};
}

void WriteJobAs(const Invocation& invocation, cutting::CutJob job, const std::string& name) {
  Invocation own = invocation;
  own.options[OptionId::ResultOutput] = name;
  CutRun run(own);
  run.job = std::move(job);
  OrEndByCode(ExitStatus::JobFailed, WorkToolPaths(run));
  if (invocation.Has(OptionId::CutMarks))
    OrEndByCode(ExitStatus::JobFailed, CountFromFirstMark(run));
  OrEndByCode(ExitStatus::JobFailed, WriteCutJob(run));
}

}  // namespace rastrel::cli
