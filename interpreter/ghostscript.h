#pragma once

#include <string>

#include "interpreter/guarded_process.h"
#include "interpreter/job_kind.h"
#include "interpreter/run_directory.h"
#include "interpreter/settings.h"

/// The interpreter: how it is found and started.
namespace rastrel::interpreter {

/// Native path of the program "gs" on PATH, or empty.
[[nodiscard]] std::string FindGhostscript();

/// What a run of it works on. Descriptors stay the caller's.
struct InterpreterRequest {
  std::string program;       ///< native path
  std::string ripDirectory;  ///< native path; holds System/prolog and System/pmodes
  std::string word;          ///< the secret word of the run's reports
  JobKind kind = JobKind::PostScript;
  bool cutter = false;  ///< the prefix may set a cut color
  /// The job is a picture: its first page counts, a last page that it leaves open is put out, EPS
  /// is not cropped, and PDF has its crop box for a page.
  bool picture = false;
  bool measure = false;  ///< nothing is drawn; the first page's size and box are reported
  int prefix = -1;       ///< the open prefix file; -1: none
  int pdf = -1;          ///< the open job file if it is PDF
};

/// A running interpreter and this process's ends of its pipes, all of them non-blocking.
struct Interpreter {
  GuardedProcess process;
  os::FileDescriptor pixels;   ///< read: the pages of the gray and RGB devices
  os::FileDescriptor reports;  ///< read: everything that it prints
  os::FileDescriptor job;      ///< write: the job's PostScript; closed for PDF
};

/// Starts it in job-server mode with file access controls on. The job reaches no file but the print
/// modes, an empty temporary directory of its own and the separations' directory; pixels, reports
/// and the job itself go through pipes, which can't be truncated.
///
/// All of these reach it as descriptors, so no path of this machine, whatever characters it has,
/// takes part in its options.
[[nodiscard]] Expected<Interpreter> StartGhostscript(const InterpreterRequest& request,
                                                     const RunDirectory& directory,
                                                     const Settings& settings, Guardian& guardian);

}  // namespace rastrel::interpreter
