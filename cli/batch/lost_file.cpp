#include "cli/batch/lost_file.h"

#include <algorithm>

#include "cli/console/error_message.h"
#include "cli/console/exit_status.h"
#include "cli/console/standard_streams.h"

namespace rastrel::cli {

FileResult LostFile(const BatchPlan& plan, std::size_t file, const std::string& why,
                    const HeldText& said) {
  HeldOutput held;
  WriteHeld(said);
  const bool json = std::ranges::find(plan.words, "--json") != plan.words.end();
  WriteErrorMessage({ExitStatus::JobFailed,
                     plan.files[file] + ": its work ended " + std::to_string(PieceAttempts) +
                         " times without a result" + (why.empty() ? "" : ": " + why)},
                    json);
  return {static_cast<int>(ExitStatus::JobFailed), held.Take()};
}

}  // namespace rastrel::cli
