#pragma once

#include "cli/console/exit_status.h"

namespace rastrel::cli {

/// Writes an error that ends the command before or without a job: as "rastrel: ..." on standard
/// error, or with `json` as a `failed` event on standard output. Any thread.
void WriteErrorMessage(const CommandError& error, bool json);

}  // namespace rastrel::cli
