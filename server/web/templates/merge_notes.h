#pragma once

#include <string_view>

#include "server/web/templates/templates.h"

namespace rastrel::server::web {

/// Reads the lines of `rastrel merge --json` on one row: the notes, pages and size of a picture.
/// Other lines are passed over. A text that has no room is a note of the field whose value it is.
void ReadMergeLines(std::string_view lines, const FieldValues& values, PlatePicture& picture);

}  // namespace rastrel::server::web
