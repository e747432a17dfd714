#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "children/jobspool/job_source.h"

namespace rastrel::jobspool {

/// The values in the prefix of a picture's run. All lengths in points.
struct PictureTask {
  /// The part of the page that becomes the picture; nothing: the page that the job sets.
  std::optional<PointBox> area;
  std::optional<PictureSize> size;  ///< of the picture; nothing: as large as the area
  int resolution = 72;              ///< dots per inch, both ways
  std::vector<CutLine> cutLines;    ///< their paths are taken out
};

/// Dots per inch below which the interpreter's screens fail. A task below it has a size or an area.
inline constexpr int LowestDeviceResolution = 4;

/// The picture's size in dots, not rounded and at least 1 each way; nothing if the job's page sets
/// it.
[[nodiscard]] std::optional<PictureSize> DotsOf(const PictureTask& task);

/// The PostScript that goes ahead of a job whose first page becomes a picture: RGB, filled from
/// edge to edge by the area, whatever the job asks of its device.
[[nodiscard]] std::string PicturePrefix(const PictureTask& task);

/// The same for a job that is separated: all pages, in CMYK and spot colors, at that many pixels
/// per inch unless it selects others.
[[nodiscard]] std::string SeparationPrefix(std::uint64_t resolution);

/// The name of a cut line that is a separation, in UTF-8. The RIP finds it in a job in either
/// encoding (names.ps).
[[nodiscard]] std::string NameOf(const CutLine& line);

}  // namespace rastrel::jobspool
