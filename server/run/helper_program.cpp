#include "server/run/helper_program.h"

#include <sys/stat.h>

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/reaper.h"

namespace rastrel::server {

int RunHelperProgram(int count, char** arguments, const char* name, const HelperWork& work) {
  if (count == 2) {
    const auto starter = static_cast<std::uint32_t>(std::strtoul(arguments[1], nullptr, 10));
    if (!os::EndWithStarter(starter)) return EXIT_FAILURE;
  }
  sigset_t signals;
  ::sigemptyset(&signals);
  ::sigaddset(&signals, SIGTERM);
  ::sigaddset(&signals, SIGINT);
  ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  static_cast<void>(::umask(077));
  const auto done = work(signals);
  if (done) return EXIT_SUCCESS;
  os::WriteToStandardError(std::string(name) + ": " + Describe(done.Error()) + "\n");
  return EXIT_FAILURE;
}

}  // namespace rastrel::server
