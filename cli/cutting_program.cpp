#include "cli/cutting_program.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "rastrel/platform/os/process.h"
#include "rastrel/platform/standalone/data_root.h"

namespace rastrel::cli {
namespace {

using enum OptionId;

// The options of `rastrel cut` for the lines of a cut color.
constexpr std::array ColorOptions{ResultOutput, CutColor, HalfCutColor, CutPreview, Resolution,
                                  ChosenPage,   Box,      PasswordFile, Title,      Force,
                                  Jobs,         Json,     Help};

// Cut jobs, and drawings that are read without the interpreter.
bool IsJobName(std::string_view name) {
  std::string lower(name.substr(name.size() - std::min<std::size_t>(name.size(), 5)));
  for (char& letter : lower)
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  return name.ends_with(".json") || lower.ends_with(".svg") || lower.ends_with(".dxf");
}

}  // namespace

bool WantsCuttingProgram(const Invocation& invocation) {
  const auto isOther = [](const auto& option) {
    return std::ranges::find(ColorOptions, option.first) == ColorOptions.end();
  };
  return std::ranges::any_of(invocation.options, isOther) ||
         std::ranges::any_of(invocation.operands, IsJobName);
}

bool PrintsByRules(const Invocation& invocation) {
  return invocation.Has(CutRules) || invocation.Has(CutMarks) || invocation.Has(CutOutput);
}

ExitStatus RunCuttingProgram(const std::vector<std::string>& arguments) {
  const std::string programs = standalone::FindResources().programs;
  if (programs.empty())
    throw CommandError(ExitStatus::NotInstalled,
                       "rastrel-cutting, which makes files for cutters, is not installed");
  const Failure failure = os::ReplaceProcess(programs + "/rastrel-cutting", arguments);
  throw CommandError(
      ExitStatus::NotInstalled,
      "rastrel-cutting, which makes files for cutters, can't be started: " + Describe(failure));
}

}  // namespace rastrel::cli
