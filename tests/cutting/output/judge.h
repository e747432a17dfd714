#pragma once

#include <sys/wait.h>

#include <cstdlib>
#include <string>

namespace rastrel::cutting::test {

/// The exit status of a shell's command; -1 if it had none.
inline int StatusOf(const std::string& command) {
  const int status = std::system(command.c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

inline bool HaveProgram(const std::string& name) {
  return StatusOf("command -v " + name + " > /dev/null 2>&1") == 0;
}

}  // namespace rastrel::cutting::test
