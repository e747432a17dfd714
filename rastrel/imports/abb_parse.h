#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "rastrel/imports/abb_plate_data.h"

namespace rastrel::imports {

/// Reads a plate XML of ABB by library path: docs/formats/abb-plates.md. A record for each plate
/// goes to `plates`, also where the result is false for want of the element that says that the file
/// has plates. A document with a text that no field holds gives no records and false, and is
/// reported (xml/failure.h).
[[nodiscard]] bool ParseAbbPlates(const wchar_t* path,
                                  std::vector<std::unique_ptr<tagABB_PLATE_DATA>>& plates);

}  // namespace rastrel::imports
