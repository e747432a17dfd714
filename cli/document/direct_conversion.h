#pragma once

#include "cli/document/bitmap_conversion.h"
#include "cli/document/conversion_request.h"
#include "cli/input/input_file.h"

namespace rastrel::cli {

/// Converts a file by the same queue program and plane reader as the library's ConvertPStoBmp,
/// which knows no PDF, and whose dialog has no size for a file that does not say its own, and no
/// spot color that the file's comments do not name. Without --size the picture is as large as the
/// file's page or box. Its files are left where they are, but
/// for the archive of the cut lines. Uses the host in force.
[[nodiscard]] ConversionEnd ConvertOutsideDialog(const InputFile& input,
                                                 const ConversionRequest& request);

}  // namespace rastrel::cli
