#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/console/exit_status.h"
#include "cli/console/options.h"
#include "cli/input/input_file.h"
#include "cli/input/pdf_options.h"
#include "cli/installation/job_directory.h"
#include "cli/installation/print_modes.h"
#include "cli/installation/sweep.h"
#include "cli/job/job_run.h"
#include "cli/printing/job_settings.h"
#include "cli/printing/spool_transfer.h"
#include "cli/printing/whole_prefix.h"
#include "cli/server/ink_coverage.h"
#include "cli/server/ink_text.h"
#include "cli/server/job_observer.h"
#include "cli/server/job_options.h"
#include "cli/server/merged_pages.h"
#include "cli/server/queued_input.h"
#include "cli/server/worker.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/standalone/data_root.h"

namespace rastrel::cli {
namespace {

// While it lives no page is delivered: the engine's place is taken by a program that does nothing.
class NoDelivery {
 public:
  NoDelivery() : m_Engine(CExePaths::Instance().m_OdalisExe) {
    CExePaths::Instance().m_OdalisExe =
        os::FromNative(standalone::FindResources().programs + "/rastrel-keep-pages");
  }
  ~NoDelivery() { CExePaths::Instance().m_OdalisExe = m_Engine; }
  NoDelivery(const NoDelivery&) = delete;
  NoDelivery& operator=(const NoDelivery&) = delete;

 private:
  std::wstring m_Engine;
};

// The page of a picture, while it is interpreted.
constexpr std::string_view PageName = "picture.pdf";
// The pages of a merge, while they are interpreted.
constexpr std::string_view MergedName = "merged.pdf";

std::string PagesNote(const server::JobQueue& queue, const server::Job& job) {
  return queue.DirectoryOf(job.id) + "/pages";
}

// Pages of an earlier run of this job that was killed before the queue knew of them.
void RemoveEarlierPages(const server::JobQueue& queue, const server::Job& job) {
  const std::wstring note = os::FromNative(PagesNote(queue, job));
  const auto name = os::ReadWholeFile(note, 1024);
  if (!name) return;
  RemoveKeptPages(*name);
  static_cast<void>(os::RemoveFile(note));
}

void Fill(CJobTicket& ticket, const server::Job& job, const Invocation& invocation,
          const std::string& copy) {
  ticket.m_JobName = os::WideFromUtf8(job.title);
  ticket.SetJobFile(os::FromNative(copy));
  OrEnd(ExitStatus::WrongUse, ApplySettings(ticket.m_JobData, invocation, TicketKind::Print));
  const PrintMode mode = ModeOrEnd(invocation.ValueOr(OptionId::Mode, DefaultMode));
  CJobData& settings = ticket.m_JobData;
  settings.PrinterName = os::WideFromUtf8(job.device);
  settings.PrintModeFolder = os::WideFromUtf8(mode.folder);
  settings.PrintModeName = os::WideFromUtf8(mode.name);
  settings.SpoolRequested = true;
  settings.SpoolAllowed = true;
}

// The ink of the kept pages. Pages that can't be measured are printed all the same.
std::string InkText(server::JobQueue& queue, const server::Job& job, const SpoolReservation& spool,
                    const CCFMFile& pages) {
  std::vector<PageInk> inks;
  for (const CCFMFileEntry& page : pages.Entries) {
    const std::string title = os::ToNative(std::wstring(page.FileName));
    auto ink = MeasureInk(spool.Directory() + "/" + title);
    if (!ink) {
      static_cast<void>(queue.AddMessage(job.id, "the ink is not known: " + Describe(ink.Error())));
      return {};
    }
    inks.push_back(*std::move(ink));
  }
  return TextOfInk(inks);
}

// The pages of `file`, which is the job's own or was made of it.
Expected<void> Interpret(server::JobQueue& queue, const server::Job& job, const std::string& file) {
  const Invocation invocation = InvocationOf(job);
  const PdfOptions pdf = OrEnd(ExitStatus::WrongUse, PdfOptions::Apply(invocation));
  const QueuedInput queued =
      OrEnd(ExitStatus::BadInput,
            QueuedInput::Prepare(file, queue.DirectoryOf(job.id) + "/" + std::string(PageName)));
  const InputFile input = OrEnd(ExitStatus::BadInput, InspectInput(queued.Path()));
  RemoveEarlierPages(queue, job);
  auto spool =
      OrEnd(ExitStatus::JobFailed, SpoolReservation::Create("job-" + std::to_string(job.id)));
  OrEnd(ExitStatus::JobFailed,
        os::ReplaceFile(os::FromNative(PagesNote(queue, job)), spool.Name(), os::Access::Private));
  const JobDirectory directory = OrEnd(ExitStatus::NotInstalled, JobDirectory::Create(false));
  const std::string copy = OrEndByCode(
      ExitStatus::JobFailed, directory.CopyIn(input.path, spool.Name() + input.extension));
  PrintTicket ticket;
  Fill(ticket, job, invocation, copy);
  JobRecord record;
  TicketEnd end;
  {
    const StagedSpool staged;
    const NoDelivery none;
    end = RunTicket(queue, job, ticket, ticket, record);
    RemoveOwnPages();
  }
  if (end.kind != TicketEnd::Kind::Done) return ReportUndone(queue, job, end);
  const auto pages = static_cast<int>(ticket.m_CFMFile.Entries.size());
  OrEnd(ExitStatus::JobFailed, spool.Publish(ticket.m_CFMFile));
  return queue.SetReady(job.id, spool.Name(), pages, InkText(queue, job, spool, ticket.m_CFMFile));
}

Expected<void> InterpretMerge(server::JobQueue& queue, const server::Job& job) {
  // Wrong options of the print end the job before the merge's time is spent.
  CheckPrintOptions(InvocationOf(job));
  const std::string pages = queue.DirectoryOf(job.id) + "/" + std::string(MergedName);
  const TicketEnd end = MakeMergedPages(queue, job, pages);
  const auto reported = end.kind == TicketEnd::Kind::Done ? Interpret(queue, job, pages)
                                                          : ReportUndone(queue, job, end);
  static_cast<void>(os::RemoveFile(os::FromNative(pages)));
  return reported;
}

}  // namespace

Expected<void> InterpretJob(server::JobQueue& queue, const server::Job& job) {
  try {
    // A cut is made when its device is free: it takes no pages of the RIP.
    if (job.work == server::JobWork::Cut) return queue.SetReady(job.id, "", 0, "");
    if (job.work == server::JobWork::Merge) return InterpretMerge(queue, job);
    return Interpret(queue, job, job.file);
  } catch (const CommandError& error) {
    return queue.SetFailed(job.id, static_cast<int>(error.Status()), error.what());
  }
}

}  // namespace rastrel::cli
