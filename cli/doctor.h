#pragma once

#include <string>
#include <vector>

#include "cli/console/exit_status.h"

namespace rastrel::cli {

struct Invocation;

/// One thing that printing needs.
struct HealthCheck {
  enum class State {
    Good,
    Warning,  ///< printing works, but something is worth knowing
    Bad,      ///< printing does not work
  };
  std::string name;  ///< of the check; stable, in lower case
  State state = State::Good;
  std::string text;  ///< the finding
  std::string path;  ///< native; may be empty
  std::string mend;  ///< a remedy; empty if nothing is to be done
};

/// Lays the data root out and checks everything.
[[nodiscard]] std::vector<HealthCheck> ExamineInstallation();

/// `rastrel doctor`: Done, or NotInstalled if a check is Bad.
[[nodiscard]] ExitStatus DoctorCommand(const Invocation& invocation);

}  // namespace rastrel::cli
