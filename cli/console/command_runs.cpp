#include "cli/console/command_runs.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "cli/console/error_message.h"
#include "cli/console/files_at_once.h"
#include "cli/console/standard_streams.h"
#include "cli/console/stop_signals.h"
#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/native_file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/wait.h"

namespace rastrel::cli {
namespace {

constexpr const char* StarterVariable =
    "RASTREL_STARTER";  // the process id of the starting command
constexpr const char* StandardInputName = "-";
constexpr std::size_t PipeSize = 65'536;
// A line without an end is passed on in pieces of this size.
constexpr std::size_t MaximumLine = std::size_t{1} << 20;

bool s_IsOneOfSeveral = false;

// One of a run's streams, whose lines are passed on as they are whole.
class Relay {
 public:
  explicit Relay(void (*write)(std::string_view)) : m_Write(write) {}

  /// Makes the pipe. The program's end is in Writing() until it is closed.
  [[nodiscard]] Expected<void> Open() {
    auto made = os::MakePipe(PipeSize);
    if (!made) return made.Error();
    m_Pipe = *std::move(made);
    return {};
  }
  [[nodiscard]] os::FileDescriptor& Writing() { return m_Pipe.writing; }
  [[nodiscard]] HANDLE Reading() const { return m_Pipe.reading.Get(); }

  /// Takes the bytes that wait in the pipe, and closes it at its end.
  void Take() {
    std::array<char, PipeSize> bytes;
    const auto got = os::ReadSome(m_Pipe.reading.Get(), bytes.data(), bytes.size());
    if (const std::size_t count = got.ValueOr(0); count > 0) {
      m_Text.append(bytes.data(), count);
      const std::size_t end = m_Text.rfind('\n');
      if (end != m_Text.npos) return Pass(end + 1);
      return m_Text.size() < MaximumLine ? void() : Pass(m_Text.size());
    }
    m_Pipe.reading.Reset();
    if (!m_Text.empty()) Pass(m_Text.size());
  }

 private:
  void Pass(std::size_t count) {
    m_Write(std::string_view(m_Text).substr(0, count));
    m_Text.erase(0, count);
  }

