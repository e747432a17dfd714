#include <optional>
#include <string>
#include <vector>

#include "cli/console/exit_status.h"
#include "cli/console/options.h"
#include "cli/console/values.h"
#include "cli/input/input_file.h"
#include "cli/installation/printers.h"
#include "cli/job/job_run.h"
#include "cli/printing/page_ranges.h"
#include "cli/printing/spool.h"
#include "cli/server/cut_run.h"
#include "cli/server/device_delivery.h"
#include "cli/server/job_observer.h"
#include "cli/server/job_options.h"
#include "cli/server/outbox.h"
#include "cli/server/worker.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "server/settings/server_settings.h"

namespace rastrel::cli {
namespace {

constexpr const char* OutputVariable = "RASTREL_OUTPUT";

// As this process was started: the engine's runs get another one.
const std::string& OutputDirectory() {
  static const std::string output = os::EnvironmentValue(OutputVariable);
  static const std::string directory = output.empty() ? os::DataRoot() + "/output" : output;
  return directory;
}

// The section that says how the device's files are made.
devices::Device SectionOf(const std::string& device) {
  const auto devices = OrEnd(ExitStatus::NotInstalled, ReadPrinters());
  const devices::Device* const section = devices::FindDevice(devices, device);
  if (section == nullptr)
    throw CommandError(ExitStatus::NotInstalled,
                       "devices.txt has no section for '" + device + "', and none for all");
  return *section;
}

void Fill(CJobTicket& ticket, const server::Job& job, const Invocation& invocation) {
  const auto entry = FindSpoolEntry(job.spool);
  if (!entry)
    throw CommandError(ExitStatus::BadInput, "the kept pages '" + job.spool + "' are gone");
  OrEnd(ExitStatus::BadInput, CheckPrintable(*entry));
  for (const SpoolPage& page : PagesOf(*entry))
    ticket.m_CFMFile.AddEntry(os::FromNative(entry->directory) + L"\\",
                              os::WideFromUtf8(page.title));
  ticket.m_JobName = os::WideFromUtf8(SafeJobName(job.title));
  ticket.m_Copies =
      OrEnd(ExitStatus::WrongUse, ParseCopies(invocation.ValueOr(OptionId::Copies, "1")));
  if (invocation.Has(OptionId::Pages))
    ticket.m_Pages =
        OrEnd(ExitStatus::WrongUse, ParsePages(invocation.ValueOr(OptionId::Pages, "")));
  ticket.SetPlanar(invocation.Has(OptionId::Planar));
}

// The engine puts the files into `output`.
TicketEnd RunEngine(server::JobQueue& queue, const server::Job& job, const std::string& output,
                    JobRecord& record) {
  ObservedTicket ticket;
  Fill(ticket, job, InvocationOf(job));
  OrEnd(ExitStatus::JobFailed, SetUpOutput(output, job.device));
  return RunTicket(queue, job, ticket, ticket, record);
}

Expected<void> FinishJob(server::JobQueue& queue, const server::Job& job,
                         const std::vector<std::string>& paths) {
  for (const std::string& path : paths)
    static_cast<void>(queue.AddMessage(job.id, "delivered " + path));
  return queue.SetDone(job.id);
}

// Has the engine, or the cut, make all files of the job in the outbox, unless an earlier run did.
// Another end than Done if it could not.
TicketEnd FillOutbox(server::JobQueue& queue, const server::Job& job, Outbox& outbox) {
  if (outbox.IsWhole()) return {TicketEnd::Kind::Done, 0, ""};
  const std::string place = OrEnd(ExitStatus::JobFailed, outbox.Begin());
  JobRecord record;
  const TicketEnd end = job.work == server::JobWork::Cut ? RunCut(queue, job, place)
                                                         : RunEngine(queue, job, place, record);
  if (end.kind == TicketEnd::Kind::Done) OrEnd(ExitStatus::JobFailed, outbox.Finish());
  return end;
}

// Files below the output directory: made aside, and moved when all are whole.
Expected<void> DeliverFiles(server::JobQueue& queue, const server::Job& job, bool overwrite) {
  Outbox outbox(queue.DirectoryOf(job.id), job.device);
  const TicketEnd end = FillOutbox(queue, job, outbox);
  if (end.kind != TicketEnd::Kind::Done) return ReportUndone(queue, job, end);
  const auto paths = OrEnd(ExitStatus::JobFailed, outbox.MoveTo(OutputDirectory(), overwrite));
  if (auto finished = FinishJob(queue, job, paths); !finished) return finished;
  // Not before: without it the files would be made, and delivered, again.
  static_cast<void>(outbox.Clear());
  return {};
}

// To a device of the server's settings, by the ways of server/delivery.
Expected<void> DeliverByWay(server::JobQueue& queue, const server::Job& job,
                            const server::DeviceSettings& device) {
  Outbox outbox(queue.DirectoryOf(job.id), job.device);
  const TicketEnd end = FillOutbox(queue, job, outbox);
  if (end.kind != TicketEnd::Kind::Done) return ReportUndone(queue, job, end);
  auto reported = DeliverToDevice(queue, job, device, OrEnd(ExitStatus::JobFailed, outbox.Files()));
  if (!reported) return reported;
  // Files that a person may want again are made again of the kept pages.
  const auto after = queue.Find(job.id);
  if (after && *after && (*after)->state != server::JobState::Delivering)
    static_cast<void>(outbox.Clear());
  return {};
}

// To a program, or to paths of their own: whatever the engine does can't be taken back.
Expected<void> DeliverAtOnce(server::JobQueue& queue, const server::Job& job) {
  if (const auto begun = queue.SetSending(job.id, 0); !begun) return queue.SetCanceled(job.id);
  JobRecord record;
  const TicketEnd end = RunEngine(queue, job, OutputDirectory(), record);
  if (end.kind == TicketEnd::Kind::Done) return FinishJob(queue, job, record.Outputs());
  if (end.kind == TicketEnd::Kind::Stopped) return {};
  // The engine says by its status that a page failed, and by its lines whether one came out; ended
  // otherwise, it may have sent one.
  const bool sentNothing = !record.MayHaveDelivered() && record.Odalis().exitStatus.value_or(0) > 0;
  if (sentNothing) return ReportUndone(queue, job, end);
  return queue.SetUncertain(job.id, -1,
                            end.kind == TicketEnd::Kind::Canceled
                                ? "canceled while it was delivered; pages may have come out"
                                : end.message + "; pages may have come out");
}

}  // namespace

Expected<void> DeliverJob(server::JobQueue& queue, const server::Job& job) {
  try {
    static_cast<void>(OutputDirectory());
    const auto settings = OrEnd(ExitStatus::WrongUse, server::SettingsOf(os::DataRoot()));
    const server::DeviceSettings device = settings.DeviceNamed(job.device);
    if (job.work == server::JobWork::Cut)
      return device.way == server::DeviceWay::Files ? DeliverFiles(queue, job, false)
                                                    : DeliverByWay(queue, job, device);
    const devices::Device section = SectionOf(job.device);
    const bool isBelowOutput = section.kind == devices::DeviceKind::File &&
                               section.pattern.BeginsWith(devices::Field::Output);
    if (device.way != server::DeviceWay::Files) {
      if (isBelowOutput) return DeliverByWay(queue, job, device);
      throw CommandError(ExitStatus::NotInstalled,
                         "devices.txt makes no files below {output} for '" + job.device + "'");
    }
    if (isBelowOutput) return DeliverFiles(queue, job, section.overwrite);
    return DeliverAtOnce(queue, job);
  } catch (const CommandError& error) {
    return queue.SetFailed(job.id, static_cast<int>(error.Status()), error.what());
  }
}

}  // namespace rastrel::cli
