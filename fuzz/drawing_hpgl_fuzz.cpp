// Plotter files of any bytes, as paths that a document takes.

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "host/drawing/plotter_reader.h"
#include "host/graphics/vector_path.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace rastrel;
  std::size_t points = 0;
  drawing::PathSink sink(
      [&](const graphics::VectorPath& path) {
        points += graphics::PointCount(path.shape);
        const BOUNDS bounds = document::BoundsOf(path.shape, TM());
        if (!std::isfinite(bounds.xmin + bounds.xmax)) return;
        // The host takes each path, but for one that is far beyond every blank.
        const bool near = std::abs(bounds.xmin) < 1e8 && std::abs(bounds.xmax) < 1e8 &&
                          std::abs(bounds.ymin) < 1e8 && std::abs(bounds.ymax) < 1e8;
        const auto taken = graphics::ReadPathRecord(graphics::PathRecord(path));
        if (near && path.lineWidth < 1e8 && taken && !(*taken == path)) std::abort();
      },
      [](const std::string& note) {
        if (note.empty()) std::abort();
      });
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
  const auto read = drawing::ReadPlotterFile({reinterpret_cast<const char*>(data), size}, sink);
  if (read && sink.Paths() == 0) std::abort();
  if (!read && Describe(read.Error()).empty()) std::abort();
  if (points > graphics::MaximumVectorPoints) std::abort();
  return 0;
}
