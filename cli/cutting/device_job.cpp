#include "cli/cutting/device_job.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "children/shared/delivery_command.h"
#include "cli/console/cancelled.h"
#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/console/stop_signals.h"
#include "cutting/device/sender.h"
#include "interpreter/guardian.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/output_file.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/private_directory.h"
#include "rastrel/platform/os/terminal.h"
#include "rastrel/platform/os/trusted_file.h"
#include "rastrel/platform/os/wait.h"

namespace rastrel::cli {
namespace {

constexpr char ControlC = 3;

/// A person at the job: signals, keys, and the line that shows how far it is.
class Attendant {
 public:
  explicit Attendant(const Invocation& invocation)
      : m_IsJson(invocation.Has(OptionId::Json)),
        m_ShowsLine(os::IsTerminal(os::StandardHandle(os::StandardStream::Error))) {}
  ~Attendant() {
    m_Keys.reset();
    m_Signals.reset();
    ClearLine();
  }
  Attendant(const Attendant&) = delete;
  Attendant& operator=(const Attendant&) = delete;

  /// REQUIRES: the process has one thread.
  void Begin() {
    m_Stop.Reset(OrEnd(ExitStatus::JobFailed, os::CreateSemaphoreHandle(0)));
    m_Signals = OrEnd(ExitStatus::JobFailed, TakeStopSignals([this](int) { Cancel(); }));
    if (m_ShowsLine && !m_IsJson)
      m_Keys = os::TerminalKeys::Take(os::StandardHandle(os::StandardStream::Input));
  }

  cutting::SendControl Control() {
    cutting::SendControl control;
    control.descriptors = {m_Stop.Get()};
    if (m_Keys) control.descriptors.push_back(m_Keys->GetHandle());
    control.order = [this] { return Order(); };
    control.onProgress = [this](const cutting::SendProgress& progress) { Show(progress); };
    return control;
  }

  children::CommandWatch Watch(std::uint64_t total) {
    // The keys of the terminal are the program's own then: nothing here reads them.
    m_Keys.reset();
    return {.stop = m_Stop.Get(), .onTaken = [this, total](std::uint64_t taken) {
              Show({.taken = taken, .total = total});
            }};
  }

  void ClearLine() {
    if (m_HasLine) ClearProgress();
    m_HasLine = false;
  }

 private:
  void Cancel() {
    m_IsCancelled = true;
    static_cast<void>(os::ReleaseSemaphoreHandle(m_Stop.Get()));
  }

  cutting::SendOrder Order() {
    TakeKeys();
    if (m_IsCancelled) return cutting::SendOrder::Cancel;
    return m_IsPaused ? cutting::SendOrder::Pause : cutting::SendOrder::Go;
  }

  void TakeKeys() {
    if (!m_Keys) return;
    const int keys = m_Keys->GetHandle();
    const std::vector<HANDLE> handles{keys};
    if (os::WaitReadable(handles, os::Deadline::After(std::chrono::seconds(0))) !=
        os::WaitSignaledBase) {
      return;
    }
    for (const char key : m_Keys->Read()) {
      if (key == ControlC) m_IsCancelled = true;
      if (key == 'p' || key == 'P') m_IsPaused = !m_IsPaused;
    }
    // A job outlives its terminal; the signal of the hang-up cancels it if it is not ignored.
    if (m_Keys->IsGone()) m_Keys.reset();
  }

  void Show(const cutting::SendProgress& progress) {
    const auto percent = progress.total == 0
                             ? 100
                             : static_cast<std::int64_t>(progress.taken * 100 / progress.total);
    if (percent == m_Percent && progress.isPaused == m_WasPaused) return;
    m_Percent = percent;
    m_WasPaused = progress.isPaused;
    if (m_IsJson) {
      JsonLine("progress")
          .Add("bytes", static_cast<std::int64_t>(progress.taken))
          .Add("total", static_cast<std::int64_t>(progress.total))
          .AddFlag("paused", progress.isPaused)
          .Write();
    } else if (m_ShowsLine) {
      m_HasLine = true;
      ShowProgress(std::to_string(percent) + " %, " + std::to_string(progress.taken) + " of " +
                   std::to_string(progress.total) + " bytes" +
                   (progress.isPaused ? ", paused: P goes on, Ctrl-C cancels"
                    : m_Keys          ? "; P pauses, Ctrl-C cancels"
                                      : ""));
    }
  }

