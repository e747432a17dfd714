#include "children/coreodalis/report.h"

#include <algorithm>

#include "rastrel/platform/os/clock.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/shown_text.h"

namespace rastrel::odalis {
namespace {

constexpr std::int64_t BetweenReports = 200'000'000;  // nanoseconds

bool IsControl(char character) {
  return static_cast<unsigned char>(character) < ' ' || character == '\x7F';
}

void Write(std::string_view tag, std::string_view text) {
  os::WriteToStandardError(std::string(tag) + OneLine(text) + "\n");
}

const char* WordOf(EngineState state) {
  switch (state) {
    case EngineState::Initialising: return "INITIALISING";
    case EngineState::Ready: return "READY";
    case EngineState::Printing: return "PRINTING";
    case EngineState::Flushing: return "FLUSHING";
  }
  return "";
}

}  // namespace

std::string OneLine(std::string_view text) { return os::CleanLine(text); }

void ReportState(EngineState state) { Write("INFO: ", WordOf(state)); }
void ReportError(std::string_view text) { Write("ERROR: ", text); }
void ReportWarning(std::string_view text) { Write("WARNING: ", text); }
// The host opens the path, so it keeps all that its line can hold.
void ReportOutput(std::string_view path) {
  std::string line(path);
  std::ranges::replace_if(line, IsControl, ' ');
  os::WriteToStandardError("OUTPUT: " + line + "\n");
}
void ReportPage(unsigned page) { Write("PAGE: ", std::to_string(page)); }
void ReportUnsure(unsigned page) { Write("UNSURE: ", std::to_string(page)); }
void ReportNote(std::string_view text) { Write("NOTE: ", text); }

void Progress::Report(double share) {
  const int percent = std::clamp(static_cast<int>(share * 100), 0, 100);
  if (percent <= m_Last) return;
  const std::int64_t now = os::MonotonicNanoseconds();
  if (percent < 100 && m_LastTime != 0 && now - m_LastTime < BetweenReports) return;
  m_LastTime = now;
  m_Last = percent;
  Write("PROGRESS: ", std::to_string(percent) + " %");
}

}  // namespace rastrel::odalis
