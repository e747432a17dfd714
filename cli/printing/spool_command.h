#pragma once

#include "cli/console/exit_status.h"

namespace rastrel::cli {

struct Invocation;

/// `rastrel spool list`
[[nodiscard]] ExitStatus ListSpoolCommand(const Invocation& invocation);
/// `rastrel spool show`
[[nodiscard]] ExitStatus ShowSpoolCommand(const Invocation& invocation);
/// `rastrel spool size`
[[nodiscard]] ExitStatus SpoolSizeCommand(const Invocation& invocation);
/// `rastrel spool remove`
[[nodiscard]] ExitStatus RemoveSpoolCommand(const Invocation& invocation);
/// `rastrel spool open`
[[nodiscard]] ExitStatus OpenSpoolCommand(const Invocation& invocation);

}  // namespace rastrel::cli
