#pragma once

#include <string>

#include "children/jobspool/job_source.h"
#include "children/jobspool/page_measure.h"
#include "children/shared/reporter.h"
#include "interpreter/guardian.h"
#include "interpreter/interpreter.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::jobspool {

/// The common part of the runs of one file. Reporter and guardian outlive them.
struct QueueContext {
  std::string ripDirectory;  ///< native; holds System/prolog
  interpreter::Settings settings;
  children::Reporter& reporter;
  interpreter::Guardian& guardian;
};

/// The interpreter's request for a source, whose file stays open there. A PDF after a header is
/// copied into an anonymous file, since its positions count from its own beginning.
[[nodiscard]] Expected<interpreter::RunRequest> RequestOf(const JobSource& source,
                                                          const QueueContext& context);

/// Measures the first page in one start of the interpreter.
[[nodiscard]] Expected<PageMeasure> Measure(const JobSource& source, const QueueContext& context);

}  // namespace rastrel::jobspool
