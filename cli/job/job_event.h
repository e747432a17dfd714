#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "rastrel/job/status.h"

namespace rastrel::cli {

/// The kinds of events of a job while it prints.
enum class JobEventKind {
  State,     ///< the job or a child entered a state: code and text
  Progress,  ///< percent of the present child's work
  Page,      ///< page: the RIP made it, or the output engine delivered it
  Output,    ///< path of a delivered file
  Warning,   ///< text, a child's message
  Error,     ///< text, and a code unless it is a child's message
  Log,       ///< text: any other line of the job log
};

struct JobEvent {
  JobEventKind kind = JobEventKind::Log;
  JT_ORIGINATOR originator = JTO_SYSTEM;
  std::optional<int> code;
  std::optional<int> percent;
  std::optional<int> page;
  std::string text;  ///< UTF-8, cleaned (os::CleanLine), no translation mark
  std::string path;  ///< native, as the child wrote it
};

/// Receives a job's events. Called from several threads, one call at a time.
class JobObserver {
 public:
  virtual ~JobObserver() = default;
  virtual void OnEvent(const JobEvent& event) = 0;
};

/// "rip", "odalis" or "system", as in docs/formats/events.md.
[[nodiscard]] const char* OriginatorWord(JT_ORIGINATOR originator);
/// The same for people.
[[nodiscard]] const char* OriginatorName(JT_ORIGINATOR originator);

/// The host's text for the user: without the translation mark, as UTF-8, cleaned.
[[nodiscard]] std::string ShownText(const std::wstring& marked);

/// The event that a line of the job log means, without its line end. Nothing for an empty line
/// and for a child's report that the ticket gets by a call of its own (ERROR, WARNING, INFO and
/// PROGRESS).
[[nodiscard]] std::optional<JobEvent> EventOfLogLine(std::wstring_view line);

}  // namespace rastrel::cli
