#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"

/// Small programs of the system that a batch asks, such as those of a cluster.
namespace rastrel::cli {

/// The end of one, and its texts: of each stream the first mebibyte.
struct ToolEnd {
  bool byItself = false;  ///< false: a signal ended it
  int status = 0;         ///< its exit status, or the signal
  std::string output;
  std::string error;

  [[nodiscard]] bool IsDone() const { return byItself && status == 0; }
};

/// Runs a program, by its full native path, to its end, with these arguments after its name, this
/// process's environment and no input. It is killed, and that is a failure, after `limit`, or when
/// `isStopped` says so (ECANCELED), which is asked ten times a second.
[[nodiscard]] Expected<ToolEnd> RunTool(const std::string& program,
                                        const std::vector<std::string>& arguments,
                                        std::chrono::milliseconds limit,
                                        const std::function<bool()>& isStopped);

}  // namespace rastrel::cli
