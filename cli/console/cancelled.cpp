#include "cli/console/cancelled.h"

#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"

namespace rastrel::cli {

ExitStatus WriteCancelled(bool json) {
  if (json) {
    JsonLine("cancelled").Add("exit", static_cast<int>(ExitStatus::Cancelled)).Write();
  } else {
    WriteErrorLine("rastrel: cancelled; what was unfinished has been removed");
  }
  return ExitStatus::Cancelled;
}

}  // namespace rastrel::cli
