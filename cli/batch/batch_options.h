#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cli/batch/piece_runner.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// Who does the batch's pieces, as --on and its neighbours ask. Throws CommandError if a value is
/// out of range, or nobody can do the work.
[[nodiscard]] std::unique_ptr<PieceRunner> RunnerOf(const Invocation& invocation);

/// Adds the options that are not the batch's own, which each run gets.
void AddOptions(const Invocation& invocation, std::vector<std::string>& words);

/// The full path of a directory of results, with a slash at its end. Throws CommandError.
[[nodiscard]] std::string FullDirectory(const std::string& given);

/// Whether a directory of results has the record of a batch that has not ended.
[[nodiscard]] bool HasRecord(const std::string& directory);

}  // namespace rastrel::cli
