// How long the command takes from its start to its end when there is nothing to do, against the
// smallest program that there is.

#include "bench/measure.h"
#include "bench/program.h"
#include "rastrel/platform/os/path.h"

int main() {
  using namespace rastrel;
  // The build tree's bin/ beside this program's own folder.
  const std::string own = os::ExecutablePath();
  const std::string tree = own.substr(0, own.rfind('/', own.rfind('/') - 1));
  bench::Compare(
      {.name = "start-up of the command", .peerName = "true", .rounds = 400}, [] {},
      [command = tree + "/bin/rastrel"] {
        bench::Run({command, "--version"});
      },
      [] { bench::Run({"/bin/true"}); });
}
