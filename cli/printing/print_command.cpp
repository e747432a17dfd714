#include "cli/printing/print_command.h"

#include <filesystem>
#include <optional>
#include <system_error>
#include <vector>

#include "cli/console/options.h"
#include "cli/console/standard_streams.h"
#include "cli/console/values.h"
#include "cli/input/input_file.h"
#include "cli/input/pdf_options.h"
#include "cli/installation/installation.h"
#include "cli/installation/job_directory.h"
#include "cli/installation/print_modes.h"
#include "cli/installation/printers.h"
#include "cli/installation/sweep.h"
#include "cli/job/job_run.h"
#include "cli/job/keep_files_host.h"
#include "cli/printing/job_settings.h"
#include "cli/printing/page_ranges.h"
#include "cli/printing/separation_print.h"
#include "cli/printing/spool_transfer.h"
#include "cli/printing/ticket_file.h"
#include "cli/printing/whole_prefix.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

/// The options, checked before anything runs.
struct PrintRequest {
  std::vector<InputFile> inputs;
  std::string printer;
  PrintMode mode;
  CJobData settings;  ///< scale, levels and cut color only
  std::int32_t copies = 1;
  std::deque<std::int32_t> pages;
  bool spool = false;
  bool planar = false;
  std::string ticketPath;  ///< empty: none is saved
};

PrintRequest CheckRequest(const Invocation& invocation) {
  PrintRequest request;
  request.copies =
      OrEnd(ExitStatus::WrongUse, ParseCopies(invocation.ValueOr(OptionId::Copies, "1")));
  if (invocation.Has(OptionId::Pages))
    request.pages =
        OrEnd(ExitStatus::WrongUse, ParsePages(invocation.ValueOr(OptionId::Pages, "")));
  OrEnd(ExitStatus::WrongUse, ApplySettings(request.settings, invocation, TicketKind::Print));
  request.spool = invocation.Has(OptionId::Spool);
  request.planar = invocation.Has(OptionId::Planar);
  if (invocation.Has(OptionId::SaveTicket))
    request.ticketPath =
        OrEnd(ExitStatus::WrongUse, TicketPath(invocation.ValueOr(OptionId::SaveTicket, "")));
  if (invocation.Has(OptionId::SaveTicket) && invocation.operands.size() > 1)
    throw CommandError(ExitStatus::WrongUse,
                       "a ticket file holds one job: print the files one by "
                       "one to save a ticket of each");
  for (const std::string& operand : invocation.operands)
    request.inputs.push_back(OrEnd(ExitStatus::BadInput, InspectInput(operand)));
  OrEnd(ExitStatus::NotInstalled, MakeSureOfDataRoot());
  request.printer = invocation.ValueOr(OptionId::Printer, DefaultPrinter);
  if (invocation.Has(OptionId::Printer))
    OrEnd(ExitStatus::WrongUse,
          CheckPrinter(OrEnd(ExitStatus::NotInstalled, ReadPrinters()), request.printer));
  request.mode = ModeOrEnd(invocation.ValueOr(OptionId::Mode, DefaultMode));
  return request;
}

void Fill(CJobTicket& ticket, const PrintRequest& request, const std::string& name,
          const std::string& copy) {
  ticket.m_JobName = os::WideFromUtf8(name);
  ticket.SetJobFile(os::FromNative(copy));
  ticket.m_Copies = request.copies;
  ticket.m_Pages = request.pages;
  ticket.SetPlanar(request.planar);
  CJobData& settings = ticket.m_JobData;
  settings = request.settings;
  settings.PrinterName = os::WideFromUtf8(request.printer);
  settings.PrintModeFolder = os::WideFromUtf8(request.mode.folder);
  settings.PrintModeName = os::WideFromUtf8(request.mode.name);
  settings.SpoolRequested = request.spool;
  settings.SpoolAllowed = request.spool;
}

// The job is printed whatever becomes of its ticket, and its files are reported first.
Expected<void> TrySave(const CJobTicket& ticket, const std::string& path, JobView& view) {
  auto saved = SaveTicket(ticket, path);
  if (saved) view.Say("saved", "the ticket is saved as", path);
  return saved;
}

JobEnd RunStaged(PrintTicket& ticket, JobRecord& record, JobView& view, StopRequest& stop) {
  const StagedSpool staged;
  const JobEnd end = RunJob(ticket, record, view, stop);
  RemoveOwnPages();
  return end;
}

