#pragma once

#include <string>

#include "cli/console/options.h"

/// Names of results where a command makes one file of each input: --output is then a directory,
/// ("out/", or one that is there), a pattern with {name} in it, or missing.
namespace rastrel::cli {

/// Whether the option's value is a directory for results.
[[nodiscard]] bool IsResultDirectory(const std::string& output);

/// Whether the option's value leads to a name for each input. An empty one does: each result is
/// named after its input, in the working directory.
[[nodiscard]] bool NamesEachResult(const std::string& output);

/// The result's name for an input by the name that a job of it has. `extension`, with its dot, is
/// for a value that has none itself. REQUIRES: the value leads to a name for each.
[[nodiscard]] std::string ResultNameFor(const std::string& output, const std::string& name,
                                        const std::string& extension);

/// The name that a job of the operand has; of standard input that of --title.
[[nodiscard]] std::string JobNameOfOperand(const Invocation& invocation,
                                           const std::string& operand);

/// Checks that each operand has a result of its own. Throws CommandError(WrongUse), with `verb` in
/// the message.
void CheckResultNames(const Invocation& invocation, const std::string& output,
                      const std::string& extension, const char* verb);

}  // namespace rastrel::cli
