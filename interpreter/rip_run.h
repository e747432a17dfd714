#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "interpreter/cut_paths.h"
#include "interpreter/ghostscript.h"
#include "interpreter/job_feed.h"
#include "interpreter/job_file.h"
#include "interpreter/page_directory.h"
#include "interpreter/report_lines.h"
#include "interpreter/reporter.h"

namespace rastrel::interpreter {

/// One job on its way through the interpreter: feeds it, watches its limits, passes its reports on
/// and makes the page directories. Single-threaded.
class RipRun : private PageReceiver {
 public:
  struct Parts {
    bool install = false;
    std::string ripDirectory;  ///< native
    RunDescription description;
    JobFile job;
    os::FileDescriptor prefix;  ///< may be closed: none
    bool cutter = false;        ///< the prefix sets a cut color
    bool picture = false;       ///< only the first page counts, ended by the job or not
    bool measure = false;       ///< nothing is drawn: Box() is what is wanted; with `picture`
    Settings settings;
  };

  RipRun(Parts parts, const RunDirectory& directory, Reporter& reporter, Guardian& guardian);
  ~RipRun() override;

  /// Runs the job to its end. What it returns is why it failed; nothing if all pages lie there.
  [[nodiscard]] std::optional<RunFailure> Run();
  /// Number of pages that were made.
  [[nodiscard]] unsigned Pages() const { return m_Pages; }
  /// What the prolog measured: six numbers with blanks between them (see measure.ps). Empty if the
  /// run was not for that, or failed.
  [[nodiscard]] const std::string& Box() const { return m_Box; }

 private:
  bool BeginPage(const PageSize& size) override;
  bool AddPixels(std::span<const std::byte> bytes) override;
  bool EndPage() override;

  bool Start();
  bool Step();
  bool Poll();
  bool ReadReports();
  bool ReadPixels();
  bool TakePixels();
  void HandleLine(const std::string& line);
  void HandleReport(const Report& report);
  void HandleSize(const std::string& value);
  void CheckPageSize(double width, double height);
  bool CheckTotal(std::uint64_t bytes);
  bool CheckWork();
  bool MakeSeparations(unsigned complete);
  void ShowConverting();
  void CountPage();
  void ShowProgress();
  void JudgeEnd();
  /// Whether all that is wanted lies there, whatever the job would still do.
  [[nodiscard]] bool HasEnough() const {
    return m_Parts.picture && (m_Pages > 0 || !m_Box.empty());
  }
  void Fail(ExitStatus status, std::string sentence);
  bool FailOn(const Failure& failure);

  Parts m_Parts;
  const RunDirectory& m_Directory;
  Reporter& m_Reporter;
  Guardian& m_Guardian;

  std::string m_Word;
  std::optional<Interpreter> m_Interpreter;
  std::optional<JobFeed> m_Feed;
  LineCutter m_Lines;
  PageStream m_Stream;
  CutPaths m_Cuts;
  std::vector<std::byte> m_Pixels;          // read and not taken yet
  std::optional<std::size_t> m_PixelCount;  // of these; 0: the stream's end
  bool m_Flowing = false;                   // the last reading found some, but no buffer full
  std::unique_ptr<PageDirectory> m_Page;    // the one whose pixels come at present
  std::optional<RunFailure> m_Failure;
  std::int64_t m_Deadline = 0;  // nanoseconds of the monotonic clock
  std::string m_LastError;      // the interpreter's own words
  std::string m_Box;
  unsigned m_Pages = 0;      // finished
  unsigned m_Separated = 0;  // of these, from separations
  unsigned m_Ended = 0;      // pages that the interpreter has begun to put out
  double m_PageBytes = 0;    // of the present page, if it is separated
  std::uint64_t m_TotalBytes = 0;
  std::int64_t m_NextProgress = 0;
  std::int64_t m_NextWatch = 0;
  bool m_Reported = false;    // the prolog has begun
  bool m_Started = false;     // prolog and prefix have run
  bool m_Converting = false;  // pixels flow
};

}  // namespace rastrel::interpreter
