#pragma once

#include <optional>
#include <string>

#include "children/jobspool/job_source.h"
#include "children/jobspool/page_measure.h"
#include "interpreter/rip_run.h"

namespace rastrel::jobspool {

/// What the runs of one file have in common. All but the source outlives them.
struct QueueContext {
  std::string ripDirectory;  ///< native; holds System/prolog
  interpreter::Settings settings;
  interpreter::Reporter& reporter;
  interpreter::Guardian& guardian;
};

/// The interpreter's parts for a source whose file stays open there. A PDF behind a header is
/// copied into a file without a name, since its positions count from its own beginning.
[[nodiscard]] std::variant<interpreter::RipRun::Parts, interpreter::RunFailure> PartsOf(
    const JobSource& source, const QueueContext& context);

/// Measures the first page in one start of the interpreter.
[[nodiscard]] std::variant<PageMeasure, interpreter::RunFailure> Measure(
    const JobSource& source, const QueueContext& context);

}  // namespace rastrel::jobspool
