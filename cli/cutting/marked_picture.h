#pragma once

#include <vector>

#include "cli/cutting/page_picture.h"
#include "cutting/job/cut_job.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/output_file.h"

namespace rastrel::cli {

/// Appends the picture with its margins and marks as a TIFF: RGB of 8 bits, not compressed. The
/// marks, in millimetres from the lower left corner of the whole, are black. Memory is in
/// proportion to a row. Fails if the picture is not in RGB, can't be read, or the file not be
/// written, or if the whole is longer than 4 GiB, which the format can't count.
[[nodiscard]] Expected<void> WriteMarkedPicture(PagePicture& picture, const PictureMargins& margins,
                                                const std::vector<cutting::RegistrationMark>& marks,
                                                os::OutputFile& file);

}  // namespace rastrel::cli
