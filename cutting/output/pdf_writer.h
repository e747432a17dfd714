#pragma once

#include <array>
#include <string>

#include "cutting/job/cut_job.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cutting {

struct PdfOptions {
  /// Names of the separations by the operation, UTF-8, in the order of Operation.
  std::array<std::string, 9> spotOf{"CutContour", "KissCut", "Crease", "Engrave", "Perforate",
                                    "Drill",      "Mark",    "",       ""};
  double lineWidth = 0.25;  ///< millimetres
  bool operator==(const PdfOptions&) const = default;
};

/// One page with a separation an operation, which is stroked over all that lies below. `toDevice`
/// goes from the page's millimetres to those of a page with y upward; the page's rectangle is moved
/// by it, too, and the page has it and all paths. Curves stay curves. The same job gives the same
/// bytes. Fails for a name that is empty, longer than 127 bytes, or "All" or "None", which mean no
/// separation, for two operations of one name, and for a line width out of 0 to 100 mm.
[[nodiscard]] Expected<std::string> PdfText(const CutJob& job, const Transform& toDevice,
                                            const PdfOptions& options);

}  // namespace rastrel::cutting
