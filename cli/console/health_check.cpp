#include "cli/console/health_check.h"

#include <algorithm>

#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"

namespace rastrel::cli {
namespace {

using State = HealthCheck::State;

const char* StateWord(State state) {
  switch (state) {
    case State::Good: return "good";
    case State::Warning: return "warning";
    case State::Bad: return "bad";
  }
  return "";
}

void WriteCheck(const HealthCheck& check, bool json) {
  if (json) {
    JsonLine line("check");
    line.Add("name", check.name).Add("state", StateWord(check.state)).Add("text", check.text);
    line.AddIfAny("path", check.path).AddIfAny("mend", check.mend).Write();
    return;
  }
  const char* mark = check.state == State::Good      ? "  ok     "
                     : check.state == State::Warning ? "  note   "
                                                     : "  WRONG  ";
  std::string text = mark + check.name + ": " + check.text;
  if (!check.path.empty()) text += " (" + check.path + ")";
  WriteOutLine(text);
  if (!check.mend.empty()) WriteOutLine("           -> " + check.mend);
}

}  // namespace

bool WriteChecks(const std::vector<HealthCheck>& checks, bool json) {
  for (const HealthCheck& check : checks) WriteCheck(check, json);
  return std::ranges::any_of(checks,
                             [](const HealthCheck& check) { return check.state == State::Bad; });
}

}  // namespace rastrel::cli
