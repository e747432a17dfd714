#include "children/corerast/command_line.h"

#include <unistd.h>

#include <string_view>
#include <vector>

#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::corerast {
namespace {

// Paths come as the library's text. A name that is no UTF-8 has no such text and is taken as it is.
std::string NativePath(const char* argument) {
  std::string native = os::ToNative(os::WideFromUtf8(argument));
  if (access(native.c_str(), F_OK) != 0 && access(argument, F_OK) == 0) return argument;
  return native;
}

bool ChangesNothing(std::string_view word) {
  if (word == "-M" || word == "-Q") return true;
  return word.starts_with("-m") && word.find_first_not_of("0123456789", 2) == word.npos;
}

}  // namespace

std::variant<CommandLine, RunFailure> ReadCommandLine(std::span<const char* const> arguments) {
  CommandLine line;
  std::vector<std::string> paths;
  for (const char* const argument : arguments) {
    const std::string_view word = argument;
    if (word == "-s") {
      line.install = true;
    } else if (word.starts_with('-') && !ChangesNothing(word)) {
      return RunFailure{ExitStatus::BadInput, "Unknown option " + std::string(word) + "."};
    } else if (!word.starts_with('-') && !word.empty()) {
      paths.push_back(NativePath(argument));
    }
  }
  if (paths.empty()) return RunFailure{ExitStatus::BadInput, "No job was given."};
  if (paths.size() > 2) {
    return RunFailure{ExitStatus::BadInput, "More than a prefix and a job were given."};
  }
  line.job = paths.back();
  if (paths.size() == 2) line.prefix = paths.front();
  return line;
}

}  // namespace rastrel::corerast
