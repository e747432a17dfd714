#pragma once

#include <string>

#include "host/cutfile/cut_drawing.h"

namespace rastrel::cutfile {

/// A DXF file of version AC1009 in millimetres. Each run is a POLYLINE on the layer of its kind,
/// CUT, CUT_THROUGH or LINES; the first two have the color of their layer. Numbers have a point
/// whatever the locale.
[[nodiscard]] std::string ExchangeFileText(const CutDrawing& drawing);

}  // namespace rastrel::cutfile
