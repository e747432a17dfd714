#pragma once

#include <memory>

#include "children/coreodalis/image.h"

namespace rastrel::odalis {

/// Writes a PDF file of one page that is one picture: PDF 1.4, deflated or plain, DeviceGray,
/// DeviceRGB, DeviceCMYK or DeviceN. The page measures pixels * 72 / resolution points; where that
/// is more than the 14,400 that the format allows, a user unit enlarges them (PDF 1.6).
///
/// Inks keep their names. A device without them shows Cyan, Magenta, Yellow and Black as themselves
/// and any other as black. More than 32 inks can't be held, which is the failure then; more than 8
/// make it PDF 1.6.
[[nodiscard]] Expected<std::unique_ptr<ImageWriter>> MakePdfWriter(const ImageOrder& order,
                                                                   const ImageShape& shape,
                                                                   WorkerPool& pool);

}  // namespace rastrel::odalis
