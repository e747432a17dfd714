#pragma once

#include <string>

#include "host/cutfile/cut_drawing.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cutfile {

/// A plotter file (HPGL) of 40 units a millimetre: pen 3 draws lines, pen 1 is the knife, and pen
/// 2, the last, the knife that goes through the material. Fails for a point more than 2^23 units,
/// 209 metres, away from the origin, which is the farthest that the language knows.
[[nodiscard]] Expected<std::string> PlotterFileText(const CutDrawing& drawing);

}  // namespace rastrel::cutfile
