#include "interpreter/run_reports.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

namespace rastrel::interpreter {
namespace {

constexpr std::size_t TransferSize = 256;  // of a plane's table, a byte for each sample

// Two numbers with a blank between them.
bool ReadPair(const std::string& text, double& first, double& second) {
  const char* const end = text.data() + text.size();
  const auto one = std::from_chars(text.data(), end, first);
  if (one.ec != std::errc() || one.ptr == end || *one.ptr != ' ') return false;
  const auto other = std::from_chars(one.ptr + 1, end, second);
  return other.ec == std::errc() && other.ptr == end && first > 0 && second > 0;
}

}  // namespace

// The reports of share/rip/System/prolog. Those of cut paths are the page maker's.
const RunReports::Entry RunReports::Handlers[] = {
    {"PROLOG", &RunReports::TakeProlog},
    {"PRINTER", &RunReports::TakePrinter},
    {"MODE", &RunReports::TakeMode},
    {"NOMODE", &RunReports::TakeMissingMode},
    {"RESOLUTION", &RunReports::TakeResolution},
    {"TRANSFER", &RunReports::TakeTransfer},
    {"WARNING", &RunReports::TakeWarning},
    {"LOG", &RunReports::TakeLog},
    {"SIZE", &RunReports::TakeSize},
    {"PAGE", &RunReports::TakePage},
    {"PAGES", &RunReports::TakeCount},
    {"SKIP", &RunReports::TakeSkippedPage},
    {"BOX", &RunReports::TakeMeasure},
    {"OPEN", &RunReports::TakeOpenPage},
    {"JOB", &RunReports::TakeJob},
    {"NOCUT", &RunReports::TakeCutFailure},
    {"ASK", &RunReports::TakeQuestion},
};

RunReports::RunReports(std::string word, bool isQuietBefore, PageMaker& pages,
                       RunListener& listener, Expected<void>& result)
    : m_Word(std::move(word)),
      m_IsQuiet(isQuietBefore),
      m_Pages(pages),
      m_Listener(listener),
      m_Result(result) {}

void RunReports::Add(std::string_view bytes) {
  m_Lines.Add(bytes);
  while (const auto line = m_Lines.Next()) TakeLine(*line);
}

void RunReports::AnswerBy(CutAnswers answers) {
  m_Answers.emplace(std::move(answers));
  m_Pages.Cuts().TakeAskedColors();
}

void RunReports::Finish() {
  Add({});
  if (!m_Lines.Last().empty()) TakeLine(m_Lines.Last());
}

void RunReports::TakeLine(const std::string& line) {
  if (const auto report = ReadReport(line, m_Word)) {
    m_IsQuiet = false;
    TakeReport(*report);
    return;
  }
  if (TakeSpotInk(line)) return;
  // Its older PDF code is chosen on purpose.
  if (line.find("legacy PDF interpreter") != line.npos) return;
  m_Pdf.Take(line);
  const bool isError = line.starts_with("Error: ");
  if (m_IsQuiet && !isError) return;
  if (isError && m_LastError.empty()) m_LastError = line.substr(7);
  m_Listener.Printed(line);
}

bool RunReports::TakeSpotInk(const std::string& line) {
  const std::size_t start = FindSpotInk(line);
  if (start == line.npos) return false;
  const auto ink = ReadSpotInk(std::string_view(line).substr(start));
  if (!ink) return false;
  m_Pages.AddInk(*ink);
  if (start > 0) TakeLine(line.substr(0, start));
  return true;
}

void RunReports::TakeReport(const Report& report) {
  const auto* const found = std::ranges::find(Handlers, report.key, &Entry::key);
  if (found != std::ranges::end(Handlers)) {
    (this->*found->handler)(report.value);
  } else if (!m_Pages.Cuts().Add(report)) {
    KeepFirst(m_Result, FailureOf("The job's cut paths take more than " +
                                  std::to_string(CutPaths::Limit >> 20) + " MiB"));
  }
}

void RunReports::TakeProlog(const std::string&) { m_HasProlog = true; }

void RunReports::TakePrinter(const std::string& value) {
  m_Pages.Description().printer = value;
  m_Listener.Noted("printer " + value);
}

void RunReports::TakeMode(const std::string& value) {
  m_Pages.Description().mode = value;
  m_Listener.Noted("print mode " + value);
}

void RunReports::TakeMissingMode(const std::string& value) {
  m_Listener.Warned("The print mode " + value + " is not installed; the page is made without it.");
}

void RunReports::TakeResolution(const std::string& value) {
  double x = 0;
  double y = 0;
  if (!ReadPair(value, x, y)) return;
  m_Pages.Description().xResolution = x;
  m_Pages.Description().yResolution = y;
}

void RunReports::TakeTransfer(const std::string& value) {
  if (value.size() <= TransferSize) return;
  std::ranges::copy(std::string_view(value).substr(0, TransferSize),
                    m_Pages.Description().transfers[value.substr(TransferSize)].begin());
}

void RunReports::TakeWarning(const std::string& value) { m_Listener.Warned(value); }

void RunReports::TakeLog(const std::string& value) { m_Listener.Printed(value); }

void RunReports::TakeSize(const std::string& value) {
  m_Pages.Cuts().BeginPage();
  double width = 0;
  double height = 0;
  if (ReadPair(value, width, height)) m_Pages.Announce(width, height);
}

void RunReports::TakePage(const std::string&) { m_Pages.EndReported(); }

void RunReports::TakeCount(const std::string& value) {
  unsigned pages = 0;
  const char* const end = value.data() + value.size();
  const auto [stop, error] = std::from_chars(value.data(), end, pages);
  if (error == std::errc() && stop == end) m_Pages.Count(pages);
}

void RunReports::TakeSkippedPage(const std::string&) { ++m_Skipped; }

void RunReports::TakeMeasure(const std::string& value) {
  if (m_Measure.empty()) m_Measure = value;
}

// Comes at the end of every job that may leave a page open, also after the pages that it has ended.
void RunReports::TakeOpenPage(const std::string&) {
  if (m_Pages.Ended() > 0 || !m_Measure.empty()) return;
  m_HasOpenPage = true;
  // Of pages that were passed over, the job has ended those at least.
  if (m_Skipped == 0) m_Listener.Warned(OpenPageNote);
}

void RunReports::TakeJob(const std::string&) {
  m_Started = true;
  m_Listener.StateReached(RunState::Interpreting);
}

void RunReports::TakeQuestion(const std::string& value) {
  if (!m_Answers) return;
  ++m_Questions;
  const RunDescription& run = m_Pages.Description();
  const double scale = 72 / std::sqrt(run.xResolution * run.yResolution);
  if (auto answered = m_Answers->Answer(value, scale, m_Pages.Cuts()); !answered)
    KeepFirst(m_Result, answered.Error());
}

void RunReports::TakeCutFailure(const std::string&) {
  m_Listener.Warned("A path of the cut colour can't be read and is not kept.");
}

}  // namespace rastrel::interpreter
