#pragma once

#include <optional>
#include <string>

#include "children/jobspool/job_source.h"

namespace rastrel::jobspool {

/// The measure of a job's first page.
struct PageMeasure {
  PointBox box;         ///< the page: see MeasuredPage
  bool marked = false;  ///< the page has marks
};

/// Makes a page of the interpreter's report, which is "WIDTH HEIGHT LEFT BOTTOM RIGHT TOP" (see
/// measure.ps in the RIP's prolog). The page is
/// - the sheet that the job has set, with its origin at the corner, if it has set one;
/// - else the box around all marks, if there are any and they don't fill all that there is;
/// - else the box that the comments declare;
/// - else an A4 sheet.
/// Nothing if the report has another form.
[[nodiscard]] std::optional<PageMeasure> MeasuredPage(const std::string& report,
                                                      const std::optional<PointBox>& declared);

/// The lines that report it, each with its line feed (docs/formats/queue-program.md). `resolution`
/// is the one that a conversion would have, in dots per inch.
[[nodiscard]] std::string FormatPageRecords(const PageMeasure& page, const std::string& name,
                                            int resolution);

}  // namespace rastrel::jobspool
