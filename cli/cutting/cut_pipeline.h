#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/console/options.h"
#include "cutting/job/cut_job.h"
#include "interpreter/interpreter.h"
#include "rastrel/platform/os/expected.h"

/// The way of a cut job through `rastrel cut`:
///
///     read -> rules -> clean -> marks -> tool paths -> order -> write
///
/// Each stage works on the run's job in place, and does nothing without its options. A stage is a
/// function of a file of its own here and a row of the table in cut_pipeline.cpp; its options are
/// rows of cli/console/options.cpp.
namespace rastrel::cli {

/// Which paints of a file become paths of the job, decided while the file is interpreted.
struct CaptureWish {
  interpreter::WantsCut wants{};  ///< empty: all of them
  bool asksLineWidth = false;     ///< as RunRequest has it
};

/// One run of `rastrel cut`. Belongs to one thread.
struct CutRun {
  explicit CutRun(const Invocation& given) : invocation(given) {}

  const Invocation& invocation;
  CaptureWish wish{};  ///< set by a stage before the reading
  cutting::CutJob job{};
  std::vector<std::string> written{};  ///< paths of the files that were written; "-" for the output

  /// A sentence for the person, without its full stop: on standard error, or with --json as an
  /// object "note". It may hold text from a file.
  void Note(std::string_view sentence) const;
  /// The same for a fault that the run goes on after, with "warning" in front.
  void Warn(std::string_view sentence) const;
};

/// A stage. A failure ends the command: with BadInput if it has that code, else with JobFailed. A
/// stage throws CommandError(WrongUse) for options that it can't use.
using CutStage = Expected<void> (*)(CutRun& run);

/// Runs all stages. Throws CommandError.
void RunPipeline(CutRun& run);

/// The parts of the pipeline, for commands that use them alone. ReadCutJob reads the command's file
/// into the run's job: a cut job (docs/formats/cut-job.md) if its name ends in ".json", else the
/// wanted paths of a PostScript, EPS or PDF file. WriteCutJob writes the job to the name of
/// --output in the form of its ending.
[[nodiscard]] Expected<void> ReadCutJob(CutRun& run);
[[nodiscard]] Expected<void> WriteCutJob(CutRun& run);

}  // namespace rastrel::cli