void ReportKeptFiles(JobView& view, const JobDirectory& directory) {
  view.Say("kept", "the working copy and its prefix are kept in", directory.Path());
}

ExitStatus PrintFile(const PrintRequest& request, const InputFile& input, JobView& view,
                     StopRequest& stop) {
  const bool keep = KeepsFiles();
  std::optional<SpoolReservation> spool;
  if (request.spool)
    spool.emplace(OrEnd(ExitStatus::JobFailed, SpoolReservation::Create(input.safeName)));
  const JobDirectory directory = OrEnd(ExitStatus::NotInstalled, JobDirectory::Create(keep));
  const std::string& name = spool ? spool->Name() : input.safeName;
  const std::string copy =
      OrEndByCode(ExitStatus::JobFailed, directory.CopyIn(input.path, name + input.extension));

  SetUpAccess(input.access);
  PrintTicket ticket;
  Fill(ticket, request, name, copy);
  JobRecord record;
  const JobEnd end = RunStaged(ticket, record, view, stop);
  Expected<void> kept;
  if (spool && ticket.GetCFMFileExists()) {
    kept = spool->Publish(ticket.m_CFMFile);
    if (kept)
      view.Say("spooled", "the pages are kept as '" + spool->Name() + "'", spool->Directory());
  }
  Expected<void> saved;
  if (end == JobEnd::Done && !request.ticketPath.empty())
    saved = TrySave(ticket, request.ticketPath, view);
  if (keep) ReportKeptFiles(view, directory);
  const ExitStatus status = ReportEnd(end, ticket, record, view, 0);
  OrEnd(ExitStatus::JobFailed, kept);
  OrEnd(ExitStatus::JobFailed, saved);
  return status;
}

// The one file of the job, from the directory that all go to.
void WriteTheOne(const std::string& directory) {
  std::vector<std::string> files;
  std::error_code error;
  for (std::filesystem::recursive_directory_iterator entry(directory, error), last;
       !error && entry != last; entry.increment(error))
    if (entry->is_regular_file()) files.push_back(entry->path().string());
  if (files.size() != 1)
    throw CommandError(ExitStatus::JobFailed,
                       "the job made " + std::to_string(files.size()) +
                           " files, and standard output takes one: name a directory, or choose "
                           "one page with --pages");
  OrEnd(ExitStatus::JobFailed, WriteResultFile(files.front()));
}

// A place for the file that goes to standard output; nothing if the files go elsewhere.
std::optional<JobDirectory> PlaceOfResult(const Invocation& invocation) {
  if (invocation.ValueOr(OptionId::Output, "") != StandardOutputName) return {};
  if (invocation.operands.size() > 1)
    throw CommandError(ExitStatus::WrongUse,
                       "standard output takes one file: print the files one by one");
  OrEnd(ExitStatus::WrongUse, KeepOutputForResult());
  auto place = OrEnd(ExitStatus::NotInstalled, JobDirectory::Create(false));
  ShowPathAs(place.Path() + "/output", "standard output");
  return place;
}

}  // namespace

ExitStatus PrintCommand(const Invocation& invocation) {
  if (PrintsToSeparation(invocation)) return PrintToSeparation(invocation);
  const PdfOptions pdf = OrEnd(ExitStatus::WrongUse, PdfOptions::Apply(invocation));
  JobView view(invocation.Has(OptionId::Json));
  const auto stop = OrEnd(ExitStatus::JobFailed, StopRequest::Create(&view));
  const PrintRequest request = CheckRequest(invocation);
  // The pages' own description names the printer; a variable that is set would count for more.
  const std::optional<JobDirectory> result = PlaceOfResult(invocation);
  OrEndAsNamed(
      SetUpOutput(result ? result->Path() + "/output" : invocation.ValueOr(OptionId::Output, ""),
                  request.printer));
  std::optional<KeepFilesHost> keeping;
  if (invocation.Has(OptionId::KeepPs)) keeping.emplace();

  // A job that fails does not keep the files after it from being printed; its status is returned.
  ExitStatus worst = ExitStatus::Done;
  for (const InputFile& input : request.inputs) {
    if (request.inputs.size() > 1) view.Begin(input.path);
    const ExitStatus status = PrintFile(request, input, view, *stop);
    if (worst == ExitStatus::Done) worst = status;
    if (status == ExitStatus::Cancelled) return status;
  }
  if (result && worst == ExitStatus::Done) WriteTheOne(result->Path() + "/output");
  return worst;
}

}  // namespace rastrel::cli
