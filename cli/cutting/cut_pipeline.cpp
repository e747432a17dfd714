#include "cli/cutting/cut_pipeline.h"

#include <array>

#include "cli/console/exit_status.h"
#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/cutting/cut_delivery.h"

namespace rastrel::cli {
namespace {

// In the order in which they run. A row has a line of its own, with a comment above it, so that
// rows are added at several places at the same time.
constexpr std::array Stages{
    // The file's paths, or a cut job.
    CutStage{ReadCutJob},
    // Rules: which paint means which operation.
    // Clean paths: check and heal.
    // Registration marks, and fits of measured ones.
    // Tool paths: kerf, overcut, bridges, weeding.
    // Order.
    // The file in the form of its ending.
    CutStage{WriteCutJob},
    // A picture of the job for a person.
    CutStage{WriteCutPicture},
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
  for (const CutStage stage : Stages) OrEndByCode(ExitStatus::JobFailed, stage(run));
}

}  // namespace rastrel::cli
