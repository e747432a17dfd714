#include "cli/console/run_program.h"

#include <algorithm>
#include <exception>
#include <string_view>

#include "cli/console/error_message.h"
#include "cli/console/standard_streams.h"

namespace rastrel::cli {
namespace {

ExitStatus RunGuarded(int count, const char* const* arguments,
                      const std::function<ExitStatus(const Invocation&)>& run) {
  // An error in the arguments themselves is reported in the form that they ask for, too.
  const bool json = std::any_of(arguments + std::min(count, 1), arguments + count,
                                [](std::string_view word) { return word == "--json"; });
  try {
    return run(ParseArguments(count, arguments));
  } catch (const CommandError& error) {
    WriteErrorMessage(error, json);
    return error.Status();
  } catch (const std::exception& error) {
    WriteErrorMessage({ExitStatus::JobFailed, error.what()}, json);
    return ExitStatus::JobFailed;
  }
}

}  // namespace

int RunProgram(int count, const char* const* arguments,
               const std::function<ExitStatus(const Invocation&)>& run) {
  const ExitStatus status = RunGuarded(count, arguments, run);
  if (status == ExitStatus::Done && OutputFailed()) {
    WriteErrorLine("rastrel: standard output could not be written");
    return static_cast<int>(ExitStatus::JobFailed);
  }
  return static_cast<int>(status);
}

}  // namespace rastrel::cli
