#pragma once

#include <vector>

#include "cli/console/exit_status.h"
#include "cli/console/health_check.h"

namespace rastrel::cli {

struct Invocation;

/// Lays the data root out and checks everything.
[[nodiscard]] std::vector<HealthCheck> ExamineInstallation();

/// `rastrel doctor`: these checks, and those of the server's program. Done, or NotInstalled if one
/// is Bad.
[[nodiscard]] ExitStatus DoctorCommand(const Invocation& invocation);

}  // namespace rastrel::cli
