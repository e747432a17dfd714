#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <exception>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "children/corerast/command_line.h"
#include "children/corerast/page_list.h"
#include "children/corerast/taken_tiff.h"
#include "children/shared/arguments.h"
#include "children/shared/exit_status.h"
#include "children/shared/reporter.h"
#include "interpreter/guardian.h"
#include "interpreter/interpreter.h"
#include "pages/page_info.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/owner.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/reaper.h"

namespace rastrel::corerast {
namespace {

using children::ExitStatus;
using children::Reporter;
using interpreter::Guardian;
using interpreter::RunDirectory;

Expected<void> WritePageList(const RunDirectory& directory, unsigned pages) {
  const auto path = ListedPath(directory.Parent(), directory.Name());
  if (!path) return path.Error();
  std::vector<ListedPage> list;
  for (unsigned page = 1; page <= pages; ++page) {
    list.push_back({directory.Name() + "-" + std::to_string(page), *path, pages::PageName(page)});
  }
  auto written = os::WriteAll(STDOUT_FILENO, FormatPageList(list));
  if (!written) return FailureAt("the page list", written.Error());
  return written;
}

// The program that started this one. Asked at the beginning: the children of a program that was
// killed meanwhile are another's, which knows nothing of their pages.
using Starter = Expected<os::ProcessIdentity>;
Starter FindStarter() { return os::IdentityOfProcess(os::StarterProcessId()); }

// Hands the pages over to the starter. If it ends without having taken them, others may remove
// them. Letting go of them is the last act: whoever ends this program before finds nothing.
Expected<void> HandOver(const RunDirectory& directory, unsigned pages, const Starter& starter,
                        Guardian& guardian) {
  if (const auto removed = directory.RemoveWork(); !removed) return removed;
  if (starter) static_cast<void>(os::WriteOwner(directory.Path(), *starter));
  if (const auto written = WritePageList(directory, pages); !written) return written;
  if (!guardian.ReleaseAll()) return Failure{"release", "the pages", errno};
  return {};
}

// The permissions of the pages' output. A starter that hands over a private copy of the job sets
// the variable to those of the job itself.
std::optional<unsigned> AccessOf(int job) {
  const std::string given = os::EnvironmentValue("RASTREL_ACCESS");
  unsigned bits = 0;
  const char* const end = given.data() + given.size();
  const auto [stop, error] = std::from_chars(given.data(), end, bits, 8);
  struct stat state {};
  if (given.empty() || error != std::errc() || stop != end) {
    if (fstat(job, &state) != 0) return {};
    bits = state.st_mode;
  }
  return (bits & 0666U) | 0600U;
}

Expected<interpreter::RunRequest> RequestOf(const CommandLine& line, const char* program,
                                            Reporter& reporter) {
  interpreter::RunRequest request;
  request.ripDirectory = children::ProgramDirectory(program);
  std::vector<std::string> complaints;
  request.settings = interpreter::Settings::FromEnvironment(complaints);
  for (const std::string& complaint : complaints) reporter.Warning(complaint);
  auto job = interpreter::OpenJob(line.job);
  if (!job) return job.Error();
  request.job = std::move(*job);
  request.access = AccessOf(request.job.file.Get());
  request.keepsTiff = true;
  request.takesTiff = PrintersThatTakeTiff();
  request.title = std::filesystem::path(line.job).stem().string();
  if (line.prefix.empty()) return request;
  auto prefix = interpreter::OpenPrefix(line.prefix);
  if (!prefix) return prefix.Error();
  request.prefix = std::move(prefix->file);
  request.setsCutColor = prefix->setsCutColor;
  if (!prefix->title.empty()) request.title = prefix->title;
  return request;
}

Expected<void> Rip(const CommandLine& line, const char* program, Reporter& reporter,
                   Guardian& guardian) {
  const Starter starter = FindStarter();
  auto request = RequestOf(line, program, reporter);
  if (!request) return request.Error();
  const auto directory = RunDirectory::Make(request->ripDirectory, guardian);
  if (!directory) return directory.Error();
  if (line.install) {
    return interpreter::RunInstallJob(std::move(*request), *directory, reporter, guardian);
  }
  const auto pages = interpreter::PrintPages(std::move(*request), *directory, reporter, guardian);
  if (!pages) return pages.Error();
  return HandOver(*directory, *pages, starter, guardian);
}

ExitStatus StatusOf(const Failure& failure, bool install) {
  if (install && failure.code == FailureCode::BadProgram) return ExitStatus::BadInput;
  return children::StatusOf(failure.code);
}

ExitStatus Work(const CommandLine& line, const char* program, Reporter& reporter) {
  auto guardian = Guardian::Start(interpreter::HeldStreams::OutputAndError);
  // The failure is reported while the guardian still holds the files to be removed.
  const auto done =
      guardian ? Rip(line, program, reporter, *guardian) : Expected<void>(guardian.Error());
  if (done) return line.install ? ExitStatus::InstallDone : ExitStatus::Done;
  reporter.Error(done.Error());
  return StatusOf(done.Error(), line.install);
}

ExitStatus Main(std::span<const char* const> arguments) {
  std::signal(SIGPIPE, SIG_IGN);
  Reporter reporter;
  reporter.Info("INITIALISING");
  try {
    const auto line = ReadCommandLine(arguments.subspan(1));
    if (line) return Work(*line, arguments.front(), reporter);
    reporter.Error(line.Error());
    return children::StatusOf(line.Error().code);
  } catch (const std::exception& error) {
    reporter.Error(std::string_view(error.what()));
    return ExitStatus::Failed;
  }
}

}  // namespace
}  // namespace rastrel::corerast

int main(int count, char** arguments) {
  if (count < 1) return 3;
  const auto status = rastrel::corerast::Main({arguments, static_cast<std::size_t>(count)});
  return static_cast<int>(status);
}
