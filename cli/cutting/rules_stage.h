#pragma once

#include "cli/cutting/cut_pipeline.h"
#include "rastrel/platform/os/expected.h"

/// The stages of `rastrel cut --rules`.
namespace rastrel::cli {

/// Before the reading: reads the rule file, and has the RIP take those paints out of the picture
/// that a rule gives a tool.
[[nodiscard]] Expected<void> ReadRuleFile(CutRun& run);

/// After it: gives each path the operation, the settings and the name of its rule, and warns of
/// rules that took nothing.
[[nodiscard]] Expected<void> ApplyRules(CutRun& run);

}  // namespace rastrel::cli
