#pragma once

#include <optional>
#include <string>

#include "children/corerast/rip_run.h"
#include "children/jobspool/job_source.h"
#include "children/jobspool/page_measure.h"

namespace rastrel::jobspool {

/// What the runs of one file have in common. All but the source outlives them.
struct QueueContext {
  std::string ripDirectory;  ///< native; holds System/prolog
  corerast::Settings settings;
  corerast::Reporter& reporter;
  children::Guardian& guardian;
};

/// The interpreter's parts for a source whose file stays open there. A PDF behind a header is
/// copied into a file without a name, since its positions count from its own beginning.
[[nodiscard]] std::variant<corerast::RipRun::Parts, corerast::RunFailure> PartsOf(
    const JobSource& source, const QueueContext& context);

/// Measures the first page in one start of the interpreter.
[[nodiscard]] std::variant<PageMeasure, corerast::RunFailure> Measure(const JobSource& source,
                                                                      const QueueContext& context);

}  // namespace rastrel::jobspool
