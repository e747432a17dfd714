#pragma once

#include <optional>
#include <string>

#include "interpreter/page_area.h"

namespace rastrel::interpreter {

/// The measure of a job's first page.
struct PageMeasure {
  PageArea box;         ///< the page: see MeasuredPage
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
                                                      const std::optional<PageArea>& declared);

}  // namespace rastrel::interpreter
