#pragma once

#include <string_view>

#include "host/drawing/path_sink.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::drawing {

/// Reads a DXF file in text form: each entity is a path, in the file's order, in the unit that
/// $INSUNITS names, or in millimetres.
///
/// Read are LINE, LWPOLYLINE and POLYLINE with bulges, CIRCLE, ARC, ELLIPSE, SPLINE, SOLID, which
/// is filled, and INSERT of blocks, also in rows and columns. Colors are those of the entity, its
/// layer or the block that it is in; the seventh is black. Layers that are off or frozen, and
/// entities on paper, are left out. Entities of other kinds are left out with a note.
///
/// Fails by the sink, and for a file that draws nothing or whose blocks would be drawn more than a
/// hundred thousand times.
[[nodiscard]] Expected<void> ReadExchangeFile(std::string_view bytes, PathSink& sink);

}  // namespace rastrel::drawing
