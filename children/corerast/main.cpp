#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <exception>
#include <filesystem>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "children/corerast/command_line.h"
#include "children/shared/arguments.h"
#include "interpreter/cfm2_writer.h"
#include "interpreter/rip_run.h"
#include "rastrel/platform/os/file.h"

namespace rastrel::corerast {
namespace {

int Number(interpreter::ExitStatus status) { return static_cast<int>(status); }

int Report(interpreter::Reporter& reporter, const interpreter::RunFailure& failure) {
  reporter.Error(failure.sentence);
  return Number(failure.status);
}

int Report(interpreter::Reporter& reporter, const Failure& failure) {
  return Report(reporter,
                interpreter::RunFailure{interpreter::ExitStatus::Failed, Describe(failure) + "."});
}

Expected<void> WritePageList(const interpreter::RunDirectory& directory, unsigned pages) {
  const auto path = directory.ListedPath();
  if (!path) return path.Error();
  std::vector<interpreter::ListedPage> list;
  for (unsigned page = 1; page <= pages; ++page) {
    list.push_back(
        {directory.Name() + "-" + std::to_string(page), *path, interpreter::PageName(page)});
  }
  if (!os::WriteAll(STDOUT_FILENO, interpreter::FormatPageList(list))) {
    return Failure{"write", "the page list", errno};
  }
  return {};
}

// Hands the pages over. Letting go of them is the last act: whoever ends this program before finds
// nothing.
int HandOver(interpreter::Reporter& reporter, const interpreter::RunDirectory& directory,
             unsigned pages, interpreter::Guardian& guardian) {
  if (!directory.RemoveWork()) {
    return Report(reporter, Failure{"remove", directory.Temporary(), errno});
  }
  const auto written = WritePageList(directory, pages);
  if (!written) return Report(reporter, written.Error());
  if (!guardian.ReleaseAll()) return Report(reporter, Failure{"release", "the pages", errno});
  return Number(interpreter::ExitStatus::Done);
}

int Rip(const CommandLine& line, const char* program, interpreter::Reporter& reporter,
        interpreter::Guardian& guardian) {
  interpreter::RipRun::Parts parts;
  parts.install = line.install;
  parts.ripDirectory = children::ProgramDirectory(program);
  std::vector<std::string> complaints;
  parts.settings = interpreter::Settings::FromEnvironment(complaints);
  for (const std::string& complaint : complaints) reporter.Warning(complaint);

  auto job = interpreter::OpenJob(line.job);
  if (const auto* const failure = std::get_if<interpreter::RunFailure>(&job))
    return Report(reporter, *failure);
  parts.job = std::move(std::get<interpreter::JobFile>(job));
  parts.description.job = std::filesystem::path(line.job).stem().string();
  if (!line.prefix.empty()) {
    auto prefix = interpreter::OpenPrefix(line.prefix);
    if (const auto* const failure = std::get_if<interpreter::RunFailure>(&prefix)) {
      return Report(reporter, *failure);
    }
    auto& [file, title, cutter] = std::get<interpreter::PrefixFile>(prefix);
    parts.prefix = std::move(file);
    parts.cutter = cutter;
    if (!title.empty()) parts.description.job = title;
  }
  const auto directory = interpreter::RunDirectory::Make(parts.ripDirectory, guardian);
  if (!directory) return Report(reporter, directory.Error());
  interpreter::RipRun run(std::move(parts), *directory, reporter, guardian);
  if (const auto failure = run.Run()) return Report(reporter, *failure);
  if (line.install) return Number(interpreter::ExitStatus::InstallDone);
  return HandOver(reporter, *directory, run.Pages(), guardian);
}

int Main(std::span<const char* const> arguments) {
  std::signal(SIGPIPE, SIG_IGN);
  interpreter::Reporter reporter;
  reporter.Info("INITIALISING");
  try {
    const auto line = ReadCommandLine(arguments.subspan(1));
    if (const auto* const failure = std::get_if<interpreter::RunFailure>(&line)) {
      return Report(reporter, *failure);
    }
    auto guardian = interpreter::Guardian::Start(true);
    if (!guardian) return Report(reporter, guardian.Error());
    return Rip(std::get<CommandLine>(line), arguments.front(), reporter, *guardian);
  } catch (const std::exception& problem) {
    return Report(reporter,
                  interpreter::RunFailure{interpreter::ExitStatus::Failed, problem.what()});
  }
}

}  // namespace
}  // namespace rastrel::corerast

int main(int count, char** arguments) {
  if (count < 1) return 3;
  return rastrel::corerast::Main({arguments, static_cast<std::size_t>(count)});
}
