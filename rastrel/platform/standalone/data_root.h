#pragma once

#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"

/// The data root's layout, and how the programs and files that ship with the library get there.
///
///   settings.ini
///   devices.txt                          where pages are delivered to
///   plotters/0.ini                       settings of plotters, made by hand
///   Queue/JobSpool.exe                   the queue program
///   Queue/rip/corerast.exe               the RIP
///   Queue/rip/coreodalis.exe             the output engine
///   Queue/rip/System/pmodes/             print modes, one folder a family
///   Queue/rip/System/c-out/              pages being made
///   Queue/rip/CFM/                       the spool
///   drive_c/tmp/testpage.ps              the test page
///   jobs/                                working copies of the command line's jobs
namespace rastrel::standalone {

/// Where the shipped programs (`libexec`) and files (`share`) were found: beside the library or
/// program that asks, in an installed tree or a build tree alike, unless RASTREL_RESOURCES names
/// another tree of the same shape. Empty texts if there are none. No closing separators.
struct Resources {
  std::string programs;  ///< native path; holds the three programs
  std::string files;     ///< native path; holds rip/, tmp/ and devices.txt, laid out as in the root
};
[[nodiscard]] Resources FindResources();

/// Lays the data root out: makes missing directories, and copies in programs and files that are
/// missing or that an earlier version of the library put there. A file that a user changed or
/// replaced is left alone: the record `Queue/.installed` (install_record.h) shows which those are.
/// A root whose path can't be passed to the programs (os::CheckForCommandLine) is not touched.
/// Safe against other processes that do the same. Returns the first failure; the other steps are
/// still tried.
[[nodiscard]] Expected<void> LayOutDataRoot();

/// Calls LayOutDataRoot once in a process for each root. A failure shows where the missing part is
/// used, in DataRootState, and in `rastrel doctor`, which lays the root out again and prints it.
/// Any thread may call.
void EnsureDataRoot();

/// The same, and the failure of that one call for the present root. For who finds that a part of
/// the root is missing, and has to say why.
[[nodiscard]] Expected<void> DataRootState();

}  // namespace rastrel::standalone
