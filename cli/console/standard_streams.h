#pragma once

#include <string>
#include <string_view>

#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// The name of an output file that means standard output.
inline constexpr const char* StandardOutputName = "-";

/// Writes all of the text to standard output or standard error, each call whole. A reader that is
/// gone or a full disk is no failure and no signal: the work goes on. Any thread.
void WriteOut(std::string_view text);
void WriteError(std::string_view text);

/// From now on both write `name` wherever a text has that path, such as that of a private copy.
/// Before other threads write.
void ShowPathAs(const std::string& path, const std::string& name);

/// From now on WriteOut writes to standard error: standard output is for one result, and no message
/// goes there. Fails with a message for the user if it is a terminal, since the result is no text.
[[nodiscard]] Expected<void> KeepOutputForResult();
/// Writes a file, by native path, or bytes to standard output, after KeepOutputForResult. A reader
/// that is gone is no failure. Fails with a message for the user.
[[nodiscard]] Expected<void> WriteResultFile(const std::string& path);
[[nodiscard]] Expected<void> WriteResult(std::string_view bytes);

/// Whether a text could not be written to standard output, other than for a reader that is gone.
[[nodiscard]] bool OutputFailed();

}  // namespace rastrel::cli
