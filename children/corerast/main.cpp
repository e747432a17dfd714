#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <exception>
#include <filesystem>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "children/corerast/cfm2_writer.h"
#include "children/corerast/rip_run.h"
#include "children/shared/arguments.h"
#include "rastrel/platform/os/file.h"

namespace rastrel::corerast {
namespace {

int Number(ExitStatus status) { return static_cast<int>(status); }

int Report(Reporter& reporter, const RunFailure& failure) {
  reporter.Error(failure.sentence);
  return Number(failure.status);
}

int Report(Reporter& reporter, const os::Failure& failure) {
  return Report(reporter, RunFailure{ExitStatus::Failed, os::Describe(failure) + "."});
}

os::Outcome<os::Done> WritePageList(const RunDirectory& directory, unsigned pages) {
  const auto path = directory.ListedPath();
  if (!path) return path.Error();
  std::vector<ListedPage> list;
  for (unsigned page = 1; page <= pages; ++page) {
    list.push_back({directory.Name() + "-" + std::to_string(page), *path, PageName(page)});
  }
  if (!os::WriteAll(STDOUT_FILENO, FormatPageList(list))) {
    return os::Failure{"write", "the page list", errno};
  }
  return os::Done{};
}

// Hands the pages over. Letting go of them is the last act: whoever ends this program before finds
// nothing.
int HandOver(Reporter& reporter, const RunDirectory& directory, unsigned pages,
             children::Guardian& guardian) {
  if (!directory.RemoveWork()) {
    return Report(reporter, os::Failure{"remove", directory.Temporary(), errno});
  }
  const auto written = WritePageList(directory, pages);
  if (!written) return Report(reporter, written.Error());
  if (!guardian.ReleaseAll()) return Report(reporter, os::Failure{"release", "the pages", errno});
  return Number(ExitStatus::Done);
}

int Rip(const CommandLine& line, const char* program, Reporter& reporter,
        children::Guardian& guardian) {
  RipRun::Parts parts;
  parts.install = line.install;
  parts.ripDirectory = children::ProgramDirectory(program);
  std::vector<std::string> complaints;
  parts.settings = Settings::FromEnvironment(complaints);
  for (const std::string& complaint : complaints) reporter.Warning(complaint);

  auto job = OpenJob(line.job);
  if (const auto* const failure = std::get_if<RunFailure>(&job)) return Report(reporter, *failure);
  parts.job = std::move(std::get<JobFile>(job));
  parts.description.job = std::filesystem::path(line.job).stem().string();
  if (!line.prefix.empty()) {
    auto prefix = OpenPrefix(line.prefix);
    if (const auto* const failure = std::get_if<RunFailure>(&prefix)) {
      return Report(reporter, *failure);
    }
    auto& [file, title, cutter] = std::get<PrefixFile>(prefix);
    parts.prefix = std::move(file);
    parts.cutter = cutter;
    if (!title.empty()) parts.description.job = title;
  }
  const auto directory = RunDirectory::Make(parts.ripDirectory, guardian);
  if (!directory) return Report(reporter, directory.Error());
  RipRun run(std::move(parts), *directory, reporter, guardian);
  if (const auto failure = run.Run()) return Report(reporter, *failure);
  if (line.install) return Number(ExitStatus::InstallDone);
  return HandOver(reporter, *directory, run.Pages(), guardian);
}

int Main(std::span<const char* const> arguments) {
  std::signal(SIGPIPE, SIG_IGN);
  Reporter reporter;
  reporter.Info("INITIALISING");
  try {
    const auto line = ReadCommandLine(arguments.subspan(1));
    if (const auto* const failure = std::get_if<RunFailure>(&line)) {
      return Report(reporter, *failure);
    }
    auto guardian = children::Guardian::Start(true);
    if (!guardian) return Report(reporter, guardian.Error());
    return Rip(std::get<CommandLine>(line), arguments.front(), reporter, *guardian);
  } catch (const std::exception& problem) {
    return Report(reporter, RunFailure{ExitStatus::Failed, problem.what()});
  }
}

}  // namespace
}  // namespace rastrel::corerast

int main(int count, char** arguments) {
  if (count < 1) return 3;
  return rastrel::corerast::Main({arguments, static_cast<std::size_t>(count)});
}
