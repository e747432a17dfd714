#include "cli/job/event_writer.h"

#include "cli/console/json_line.h"

namespace rastrel::cli {
namespace {

const char* WordOf(JobEventKind kind) {
  switch (kind) {
    case JobEventKind::State: return "state";
    case JobEventKind::Progress: return "progress";
    case JobEventKind::Page: return "page";
    case JobEventKind::Output: return "output";
    case JobEventKind::Warning: return "warning";
    case JobEventKind::Error: return "error";
    case JobEventKind::Log: break;
  }
  return "log";
}

}  // namespace

std::string EventLine(const JobEvent& event) {
  JsonLine line(WordOf(event.kind));
  if (event.code) line.Add("code", *event.code);
  line.Add("originator", OriginatorWord(event.originator));
  line.AddIfAny("text", event.text);
  if (event.percent) line.Add("percent", *event.percent);
  if (event.page) line.Add("page", *event.page);
  line.AddIfAny("path", event.path);
  return line.Text();
}

}  // namespace rastrel::cli
