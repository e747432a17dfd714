#include "cli/batch/merge_batch.h"

#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "cli/batch/batch_options.h"
#include "cli/batch/batch_run.h"
#include "cli/console/cancelled.h"
#include "cli/console/command_runs.h"
#include "cli/console/merge_parts.h"
#include "cli/console/standard_streams.h"
#include "cli/console/unwritten_file.h"
#include "cli/installation/installation.h"
#include "cli/installation/job_directory.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/output_file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::cli {
namespace {

using Json = nlohmann::json;
using Words = std::vector<std::string>;

constexpr std::uint64_t MaximumCount = 4096;  // bytes of the file

std::string OutputOf(const Invocation& invocation) {
  const std::string output = invocation.ValueOr(OptionId::OutputFile, "");
  if (output.empty() || output == StandardOutputName)
    throw CommandError(ExitStatus::WrongUse,
                       "name the file of the pages: -o FILE.png or -o FILE.svg");
  return output;
}

// The arguments of the plain command, with its names of files.
Words WordsOf(const Invocation& invocation, const std::string& output) {
  Words words{"merge"};
  AddOptions(invocation, words);
  words.push_back("--output=" + output);
  // In a part the template is not the last argument, so no `--` comes before it.
  const std::string& file = invocation.operand;
  words.push_back((file.starts_with('-') ? "./" : "") + file);
  return words;
}

Words Part(const char* word, const std::string& value, const Words& words) {
  Words part{word, value};
  part.insert(part.end(), words.begin(), words.end());
  return part;
}

// Runs a part on this machine. Its lines are the user's, unless a signal ended it: then the batch
// says so itself.
ExitStatus RunPart(const Words& words) {
  const auto runs = OrEnd(ExitStatus::JobFailed, CommandRuns::Create());
  HeldText lines;
  const auto status = [&] {
    HeldOutput held;
    auto ended = runs->Run(words, false);
    lines = held.Take();
    return ended;
  }();
  if (runs->IsStopped()) return ExitStatus::Cancelled;
  WriteHeld(lines);
  if (!status) throw CommandError(ExitStatus::JobFailed, "merge: " + Describe(status.Error()));
  return *status;
}

struct MergeCount {
  int pages = 0;
  std::string sum;
};

std::optional<MergeCount> ReadCount(const std::string& path) {
  const auto text = os::ReadWholeFile(os::FromNative(path), MaximumCount);
  const Json file = text ? Json::parse(*text, nullptr, false) : Json();
  if (!file.is_object() || file.value("format", Json()) != MergeCountFormat ||
      !file.value("pages", Json()).is_number_integer() || !file.value("sum", Json()).is_string())
    return std::nullopt;
  return MergeCount{file["pages"].get<int>(), file["sum"].get<std::string>()};
}

// As `rastrel merge` does: the name that was given is replaced, and those with a number are not.
void CheckPlaces(const std::string& output, int pages) {
  if (pages == 1) return;
  for (int page = 1; page <= pages; ++page)
    if (const auto free = os::CheckPlace(os::NumberedPath(output, static_cast<unsigned>(page)),
                                         os::Existing::Refused);
        !free)
      ThrowUnwritten(free.Error());
}

}  // namespace

ExitStatus MergeInBatch(const Invocation& invocation, PieceRunner& runner) {
  const std::string output = OutputOf(invocation);
  std::string parent = std::filesystem::path(output).parent_path().string();
  const std::string directory = FullDirectory(parent.empty() ? "." : parent);
  OrEnd(ExitStatus::NotInstalled, MakeSureOfDataRoot());
  const Words words = WordsOf(invocation, output);
  std::optional<MergeCount> count;
  {
    const auto place = OrEnd(ExitStatus::NotInstalled, JobDirectory::Create(false));
    const std::string file = place.Path() + "/count.json";
    const ExitStatus status = RunPart(Part(MergeCountWord, file, words));
    if (status == ExitStatus::Cancelled) return WriteCancelled(invocation.Has(OptionId::Json));
    if (status != ExitStatus::Done) return status;
    count = ReadCount(file);
  }
  if (!count) throw CommandError(ExitStatus::JobFailed, "merge: its pages were not counted");
  OrEnd(ExitStatus::JobFailed, os::MakePath(os::FromNative(directory)));
  if (!HasRecord(directory) && !invocation.Has(OptionId::Force)) CheckPlaces(output, count->pages);

  BatchTask task{.directory = directory,
                 .plan = {.words = Part(MergePageWord, count->sum, words), .files = {}},
                 .noun = "pages",
                 .finish = [&] { return RunPart(Part(MergeReportWord, count->sum, words)); }};
  for (int page = 1; page <= count->pages; ++page)
    task.plan.files.push_back(MergePagePrefix + std::to_string(page));
  return RunBatch(invocation, runner, task);
}

}  // namespace rastrel::cli
