#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// The first line of a file, without its line end.
[[nodiscard]] Expected<std::string> PasswordOfFile(const std::string& path);

/// Asks for a new password twice on the terminal of standard input, which shows nothing of it.
/// Fails without a terminal, if Control-C was pressed, and if the two differ.
[[nodiscard]] Expected<std::string> AskForPassword(const std::string& name);

}  // namespace rastrel::cli
