#pragma once

#include <memory>
#include <vector>

#include "rastrel/imports/bright_star_data.h"

namespace rastrel::imports {

/// Reads a BrightStar template (docs/formats/bright-star.md) by library path, and appends a record
/// for each ENGRAVINGTEMPLATE below its root, of which there may be none. False if the path is
/// null, names nothing or has another extension than "xml", if the document is refused, or if a
/// text is longer than its field; `records`, empty before, stays empty, and the last two are
/// reported (xml/failure.h).
[[nodiscard]] bool ParseBrightStar(const wchar_t* path,
                                   std::vector<std::unique_ptr<tagBRIGHT_STAR_DATA>>& records);

}  // namespace rastrel::imports
