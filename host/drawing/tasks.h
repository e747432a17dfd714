#pragma once

#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"

namespace rastrel::drawing {

/// Does the program's task with its standard input and writes the result's records, but for the
/// last:
///
/// - "measure KIND" on an image: its Size.
/// - "paths svg|pdf|dxf|hpgl cut|art" on a vector file: its paths, and of an SVG or a PDF the Size;
///   one that is no paths ends with why it is Kept, and before that its Extent. "cut": the file is
///   a cut line (ReadVectorDrawing).
/// - "pages ..." on a document (render::DrawingTask).
///
/// The failure is a sentence for the user.
[[nodiscard]] Expected<void> DoTask(const std::vector<std::string>& task, const std::string& input);

}  // namespace rastrel::drawing
