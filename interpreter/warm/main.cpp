// rastrel-warm DIRECTORY REST JOBS PROGRAM ARGUMENT...
//
// Makes an interpreter ready that has these arguments (the first is its name) and this environment,
// and serves jobs for it in the directory (warm_start.h) until it had none for REST seconds, or
// JOBS of them. Nobody reads its messages: its exit status is 0 after a life, 1 if
// there could be none, and 2 for wrong arguments.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <charconv>
#include <string>
#include <utility>
#include <vector>

#include "interpreter/warm/keeper.h"
#include "interpreter/warm/library.h"
#include "interpreter/warm_message.h"
#include "interpreter/warm_place.h"
#include "rastrel/platform/os/process.h"

namespace rastrel::interpreter::warm {
namespace {

constexpr int FirstArgument = 5;
constexpr int LowestOwn = 100;  // above every number that a job is given

bool ReadNumber(const std::string& text, unsigned& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

// The numbers that jobs have are taken, so that the interpreter's own files get others.
void TakeNumbers() {
  while (true) {
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    if (nothing < 0) return;
    if (nothing < LowestOwn) continue;
    close(nothing);
    return;
  }
}

Expected<void> Live(const std::vector<std::string>& arguments, Lifetime lifetime) {
  auto place = WarmPlace::Open(arguments[1]);
  if (!place) return place.Error();
  WarmOptions options{arguments[FirstArgument - 1], {}, os::EnvironmentEntries()};
  options.arguments.assign(arguments.begin() + FirstArgument, arguments.end());
  auto keeper = Keeper::Make(std::move(*place), options, lifetime);
  if (!keeper) return keeper.Error();
  auto library = Library::Load();
  if (!library) return library.Error();
  TakeNumbers();
  if (auto started = library->Start(options.arguments); !started) return started;
  if (auto painted = library->PaintOnce(); !painted) return painted;
  return keeper->Serve(*library);
}

int Main(const std::vector<std::string>& arguments) {
  Lifetime lifetime;
  if (arguments.size() <= FirstArgument || !ReadNumber(arguments[2], lifetime.restSeconds) ||
      !ReadNumber(arguments[3], lifetime.jobs)) {
    return 2;
  }
  umask(S_IRWXG | S_IRWXO);
  return Live(arguments, lifetime) ? 0 : 1;
}

}  // namespace
}  // namespace rastrel::interpreter::warm

int main(int count, char** arguments) {
  return rastrel::interpreter::warm::Main({arguments, arguments + count});
}
