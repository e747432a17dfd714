#include "cli/reading/painted_spots.h"

#include "interpreter/interpreter.h"

namespace rastrel::cli {

Expected<void> CheckGhostscript() {
  if (!interpreter::FindGhostscript().empty()) return {};
  return FailureOf("Ghostscript (gs) is not installed");
}

Expected<std::vector<std::string>> PaintedSpots(const std::string& path,
                                                const std::optional<CRect>& bounds) {
  std::optional<interpreter::PageArea> area;
  if (bounds)
    area = {double{1} * bounds->left, double{1} * bounds->bottom, double{1} * bounds->right,
            double{1} * bounds->top};
  return interpreter::PaintedSpots(path, area);
}

}  // namespace rastrel::cli
