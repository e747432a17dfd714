#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "interpreter/guardian.h"
#include "interpreter/job_file.h"
#include "interpreter/page_area.h"
#include "interpreter/page_measure.h"
#include "interpreter/password.h"
#include "interpreter/run_directory.h"
#include "interpreter/settings.h"
#include "interpreter/wall.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"

/// The interpreter, which is Ghostscript as a process: it is found, started, fed, limited, watched
/// and read in this folder and nowhere else, and this is the folder's header for all others. Two
/// kinds of work are offered:
///
/// - *Runs*, for child programs: a job, perhaps with a prefix, becomes page directories or a
///   measure. The interpreter works in a RunDirectory, runs the RIP's prolog, reports through a
///   pipe that the job can't forge, and is under guard (guardian.h).
/// - *Short tasks*, for any process, on any thread: a file is painted or converted in one go, in a
///   temporary directory that is gone afterwards. Each has a guardian of its own, so that neither
///   the interpreter nor the directory stays, however the process ends.
///
/// Every interpreter is in its safer mode, within the walls of wall.h, gets a cleaned environment,
/// no descriptor but those that it needs, and limits on time, processor time, memory, the size of a
/// file, and the room of all its files. Paths are native. Neither runs nor tasks write to a
/// standard stream of the process.
namespace rastrel::interpreter {

/// Native path of the interpreter's program, "gs" on $PATH, or empty if there is none.
[[nodiscard]] std::string FindGhostscript();

/// Starts the interpreter as every run does, within all walls, and returns its version. A short
/// task; fails with its reason where it does not start, or finds its resources and fonts not.
[[nodiscard]] Expected<std::string> TryGhostscript();

/// Whether small jobs may be done by an interpreter that is kept ready (warm_start.h), for a
/// person.
enum class WarmState {
  Ready,      ///< they may
  Off,        ///< RASTREL_WARM is 0
  NoProgram,  ///< the data root has no program for it yet
  NoLibrary,  ///< the machine's Ghostscript is no library
  Closed,     ///< the directory in the data root is missing or not this user's alone
};
[[nodiscard]] WarmState StateOfWarm();

/// How far a run is.
enum class RunState {
  Interpreting,  ///< prolog and prefix have run, the job begins
  Converting,    ///< the first page's pixels flow
  Spooling,      ///< the interpreter has ended, the last pages are being closed
};

/// Follows a run while it goes on. All are called on the run's own thread; text is one line of any
/// bytes, and may come from the job where that is said.
class RunListener {
 public:
  virtual ~RunListener() = default;
  /// A state is reached. Each comes once at most.
  virtual void StateReached(RunState state) = 0;
  /// So many hundredths are done, 0 to 99. The same number may come again.
  virtual void Progressed(unsigned percent) = 0;
  /// A page is complete, counted from 1.
  virtual void PageMade(unsigned number) = 0;
  /// Something was left out or replaced. A sentence.
  virtual void Warned(const std::string& sentence) = 0;
  /// A remark of the run's own, for the log.
  virtual void Noted(const std::string& text) = 0;
  /// A line that the interpreter or the job has printed.
  virtual void Printed(const std::string& line) = 0;
  /// The pipe into which these go in the end; -1 if there is none. A run ends as soon as nobody
  /// reads that pipe any more, since nobody is left who could end it.
  [[nodiscard]] virtual int Pipe() const { return -1; }
};

/// A paint that a job is about to use for the first time, in the terms of
/// docs/formats/cut-paths.md.
struct AskedPaint {
  std::string kind;      ///< "stroke", "fill", "eofill" or "text"
  std::string color;     ///< "rgb 1.0 0.0 0.0", "cmyk ...", "gray ...", "separation NAME"; UTF-8
  double lineWidth = 0;  ///< in points of the page; 0 but of strokes, and where it is not asked for
  std::string layer{};   ///< name of the optional content group of a PDF; UTF-8; empty: none
};

/// Whether all that is painted so is taken out of the picture, as a cut path of the page.
using WantsCut = std::function<bool(const AskedPaint&)>;

/// By the printer's name, as the prefix selects it.
using TakesTiff = std::function<bool(const std::string& printer)>;

/// The job and the limits of one run. Owns its files.
struct RunRequest {
  std::string ripDirectory;        ///< holds System/prolog and System/pmodes
  std::string title;               ///< of the job, for the pages' descriptions; UTF-8
  std::optional<unsigned> access;  ///< permission bits of the job, for the pages' descriptions
  JobFile job;                     ///< the part of it that the interpreter is given
  os::FileDescriptor prefix;       ///< PostScript that runs first; closed: none
  bool setsCutColor = false;       ///< the prefix sets a cut color
  /// Decides which paints are cut paths, in place of the prefix's cut colors. Empty: these decide.
  /// Called on the run's thread, once or a few times for each paint.
  WantsCut wantsCut{};
  /// Gray and RGB pixels are kept as TIFF, which a device without compression gets as it is, and
  /// not as netpbm.
  bool keepsTiff = false;
  /// Whether the printer with this name gets the pages' TIFF files as they are, so that they are
  /// brought to the disk while they are made. Empty: none does. Called on any thread of the run.
  TakesTiff takesTiff{};
  bool asksLineWidth = false;  ///< paints that differ in their line widths alone are asked for too
  Settings settings;           ///< the limits
  /// Of a print of an open page: its area. Set by PrintPages.
  std::optional<PageArea> area{};
};

/// Makes a page directory of every page of the job in `directory`. Returns their number, which is
/// not 0. PostScript that ends no page, but has marks, is run twice more, measured and printed: it
/// is one page as large as MeasureFirstPage finds it, with a warning.
///
/// A failure is a sentence without its full stop. Its code is BadProgram if the job or the prefix
/// failed as a program or made no page, BadInput if the job can't be read to its end, and else
/// Unspecified: a limit, the disk, a missing part. The content of `directory` is incomplete then;
/// the guardian removes it.
[[nodiscard]] Expected<unsigned> PrintPages(RunRequest request, const RunDirectory& directory,
                                            RunListener& listener, Guardian& guardian);

/// Runs an install job, whose pages are thrown away and which need make none. Fails as PrintPages.
[[nodiscard]] Expected<void> RunInstallJob(RunRequest request, const RunDirectory& directory,
                                           RunListener& listener, Guardian& guardian);

/// The pages of PrintFirstPage.
struct FirstPages {
  unsigned count = 0;   ///< more than 1 only if a separated job put out several pages at once
  bool isOpen = false;  ///< the job did not end its page, which may have no marks
};

/// Makes a page directory of the job's first page, or of the one that Settings::page chooses,
/// whether the job ends that page or not; if not, with a warning. EPS is not cropped. The rest of
/// the job is not waited for. Fails as PrintPages, also for a page that the job doesn't have: the
/// sentence says how many it has.
[[nodiscard]] Expected<FirstPages> PrintFirstPage(RunRequest request, const RunDirectory& directory,
                                                  RunListener& listener, Guardian& guardian);

/// Measures the job's first page, or the one that Settings::page chooses; nothing is drawn, and the
/// prefix does not run. A page that the job does not end counts, with a warning, if it has marks.
/// Fails as PrintFirstPage.
[[nodiscard]] Expected<PageMeasure> MeasureFirstPage(RunRequest request,
                                                     const RunDirectory& directory,
                                                     RunListener& listener, Guardian& guardian);

/// A short task: paints all pages of a file at a low resolution, one plane for each color, and
/// returns the names of the planes besides the four process colors that hold ink; UTF-8, sorted,
/// each once. `area` is the page of a file that sets none, and chooses the resolution. It may take
/// 60 seconds, 1 GiB of memory, and 4 GiB in 10,000 files. The failure is a text for the user:
/// "Ghostscript can't paint it" with its error, or "the painting was given up" with the limit.
/// REQUIRES: FindGhostscript() is not empty.
[[nodiscard]] Expected<std::vector<std::string>> PaintedSpots(const std::string& path,
                                                              const std::optional<PageArea>& area);

/// The limits of one EPS file's conversion.
struct EpsLimits {
  std::chrono::milliseconds time{60'000};
  std::size_t bytes = std::size_t{256} << 20;          ///< of the PDF
  std::size_t memoryKibibytes = std::size_t{1} << 20;  ///< that PostScript may ask for
  std::size_t workBytes = std::size_t{1} << 30;        ///< of temporary files at a time
};

/// How the PDF has the letters of an EPS file.
enum class EpsLetters {
  Keep,      ///< they stay letters, in their fonts
  Outlines,  ///< they become paths that are filled
};

/// A short task: a PostScript file as PDF. An encapsulated one has one page, as large as its
/// bounding box. One that ends no page is one page, as large as a print of it would be
/// (PrintPages); without marks it is refused. The file reads and writes no file besides, and
/// `bytes` are handed over without one. The limits are those of all runs together. The failure is a
/// text for the user, with the interpreter's last error line where it has one.
[[nodiscard]] Expected<std::string> PdfFromEps(const std::string& bytes,
                                               const EpsLimits& limits = {},
                                               EpsLetters letters = EpsLetters::Keep);

/// The area that the comments of a PostScript file declare; nothing if they declare none. Runs no
/// interpreter.
[[nodiscard]] std::optional<PageArea> DeclaredArea(const std::string& bytes);

/// A short task: the area of a PostScript file's first page that a conversion makes its picture of
/// (docs/formats/conversion-files.md): the box that its comments declare, or else the page as it is
/// measured. The interpreter runs only for a measure; the marks of all pages count in that. The
/// failure is a text for the user.
[[nodiscard]] Expected<PageArea> PictureArea(const std::string& bytes,
                                             const EpsLimits& limits = {});

/// A short task: that area, or another, of a PostScript file as PDF: each page is the area,
/// whatever page the file sets. A file that ends no page is one page. The walls and limits are
/// those of PdfFromEps. The failure is a text for the user.
[[nodiscard]] Expected<std::string> PdfOfArea(const std::string& bytes, const PageArea& area,
                                              const EpsLimits& limits = {});

/// A short task: the first page of a PDF file, its crop box, as a PDF whose letters are paths that
/// are filled, within the same walls. A page that the interpreter can't read whole is refused, also
/// where other readers show it. The failure is a text for the user.
[[nodiscard]] Expected<std::string> OutlinedPdf(const std::string& bytes,
                                                const EpsLimits& limits = {});

}  // namespace rastrel::interpreter
