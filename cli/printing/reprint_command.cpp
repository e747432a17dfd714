#include "cli/printing/reprint_command.h"

#include <algorithm>
#include <filesystem>
#include <optional>

#include "cli/console/options.h"
#include "cli/console/values.h"
#include "cli/installation/installation.h"
#include "cli/installation/printers.h"
#include "cli/job/job_run.h"
#include "cli/printing/page_ranges.h"
#include "cli/printing/spool.h"
#include "cli/printing/ticket_file.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

void TakeSpoolEntry(CJobTicket& ticket, const SpoolEntry& entry) {
  OrEnd(ExitStatus::BadInput, CheckPrintable(entry));
  const auto pages = PagesOf(entry);
  ticket.m_JobName = os::WideFromUtf8(entry.name);
  for (const SpoolPage& page : pages)
    ticket.m_CFMFile.AddEntry(os::FromNative(entry.directory) + L"\\",
                              os::WideFromUtf8(page.title));
}

// The spool's job that a ticket's pages belong to.
std::optional<SpoolEntry> EntryOfPages(const CCFMFile& pages) {
  const std::filesystem::path directory =
      os::ToNative(os::WithClosingBackslash(pages.Entries.front().Directory));
  return FindSpoolEntry(directory.parent_path().stem().string());
}

void CheckPagesOf(const CJobTicket& ticket, const std::string& path) {
  if (!ticket.GetCFMFileExists())
    throw CommandError(ExitStatus::BadInput, "the ticket '" + path +
                                                 "' has no pages: its job was printed without "
                                                 "--spool, and only the RIP could make them");
  for (const CCFMFileEntry& page : ticket.m_CFMFile.Entries) {
    if (os::IsDirectory(page.Directory + page.FileName)) continue;
    throw CommandError(ExitStatus::BadInput, "the pages of the ticket '" + path +
                                                 "' are gone from the spool: there is no '" +
                                                 os::ToNative(page.Directory + page.FileName) +
                                                 "'");
  }
  if (const auto entry = EntryOfPages(ticket.m_CFMFile))
    OrEnd(ExitStatus::BadInput, CheckPrintable(*entry));
}

void TakeTicket(CJobTicket& ticket, const std::string& path) {
  OrEnd(ExitStatus::BadInput, LoadTicket(ticket, path));
  if (ticket.m_Status == JS_HOLDING)
    throw CommandError(
        ExitStatus::JobFailed,
        "the job of the ticket '" + path + "' is held; `rastrel ticket release` lets it print");
  CheckPagesOf(ticket, path);
  ticket.m_Status = JS_IDLE;
}

// A name without a slash is a spool entry if there is one; all else is a ticket's path.
void TakeJob(CJobTicket& ticket, const std::string& operand) {
  if (operand.find('/') == operand.npos) {
    if (const auto entry = FindSpoolEntry(operand)) return TakeSpoolEntry(ticket, *entry);
    if (!os::Exists(os::FromNative(OrEnd(ExitStatus::WrongUse, TicketPath(operand)))))
      throw CommandError(ExitStatus::BadInput, "there is neither a job '" + operand +
                                                   "' in the spool (" + SpoolDirectory() +
                                                   ") nor a ticket file of that name here");
  }
  TakeTicket(ticket, OrEnd(ExitStatus::WrongUse, TicketPath(operand)));
}

void CheckSelection(const CJobTicket& ticket) {
  const auto count = static_cast<std::int32_t>(ticket.m_CFMFile.Entries.size());
  for (const std::int32_t page : ticket.m_Pages) {
    if (page >= 0 && page < count) continue;
    throw CommandError(ExitStatus::WrongUse, "there is no page " + std::to_string(page + 1) +
                                                 ": the job has " + std::to_string(count));
  }
}

}  // namespace

ExitStatus ReprintCommand(const Invocation& invocation) {
  JobView view(invocation.Has(OptionId::Json));
  const auto stop = OrEnd(ExitStatus::JobFailed, StopRequest::Create(&view));
  std::deque<std::int32_t> pages;
  if (invocation.Has(OptionId::Pages))
    pages = OrEnd(ExitStatus::WrongUse, ParsePages(invocation.ValueOr(OptionId::Pages, "")));
  const std::int32_t copies =
      OrEnd(ExitStatus::WrongUse, ParseCopies(invocation.ValueOr(OptionId::Copies, "1")));
  OrEnd(ExitStatus::NotInstalled, MakeSureOfDataRoot());
  const std::string printer = invocation.ValueOr(OptionId::Printer, "");
  if (invocation.Has(OptionId::Printer))
    OrEnd(ExitStatus::WrongUse,
          CheckPrinter(OrEnd(ExitStatus::NotInstalled, ReadPrinters()), printer));

  ObservedTicket ticket;
  TakeJob(ticket, invocation.operand);
  if (invocation.Has(OptionId::Pages)) ticket.m_Pages = pages;
  if (invocation.Has(OptionId::Copies)) ticket.m_Copies = copies;
  CheckSelection(ticket);
  OrEndAsNamed(SetUpOutput(invocation.ValueOr(OptionId::Output, ""), printer));
  const auto count = static_cast<int>(ticket.m_CFMFile.Entries.size());
  JobRecord record;
  const JobEnd end = RunJob(ticket, record, view, *stop);
  return ReportEnd(end, ticket, record, view, count);
}

}  // namespace rastrel::cli
