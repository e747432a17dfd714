#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "cutting/job/cut_job.h"
#include "rastrel/platform/os/expected.h"

/// The RIP's file of a page's cut paths (docs/formats/cut-paths.md) as a cut job.
namespace rastrel::cutting {

/// Bounds of a file; the RIP's own are far below them.
inline constexpr std::size_t MaximumCutPathsBytes = std::size_t{1} << 30;

/// A paint from the words of that file: kind "stroke", "fill", "eofill" or "text"; the color as
/// "rgb 1.0 0.0 0.0", "cmyk ...", "gray ..." or "separation NAME", the name in UTF-8 without
/// escapes; the line width in points. Components beyond 0 to 1 become 0 or 1. Nothing for any other
/// text.
[[nodiscard]] std::optional<Paint> PaintFrom(std::string_view kind, std::string_view color,
                                             double lineWidth);

/// Reads the file's text. Each path becomes one of the job, in millimetres, for Operation::Cut,
/// with its paint, and curves stay curves. Clips play no part, since a path is there whole. A text
/// of another form fails with `name`, the line and the reason, as BadInput; memory stays in
/// proportion to the text.
[[nodiscard]] Expected<CutJob> ReadCutPaths(std::string_view text, const std::string& name);

/// Sets the layers of the job's paths by the text of the file "cut-layers", which lies beside. A
/// text of another form, or of another number of paths, fails likewise.
[[nodiscard]] Expected<void> ReadCutLayers(std::string_view text, const std::string& name,
                                           CutJob& job);

}  // namespace rastrel::cutting
