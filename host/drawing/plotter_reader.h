#pragma once

#include <string_view>

#include "host/drawing/path_sink.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::drawing {

/// Reads a plotter file (HPGL): each run of the pen is a path, 40 plotter units are a millimetre,
/// and the origin is that of the plotter.
///
/// Read are IN and DF; SP, PC and PW; PU, PD, PA and PR; AA and AR, CI; EA, ER, RA and RR; IP and
/// SC with the scaling between them; labels (LB) and comments (CO) are passed over. Instructions
/// that draw anything else are left out, with a note. Pens: 1 black, 2 red, 3 green, 4 yellow, 5
/// blue, 6 magenta, 7 cyan, all others black, until PC says another color. Pen 0 draws nothing.
///
/// Fails by the sink, and for a file that draws nothing.
[[nodiscard]] Expected<void> ReadPlotterFile(std::string_view bytes, PathSink& sink);

}  // namespace rastrel::drawing
