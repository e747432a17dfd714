#pragma once

#include <string>
#include <string_view>

namespace rastrel::cli {

/// The summary of all commands, as UTF-8 lines.
[[nodiscard]] std::string SummaryText();

/// Help on the commands whose name is `name` or begins with that word. Empty if there are none.
[[nodiscard]] std::string HelpText(std::string_view name);

}  // namespace rastrel::cli
