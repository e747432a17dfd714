#include "cli/server/jobs_view.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/server/ink_text.h"
#include "cli/server/job_filter.h"
#include "cli/server/job_table.h"
#include "cli/server/open_queue.h"
#include "rastrel/platform/os/output_file.h"

namespace rastrel::cli {
namespace {

using server::Job;

// Of one read of the database; the story of a job may be long.
constexpr int EventsAtOnce = 1000;
constexpr int JobsAtOnce = 1000;

void WriteJobObject(const Job& job) {
  JsonLine line("job");
  line.Add("id", job.id)
      .Add("title", job.title)
      .Add("owner", job.owner)
      .Add("source", job.source)
      .Add("device", job.device)
      .Add("work", server::NameOf(job.work))
      .Add("priority", job.priority)
      .Add("state", server::NameOf(job.state))
      .Add("bytes", job.bytes)
      .Add("submitted", job.submitted)
      .Add("started", job.started)
      .Add("ended", job.ended)
      .Add("attempts", job.attempts)
      .Add("failures", job.failures)
      .Add("percent", job.percent)
      .Add("pages", job.pages)
      .AddIfAny("spool", job.spool)
      .Add("sent", job.sentBytes)
      .Add("result", job.result)
      .AddIfAny("message", job.message);
  std::vector<std::string> options;
  for (const auto& [name, value] : job.options)
    options.push_back(value.empty() ? name : name + "=" + value);
  line.Add("options", options);
  // Text that is none, of a database that somebody changed, is left out.
  if (const auto inks = InksOfText(job.ink); inks && !inks->empty())
    line.AddJson("ink", TextOfInk(*inks));
  line.Write();
}

void WriteField(const char* name, const std::string& value) {
  if (!value.empty()) WriteOutRow({name, value});
}

void WriteFields(const Job& job) {
  WriteField("job", std::to_string(job.id));
  WriteField("title", job.title);
  WriteField("state", server::NameOf(job.state));
  WriteField("message", job.message);
  WriteField("owner", job.owner);
  WriteField("source", job.source);
  WriteField("device", job.device);
  WriteField("work", server::NameOf(job.work));
  for (const auto& [name, value] : job.options) WriteField(("--" + name).c_str(), value);
  WriteField("priority", std::to_string(job.priority));
  WriteField("bytes", std::to_string(job.bytes));
  WriteField("submitted", TimeText(job.submitted));
  WriteField("started", TimeText(job.started));
  WriteField("ended", TimeText(job.ended));
  WriteField("attempts", std::to_string(job.attempts));
  WriteField("pages", std::to_string(job.pages));
  const auto inks = InksOfText(job.ink);
  for (std::size_t page = 0; inks && page < inks->size(); ++page)
    WriteField(("ink of page " + std::to_string(page + 1)).c_str(), ShownInk((*inks)[page]));
  WriteField("spool", job.spool);
}

void WriteStory(server::JobQueue& queue, server::JobId id, bool json) {
  std::int64_t after = 0;
  for (;;) {
    const auto events = OrEnd(ExitStatus::JobFailed, queue.Events(after, id, EventsAtOnce));
    for (const server::JobEvent& event : events) {
      after = event.number;
      if (json) {
        JsonLine("story")
            .Add("number", event.number)
            .Add("time", event.time)
            .Add("kind", event.kind)
            .Add("text", event.text)
            .Write();
      } else {
        WriteOutRow({TimeText(event.time), event.kind, event.text});
      }
    }
    if (events.size() < static_cast<std::size_t>(EventsAtOnce)) return;
  }
}

// Calls `take` for each job, read in pieces so that a long list takes little memory.
template <typename Take>
void ForEachJob(server::JobQueue& queue, server::JobFilter filter, const Take& take) {
  int left = filter.limit;
  while (left > 0) {
    filter.limit = std::min(left, JobsAtOnce);
    const auto jobs = OrEnd(ExitStatus::JobFailed, queue.List(filter));
    for (const Job& job : jobs) take(job);
    if (jobs.size() < static_cast<std::size_t>(filter.limit)) return;
    left -= filter.limit;
    filter.offset += filter.limit;
  }
}

}  // namespace

ExitStatus ListJobsCommand(const Invocation& invocation) {
  const server::JobFilter filter = FilterOf(invocation);
  const auto queue = OpenJobQueue();
  const bool json = invocation.Has(OptionId::Json);
  if (!json)
    WriteOutRow(
        {"job", "state", "priority", "device", "owner", "pages", "submitted", "title", "message"});
  ForEachJob(*queue, filter, [json](const Job& job) {
    if (json) return WriteJobObject(job);
    const bool runs =
        job.state == server::JobState::Interpreting || job.state == server::JobState::Delivering;
    WriteOutRow({std::to_string(job.id),
                 server::NameOf(job.state) +
                     (runs ? " " + std::to_string(job.percent) + " %" : std::string()),
                 std::to_string(job.priority), job.device, job.owner, std::to_string(job.pages),
                 TimeText(job.submitted), job.title, job.message});
  });
  return ExitStatus::Done;
}

ExitStatus ShowJobCommand(const Invocation& invocation) {
  const server::JobId id = JobNumber(invocation.operand);
  const auto queue = OpenJobQueue();
  const auto job = OrEnd(ExitStatus::JobFailed, queue->Find(id));
  if (!job) throw CommandError(ExitStatus::BadInput, "there is no job " + std::to_string(id));
  const bool json = invocation.Has(OptionId::Json);
  if (json) {
    WriteJobObject(*job);
  } else {
    WriteFields(*job);
  }
  WriteStory(*queue, id, json);
  return ExitStatus::Done;
}

ExitStatus ExportJobsCommand(const Invocation& invocation) {
  const server::JobFilter filter = FilterOf(invocation);
  const auto queue = OpenJobQueue();
  std::string table = JobTableHead();
  ForEachJob(*queue, filter, [&table](const Job& job) { table += JobTableRow(job); });
  const std::string path = invocation.ValueOr(OptionId::OutputFile, StandardOutputName);
  if (path == StandardOutputName) {
    WriteOutData(table);
    return ExitStatus::Done;
  }
  const auto existing =
      invocation.Has(OptionId::Force) ? os::Existing::Followed : os::Existing::Refused;
  auto file = OrEnd(ExitStatus::JobFailed, os::OutputFile::Create(path, existing));
  OrEnd(ExitStatus::JobFailed, file.Write(table));
  OrEnd(ExitStatus::JobFailed, file.Commit());
  WriteOutPath(path);
  return ExitStatus::Done;
}

}  // namespace rastrel::cli
