#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/console/exit_status.h"
#include "cli/console/options.h"
#include "cli/cutting/marked_picture.h"
#include "cutting/job/cut_job.h"
#include "interpreter/interpreter.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cutting {
class RuleSet;
}

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
  CaptureWish wish{};                               ///< set by a stage before the reading
  std::shared_ptr<const cutting::RuleSet> rules{};  ///< of --rules; null without it
  cutting::CutJob job{};
  std::shared_ptr<PagePicture> picture{};  ///< of the interpreted page, if --print wants it
  PictureMargins margins{};                ///< by which the picture grows for marks
  std::size_t bleedGaps = 0;               ///< places where --bleed finds too little print
  bool marksInAllInks = false;             ///< print them in each plane, and not in black alone
  std::vector<std::string> written{};  ///< paths of the files that were written; "-" for the output
  bool replacesResult = true;          ///< the file of --output, if there is one already
  bool ended = false;                  ///< a stage has reported, and no other follows
  ExitStatus status = ExitStatus::Done;  ///< of the command

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

/// Whether the result of that name is a cut job: "-", or a name that ends in .json.
[[nodiscard]] bool IsCutJobName(const std::string& path);
/// Whether it is a picture for a person, which shows the page in its own frame.
[[nodiscard]] bool IsCutPictureName(const std::string& path);

/// The parts of the pipeline, for commands that use them alone. ReadCutJob reads the command's file
/// into the run's job: a cut job (docs/formats/cut-job.md) if its name ends in ".json", a drawing
/// if it ends in ".svg" or ".dxf", else the wanted paths of a PostScript, EPS or PDF file.
/// WriteCutJob writes the job to the name of
/// --output in the form of its ending.
[[nodiscard]] Expected<void> ReadCutJob(CutRun& run);
[[nodiscard]] Expected<void> WriteCutJob(CutRun& run);

/// Kerf, weeding, order, overcut, bridges and lead-in, by the options and each path's settings. A
/// cut job that is written as one (.json, or standard output) is left as it is unless one of the
/// options is there.
[[nodiscard]] Expected<void> WorkToolPaths(CutRun& run);
/// The stage of clean paths (cutting/clean): --heal mends the job's paths and says how, and --check
/// reports the faults that there are, with a picture of them in the file of --output, and ends the
/// run.
[[nodiscard]] Expected<void> CleanCutJob(CutRun& run);

/// Writes a file whole and lists it as written. Throws CommandError.
void WriteCutText(CutRun& run, const std::string& path, const std::string& text);

}  // namespace rastrel::cli
