#pragma once

#include "rastrel/platform/os/expected.h"

/// How the RIP and the queue program end. The library turns the numbers into the job's error.
namespace rastrel::children {

enum class ExitStatus : int {
  Done = 0,             ///< the pages lie there and their list was written
  PostScriptError = 1,  ///< the job, or the prefix, failed as a program, or made no page
  InstallDone = 1,      ///< with "-s": the install job went well
  BadInput = 2,  ///< command line, prefix or job can't be used; with "-s" also a PostScript error
  Failed = 3,    ///< Ghostscript or a part of the RIP is missing, a limit or the disk was met
};

/// The status of a program that ends with that failure; an install job's is another if it failed as
/// a program.
[[nodiscard]] constexpr ExitStatus StatusOf(FailureCode code) {
  switch (code) {
    case FailureCode::BadInput: return ExitStatus::BadInput;
    case FailureCode::BadProgram: return ExitStatus::PostScriptError;
    case FailureCode::Unspecified: break;
  }
  return ExitStatus::Failed;
}

}  // namespace rastrel::children
