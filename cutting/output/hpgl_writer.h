#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <map>
#include <string>

#include "cutting/job/cut_job.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cutting {

struct HpglOptions {
  double unitsPerMillimetre = 40;  ///< 40 or 100
  /// Pens by the operation, in the order of Operation; those without a tool are not looked at.
  std::array<int, 9> penOf{1, 2, 3, 4, 5, 6, 7, 0, 0};
  /// Pens by the name of a tool; they go before those by the operation.
  std::map<std::string, int, std::less<>> penOfTool{};
  std::size_t pointsOfInstruction = 32;  ///< 1 and more
  /// From the instruction's name to its semicolon, 20 and more. Small devices keep an instruction
  /// whole in their buffer.
  std::size_t bytesOfInstruction = 256;
  long long farthest = 8'388'608;  ///< units from the origin along each axis; it and less are taken
  bool operator==(const HpglOptions&) const = default;
};

/// A plotter file. `toDevice` goes from the page's millimetres to the device's. Every position is
/// rounded by itself to whole units, so that no error adds up, and equal ones in a row are one. A
/// contour within one unit is left out, but of an operation Drill it is a point that the tool is
/// lowered at. Fails for a position farther than `farthest`, and for a limit or a pen that the
/// options can't have (pens are 1 to 99).
[[nodiscard]] Expected<std::string> HpglText(const CutJob& job, const Transform& toDevice,
                                             double tolerance, const HpglOptions& options);

}  // namespace rastrel::cutting
