#include "interpreter/run_mode.h"

#include <algorithm>

namespace rastrel::interpreter {
namespace {

// A job that is not much longer than the pipe to the interpreter is sent before its first line
// runs.
constexpr std::uint64_t MeaningfulLength = 1 << 20;

double SentShare(const RunProgress& progress) {
  const bool isSent = progress.job.kind != JobKind::Pdf;
  return isSent && progress.job.length >= MeaningfulLength ? progress.sentShare : 0;
}

}  // namespace

double PrintMode::Share(const RunProgress& progress) const {
  if (progress.job.pages == 0) return SentShare(progress);
  const double complete = progress.begun > 0 ? progress.begun - 1 : 0;
  return std::max(complete, progress.pages + progress.pageShare) / progress.job.pages;
}

bool PictureMode::HasEnough(const RunProgress& progress) const { return progress.pages > 0; }

double PictureMode::Share(const RunProgress& progress) const {
  return SentShare(progress) / 2 + progress.pageShare / 2;
}

bool MeasureMode::HasEnough(const RunProgress& progress) const {
  return progress.measured || progress.pages > 0;
}

}  // namespace rastrel::interpreter
