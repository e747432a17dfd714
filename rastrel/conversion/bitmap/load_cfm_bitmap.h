#pragma once

#include <string>

#include "rastrel/conversion/dialogs/ps2bmp_params.h"
#include "rastrel/platform/values/document_values.h"

namespace rastrel::conversion {

/// Adds the picture of a page directory to the document as a bitmap object, with its lower left
/// corner at the origin. `cfmPath` is the directory's library path. The object has the height and
/// width of `params`; without bounds, those of its pixels at the resolution. Its pixels are read by
/// the plane reader of the host. True with the object's handle in `object`; false, with `object` as
/// it was and nothing in the document, if there is no ".info" file, no plane reader, or if one of
/// its or the host's operations fails. The application log has the reason. On the user interface
/// thread.
[[nodiscard]] bool LoadCfmBitmap(const std::wstring& cfmPath, const PS2BmpParams& params,
                                 host::ObjectHandle& object);

}  // namespace rastrel::conversion
