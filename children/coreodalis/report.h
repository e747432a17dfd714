#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// The engine's reports on standard error while it works, one a line. The lines are described in
/// docs/formats/output-engine.md; the library and the command line tool read them. Every line is
/// written in one call. A reader that is gone is no failure.
namespace rastrel::odalis {

/// The states that the library knows by these words.
enum class EngineState { Initialising, Ready, Printing, Flushing };

void ReportState(EngineState state);
void ReportError(std::string_view text);
void ReportWarning(std::string_view text);
/// A file that is in its place now: "OUTPUT: path".
void ReportOutput(std::string_view path);
/// A page that is delivered now, by its number in its job: "PAGE: n".
void ReportPage(unsigned page);
/// A page whose delivery failed, and of which something may have come out: "UNSURE: n".
void ReportUnsure(unsigned page);
/// Any other text for the job's log.
void ReportNote(std::string_view text);

/// Reports whole percentages, each once, never a smaller one than before, and no more than a few a
/// second, since every line lands in the job's log. The last one, 100, is always reported.
class Progress {
 public:
  /// `share` of the work is done, 0 to 1.
  void Report(double share);

 private:
  int m_Last = 0;
  std::int64_t m_LastTime = 0;  ///< nanoseconds of the monotonic clock
};

/// The text as one line, cleaned (os::CleanLine).
[[nodiscard]] std::string OneLine(std::string_view text);

}  // namespace rastrel::odalis
