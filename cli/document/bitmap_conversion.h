#pragma once

#include "cli/document/conversion_host.h"
#include "cli/document/conversion_request.h"
#include "cli/document/conversion_views.h"
#include "cli/input/input_file.h"

namespace rastrel::cli {

/// How a conversion to a bitmap went, as far as the document does not show it.
enum class ConversionEnd {
  Ran,          ///< the library has done its steps; the document has all that came of it
  NotPrepared,  ///< the working copy or its job header could not be written
  Dismissed,    ///< a person dismissed the dialog
};

/// Runs the conversion of a file: by the library's ConvertPStoBmp, whose dialog gets the options in
/// place of a person's answers, or, where that dialog has no form for them, by the steps of
/// ConvertOutsideDialog. The host is installed and has an empty document. Throws CommandError for
/// options that don't go with the file.
[[nodiscard]] ConversionEnd RunBitmapConversion(const InputFile& input,
                                                const ConversionRequest& request,
                                                ConversionHost& host, ConversionViews& views);

}  // namespace rastrel::cli
