#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "interpreter/guardian.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::children {

/// How a running command is watched and ended.
struct CommandWatch {
  int stop = -1;  ///< a descriptor that becomes readable when the command has to end; -1: none
  /// Called a few times a second with the bytes of the file that were read so far. May be empty.
  std::function<void(std::uint64_t)> onTaken{};
};

/// Runs a device's program and waits for its end. `words` are the program and its arguments; no
/// shell sees them. A program without '/' is looked for on the path. Its standard input is `file`
/// from the start; its output is kept for the message and goes nowhere else. It gets a process
/// group of its own, which the guardian kills if the engine is ended.
///
/// The failure says how it ended and the last line that it printed. `timeoutSeconds`: its group is
/// killed after that; 0 is never. One that was ended so, or by any other signal, or has a status
/// above 128, by which a script says that of its own programs, fails with EINTR: how far it came is
/// not known. A stopped one fails with ECANCELED. REQUIRES: the thread lives as long as the
/// program.
[[nodiscard]] Expected<void> RunCommand(const std::vector<std::string>& words,
                                        const std::string& file, interpreter::Guardian& guardian,
                                        unsigned timeoutSeconds, const CommandWatch& watch = {});

}  // namespace rastrel::children
