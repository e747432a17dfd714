#pragma once

#include <string_view>

namespace rastrel::cli {

/// Writes all of the text to standard output or standard error, each call whole. A reader that is
/// gone or a full disk is no failure and no signal: the work goes on. Any thread.
void WriteOut(std::string_view text);
void WriteError(std::string_view text);

/// Whether a text could not be written to standard output, other than for a reader that is gone.
[[nodiscard]] bool OutputFailed();

}  // namespace rastrel::cli
