#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "interpreter/interpreter.h"
#include "interpreter/job_feed.h"
#include "interpreter/job_use.h"
#include "interpreter/page_maker.h"
#include "interpreter/page_plan.h"
#include "interpreter/report_link.h"
#include "interpreter/run_mode.h"
#include "interpreter/run_reports.h"
#include "interpreter/work_watch.h"

namespace rastrel::interpreter {

class LaterPages;

/// The part of a job that a run makes, where it is not all of it.
struct RunPart {
  PageRange pages{};              ///< these alone; 0 to 0: all
  std::vector<FilePart> parts{};  ///< of PostScript: the job's parts for these; empty: all of it
  std::shared_ptr<JobUse> use{};  ///< of all runs of the job; null: this is the only one
  /// Of the first run of a PDF: takes the later pages off it. Borrowed; null: it makes all.
  LaterPages* later = nullptr;
};

/// One job on its way through the interpreter: feeds it, watches its limits, and hands its output
/// to the reports and the page maker. Single-threaded; used once.
class RipRun {
 public:
  /// Borrows all but the request.
  RipRun(RunRequest request, const RunMode& mode, const RunDirectory& directory,
         RunListener& listener, Guardian& guardian, RunPart part = {});

  /// Runs the job to its end, or until the mode has enough.
  [[nodiscard]] Expected<void> Run();
  /// Number of pages that were made, those that were taken off it included.
  [[nodiscard]] unsigned Pages() const { return std::max(m_Pages.Pages(), m_Taken); }
  /// Its number in RunPart::use.
  [[nodiscard]] std::size_t Number() const { return m_Number; }
  /// The prolog's measure; empty if the run was not for that.
  [[nodiscard]] const std::string& Measure() const { return m_Reports->Measure(); }
  /// Whether the job has left the page open that was put out or measured first.
  [[nodiscard]] bool HasOpenPage() const { return m_Reports->HasOpenPage(); }
  /// Whether the run has failed for nothing but that PostScript has ended no page.
  [[nodiscard]] bool HasEndedNoPage() const { return m_HasEndedNoPage; }
  /// Whether the run has failed for want of the chosen page, and an open page was passed over.
  [[nodiscard]] bool HasPassedOpenPage() const {
    return m_HasEndedNoPage && m_Reports->SkippedPages() > 0 && m_Reports->HasOpenPage();
  }
  /// The request, for another run of the same job.
  [[nodiscard]] RunRequest TakeRequest() { return std::move(m_Request); }

 private:
  bool Start();
  Expected<void> OpenPdf(RunStart& start) const;
  bool Step();
  bool Poll();
  bool Await();
  void StartLater();
  void DropLater();
  void TakeLater();
  [[nodiscard]] bool IsRelieved() const;
  bool ReadReports();
  void FindReportsFlow(std::size_t taken);
  bool ReadPixels();
  bool TakePixels();
  void ShowProgress();
  void JudgeEnd();
  void WarnOfUnmetColors();
  void JudgeStatus(const ProcessEnd& end);
  [[nodiscard]] Failure WhyNoPage() const;
  void WarnOfDamage();
  [[nodiscard]] bool IsPdf() const { return m_Request.job.layout.kind == JobKind::Pdf; }
  void FailOnPixels();
  bool Fail(Failure failure);
  [[nodiscard]] RunProgress Progress() const;
  [[nodiscard]] bool HasEnough() const { return m_Mode.HasEnough(Progress()); }

  RunRequest m_Request;
  const RunMode& m_Mode;
  const RunDirectory& m_Directory;
  RunListener& m_Listener;
  Guardian& m_Guardian;

  const RunPart m_Part;
  const std::size_t m_Number;
  Expected<void> m_Result;
  PageMaker m_Pages;
  PageStream m_Stream;
  std::optional<ReportLink> m_ReportLink;
  std::optional<RunReports> m_Reports;
  std::optional<RunningInterpreter> m_Interpreter;
  std::optional<JobFeed> m_Feed;
  std::optional<WorkWatch> m_Watch;
  std::vector<std::byte> m_Pixels;          // read and not taken yet
  std::optional<std::size_t> m_PixelCount;  // of these; 0: the stream's end
  std::uint64_t m_Questions = 0;            // that were answered before the last reading
  std::uint64_t m_SinceQuestion = 0;        // bytes of reports
  bool m_ReportsFlow = false;               // the last reading found more than a few of them
  bool m_Flowing = false;                   // the last reading found some, but no buffer full
  std::int64_t m_NextProgress = 0;
  unsigned m_Taken = 0;    // the last page, if later ones were taken over
  bool m_Resting = false;  // the interpreter rests until the later pages are there
  bool m_HasEndedNoPage = false;
};

}  // namespace rastrel::interpreter
