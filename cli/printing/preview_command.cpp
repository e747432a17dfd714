#include "cli/printing/preview_command.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>

#include "cli/console/options.h"
#include "cli/console/standard_streams.h"
#include "cli/console/terminal_picture.h"
#include "cli/console/unwritten_file.h"
#include "cli/input/input_file.h"
#include "cli/input/pdf_options.h"
#include "cli/installation/installation.h"
#include "cli/installation/job_directory.h"
#include "cli/installation/printers.h"
#include "cli/job/job_run.h"
#include "cli/job/keep_files_host.h"
#include "cli/printing/job_settings.h"
#include "cli/printing/preview_files.h"
#include "cli/printing/whole_prefix.h"
#include "rastrel/platform/os/output_file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

constexpr std::size_t PicturesShown = 4;
constexpr const char* CantBeWritten = "the preview can't be written to";

devices::FileFormat FormatOf(const std::string& target) {
  if (target == StandardOutputName) return devices::FileFormat::Png;
  const std::string extension = std::filesystem::path(target).extension();
  if (extension == ".tif" || extension == ".tiff") return devices::FileFormat::Tiff;
  if (extension == ".png") return devices::FileFormat::Png;
  throw CommandError(ExitStatus::WrongUse,
                     "a preview needs the name of its file, which ends in "
                     ".tif, .tiff or .png, as in -o out.tif");
}

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

// Only the first file's name is known before the job has run.
void CheckTarget(const std::string& target) {
  const std::filesystem::path folder = std::filesystem::path(target).parent_path();
  std::error_code error;
  if (!folder.empty() && !std::filesystem::is_directory(folder, error))
    throw CommandError(ExitStatus::WrongUse, "the preview can't be put into '" + folder.string() +
                                                 "': no such directory");
  if (const auto place = os::CheckPlace(target, os::Existing::Followed); !place)
    ThrowUnwritten(CantBeWritten, place.Error());
}

// The files are outputs to all observers only now.
void Deliver(PreviewFiles& files, const Invocation& invocation, JobRecord& record, JobView& view) {
  if (!files.Fault().empty()) throw CommandError(ExitStatus::JobFailed, files.Fault());
  if (const auto delivered = files.Deliver(UnnamedExisting(invocation)); !delivered)
    ThrowUnwritten(CantBeWritten, delivered.Error());
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

}  // namespace

ExitStatus PreviewCommand(const Invocation& invocation) {
  const PdfOptions pdf = OrEnd(ExitStatus::WrongUse, PdfOptions::Apply(invocation));
  JobView view(invocation.Has(OptionId::Json));
  const auto stop = OrEnd(ExitStatus::JobFailed, StopRequest::Create(&view));
  PreviewTicket ticket;
  OrEnd(ExitStatus::WrongUse, ApplySettings(ticket.m_JobData, invocation, TicketKind::Preview));
  OrEnd(ExitStatus::WrongUse, ApplyPreview(ticket, invocation));
  std::string target = invocation.ValueOr(OptionId::OutputFile, "");
  const bool toOutput = target == StandardOutputName;
  const devices::FileFormat format = FormatOf(target);
  if (toOutput) {
    OrEnd(ExitStatus::WrongUse, KeepOutputForResult());
  } else {
    CheckTarget(target);
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
  OrEnd(ExitStatus::WrongUse, SetUpOutput(directory.Path() + "/output", printer));
  SetUpAccess(input.access);
  ticket.m_JobName = os::WideFromUtf8(input.safeName);
  const std::string copy = OrEndByCode(
      ExitStatus::JobFailed, directory.CopyIn(input.path, input.safeName + input.extension));
  ticket.SetJobFile(os::FromNative(copy));
  ticket.m_JobData.PrinterName = os::WideFromUtf8(printer);
  if (toOutput) {
    target = directory.Path() + "/preview.png";
    ShowPathAs(target, "standard output");
  }
  PreviewFiles files(target, input.safeName, directory.Path() + "/finished");
  ticket.SetFilter([&files](JobEvent& event) { return !files.Hold(event); });
  JobRecord record;
  const JobEnd end = RunJob(ticket, record, view, *stop);
  if (keep) view.Say("kept", "the working copy and its prefix are kept in", directory.Path());
  if (end == JobEnd::Done) Deliver(files, invocation, record, view);
  const ExitStatus status = ReportEnd(end, ticket, record, view, 0);
  if (end == JobEnd::Done && toOutput) WriteTheOne(files);
  if (end == JobEnd::Done && !toOutput && !view.IsJson()) ShowFirst(files);
  return status;
}

}  // namespace rastrel::cli
