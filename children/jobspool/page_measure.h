#pragma once

#include <string>

#include "children/jobspool/job_source.h"
#include "interpreter/interpreter.h"

namespace rastrel::jobspool {

using interpreter::MeasuredPage;
using interpreter::PageMeasure;

/// The lines that report a measure, each with its line feed (docs/formats/queue-program.md).
/// `resolution` is the one that a conversion would have, in dots per inch.
[[nodiscard]] std::string FormatPageRecords(const PageMeasure& page, const std::string& name,
                                            int resolution);

}  // namespace rastrel::jobspool
