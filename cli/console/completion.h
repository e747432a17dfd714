#pragma once

#include <string>
#include <string_view>

#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// The shells that there are completions for, separated by blanks.
inline constexpr std::string_view CompletedShells = "bash fish zsh";

/// A script that completes the command's arguments in a shell, made from the tables of commands and
/// options (options.h): commands, options, their values where these are known, files. Printers,
/// modes and kept and queued jobs are asked of the command when they are completed. The failure is
/// a message for the user: there is none for that shell.
[[nodiscard]] Expected<std::string> CompletionScript(std::string_view shell);

}  // namespace rastrel::cli
