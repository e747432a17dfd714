#pragma once

#include "host/document/palette.h"
#include "host/document/separation_item.h"

namespace rastrel::document {

/// Opens planes through the plane reader's library, which the installed host finds
/// (host::PlaneReader). Fails without that library, and with its own reason for a file that it
/// can't open. Pixels are read through it as well, each time that they are asked for.
///
/// A spot color has the look that the page's description gives it. Without one it has that of the
/// same name in `palette`, or else one of a row of six: orange, green, violet, brown, turquoise and
/// pink, in the order of the planes.
[[nodiscard]] Expected<std::unique_ptr<PlaneSet>> OpenPlanes(const std::wstring& info,
                                                             const Palette& palette);

/// Success if that library is there, else why not.
[[nodiscard]] Expected<void> CheckPlaneReader();

}  // namespace rastrel::document
