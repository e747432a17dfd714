#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "children/coreodalis/engine.h"
#include "children/coreodalis/exit_status.h"
#include "children/coreodalis/report.h"
#include "children/shared/arguments.h"
#include "interpreter/guardian.h"
#include "rastrel/platform/os/expected.h"

namespace {

using namespace rastrel;
using namespace rastrel::odalis;

constexpr std::size_t LargestInput = std::size_t{1} << 30;
constexpr std::size_t BlockBytes = std::size_t{1} << 16;

/// "-k" and a number.
bool IsCacheSize(std::string_view argument) {
  return argument.starts_with("-k") && argument.size() > 2 &&
         argument.find_first_not_of("0123456789", 2) == std::string_view::npos;
}

/// Empty if an argument is not the engine's.
std::optional<EngineOptions> ReadArguments(const std::vector<std::string_view>& arguments) {
  EngineOptions options;
  bool fromInput = false;
  for (const std::string_view argument : arguments) {
    if (argument == "-tp") {
      options.planar = true;
    } else if (argument == "-") {
      fromInput = true;
    } else if (argument != "-M" && argument != "-Q" && argument != "-N" && !IsCacheSize(argument)) {
      ReportError("unknown argument '" + std::string(argument) + "'");
      return std::nullopt;
    }
  }
  if (!fromInput) {
    ReportError("no input named; '-' stands for standard input");
    return std::nullopt;
  }
  return options;
}

/// The whole of standard input, which the library wrote before the engine was started or writes
/// now. Empty if it can't be read or is too large.
std::optional<std::string> ReadInput() {
  std::string text;
  std::vector<char> block(BlockBytes);
  while (true) {
    const ssize_t count = ::read(STDIN_FILENO, block.data(), block.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) {
      ReportError(Describe(Failure{"read", "standard input", errno}));
      return std::nullopt;
    }
    if (count == 0) return text;
    text.append(block.data(), static_cast<std::size_t>(count));
    if (text.size() > LargestInput) {
      ReportError("the input is larger than 1 GiB");
      return std::nullopt;
    }
  }
}

ExitStatus Run(const std::vector<std::string_view>& arguments) {
  const auto options = ReadArguments(arguments);
  if (!options) return ExitStatus::WrongUse;
  auto guardian = interpreter::Guardian::Start(interpreter::HeldStreams::Error);
  if (!guardian) {
    ReportError(Describe(guardian.Error()));
    return ExitStatus::Internal;
  }
  ReportState(EngineState::Initialising);
  const auto text = ReadInput();
  if (!text) return ExitStatus::BadInput;
  return RunEngine(*text, *options, *guardian);
}

}  // namespace

int main(int count, char** words) {
  children::OpenStandardStreams();
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);  // a limit on file sizes is a failed write, which is reported
  try {
    return static_cast<int>(Run({words + 1, words + count}));
  } catch (const std::exception& error) {
    ReportError(error.what());
    return static_cast<int>(ExitStatus::Internal);
  }
}
