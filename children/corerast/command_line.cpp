#include "children/corerast/command_line.h"

#include <string_view>
#include <vector>

#include "children/shared/arguments.h"

namespace rastrel::corerast {
namespace {

bool ChangesNothing(std::string_view word) {
  if (word == "-M" || word == "-Q") return true;
  return word.starts_with("-m") && word.find_first_not_of("0123456789", 2) == word.npos;
}

Failure Refused(const std::string& sentence) { return FailureOf(sentence, FailureCode::BadInput); }

}  // namespace

Expected<CommandLine> ReadCommandLine(std::span<const char* const> arguments) {
  CommandLine line;
  std::vector<std::string> paths;
  for (const char* const argument : arguments) {
    const std::string_view word = argument;
    if (word == "-s") {
      line.install = true;
    } else if (word.starts_with('-') && !ChangesNothing(word)) {
      return Refused("Unknown option " + std::string(word));
    } else if (!word.starts_with('-') && !word.empty()) {
      paths.push_back(children::NativeArgument(argument));
    }
  }
  if (paths.empty()) return Refused("No job was given");
  if (paths.size() > 2) return Refused("More than a prefix and a job were given");
  line.job = paths.back();
  if (paths.size() == 2) line.prefix = paths.front();
  return line;
}

}  // namespace rastrel::corerast
