#pragma once

#include <cstdint>
#include <vector>

#include "rastrel/conversion/dialogs/ps2bmp_params.h"
#include "rastrel/platform/mfc/string.h"

namespace rastrel::conversion {

/// The resolution that the user chose last, in dots per inch; 72 if none is stored or it is not
/// above 0.
[[nodiscard]] std::int32_t KeptResolution();

/// Fills `params` from the comments of the file and the user's settings, lets the user edit them in
/// the dialog, and stores the resolution for the next time. False, with `params` as the dialog
/// began, if the user cancelled. On the user interface thread. `path` is a library path.
[[nodiscard]] bool AskBitmapParams(const wchar_t* path, PS2BmpParams& params);

/// The dialog of that alone, for a file whose bounds and spot colors are known already: `params`
/// are its start values, and `names` those of the colors.
[[nodiscard]] bool EditBitmapParams(PS2BmpParams& params, std::vector<CString> names);

}  // namespace rastrel::conversion
