#include "cli/printing/prefix_command.h"

#include <cstdint>
#include <memory>
#include <string>

#include "cli/console/options.h"
#include "cli/console/standard_streams.h"
#include "cli/console/unwritten_file.h"
#include "cli/input/input_file.h"
#include "cli/installation/installation.h"
#include "cli/installation/job_directory.h"
#include "cli/installation/print_modes.h"
#include "cli/installation/printers.h"
#include "cli/printing/job_settings.h"
#include "rastrel/job/vk_job_ticket.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/output_file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/prefix/ps_prefix.h"

namespace rastrel::cli {
namespace {

constexpr std::uint64_t MaximumBytes = std::uint64_t{16} << 20;
constexpr char EndOfJob = '\x04';

void RefusePreviewOptions(const Invocation& invocation) {
  for (const OptionId id : {OptionId::Dpi, OptionId::Planar, OptionId::CutOnly})
    if (invocation.Has(id))
      throw CommandError(ExitStatus::WrongUse, std::string(OptionOf(id).name) +
                                                   ": only the prefix of a preview tells of it; "
                                                   "give --preview as well");
}

std::unique_ptr<CJobTicket> TicketFor(const Invocation& invocation) {
  if (!invocation.Has(OptionId::Preview)) {
    RefusePreviewOptions(invocation);
    auto ticket = std::make_unique<CJobTicket>();
    OrEnd(ExitStatus::WrongUse, ApplySettings(ticket->m_JobData, invocation, TicketKind::Print));
    return ticket;
  }
  auto ticket = std::make_unique<CVKJobTicket>();
  OrEnd(ExitStatus::WrongUse, ApplySettings(ticket->m_JobData, invocation, TicketKind::Preview));
  OrEnd(ExitStatus::WrongUse, ApplyPreview(*ticket, invocation));
  return ticket;
}

void Select(CJobData& settings, const Invocation& invocation) {
  const std::string printer = invocation.ValueOr(OptionId::Printer, DefaultPrinter);
  if (invocation.Has(OptionId::Printer))
    OrEnd(ExitStatus::WrongUse,
          CheckPrinter(OrEnd(ExitStatus::NotInstalled, ReadPrinters()), printer));
  const PrintMode mode = ModeOrEnd(invocation.ValueOr(OptionId::Mode, DefaultMode));
  settings.PrinterName = os::WideFromUtf8(printer);
  settings.PrintModeFolder = os::WideFromUtf8(mode.folder);
  settings.PrintModeName = os::WideFromUtf8(mode.name);
}

std::string BytesOf(CJobTicket& ticket, const JobDirectory& directory) {
  const std::unique_ptr<PSPrefix> prefix(ticket.GetPrefix());
  if (prefix->Generate() != 0)
    throw CommandError(ExitStatus::JobFailed,
                       "the prefix can't be written in '" + directory.Path() + "'");
  auto bytes = os::ReadWholeFile(prefix->GetPrefixPath(), MaximumBytes);
  if (!bytes)
    throw CommandError(ExitStatus::JobFailed,
                       "the prefix can't be read: " + Describe(bytes.Error()));
  // The library does not notice a disk that takes only a part.
  if (bytes->empty() || bytes->back() != EndOfJob)
    throw CommandError(ExitStatus::JobFailed,
                       "the prefix has no end; is there room in '" + directory.Path() + "'?");
  return std::move(*bytes);
}

void WriteFile(const std::string& path, const std::string& bytes) {
  const auto written = [&]() -> Expected<void> {
    auto file = os::OutputFile::Create(path, os::Existing::Followed);
    if (!file) return file.Error();
    if (auto filled = file->Write(bytes); !filled) return filled;
    return file->Commit();
  }();
  if (!written) ThrowUnwritten("the prefix can't be written to", FailureAt(path, written.Error()));
}

// With the end-of-job byte in letters, on a line of its own.
std::string ForALook(std::string bytes) {
  bytes.pop_back();
  return bytes + "<04>\n";
}

}  // namespace

ExitStatus PrefixCommand(const Invocation& invocation) {
  const std::unique_ptr<CJobTicket> ticket = TicketFor(invocation);
  const InputFile input = OrEnd(ExitStatus::BadInput, InspectInput(invocation.operand));
  OrEnd(ExitStatus::NotInstalled, MakeSureOfDataRoot());
  Select(ticket->m_JobData, invocation);
  const JobDirectory directory = OrEnd(ExitStatus::NotInstalled, JobDirectory::Create(false));
  ticket->SetJobFile(os::FromNative(directory.Path() + "/" + input.safeName + input.extension));
  const std::string bytes = BytesOf(*ticket, directory);
  if (invocation.ValueOr(OptionId::OutputFile, "") == StandardOutputName) {
    OrEnd(ExitStatus::WrongUse, KeepOutputForResult());
    OrEnd(ExitStatus::JobFailed, WriteResult(bytes));
  } else if (invocation.Has(OptionId::OutputFile)) {
    WriteFile(invocation.ValueOr(OptionId::OutputFile, ""), bytes);
  } else {
    WriteOutData(ForALook(bytes));
  }
  return ExitStatus::Done;
}

}  // namespace rastrel::cli
