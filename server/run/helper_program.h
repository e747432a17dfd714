#pragma once

#include <csignal>

#include <functional>

#include "rastrel/platform/os/expected.h"

namespace rastrel::server {

/// What a helper does until it is told to end: until one of these signals (SIGTERM, SIGINT) comes,
/// which are blocked in all of its threads, so that it takes them by sigwait.
using HelperWork = std::function<Expected<void>(const sigset_t& endingSignals)>;

/// The main function of a program that `rastrel serve` starts, and starts again: its only argument
/// is the number of its starter, with which it ends. By hand it has none. What it makes is for its
/// own user alone, and who hangs up on it does not end it. A failure of the work is told on
/// standard error after the program's name. Returns the exit status.
[[nodiscard]] int RunHelperProgram(int count, char** arguments, const char* name,
                                   const HelperWork& work);

}  // namespace rastrel::server
