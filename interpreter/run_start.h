#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "interpreter/ghostscript.h"
#include "interpreter/job_kind.h"
#include "interpreter/page_area.h"
#include "interpreter/page_plan.h"
#include "interpreter/run_directory.h"
#include "interpreter/settings.h"

/// The start of a run, with the RIP's prolog ahead of the job.
namespace rastrel::interpreter {

/// The files and options of a run besides the job.
struct RunScript {
  const char* device = nullptr;                ///< the device that it begins with
  std::span<const char* const> prologFiles{};  ///< of System/prolog, in order
  bool runsPrefix = true;                      ///< the prefix follows, and then "begin.ps"
  /// A page that PostScript leaves open at its end is put out, EPS is not cropped, and of a PDF
  /// only the first page counts.
  bool isFirstPage = false;
};

/// All pages.
[[nodiscard]] const RunScript& PrintScript();
/// The page that a job leaves open, whose area is known.
[[nodiscard]] const RunScript& OpenPageScript();
/// The first page as a picture.
[[nodiscard]] const RunScript& PictureScript();
/// The first page's measure.
[[nodiscard]] const RunScript& MeasureScript();

/// The start of one run. Descriptors stay the caller's.
struct RunStart {
  std::string program;       ///< as FindGhostscript found it
  std::string ripDirectory;  ///< native path; holds System/prolog and System/pmodes
  std::string word;          ///< the secret word of the run's reports
  const RunScript& script;
  std::string reportLink{};  ///< in the directory of the planes (ReportLink); empty: none
  JobKind kind = JobKind::PostScript;
  bool setsCutColor = false;     ///< the prefix may set a cut color
  bool asks = false;             ///< which paints are for cutting is asked for (asking.ps)
  bool asksWidth = false;        ///< ... by their line widths too
  bool isSmall = false;          ///< a job as GhostscriptRequest has it
  int prefix = -1;               ///< the open prefix file; -1: none
  int pdf = -1;                  ///< the open job file if it is PDF
  PdfBox pdfBox = PdfBox::Crop;  ///< of it
  std::uint64_t page = 1;        ///< the one that a script of the first page is of
  PageRange pdfPages{};          ///< of a script of all pages; 0 to 0: all
  /// Of a print: this part of the plane is the page, until the job sets one; nothing: the
  /// interpreter's own sheet.
  std::optional<PageArea> area{};
  std::string pdfPassword{};  ///< of it; empty: none
  std::uint64_t threads = 1;  ///< that paint bands of a gray or RGB page; 1: the interpreter's own
};

/// A running interpreter and this process's ends of its pipes, all of them non-blocking.
struct RunningInterpreter {
  GuardedProcess process;
  os::FileDescriptor pixels;   ///< read: the pages of the gray and RGB devices
  os::FileDescriptor reports;  ///< read: everything that it prints
  os::FileDescriptor job;      ///< write: the job's PostScript; closed for PDF
  os::FileDescriptor
      answers;  ///< write: to the questions of the prolog; blocks, and is read at once
};

/// Starts it in job-server mode with file access controls on. The job reaches no file but the print
/// modes, an empty temporary directory of its own and the separations' directory; pixels, reports
/// and the job itself go through pipes, which can't be truncated.
///
/// All of these reach it as descriptors, so no path of this machine, whatever characters it has,
/// takes part in its options.
[[nodiscard]] Expected<RunningInterpreter> StartRun(const RunStart& start,
                                                    const RunDirectory& directory,
                                                    const Settings& settings, Guardian& guardian);

}  // namespace rastrel::interpreter
