#pragma once

#include <string>
#include <vector>

#include "cutting/rules/rules.h"
#include "rastrel/platform/os/expected.h"

/// Where the rule files of this user and of the installation are. The code of each failure is
/// BadInput.
namespace rastrel::cli {

struct FoundRules {
  std::string name;  ///< by which it is asked for
  std::string path;  ///< native
};

/// The path of a rule file: `name` itself if it has a slash or an ending, else that of NAME.toml in
/// the data root's directory `cut-rules`, else in the installed one, else a file of the very name.
/// Fails if there is none.
[[nodiscard]] Expected<std::string> FindRules(const std::string& name);

/// All that FindRules finds by a name alone, sorted.
[[nodiscard]] std::vector<FoundRules> AllFoundRules();

/// The text of the file that FindRules finds.
[[nodiscard]] Expected<std::string> RuleText(const std::string& name);

/// Finds and reads a rule file.
[[nodiscard]] Expected<cutting::RuleSet> RulesNamed(const std::string& name);

}  // namespace rastrel::cli
