#pragma once

#include <string>

#include "children/jobspool/queue_run.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::jobspool {

/// Converts a file into its caller's files (docs/formats/conversion-files.md), beside the file
/// and named after it: the page directory ".cfm", and for a file with a job header, whose first
/// page becomes a picture, "_Color.bmp" and, if it names cut lines, the archive ".cut". A file
/// without a header is separated, all its pages.
///
/// Files of those names that lie there from before go first. All are put under guard and let go of
/// in the last step, so nothing of a conversion that fails or is killed stays. `file` is native.
[[nodiscard]] Expected<void> Convert(const std::string& file, const JobSource& source,
                                     const QueueContext& context);

}  // namespace rastrel::jobspool
