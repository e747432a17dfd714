#include <csignal>
#include <exception>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "children/jobspool/command_line.h"
#include "children/jobspool/conversion.h"
#include "children/jobspool/queue_run.h"
#include "children/shared/arguments.h"
#include "children/shared/exit_status.h"
#include "children/shared/reporter.h"
#include "interpreter/guardian.h"
#include "interpreter/interpreter.h"
#include "rastrel/platform/os/file.h"

namespace rastrel::jobspool {
namespace {

using children::ExitStatus;
using children::Reporter;

constexpr int OrdinaryResolution = 72;

Expected<void> MeasureFile(const JobSource& source, const QueueContext& context) {
  const auto measured = Measure(source, context);
  if (!measured) return measured.Error();
  os::WriteToStandardError(FormatPageRecords(
      *measured, source.title, source.header.resolution.value_or(OrdinaryResolution)));
  return {};
}

Expected<void> Work(const CommandLine& line, const char* program, Reporter& reporter) {
  auto guardian = interpreter::Guardian::Start(
      line.measure ? interpreter::HeldStreams::Error : interpreter::HeldStreams::OutputAndError);
  if (!guardian) return guardian.Error();
  std::vector<std::string> complaints;
  const QueueContext context{children::ProgramDirectory(program) + "/rip",
                             interpreter::Settings::FromEnvironment(complaints), reporter,
                             *guardian};
  for (const std::string& complaint : complaints) reporter.Warning(complaint);
  const auto source = OpenJobSource(line.file);
  if (!source) return source.Error();
  for (const std::string& complaint : source->header.complaints) reporter.Warning(complaint);
  if (line.measure) return MeasureFile(*source, context);
  return Convert(line.file, *source, context);
}

// Who converts waits for this line and not for the end.
void ReportEnd(Reporter& reporter, bool measure, bool done) {
  if (!measure) reporter.Info(done ? "CLQ_success" : "CLQ_failure");
}

ExitStatus Main(std::span<const char* const> arguments) {
  std::signal(SIGPIPE, SIG_IGN);
  Reporter reporter;
  reporter.Info("INITIALISING");
  bool measure = false;
  auto status = ExitStatus::Done;
  try {
    const auto line = ReadCommandLine(arguments.subspan(1));
    measure = line && line->measure;
    const auto done =
        line ? Work(*line, arguments.front(), reporter) : Expected<void>(line.Error());
    if (!done) {
      reporter.Error(done.Error());
      status = children::StatusOf(done.Error().code);
    }
  } catch (const std::exception& error) {
    reporter.Error(std::string_view(error.what()));
    status = ExitStatus::Failed;
  }
  ReportEnd(reporter, measure, status == ExitStatus::Done);
  return status;
}

}  // namespace
}  // namespace rastrel::jobspool

int main(int count, char** arguments) {
  if (count < 1) return 3;
  rastrel::children::OpenStandardStreams();
  const auto status = rastrel::jobspool::Main({arguments, static_cast<std::size_t>(count)});
  return static_cast<int>(status);
}
