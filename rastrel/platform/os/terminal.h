#pragma once

#include <memory>
#include <string>

#include "rastrel/platform/os/handle.h"

namespace rastrel::os {

/// Whether the descriptor is a terminal that understands control sequences (not "dumb").
[[nodiscard]] bool IsTerminal(HANDLE handle);

/// Whether the descriptor is any terminal, so that a person sees the text written to it.
[[nodiscard]] bool IsShown(HANDLE handle);

/// Characters in a row of the terminal; 0 if unknown.
[[nodiscard]] unsigned TerminalColumns(HANDLE handle);

/// Gives a program the keys of its terminal one by one, unechoed, Ctrl-C and Ctrl-Z among them as
/// characters of their own (3 and 26) instead of signals. The terminal gets its old state back at
/// the end of this object's life.
class TerminalKeys {
 public:
  /// Null if the handle is no terminal, or one that another job of the shell's has at present.
  [[nodiscard]] static std::unique_ptr<TerminalKeys> Take(HANDLE terminal);
  ~TerminalKeys();
  TerminalKeys(const TerminalKeys&) = delete;
  TerminalKeys& operator=(const TerminalKeys&) = delete;

  /// Readable while keys wait.
  [[nodiscard]] HANDLE GetHandle() const { return m_Terminal; }
  /// The bytes of keys that wait, in the terminal's encoding; never waits for one. Nothing, and
  /// IsGone, once the terminal has hung up.
  [[nodiscard]] std::string Read();
  [[nodiscard]] bool IsGone() const { return m_Gone; }

 private:
  struct State;
  TerminalKeys(HANDLE terminal, std::unique_ptr<State> old);

  HANDLE m_Terminal;
  std::unique_ptr<State> m_Old;
  bool m_Gone = false;
};

}  // namespace rastrel::os
