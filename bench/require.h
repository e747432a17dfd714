#pragma once

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace rastrel::bench {

/// Ends the benchmark with status 1, which report.py counts as a failure: the time of work that was
/// not done means nothing. `what` goes to standard error after the benchmark's name.
[[noreturn]] inline void Fail(const std::string& what) {
  std::fprintf(stderr, "%s: %s\n", program_invocation_short_name, what.c_str());
  std::exit(1);
}

/// Fails unless the condition holds. The text is a literal, so that a check inside of the measured
/// work costs no memory.
inline void Require(bool condition, const char* what) {
  if (!condition) Fail(what);
}

}  // namespace rastrel::bench
