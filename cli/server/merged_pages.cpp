#include "cli/server/merged_pages.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "cli/console/exit_status.h"
#include "cli/server/child_run.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_content.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::cli {
namespace {

using enum TicketEnd::Kind;

constexpr std::string_view Program = "rastrel: ";
constexpr std::string_view WrittenTo = "; written to ";
constexpr std::array PassedOptions{"sheet", "blank"};

std::vector<std::string> ArgumentsOf(const server::Job& job, const std::string& result) {
  const MergeFiles files = MergeFilesOf(job);
  std::vector<std::string> arguments{"rastrel-document", "merge",    files.merged, "--data",
                                     files.table,        "--output", result};
  for (const char* name : PassedOptions) {
    const auto found = job.options.find(name);
    if (found == job.options.end()) continue;
    arguments.push_back("--" + found->first);
    arguments.push_back(found->second);
  }
  return arguments;
}

bool IsOfRow(const std::string& line) { return line.starts_with("row "); }

// A line without the program's name and the place of the pages, which go, and with the job's title
// in the place of its hidden file.
std::string Shown(std::string line, const server::Job& job) {
  if (line.starts_with(Program)) line.erase(0, Program.size());
  if (!IsOfRow(line)) line.erase(std::min(line.rfind(WrittenTo), line.size()));
  for (std::size_t at = line.find(job.file); at != line.npos;
       at = line.find(job.file, at + job.title.size()))
    line.replace(at, job.file.size(), job.title);
  return line;
}

// "row 7: placed on page 1": a person has no need of it.
bool IsWanted(const std::string& line) {
  return !IsOfRow(line) || line.find(": placed on page") == line.npos ||
         line.find(';') != line.npos;
}

std::string ReasonOf(const std::vector<std::string>& lines) {
  const auto row = std::ranges::find_if(lines, [](const std::string& line) {
    return IsOfRow(line) && line.find(": not placed") != line.npos;
  });
  if (row != lines.end()) return *row;
  const auto error = std::find_if(lines.rbegin(), lines.rend(), [](const std::string& line) {
    return line.starts_with(Program);
  });
  if (error != lines.rend()) return *error;
  return lines.empty() ? "the merge failed" : lines.back();
}

void Tell(server::JobQueue& queue, const server::Job& job, const ChildRun& run) {
  for (const std::string& line : run.lines)
    static_cast<void>(queue.AddMessage(job.id, Shown(line, job)));
  if (run.omitted > 0)
    static_cast<void>(queue.AddMessage(
        job.id, std::to_string(run.omitted) + " more lines of the merge are left out"));
}

}  // namespace

MergeFiles MergeFilesOf(const server::Job& job) {
  const auto named = job.options.find("template");
  const auto data = job.options.find("data");
  const bool hasTemplate = named != job.options.end();
  const bool hasData = data != job.options.end();
  if (hasTemplate == hasData)
    throw CommandError(ExitStatus::WrongUse,
                       hasData ? "a merge has its own file and one of 'template' and 'data', and "
                                 "not both"
                               : "a merge needs 'template', the file with the fields, or 'data', "
                                 "the table with a row for each plate");
  const std::string& path = hasTemplate ? named->second : data->second;
  if (!path.starts_with('/'))
    throw CommandError(ExitStatus::WrongUse, std::string(hasTemplate ? "template" : "data") +
                                                 ": '" + path + "' is no full path");
  return hasTemplate ? MergeFiles{path, job.file} : MergeFiles{job.file, path};
}

Expected<void> CheckMergeInput(const std::string& path) {
  const auto file = os::OpenRegularFile(os::FromNative(path));
  return file ? Expected<void>() : FailureAt(path, file.Error());
}

TicketEnd MakeMergedPages(server::JobQueue& queue, const server::Job& job,
                          const std::string& result) {
  // Of an earlier run of the job that was killed.
  static_cast<void>(os::RemoveFile(os::FromNative(result)));
  const ChildRun run = OrEnd(ExitStatus::JobFailed, RunChild(queue, job, "rastrel-document",
                                                             ArgumentsOf(job, result), IsWanted));
  if (run.end != ChildRun::End::ByItself)
    return {run.end == ChildRun::End::Canceled ? Canceled : Stopped, 0, ""};
  Tell(queue, job, run);
  if (!run.state.byItself)
    return {Failed, static_cast<int>(ExitStatus::JobFailed),
            "the merge was ended by signal " + std::to_string(run.state.status)};
  if (run.state.status != 0) return {Failed, run.state.status, Shown(ReasonOf(run.lines), job)};
  return {Done, 0, ""};
}

}  // namespace rastrel::cli
