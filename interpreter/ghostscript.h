#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "interpreter/guarded_process.h"
#include "interpreter/guardian.h"
#include "interpreter/wall.h"
#include "rastrel/platform/os/expected.h"

/// The one place where an interpreter is started, whatever it is to do.
namespace rastrel::interpreter {

/// Limits of one interpreter that the kernel or the interpreter itself holds. All are set.
struct GhostscriptLimits {
  std::uint64_t processorSeconds = 0;  ///< of processor time
  std::uint64_t memoryKibibytes = 0;   ///< that PostScript and the page's pixels may take
  std::uint64_t fileBytes = 0;         ///< of any one file that it writes
  std::uint64_t threads = 1;           ///< of it; each has room of its own in the address space
};

/// The start of one interpreter. Descriptors stay the caller's.
struct GhostscriptRequest {
  std::string program;  ///< as FindGhostscript found it
  /// Its arguments after those that every interpreter gets, which make it quiet, safe, limit its
  /// memory, and end it after its last file.
  std::vector<std::string> arguments;
  std::string temporary;  ///< its directory for temporary files, as it is to see it
  std::string directory;  ///< native working directory; empty: this process's own
  /// The element at n becomes its descriptor n; -1 means /dev/null. No other is passed on.
  std::vector<int> descriptors;
  GhostscriptLimits limits;
  /// All that this job may open besides the interpreter's own files and the descriptors, in the
  /// forms that its arguments name.
  std::vector<WallPath> files;
  /// The job is a small one, of WarmJobBytes at most, whose start counts: a warm interpreter may
  /// do it (warm_start.h).
  bool isSmall = false;
};

/// The request as a process: arguments, environment and walls without the interpreter's own files.
[[nodiscard]] ProcessRequest ProcessOf(const GhostscriptRequest& request);

/// Starts it with a cleaned environment, within all walls that the machine has (wall.h), and under
/// guard from before its first instruction. Any thread of any process may; see GuardedProcess.
[[nodiscard]] Expected<GuardedProcess> StartGhostscript(const GhostscriptRequest& request,
                                                        Guardian& guardian);

}  // namespace rastrel::interpreter
