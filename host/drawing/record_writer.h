#pragma once

#include <string_view>

#include "host/graphics/drawing_records.h"

namespace rastrel::drawing {

/// Writes a record to the standard output. A caller that is gone ends the program by SIGPIPE; any
/// other failure of writing ends it with status 1, since there is no other way to say so. One
/// thread at a time.
void WriteRecord(graphics::DrawingRecord kind, std::string_view body = {});

}  // namespace rastrel::drawing
