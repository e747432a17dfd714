#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "interpreter/cut_answers.h"
#include "interpreter/page_maker.h"
#include "interpreter/pdf_job.h"
#include "interpreter/report_lines.h"

namespace rastrel::interpreter {

/// The note on a page that has no showpage.
inline constexpr const char* OpenPageNote =
    "The job does not end its page (it has no showpage); all that it draws is taken for one page.";

/// Takes everything that the interpreter prints: the prolog's reports, which it acts on, and all
/// other lines, which go to the listener.
class RunReports {
 public:
  /// `word` is the run's secret word. `isQuietBefore`: lines before the first report are
  /// not passed on, unless they are errors. `result` gets the run's first failure. Borrows the
  /// others.
  RunReports(std::string word, bool isQuietBefore, PageMaker& pages, RunListener& listener,
             Expected<void>& result);

  /// Takes bytes of the stream.
  void Add(std::string_view bytes);
  /// Questions of the prolog are answered so.
  void AnswerBy(CutAnswers answers);
  /// How many were, so far.
  [[nodiscard]] std::uint64_t Questions() const { return m_Questions; }
  /// The stream has ended.
  void Finish();

  /// Whether the prolog's first file has run, so reports can come.
  [[nodiscard]] bool HasProlog() const { return m_HasProlog; }
  /// Whether prolog and prefix have run.
  [[nodiscard]] bool HasStarted() const { return m_Started; }
  /// The first error that the interpreter has printed, without "Error: "; may be empty.
  [[nodiscard]] const std::string& LastError() const { return m_LastError; }
  /// Its messages about a PDF. Of a job that is none they mean nothing, since it can print them
  /// too.
  [[nodiscard]] const PdfMessages& Pdf() const { return m_Pdf; }
  /// Whether the job has left the page open that was put out or measured first.
  [[nodiscard]] bool HasOpenPage() const { return m_HasOpenPage; }
  /// How many pages the job has put out before the chosen one, which come to nothing.
  [[nodiscard]] unsigned SkippedPages() const { return m_Skipped; }
  /// The prolog's measure (see measure.ps), or empty.
  [[nodiscard]] const std::string& Measure() const { return m_Measure; }

 private:
  using Handler = void (RunReports::*)(const std::string& value);
  struct Entry {
    std::string_view key;
    Handler handler;
  };
  static const Entry Handlers[];

  void TakeLine(const std::string& line);
  [[nodiscard]] bool TakeSpotInk(const std::string& line);
  void TakeReport(const Report& report);
  void TakeProlog(const std::string& value);
  void TakePrinter(const std::string& value);
  void TakeMode(const std::string& value);
  void TakeMissingMode(const std::string& value);
  void TakeResolution(const std::string& value);
  void TakeTransfer(const std::string& value);
  void TakeWarning(const std::string& value);
  void TakeLog(const std::string& value);
  void TakeSize(const std::string& value);
  void TakePage(const std::string& value);
  void TakeCount(const std::string& value);
  void TakeSkippedPage(const std::string& value);
  void TakeMeasure(const std::string& value);
  void TakeOpenPage(const std::string& value);
  void TakeJob(const std::string& value);
  void TakeCutFailure(const std::string& value);
  void TakeQuestion(const std::string& value);

  std::string m_Word;
  bool m_IsQuiet;
  PageMaker& m_Pages;
  RunListener& m_Listener;
  Expected<void>& m_Result;
  LineCutter m_Lines;
  std::string m_LastError;
  std::string m_Measure;
  std::optional<CutAnswers> m_Answers;
  std::uint64_t m_Questions = 0;
  PdfMessages m_Pdf;
  bool m_HasProlog = false;
  bool m_Started = false;
  bool m_HasOpenPage = false;
  unsigned m_Skipped = 0;
};

}  // namespace rastrel::interpreter
