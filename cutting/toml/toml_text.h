#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "rastrel/platform/os/expected.h"

/// Parts of every reader of TOML files, besides the parser.
namespace rastrel::cutting {

/// Fails for a text in which a key has more than 16 parts, with its line. The parser makes a table
/// of each part and ends them by a call a level, so that a hostile file would end the program. Ask
/// before it is parsed. `name` is the file's in the failure.
[[nodiscard]] Expected<void> CheckTomlDepth(std::string_view text, const std::string& name);

/// The name that a misspelt word probably was, as "; did you mean 'that'?", or "".
[[nodiscard]] std::string Suggestion(std::string_view word,
                                     const std::vector<std::string_view>& names);

}  // namespace rastrel::cutting
