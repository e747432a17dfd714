#pragma once

#include <string>
#include <string_view>

namespace rastrel::cli {

/// The text as one word of a shell's command line, in single quotes, for commands that a user is
/// advised to run: 'a b', and 'it'\''s' for a text with a quote.
[[nodiscard]] std::string ShellWord(std::string_view text);

}  // namespace rastrel::cli
