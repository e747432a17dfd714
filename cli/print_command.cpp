#include "cli/print_command.h"

#include <optional>

#include "cli/input_file.h"
#include "cli/installation.h"
#include "cli/job_directory.h"
#include "cli/job_run.h"
#include "cli/job_settings.h"
#include "cli/keep_files_host.h"
#include "cli/options.h"
#include "cli/page_ranges.h"
#include "cli/print_modes.h"
#include "cli/printers.h"
#include "cli/spool.h"
#include "cli/ticket_file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

/// What the options say, checked before anything runs.
struct PrintRequest {
  InputFile input;
  std::string printer;
  PrintMode mode;
  CJobData settings;  ///< scale, levels and cut colour only
  std::int32_t copies = 1;
  std::deque<std::int32_t> pages;
  bool spool = false;
  bool planar = false;
  std::string ticketPath;  ///< empty: none is saved
};

PrintRequest CheckRequest(const Invocation& invocation) {
  PrintRequest request;
  request.copies = ParseCopies(invocation.ValueOr(OptionId::Copies, "1"));
  if (invocation.Has(OptionId::Pages))
    request.pages = ParsePages(invocation.ValueOr(OptionId::Pages, ""));
  ApplySettings(request.settings, invocation, TicketKind::Print);
  request.spool = invocation.Has(OptionId::Spool);
  request.planar = invocation.Has(OptionId::Planar);
  if (invocation.Has(OptionId::SaveTicket))
    request.ticketPath = TicketPath(invocation.ValueOr(OptionId::SaveTicket, ""));
  request.input = InspectInput(invocation.operand);
  MakeSureOfDataRoot();
  request.printer = invocation.ValueOr(OptionId::Printer, DefaultPrinter);
  if (invocation.Has(OptionId::Printer)) CheckPrinter(request.printer);
  request.mode = FindMode(invocation.ValueOr(OptionId::Mode, DefaultMode));
  return request;
}

void Fill(CJobTicket& ticket, const PrintRequest& request, const std::string& copy) {
  ticket.m_JobName = os::WideFromUtf8(request.input.safeName);
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

// The job is printed whatever becomes of its ticket, and its files are told first.
std::optional<CommandError> TrySave(const CJobTicket& ticket, const std::string& path,
                                    JobView& view) {
  try {
    SaveTicket(ticket, path);
  } catch (const CommandError& error) {
    return error;
  }
  view.Say("saved", "the ticket is saved as", path);
  return std::nullopt;
}

void TellKept(JobView& view, const JobDirectory& directory) {
  view.Say("kept", "the working copy and its prefix are kept in", directory.Path());
}

}  // namespace

ExitStatus PrintCommand(const Invocation& invocation) {
  JobView view(invocation.Has(OptionId::Json));
  StopRequest stop(&view);
  const PrintRequest request = CheckRequest(invocation);
  // The pages' own description names the printer; a variable that is set would count for more.
  SetUpOutput(invocation.ValueOr(OptionId::Output, ""), request.printer);
  std::optional<KeepFilesHost> keeping;
  if (invocation.Has(OptionId::KeepPs)) keeping.emplace();
  const bool keep = KeepsFiles();

  std::optional<SpoolReservation> spool;
  if (request.spool) spool.emplace(request.input.safeName);
  const JobDirectory directory(keep);
  const std::string copy =
      directory.Take(request.input, spool ? spool->Name() : request.input.safeName);

  ObservedTicket ticket;
  Fill(ticket, request, copy);
  JobRecord record;
  const JobEnd end = RunJob(ticket, record, view, stop);
  if (spool && ticket.GetCFMFileExists()) {
    spool->Fill();
    view.Say("spooled", "the pages are kept as '" + spool->Name() + "'", spool->Directory());
  }
  std::optional<CommandError> unsaved;
  if (end == JobEnd::Done && !request.ticketPath.empty())
    unsaved = TrySave(ticket, request.ticketPath, view);
  if (keep) TellKept(view, directory);
  const ExitStatus status = TellEnd(end, ticket, record, view, 0);
  if (unsaved) throw *unsaved;
  return status;
}

}  // namespace rastrel::cli
