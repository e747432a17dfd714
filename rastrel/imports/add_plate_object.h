#pragma once

#include <optional>

#include "rastrel/imports/document_host.h"
#include "rastrel/platform/values/color.h"
#include "rastrel/platform/values/document_values.h"
#include "rastrel/platform/values/world.h"

namespace rastrel::imports {

/// The measures and the color of a plate object. Lengths are world units.
struct PlateRequest {
  int count = 1;  ///< panes
  double width = 0;
  double height = 0;
  CWorldRect margins;
  double horizontalGap = 0;
  double verticalGap = 0;
  CVKColor color;
};

/// The differences between the formats.
struct PlateStyle {
  bool setsLineColor = true;  ///< the outline gets the plate's color too
  int keepsColors = 0;        ///< second value of `AdjustPlateObjects`
};

/// Creates plate objects on the sign blank: as many panes as fit on the page on show, the others on
/// fresh pages, each with a plate object and a sheet layer of its own. Then has all plate objects
/// of the document laid out. Each object is added in an undo step.
///
/// Returns the result of `AdjustPlateObjects`. Nothing, with no object added, for a count below 1,
/// and if the host refuses the first plate object, which is logged. A refusal on a later page ends
/// the panes there.
[[nodiscard]] std::optional<host::ObjectHandle> AddPlateObject(const DocumentHost& document,
                                                               const PlateRequest& request,
                                                               const PlateStyle& style = {});

}  // namespace rastrel::imports