  void (*m_Write)(std::string_view);
  os::Pipe m_Pipe;
  std::string m_Text;  // the begin of a line
};

// The two streams of a run.
struct Relays {
  Relay output{WriteOutData};
  Relay error{WriteErrorLines};
};

Expected<os::FileDescriptor> Start(const std::vector<std::string>& arguments,
                                   bool readsStandardInput, Relays& relays) {
  for (Relay* relay : {&relays.output, &relays.error})
    if (const auto opened = relay->Open(); !opened) return opened.Error();
  const auto nothing = os::OpenForReading(L"/dev/null");
  if (!nothing) return nothing.Error();
  os::SpawnRequest request;
  request.executable = os::ExecutablePath();
  request.arguments = {"rastrel"};
  request.arguments.insert(request.arguments.end(), arguments.begin(), arguments.end());
  request.environment = EnvironmentOfRun();
  request.standardInput =
      readsStandardInput ? os::StandardHandle(os::StandardStream::Input) : nothing->Get();
  request.standardOutput = relays.output.Writing().Get();
  request.standardError = relays.error.Writing().Get();
  const auto child = os::Spawn(request);
  if (!child) return child.Error();
  relays.output.Writing().Reset();
  relays.error.Writing().Reset();
  return os::FileDescriptor(child->process);
}

// Reads both streams to their ends, and waits for the process.
Expected<os::ExitState> ReadToEnd(HANDLE process, Relays& relays) {
  for (;;) {
    const std::array handles{relays.output.Reading(), relays.error.Reading()};
    if (std::ranges::all_of(handles, [](HANDLE one) { return one == INVALID_HANDLE_VALUE; })) break;
    const std::uint32_t ready = os::WaitReadable(handles, os::Deadline::Never());
    if (ready == os::WaitFailed) return os::Terminate(process);
    (ready == os::WaitSignaledBase ? relays.output : relays.error).Take();
  }
  if (os::WaitReadable(std::array{process}, os::Deadline::Never()) == os::WaitFailed)
    return os::Terminate(process);
  auto end = os::TakeExitState(process);
  os::ReleaseEndedChildren();
  return end;
}

std::vector<std::string> ArgumentsFor(const Invocation& invocation, const std::string& file,
                                      std::span<const OptionId> without) {
  const auto row = std::ranges::find(Commands(), invocation.command, &CommandRow::id);
  std::vector<std::string> words{row->name};
  for (const auto& [id, value] : invocation.options) {
    const bool isLeftOut = id == OptionId::Jobs ||
                           std::ranges::find(without, id) != without.end() ||
                           (id == OptionId::Title && file != StandardInputName);
    if (isLeftOut) continue;
    const OptionRow& option = OptionOf(id);
    words.emplace_back(option.name);
    // Joined, so that a value may begin with a dash.
    if (*option.value != '\0') words.back() += "=" + value;
  }
  words.insert(words.end(), {"--", file});
  return words;
}

}  // namespace

std::vector<std::string> EnvironmentOfRun() {
  const std::string variable = std::string(StarterVariable) + "=";
  std::vector<std::string> entries = os::EnvironmentEntries();
  std::erase_if(entries, [&](const std::string& entry) { return entry.starts_with(variable); });
  entries.push_back(variable + std::to_string(os::CurrentProcessId()));
  return entries;
}

Expected<std::unique_ptr<CommandRuns>> CommandRuns::Create() {
  std::unique_ptr<CommandRuns> runs(new CommandRuns);
  auto signals = TakeStopSignals([made = runs.get()](int signal) { made->OnSignal(signal); });
  if (!signals) return signals.Error();
  runs->m_Signals = *std::move(signals);
  return runs;
}

CommandRuns::CommandRuns() = default;

CommandRuns::~CommandRuns() = default;

bool CommandRuns::IsStopped() const {
  const std::scoped_lock lock(m_Mutex);
  return m_Signal != 0;
}

// A run that has not yet begun to take signals is ended by it.
void CommandRuns::OnSignal(int signal) {
  const std::scoped_lock lock(m_Mutex);
  m_Signal = signal;
  for (const HANDLE process : m_Running) static_cast<void>(os::SendSignal(process, signal));
}

void CommandRuns::Add(HANDLE process) {
  const std::scoped_lock lock(m_Mutex);
  m_Running.insert(process);
  if (m_Signal != 0) static_cast<void>(os::SendSignal(process, m_Signal));
}

void CommandRuns::Remove(HANDLE process) {
  const std::scoped_lock lock(m_Mutex);
  m_Running.erase(process);
}

Expected<ExitStatus> CommandRuns::Run(const std::vector<std::string>& arguments,
                                      bool readsStandardInput) {
  if (IsStopped()) return ExitStatus::Cancelled;
  Relays relays;
  const auto process = Start(arguments, readsStandardInput, relays);
  if (!process) return FailureOf("its run can't be started: " + Describe(process.Error()));
  Add(process->Get());
  const auto end = ReadToEnd(process->Get(), relays);
  Remove(process->Get());
  if (!end) return FailureOf("its run can't be waited for: " + Describe(end.Error()));
  if (end->byItself) return static_cast<ExitStatus>(end->status);
  if (IsStopped()) return ExitStatus::Cancelled;
  return FailureOf("its run was ended by signal " + std::to_string(end->status));
}

void EndWithCommandRuns() {
  const std::string starter = os::EnvironmentValue(StarterVariable);
  if (starter.empty()) return;
  static_cast<void>(os::SetEnvironmentValue(StarterVariable, nullptr));
  s_IsOneOfSeveral = true;
  const auto id = static_cast<std::uint32_t>(std::strtoul(starter.c_str(), nullptr, 10));
  // Nobody waits for the result of a run whose starter is gone already.
  if (const auto bound = os::EndWithStarter(id); !bound)
    throw CommandError(ExitStatus::Cancelled, "the command that started this one has ended");
}

bool IsOneOfSeveral() { return s_IsOneOfSeveral; }

ExitStatus RunFileByFile(const Invocation& invocation, std::span<const OptionId> without,
                         const std::function<void(const std::string& file)>& begin) {
  const unsigned atOnce = OrEnd(ExitStatus::WrongUse, FilesAtOnce(invocation));
  const auto runs = OrEnd(ExitStatus::JobFailed, CommandRuns::Create());
  const std::vector<std::string>& files = invocation.operands;
  std::vector<ExitStatus> statuses(files.size(), ExitStatus::Cancelled);
  const auto work = [&](std::size_t index) {
    if (runs->IsStopped()) return;
    const std::string& file = files[index];
    begin(file);
    statuses[index] =
        OrEnd(ExitStatus::JobFailed,
              runs->Run(ArgumentsFor(invocation, file, without), file == StandardInputName));
  };
  const auto failed = [&](std::size_t index, const CommandError& error) {
    statuses[index] = error.Status();
    WriteErrorMessage({error.Status(), files[index] + ": " + error.what()},
                      invocation.Has(OptionId::Json));
  };
  WorkOnFiles(files.size(), atOnce, {.work = work, .failed = failed});
  if (runs->IsStopped()) return ExitStatus::Cancelled;
  const auto bad =
      std::ranges::find_if(statuses, [](ExitStatus status) { return status != ExitStatus::Done; });
  return bad == statuses.end() ? ExitStatus::Done : *bad;
}

}  // namespace rastrel::cli
