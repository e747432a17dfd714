#include "children/jobspool/command_line.h"

#include <string_view>

#include "children/shared/arguments.h"

namespace rastrel::jobspool {

Expected<CommandLine> ReadCommandLine(std::span<const char* const> arguments) {
  const auto word = [&](std::size_t i) { return std::string_view(arguments[i]); };
  const bool whole = arguments.size() == 3;
  const bool measure = whole && word(0) == "-q" && word(1) == "-ps";
  const bool convert = whole && word(0) == "-ps" && word(1) == "-q";
  if (!(measure || convert) || word(2).empty()) {
    return FailureOf(
        "The command line is none of \"-ps -q FILE\", which converts a file, and \"-q -ps FILE\", "
        "which measures its page",
        FailureCode::BadInput);
  }
  return CommandLine{measure, children::NativeArgument(arguments[2])};
}

}  // namespace rastrel::jobspool
