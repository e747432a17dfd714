#include "cli/console/completion.h"

#include "cli/console/completion_tables.h"

namespace rastrel::cli {

Expected<std::string> CompletionScript(std::string_view shell) {
  if (shell == "bash") return BashCompletions();
  if (shell == "fish") return FishCompletions();
  if (shell == "zsh") return ZshCompletions();
  return FailureOf("there are no completions for '" + std::string(shell) +
                   "'; there are some for " + std::string(CompletedShells));
}

}  // namespace rastrel::cli
