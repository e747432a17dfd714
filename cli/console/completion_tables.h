#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/console/options.h"

/// The part of all completions that is the same, made from the tables of commands and options. The
/// kind of a value or an operand is text with bars between alternatives, each one of these:
///
///     files              any file
///     files ps eps pdf   files of these types and directories; any file if there are none
///     directories
///     one of a b c       one of these
///     printers           the listing of `rastrel printers`, which has the names in its first
///                        column; so are modes, jobs list and the others that hold names
namespace rastrel::cli {

/// The kind of an option's value; empty: nothing is known of it.
[[nodiscard]] std::string KindOfValue(const OptionRow& row);

/// The kind of a command's operand; empty: it takes none, or nothing is known of it.
[[nodiscard]] std::string KindOfOperand(const CommandRow& row);

/// The alternatives of a kind.
[[nodiscard]] std::vector<std::string> AlternativesOf(std::string_view kind);

/// "jobs" of "jobs list", and the name of a command without a second word.
[[nodiscard]] std::string FirstWord(std::string_view name);

/// The first word of each command, each once and sorted.
[[nodiscard]] std::vector<std::string> FirstWords();

/// The groups of commands, "jobs" say, sorted.
[[nodiscard]] std::vector<std::string> CommandGroups();

/// A sentence on the command with that first word; for a group, the names within it.
[[nodiscard]] std::string DescriptionOf(std::string_view firstWord);

/// The rows of a group.
[[nodiscard]] std::vector<const CommandRow*> CommandsOf(std::string_view group);

/// Whether -o is short for the option.
[[nodiscard]] bool HasShortOutput(OptionId id);

/// The text in single quotes, as bash and zsh read it.
[[nodiscard]] std::string InQuotes(std::string_view text);

/// A function of bash and zsh, `_rastrel_value "COMMAND OPTION"`, that sets `kind`, and fails for
/// an option without a value.
[[nodiscard]] std::string ValueTable();

/// The scripts.
[[nodiscard]] std::string BashCompletions();
[[nodiscard]] std::string FishCompletions();
[[nodiscard]] std::string ZshCompletions();

}  // namespace rastrel::cli
