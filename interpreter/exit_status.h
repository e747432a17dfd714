#pragma once

#include <string>

/// How the RIP ends. The library turns the numbers into the job's error.
namespace rastrel::interpreter {

enum class ExitStatus : int {
  Done = 0,             ///< the pages lie there and their list was written
  PostScriptError = 1,  ///< the job, or the prefix, failed as a program, or made no page
  InstallDone = 1,      ///< with "-s": the install job went well
  BadInput = 2,  ///< command line, prefix or job can't be used; with "-s" also a PostScript error
  Failed = 3,    ///< Ghostscript or a part of the RIP is missing, a limit or the disk was met
};

/// Why a run ended early: a sentence for the report and the status to end with.
struct RunFailure {
  ExitStatus status = ExitStatus::Failed;
  std::string sentence;
};

}  // namespace rastrel::interpreter
