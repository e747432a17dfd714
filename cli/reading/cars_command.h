#pragma once

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// Shows a car data library as a tree, or as the objects of docs/formats/car-data.md. Throws
/// CommandError(BadInput) with the reason if the file is refused.
[[nodiscard]] ExitStatus CarsCommand(const Invocation& invocation);

/// Whether the environment says that text is UTF-8, by LC_ALL, LC_CTYPE or LANG, the first that is
/// set.
[[nodiscard]] bool TextIsUtf8();

}  // namespace rastrel::cli
