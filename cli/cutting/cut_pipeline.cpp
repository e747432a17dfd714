#include "cli/cutting/cut_pipeline.h"

#include <array>

#include "cli/console/exit_status.h"
#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/cutting/bleed_stage.h"
#include "cli/cutting/cut_delivery.h"
#include "cli/cutting/frame_stages.h"
#include "cli/cutting/rules_stage.h"
#include "cli/cutting/show_stage.h"

namespace rastrel::cli {
namespace {

// In the order in which they run. A row has a line of its own, with a comment above it, so that
// rows are added at several places at the same time.
constexpr std::array Stages{
    // Whether there can be a window, before anything takes time.
    CutStage{CheckWindow},
    // The rule file, which says which paints are wanted.
    CutStage{ReadRuleFile},
    // The file's paths, or a cut job.
    CutStage{ReadCutJob},
    // Rules: which paint means which operation.
    CutStage{ApplyRules},
    // How far the print reaches over the cuts.
    CutStage{CheckPrintBleed},
    // Clean paths: check and heal.
    CutStage{CleanCutJob},
    // Registration marks, and fits of measured ones.
    CutStage{AddMarks},
    CutStage{PrintWithMarks},
    CutStage{FitToMeasuredMarks},
    // Tool paths: kerf, weeding, order, overcut, bridges, lead-in.
    CutStage{WorkToolPaths},
    // A picture of the job for a person, in the page's own frame.
    CutStage{WriteCutPicture},
    // The same in a window, with the print below.
    CutStage{ShowCut},
    // The origin of files for cutters: the first mark.
    CutStage{CountFromFirstMark},
    // The file in the form of its ending.
    CutStage{WriteCutJob},
};

void WriteRemark(const Invocation& invocation, const char* kind, std::string_view sentence) {
  if (invocation.Has(OptionId::Json)) {
    JsonLine(kind).Add("originator", "system").Add("text", sentence).Write();
  } else {
    WriteErrorLine(std::string(kind) + ": " + std::string(sentence));
  }
}

}  // namespace

void CutRun::Note(std::string_view sentence) const { WriteRemark(invocation, "note", sentence); }
void CutRun::Warn(std::string_view sentence) const { WriteRemark(invocation, "warning", sentence); }

void RunPipeline(CutRun& run) {
  for (const CutStage stage : Stages) {
    OrEndByCode(ExitStatus::JobFailed, stage(run));
    if (run.ended) return;
  }
}

}  // namespace rastrel::cli
