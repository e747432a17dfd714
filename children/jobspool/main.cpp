#include <csignal>
#include <exception>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "children/jobspool/command_line.h"
#include "children/jobspool/conversion.h"
#include "children/jobspool/queue_run.h"
#include "children/shared/arguments.h"
#include "rastrel/platform/os/file.h"

namespace rastrel::jobspool {
namespace {

using interpreter::ExitStatus;
using interpreter::RunFailure;

constexpr int OrdinaryResolution = 72;

std::optional<RunFailure> MeasureFile(const JobSource& source, const QueueContext& context) {
  const auto measured = Measure(source, context);
  if (const auto* const failure = std::get_if<RunFailure>(&measured)) return *failure;
  os::WriteToStandardError(
      FormatPageRecords(std::get<PageMeasure>(measured), source.title,
                        source.header.resolution.value_or(OrdinaryResolution)));
  return {};
}

std::optional<RunFailure> Work(const CommandLine& line, const char* program,
                               interpreter::Reporter& reporter) {
  auto guardian = interpreter::Guardian::Start(!line.measure);
  if (!guardian) return RunFailure{ExitStatus::Failed, Describe(guardian.Error()) + "."};
  std::vector<std::string> complaints;
  QueueContext context{children::ProgramDirectory(program) + "/rip",
                       interpreter::Settings::FromEnvironment(complaints), reporter, *guardian};
  for (const std::string& complaint : complaints) reporter.Warning(complaint);
  auto source = OpenJobSource(line.file);
  if (const auto* const failure = std::get_if<RunFailure>(&source)) return *failure;
  for (const std::string& complaint : std::get<JobSource>(source).header.complaints) {
    reporter.Warning(complaint);
  }
  if (line.measure) return MeasureFile(std::get<JobSource>(source), context);
  return Convert(line.file, std::get<JobSource>(source), context);
}

int Main(std::span<const char* const> arguments) {
  std::signal(SIGPIPE, SIG_IGN);
  interpreter::Reporter reporter;
  reporter.Info("INITIALISING");
  std::optional<RunFailure> failure;
  bool measure = false;
  try {
    const auto line = ReadCommandLine(arguments.subspan(1));
    if (const auto* const bad = std::get_if<RunFailure>(&line)) {
      failure = *bad;
    } else {
      measure = std::get<CommandLine>(line).measure;
      failure = Work(std::get<CommandLine>(line), arguments.front(), reporter);
    }
  } catch (const std::exception& problem) {
    failure = RunFailure{ExitStatus::Failed, problem.what()};
  }
  if (failure) reporter.Error(failure->sentence);
  // Who converts waits for this line and not for the end.
  if (!measure) reporter.Info(failure ? "CLQ_failure" : "CLQ_success");
  return static_cast<int>(failure ? failure->status : ExitStatus::Done);
}

}  // namespace
}  // namespace rastrel::jobspool

int main(int count, char** arguments) {
  if (count < 1) return 3;
  rastrel::children::OpenStandardStreams();
  return rastrel::jobspool::Main({arguments, static_cast<std::size_t>(count)});
}
