#pragma once

#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"

namespace rastrel::drawing {

/// Does the program's task with its standard input and writes the result's records, but for the
/// last: "measure KIND" on a foreign file, or "pages ..." on a document (render::DrawingTask). The
/// failure is a sentence for the user.
[[nodiscard]] Expected<void> DoTask(const std::vector<std::string>& task, const std::string& input);

}  // namespace rastrel::drawing
