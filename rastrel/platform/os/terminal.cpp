#include "rastrel/platform/os/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include "rastrel/platform/os/path.h"

namespace rastrel::os {

bool IsTerminal(HANDLE handle) {
  return ::isatty(handle) == 1 && EnvironmentValue("TERM") != "dumb";
}

unsigned TerminalColumns(HANDLE handle) {
  winsize size{};
  return ::ioctl(handle, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

}  // namespace rastrel::os
