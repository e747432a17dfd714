#include "cli/printing/preview_command.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <optional>
#include <string>

#include "cli/console/command_runs.h"
#include "cli/console/json_line.h"
#include "cli/console/options.h"
#include "cli/console/standard_streams.h"
#include "cli/console/terminal_picture.h"
#include "cli/console/unwritten_file.h"
#include "cli/input/input_file.h"
#include "cli/input/pdf_options.h"
#include "cli/installation/installation.h"
#include "cli/installation/job_directory.h"
#include "cli/installation/printers.h"
#include "cli/installation/sweep.h"
#include "cli/job/job_run.h"
#include "cli/job/keep_files_host.h"
#include "cli/printing/job_settings.h"
#include "cli/printing/preview_files.h"
#include "cli/printing/preview_target.h"
#include "cli/printing/whole_prefix.h"
#include "rastrel/platform/os/output_file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

constexpr std::size_t PicturesShown = 4;

// A printer that makes files of the format below the directory of the job.
std::string PrinterFor(devices::FileFormat format) {
  const auto devices = OrEnd(ExitStatus::NotInstalled, ReadPrinters());
  const auto found = std::ranges::find_if(devices, [format](const devices::Device& device) {
    return device.kind == devices::DeviceKind::File && device.format == format &&
           device.printer != "*" && device.pattern.BeginsWith(devices::Field::Output);
  });
  if (found != devices.end()) return found->printer;
  throw CommandError(ExitStatus::NotInstalled, "no printer of " + DevicesFile() + " makes " +
                                                   devices::ExtensionOf(format) +
                                                   " files below {output}, which a preview needs");
}

// The files are outputs to all observers only now.
void Deliver(PreviewFiles& files, os::Existing first, os::Existing others, JobRecord& record,
             JobView& view) {
  if (!files.Fault().empty()) throw CommandError(ExitStatus::JobFailed, files.Fault());
  // An engine whose reports could not be read counts as a good one, and a device may put all pages
  // into one file.
  if (files.Names().empty() && record.PagesMade() > 0)
    throw CommandError(ExitStatus::JobFailed, "the output engine told of no file");
  if (const auto delivered = files.Deliver(first, others); !delivered)
    ThrowUnwrittenPreview(delivered.Error());
  for (const std::string& name : files.Names()) {
    JobEvent event;
    event.kind = JobEventKind::Output;
    event.originator = JTO_ODALIS;
    event.path = name;
    record.OnEvent(event);
    if (view.IsJson()) view.OnEvent(event);
  }
}

void WriteTheOne(const PreviewFiles& files) {
  if (files.Names().size() != 1)
    throw CommandError(ExitStatus::JobFailed,
                       "the preview has " + std::to_string(files.Names().size()) +
                           " files, and standard output takes one: name a file, as in -o out.png");
  OrEnd(ExitStatus::JobFailed, WriteResultFile(files.Names().front()));
}

// Shows the first of the pictures, if the terminal can; all names were printed as they were made.
void ShowFirst(const PreviewFiles& files) {
  for (std::size_t i = 0; i < std::min(files.Names().size(), PicturesShown); ++i) {
    if (!ShowPicture(os::FromNative(files.Names()[i]))) return;
  }
}

// The settings of the jobs, checked before anything runs.
void FillTicket(PreviewTicket& ticket, const Invocation& invocation) {
  OrEnd(ExitStatus::WrongUse, ApplySettings(ticket.m_JobData, invocation, TicketKind::Preview));
  OrEnd(ExitStatus::WrongUse, ApplyPreview(ticket, invocation));
}

