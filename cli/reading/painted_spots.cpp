#include "cli/reading/painted_spots.h"

#include <utility>

#include "cli/console/exit_status.h"
#include "interpreter/interpreter.h"

namespace rastrel::cli {

std::vector<std::string> PaintedSpots(const std::string& path, const std::optional<CRect>& bounds) {
  if (interpreter::FindGhostscript().empty())
    throw CommandError(ExitStatus::NotInstalled, "Ghostscript (gs) is not installed");
  std::optional<interpreter::PageArea> area;
  if (bounds)
    area = {double{1} * bounds->left, double{1} * bounds->bottom, double{1} * bounds->right,
            double{1} * bounds->top};
  auto spots = interpreter::PaintedSpots(path, area);
  if (!spots) throw CommandError(ExitStatus::JobFailed, Describe(spots.Error()));
  return std::move(*spots);
}

}  // namespace rastrel::cli
