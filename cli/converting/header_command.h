#pragma once

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// `rastrel header`: shows the job header that a file has, or the one that the options make. With
/// -o it is written in front of a copy of the file, or in front of the file itself if that is the
/// one that -o names; of a PDF, whose header lies beside it, the header is written alone.
[[nodiscard]] ExitStatus HeaderCommand(const Invocation& invocation);

}  // namespace rastrel::cli