  bool m_IsJson;
  bool m_ShowsLine;
  bool m_HasLine = false;
  bool m_IsPaused = false;
  bool m_WasPaused = false;
  std::int64_t m_Percent = -1;
  std::atomic<bool> m_IsCancelled = false;
  os::FileDescriptor m_Stop;
  std::unique_ptr<os::StopSignals> m_Signals;
  std::unique_ptr<os::TerminalKeys> m_Keys;
};

/// A device file that others may change must start no program.
void CheckProgram(const DeviceJob& job) {
  OrEnd(ExitStatus::JobFailed, os::CheckTrustedFile(job.devicePath));
}

/// Runs the device's program with the job as its standard input.
Expected<cutting::SendResult> RunProgramOf(const DeviceJob& job, const std::string& file,
                                           interpreter::Guardian& guardian, Attendant& attendant) {
  cutting::SendResult result{.progress = {.total = job.bytes.size()}};
  children::CommandWatch watch = attendant.Watch(job.bytes.size());
  const auto show = watch.onTaken;
  watch.onTaken = [&](std::uint64_t taken) {
    result.progress.taken = taken;
    show(taken);
  };
  const auto& reach = job.device.reach;
  const auto ran = children::RunCommand(reach.command, file, guardian,
                                        static_cast<unsigned>(reach.timeoutSeconds), watch);
  if (ran) return result;
  if (ran.Error().error == ECANCELED) {
    result.isCancelled = true;
    return result;
  }
  return FailureOf(Describe(ran.Error()) + "; it had read " +
                   std::to_string(result.progress.taken) + " of " +
                   std::to_string(job.bytes.size()) + " bytes");
}

Expected<cutting::SendResult> SendByProgram(const DeviceJob& job, Attendant& attendant) {
  auto guardian = interpreter::Guardian::Start(interpreter::HeldStreams::None);
  if (!guardian) return guardian.Error();
  attendant.Begin();
  if (!job.file.empty()) return RunProgramOf(job, job.file, *guardian, attendant);
  const auto directory = os::PrivateDirectory::Make(
      "rastrel-send-", [&](const std::string& path) { return guardian->Guard(path); });
  if (!directory) return directory.Error();
  const std::string path = directory->Path() + "/job";
  auto file = os::OutputFile::Create(path, os::Existing::Refused);
  if (!file) return file.Error();
  if (const auto written = file->Write(job.bytes); !written) return written.Error();
  if (const auto named = file->Commit(); !named) return named.Error();
  return RunProgramOf(job, path, *guardian, attendant);
}

void WriteSent(const DeviceJob& job, const cutting::SendResult& result, bool json) {
  if (json) {
    JsonLine("done")
        .Add("exit", 0)
        .Add("device", job.device.name)
        .Add("bytes", static_cast<std::int64_t>(result.progress.taken))
        .AddIfAny("path", result.path)
        .Write();
  } else if (!result.path.empty()) {
    WriteOutPath(result.path);
  }
}

}  // namespace

ExitStatus SendDeviceJob(const DeviceJob& job, const Invocation& invocation) {
  const bool json = invocation.Has(OptionId::Json);
  if (job.device.reach.by == cutting::Reach::None)
    throw CommandError(ExitStatus::BadInput,
                       "'" + job.devicePath + "' has no table [reach]: nothing can be sent there");
  Expected<cutting::SendResult> result{cutting::SendResult{}};
  {
    Attendant attendant(invocation);
    if (job.device.reach.by == cutting::Reach::Program) {
      CheckProgram(job);
      result = SendByProgram(job, attendant);
    } else {
      attendant.Begin();
      result = cutting::Send(job.device, job.bytes, job.name, attendant.Control());
    }
  }
  if (!result) throw CommandError(ExitStatus::JobFailed, Describe(result.Error()));
  if (result->isCancelled) {
    if (!json)
      WriteErrorLine("'" + job.device.name + "' took " + std::to_string(result->progress.taken) +
                     " of " + std::to_string(job.bytes.size()) + " bytes");
    return WriteCancelled(json);
  }
  WriteSent(job, *result, json);
  return ExitStatus::Done;
}

}  // namespace rastrel::cli
