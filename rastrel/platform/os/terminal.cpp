#include "rastrel/platform/os/terminal.h"

#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <utility>

#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/wait.h"

namespace rastrel::os {

bool IsShown(HANDLE handle) { return ::isatty(handle) == 1; }

bool IsTerminal(HANDLE handle) { return IsShown(handle) && EnvironmentValue("TERM") != "dumb"; }

unsigned TerminalColumns(HANDLE handle) {
  winsize size{};
  return ::ioctl(handle, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

struct TerminalKeys::State {
  termios settings{};
};

TerminalKeys::TerminalKeys(HANDLE terminal, std::unique_ptr<State> old)
    : m_Terminal(terminal), m_Old(std::move(old)) {}

std::unique_ptr<TerminalKeys> TerminalKeys::Take(HANDLE terminal) {
  auto old = std::make_unique<State>();
  if (::tcgetattr(terminal, &old->settings) != 0) return nullptr;
  // Changing the settings of a terminal that another job has would stop this process.
  if (::tcgetpgrp(terminal) != ::getpgrp()) return nullptr;
  termios raw = old->settings;
  raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | ISIG);
  raw.c_cc[VMIN] = 1;
  raw.c_cc[VTIME] = 0;
  if (::tcsetattr(terminal, TCSANOW, &raw) != 0) return nullptr;
  return std::unique_ptr<TerminalKeys>(new TerminalKeys(terminal, std::move(old)));
}

TerminalKeys::~TerminalKeys() { ::tcsetattr(m_Terminal, TCSANOW, &m_Old->settings); }

std::string TerminalKeys::Read() {
  const std::array<HANDLE, 1> handles{m_Terminal};
  if (m_Gone || WaitReadable(handles, Deadline::After({})) != WaitSignaledBase) return {};
  std::array<char, 256> bytes{};
  const std::size_t count = ReadSome(m_Terminal, bytes.data(), bytes.size()).ValueOr(0);
  m_Gone = count == 0;
  return {bytes.data(), count};
}

}  // namespace rastrel::os
