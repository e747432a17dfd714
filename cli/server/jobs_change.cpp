#include "cli/server/jobs_change.h"

#include <array>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/console/values.h"
#include "cli/printing/page_ranges.h"
#include "cli/server/job_options.h"
#include "cli/server/merged_pages.h"
#include "cli/server/open_queue.h"
#include "cli/server/queued_input.h"
#include "cli/server/worker.h"
#include "server/queue/server_lock.h"

namespace rastrel::cli {
namespace {

using server::JobId;
using server::JobQueue;

// The options of a print that a job keeps.
constexpr std::array KeptOptions{OptionId::Mode,       OptionId::Copies,      OptionId::Pages,
                                 OptionId::Planar,     OptionId::Scale,       OptionId::Levels,
                                 OptionId::LevelsRed,  OptionId::LevelsGreen, OptionId::LevelsBlue,
                                 OptionId::LevelsGray, OptionId::CutColor,    OptionId::Box};

// Beside these a job that is a merge keeps the full path of its template or table.
constexpr std::array KeptOfMerge{OptionId::Sheet, OptionId::Blank};

constexpr const char* DefaultDevice = "*";

server::JobRequest RequestOf(const Invocation& invocation) {
  server::JobRequest request;
  request.owner = server::OwnUserName();
  request.source = "command";
  request.device = invocation.ValueOr(OptionId::QueueDevice, DefaultDevice);
  request.title = invocation.ValueOr(OptionId::Title, "");
  request.hold = invocation.Has(OptionId::QueueHold);
  request.priority =
      OrEnd(ExitStatus::WrongUse,
            WholeNumberOf("--priority", invocation.ValueOr(OptionId::QueuePriority, "50"), 1, 100));
  for (const OptionId id : KeptOptions)
    if (invocation.Has(id)) request.options[OptionOf(id).name + 2] = invocation.ValueOr(id, "");
  return request;
}

std::string FullPath(const std::string& path) {
  std::error_code error;
  const auto full = std::filesystem::absolute(path, error);
  if (error || path.empty())
    throw CommandError(ExitStatus::BadInput, "'" + path + "' is no path of a file");
  return full.string();
}

// The files that become jobs. With --template and --data and no file, the table is the job's own.
std::vector<std::string> FilesOf(const Invocation& invocation) {
  const bool both = invocation.Has(OptionId::MergeTemplateFile) && invocation.Has(OptionId::Data);
  if (both && !invocation.operands.empty())
    throw CommandError(ExitStatus::WrongUse,
                       "--template and --data are a job already; name no file beside them");
  if (both) return {invocation.ValueOr(OptionId::Data, "")};
  if (invocation.operands.empty())
    throw CommandError(ExitStatus::WrongUse,
                       "name a file, or a merge's two: --template FILE --data TABLE");
  return invocation.operands;
}

// Makes the jobs merges if they are to be.
void TakeMerge(const Invocation& invocation, server::JobRequest& request) {
  const bool hasTemplate = invocation.Has(OptionId::MergeTemplateFile);
  if (!hasTemplate && !invocation.Has(OptionId::Data)) {
    for (const OptionId id : KeptOfMerge)
      if (invocation.Has(id))
        throw CommandError(ExitStatus::WrongUse, std::string(OptionOf(id).name) +
                                                     " is of a merge; add --template or --data");
    return;
  }
  request.work = server::JobWork::Merge;
  const OptionId named = hasTemplate ? OptionId::MergeTemplateFile : OptionId::Data;
  const std::string path = FullPath(invocation.ValueOr(named, ""));
  OrEnd(ExitStatus::BadInput, CheckMergeInput(path));
  request.options[OptionOf(named).name + 2] = path;
  for (const OptionId id : KeptOfMerge)
    if (invocation.Has(id)) request.options[OptionOf(id).name + 2] = invocation.ValueOr(id, "");
}

void ReportJob(const Invocation& invocation, const char* event, JobId id) {
  if (invocation.Has(OptionId::Json)) {
    JsonLine(event).Add("id", id).Write();
  } else {
    WriteOutLine(std::to_string(id));
  }
}

Expected<void> RemoveJob(JobQueue& queue, JobId id) {
  const auto spool = queue.Remove(id);
  if (!spool) return spool.Error();
  if (!spool->empty()) RemoveKeptPages(*spool);
  return {};
}

Expected<void> Change(JobQueue& queue, const Invocation& invocation, JobId id) {
  switch (invocation.command) {
    case CommandId::JobsHold: return queue.Hold(id);
    case CommandId::JobsRelease: return queue.Release(id);
    case CommandId::JobsCancel: return queue.Cancel(id);
    case CommandId::JobsMove: return queue.Move(id, invocation.ValueOr(OptionId::QueueDevice, ""));
    case CommandId::JobsPriority:
      return queue.SetPriority(
          id, OrEnd(ExitStatus::WrongUse,
                    WholeNumberOf("--priority", invocation.ValueOr(OptionId::QueuePriority, ""), 1,
                                  100)));
    case CommandId::JobsAccept: return queue.AcceptAsDone(id);
    default: return RemoveJob(queue, id);
  }
}

void CheckChange(const Invocation& invocation) {
  if (invocation.command == CommandId::JobsMove && !invocation.Has(OptionId::QueueDevice))
    throw CommandError(ExitStatus::WrongUse, "name the device: --device NAME");
  if (invocation.command == CommandId::JobsPriority && !invocation.Has(OptionId::QueuePriority))
    throw CommandError(ExitStatus::WrongUse, "name the priority: --priority N");
}

}  // namespace

ExitStatus AddJobsCommand(const Invocation& invocation) {
  const auto queue = OpenJobQueue();
  CheckPrintOptions(invocation);
  server::JobRequest request = RequestOf(invocation);
  const std::vector<std::string> files = FilesOf(invocation);
  TakeMerge(invocation, request);
  const bool isMerge = request.work == server::JobWork::Merge;
  // All are looked at before the first is taken.
  for (const std::string& path : files)
    OrEnd(ExitStatus::BadInput, isMerge ? CheckMergeInput(path) : CheckQueuedInput(path));
  for (const std::string& path : files) {
    request.path = path;
    ReportJob(invocation, "added", OrEndByCode(ExitStatus::JobFailed, queue->Submit(request)));
  }
  return ExitStatus::Done;
}

ExitStatus ChangeJobsCommand(const Invocation& invocation) {
  CheckChange(invocation);
  std::vector<JobId> ids;
  for (const std::string& operand : invocation.operands) ids.push_back(JobNumber(operand));
  const auto queue = OpenJobQueue();
  ExitStatus worst = ExitStatus::Done;
  for (const JobId id : ids) {
    const auto done = Change(*queue, invocation, id);
    if (done) {
      ReportJob(invocation, "changed", id);
      continue;
    }
    worst = ExitStatus::JobFailed;
    WriteErrorLine("rastrel: " + Describe(done.Error()));
  }
  return worst;
}

ExitStatus ReprintJobCommand(const Invocation& invocation) {
  std::vector<int> pages;
  if (invocation.Has(OptionId::Pages))
    for (const std::int32_t page :
         OrEnd(ExitStatus::WrongUse, ParsePages(invocation.ValueOr(OptionId::Pages, ""))))
      pages.push_back(page + 1);
  const JobId id = JobNumber(invocation.operand);
  const auto queue = OpenJobQueue();
  ReportJob(invocation, "added", OrEndByCode(ExitStatus::JobFailed, queue->Reprint(id, pages)));
  return ExitStatus::Done;
}

}  // namespace rastrel::cli
