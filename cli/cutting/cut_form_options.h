#pragma once

#include "cli/console/options.h"
#include "cutting/output/cut_file.h"

namespace rastrel::cli {

/// The options of `rastrel cut` for the form of its result. Throws CommandError(WrongUse) for a
/// value that an option can't have.
[[nodiscard]] cutting::CutFileOptions CutFormOptions(const Invocation& invocation);

}  // namespace rastrel::cli
