#pragma once

#include <string>

#include "cli/reading/inspection.h"

/// An inspection in its three forms. Each is one line of UTF-8 with a line feed at its end. Control
/// characters in texts are spaces in the first two.
namespace rastrel::cli {

/// For a person. `color` paints a swatch before each spot color, for a terminal that shows it.
[[nodiscard]] std::string InspectionLine(const Inspection& inspection, bool color);

/// A row of the table of docs/formats/inspect.md, and the row with the columns' names.
[[nodiscard]] std::string InspectionRow(const Inspection& inspection);
[[nodiscard]] std::string InspectionTableHead();

/// A JSON object of the same page.
[[nodiscard]] std::string InspectionObject(const Inspection& inspection);

}  // namespace rastrel::cli
