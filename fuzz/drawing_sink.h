#pragma once

// Reading a drawing of any bytes: the promises that the reader of each format keeps.

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "host/drawing/path_sink.h"
#include "host/graphics/vector_path.h"

namespace rastrel::fuzz {

/// Aborts unless a path comes back as it is from the record that the host takes. One that is far
/// beyond every sign blank need not.
inline void CheckPath(const graphics::VectorPath& path) {
  const BOUNDS bounds = document::BoundsOf(path.shape, TM());
  if (!std::isfinite(bounds.xmin + bounds.xmax)) return;
  const bool near = std::abs(bounds.xmin) < 1e8 && std::abs(bounds.xmax) < 1e8 &&
                    std::abs(bounds.ymin) < 1e8 && std::abs(bounds.ymax) < 1e8;
  const auto taken = graphics::ReadPathRecord(graphics::PathRecord(path));
  if (near && path.lineWidth < 1e8 && taken && !(*taken == path)) std::abort();
}

/// Calls `read(bytes, sink)`, a reader of drawings, and aborts unless it keeps its promises: paths
/// or a reason, notes with a text, and no more points than the host takes.
template <class Read>
void ReadDrawing(const std::uint8_t* data, std::size_t size, Read read) {
  constexpr std::size_t CheckedPaths = 10'000;
  std::size_t points = 0;
  std::size_t paths = 0;
  drawing::PathSink sink(
      [&](const graphics::VectorPath& path) {
        points += graphics::PointCount(path.shape);
        // A block is drawn up to 100,000 times, and its paths are alike.
        if (++paths <= CheckedPaths) CheckPath(path);
      },
      [](const std::string& note) {
        if (note.empty()) std::abort();
      });
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
  const auto done = read(std::string_view(reinterpret_cast<const char*>(data), size), sink);
  if (done && sink.Paths() == 0) std::abort();
  if (!done && Describe(done.Error()).empty()) std::abort();
  if (points > graphics::MaximumVectorPoints) std::abort();
}

}  // namespace rastrel::fuzz
