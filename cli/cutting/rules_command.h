#pragma once

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// `rastrel rules check RULES JOB`: a row for each rule with the paths of the job that it takes,
/// and one for those that no rule takes. Nothing is written but the report.
[[nodiscard]] ExitStatus CheckRulesCommand(const Invocation& invocation);

/// `rastrel rules list`: a row for each rule file that a name alone finds, with its description, or
/// its fault.
[[nodiscard]] ExitStatus ListRulesCommand(const Invocation& invocation);

/// `rastrel rules show RULES`: the lines of a rule file.
[[nodiscard]] ExitStatus ShowRulesCommand(const Invocation& invocation);

}  // namespace rastrel::cli
