#pragma once

#include <string>
#include <vector>

namespace rastrel::cli {

/// One thing that printing or serving needs, as `rastrel doctor` shows it.
struct HealthCheck {
  enum class State {
    Good,
    Warning,  ///< all works, but something is worth knowing
    Bad,      ///< something does not work
  };
  std::string name;  ///< of the check; stable, in lower case
  State state = State::Good;
  std::string text;  ///< the finding
  std::string path;  ///< native; may be empty
  std::string mend;  ///< a remedy; empty if nothing is to be done
};

/// Writes each as a line with its remedy in a second, or as a JSON object. Returns whether one of
/// them is Bad.
bool WriteChecks(const std::vector<HealthCheck>& checks, bool json);

}  // namespace rastrel::cli
