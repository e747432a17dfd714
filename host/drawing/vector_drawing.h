#pragma once

#include <memory>
#include <optional>
#include <string>

#include "host/document/shapes.h"
#include "host/drawing/path_sink.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::drawing {

/// A drawing that was read, besides its paths.
struct VectorDrawing {
  double width = 0;    ///< points
  double height = 0;   ///< points
  std::string reason;  ///< why it is no paths: "it has a gradient"; empty where it is
  /// Of a drawing that is no paths, the part with marks: points, y downward. Nothing: all of it.
  std::optional<CWorldRect> extent;
};

/// Reads an SVG or a PDF file as painted paths; of a PDF file the first page counts. The paths'
/// lower left corner is that of the page. A drawing that has anything besides is kept whole: paths
/// that were taken before that was seen don't count.
///
/// Of a cut line, an SVG path whose file names no fill for it is not filled, even one that would
/// not show, and one whose file names no stroke has no line; dashed lines are taken as whole ones.
///
/// A failure is a sentence about the file; that of a sink (PathSink::Taken) is one.
[[nodiscard]] Expected<VectorDrawing> ReadVectorDrawing(document::GraphicKind kind,
                                                        std::shared_ptr<const std::string> bytes,
                                                        bool cutLine, PathSink& sink);

}  // namespace rastrel::drawing
