#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "host/document/document.h"
#include "host/document/notices.h"
#include "host/graphics/drawing_process.h"

namespace rastrel::graphics {

/// An object that a file becomes, without page and place.
struct LoadedObject {
  document::Shape shape;
  CVKColor layer;
  CVKColor lineColor;
  LINESTYLE lineStyle{0, LINESTYLE_HAIRLINE};
};

/// How a file is read.
struct LoadOptions {
  bool cutLine = false;         ///< an SVG path whose file names no fill for it has none
  bool textAsGraphics = false;  ///< letters of a PDF become paths, as those of other files do
  bool operator==(const LoadOptions&) const = default;
};

/// The content of a file as it becomes objects.
struct LoadedGraphic {
  std::vector<LoadedObject> objects;                   ///< of a foreign file
  std::unique_ptr<const document::Document> document;  ///< of the host's own
  std::vector<std::wstring> losses;                    ///< sentences about parts that are left out
  std::size_t weight = 0;                              ///< bytes of memory, about
};

/// The true size of a placed file's page, in world units.
struct GraphicSize {
  double width = 0;
  double height = 0;
};
/// Measures a file that is drawn as a picture. The failure is a sentence about it.
[[nodiscard]] Expected<GraphicSize> MeasureGraphic(document::GraphicKind kind,
                                                   std::shared_ptr<const std::string> bytes,
                                                   const DrawingLimits& limits,
                                                   EpsPart part = EpsPart::Page);

/// Reads a file by path. The failure is a sentence about it, or the system's error.
[[nodiscard]] Expected<std::shared_ptr<const LoadedGraphic>> ReadGraphicFile(
    const std::wstring& path, const LoadOptions& options, const DrawingLimits& limits);

}  // namespace rastrel::graphics
