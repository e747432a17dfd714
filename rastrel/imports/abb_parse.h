#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "rastrel/imports/abb_plate_data.h"

namespace rastrel::imports {

/// Reads a plate XML of ABB (docs/formats/abb-plates.md) by library path, and appends a record for
/// each plate to `plates`. False if the path is null, names nothing or has another extension than
/// "xml", if the document is refused, or if a text is longer than its field; `plates`, empty
/// before, stays empty, and the last two are reported (xml/failure.h). Also false if no element
/// announces plates; the records are there then.
[[nodiscard]] bool ParseAbbPlates(const wchar_t* path,
                                  std::vector<std::unique_ptr<tagABB_PLATE_DATA>>& plates);

}  // namespace rastrel::imports