// A file is a run of its own: the engine learns from the environment where its files go.
ExitStatus PreviewSeveral(const Invocation& invocation) {
  // A pipe with a password is read once, and all runs have it.
  const PdfOptions pdf = OrEnd(ExitStatus::WrongUse, PdfOptions::Apply(invocation));
  const bool json = invocation.Has(OptionId::Json);
  PreviewTicket ticket;
  FillTicket(ticket, invocation);
  CheckPreviewNames(invocation);
  const std::string any = TargetOfPreview(invocation, "name").path;
  static_cast<void>(FormatOfPreview(any));
  OrEnd(ExitStatus::NotInstalled, MakeSureOfDataRoot());
  const auto begin = [json](const std::string& file) {
    if (!json) return WriteErrorLine("drawing: " + file);
    JsonLine line("job");
    line.Add("originator", "system").Add("text", "drawing").Add("path", file).Write();
  };
  return RunFileByFile(invocation, std::array{OptionId::PasswordFile}, begin);
}

ExitStatus PreviewOne(const Invocation& invocation) {
  const PdfOptions pdf = OrEnd(ExitStatus::WrongUse, PdfOptions::Apply(invocation));
  JobView view(invocation.Has(OptionId::Json));
  const auto stop = OrEnd(ExitStatus::JobFailed, StopRequest::Create(&view));
  PreviewTicket ticket;
  FillTicket(ticket, invocation);
  const std::string name =
      SafeJobName(std::filesystem::path(invocation.operand).filename().string());
  PreviewTarget target = TargetOfPreview(invocation, name);
  const bool toOutput = target.path == StandardOutputName;
  const devices::FileFormat format = FormatOfPreview(target.path);
  if (toOutput) {
    OrEnd(ExitStatus::WrongUse, KeepOutputForResult());
  } else {
    CheckPreviewTarget(invocation, target);
  }
  const InputFile input = OrEnd(ExitStatus::BadInput, InspectInput(invocation.operand));
  OrEnd(ExitStatus::NotInstalled, MakeSureOfDataRoot());
  const std::string printer = PrinterFor(format);
  std::optional<KeepFilesHost> keeping;
  if (invocation.Has(OptionId::KeepPs)) keeping.emplace();

  const bool keep = KeepsFiles();
  if (ticket.GetPlanar() && invocation.Has(OptionId::Dpi))
    view.Say("note", "planes have the RIP's own resolution; --dpi has no effect on them");

  const JobDirectory directory = OrEnd(ExitStatus::NotInstalled, JobDirectory::Create(keep));
  OrEnd(ExitStatus::JobFailed, SetUpOutput(directory.Path() + "/output", printer));
  SetUpAccess(input.access);
  ticket.m_JobName = os::WideFromUtf8(input.safeName);
  const std::string copy = OrEndByCode(
      ExitStatus::JobFailed, directory.CopyIn(input.path, input.safeName + input.extension));
  ticket.SetJobFile(os::FromNative(copy));
  ticket.m_JobData.PrinterName = os::WideFromUtf8(printer);
  if (toOutput) {
    target.path = directory.Path() + "/preview.png";
    ShowPathAs(target.path, "standard output");
  }
  PreviewFiles files(target.path, input.safeName, directory.Path() + "/finished");
  ticket.SetFilter([&files](JobEvent& event) { return !files.Hold(event); });
  JobRecord record;
  const JobEnd end = RunJob(ticket, record, view, *stop);
  RemoveOwnPages();
  if (keep) view.Say("kept", "the working copy and its prefix are kept in", directory.Path());
  if (end == JobEnd::Done)
    Deliver(files, target.existing, UnnamedExisting(invocation), record, view);
  const ExitStatus status = ReportEnd(end, ticket, record, view, 0);
  if (end == JobEnd::Done && toOutput) WriteTheOne(files);
  if (end == JobEnd::Done && !toOutput && !view.IsJson()) ShowFirst(files);
  return status;
}

}  // namespace

ExitStatus PreviewCommand(const Invocation& invocation) {
  return invocation.operands.size() > 1 ? PreviewSeveral(invocation) : PreviewOne(invocation);
}

}  // namespace rastrel::cli
