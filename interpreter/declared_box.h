#pragma once

#include <optional>
#include <string_view>

#include "interpreter/page_area.h"

namespace rastrel::interpreter {

/// The box that a document's comments declare. `head` is its beginning, `tail` its end; they may
/// overlap. The first "%%BoundingBox:" line of the head counts; if that says "(atend)", or the head
/// has none, the last one of the tail. Nothing if there is none or it is empty.
[[nodiscard]] std::optional<PageArea> FindDeclaredBox(std::string_view head, std::string_view tail);

}  // namespace rastrel::interpreter
