#include "cli/batch/batch_options.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>

#include "cli/batch/batch_record.h"
#include "cli/batch/local_pieces.h"
#include "cli/batch/slurm_pieces.h"
#include "cli/console/exit_status.h"
#include "cli/console/files_at_once.h"
#include "cli/console/values.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::cli {
namespace {

constexpr const char* DefaultSeconds = "5";
constexpr int MaximumSeconds = 3600;
constexpr const char* OnLocal = "local";
constexpr const char* OnSlurm = "slurm";

// Options of the batch itself. --force is each run's: a file that is done again replaces its own
// result, and others were looked for before the first.
bool IsOwnOption(OptionId id) {
  constexpr std::array Own{
      OptionId::Jobs,           OptionId::BatchOutput,    OptionId::OutputFile,
      OptionId::PieceSeconds,   OptionId::Resume,         OptionId::Force,
      OptionId::BatchOn,        OptionId::BatchPartition, OptionId::BatchAccount,
      OptionId::BatchTimeLimit, OptionId::BatchLicenses};
  return std::ranges::find(Own, id) != Own.end();
}

// A value for the cluster, which is a word of an option there.
std::string WishOf(const Invocation& invocation, OptionId id) {
  const std::string value = invocation.ValueOr(id, "");
  if (!invocation.Has(id)) return value;
  if (value.empty())
    throw CommandError(ExitStatus::WrongUse, std::string(OptionOf(id).name) + " is empty");
  return value;
}

}  // namespace

std::unique_ptr<PieceRunner> RunnerOf(const Invocation& invocation) {
  const unsigned atOnce = OrEnd(ExitStatus::WrongUse, FilesAtOnce(invocation));
  const int seconds = OrEnd(
      ExitStatus::WrongUse,
      WholeNumberOf("--piece-seconds", invocation.ValueOr(OptionId::PieceSeconds, DefaultSeconds),
                    1, MaximumSeconds));
  const SlurmWishes wishes{.partition = WishOf(invocation, OptionId::BatchPartition),
                           .account = WishOf(invocation, OptionId::BatchAccount),
                           .timeLimit = WishOf(invocation, OptionId::BatchTimeLimit),
                           .licenses = WishOf(invocation, OptionId::BatchLicenses),
                           .atOnce = invocation.Has(OptionId::Jobs) ? atOnce : 0};
  if (invocation.ValueOr(OptionId::BatchOn, OnLocal) == OnSlurm)
    return std::make_unique<SlurmPieces>(wishes, seconds);
  for (const OptionId id : {OptionId::BatchPartition, OptionId::BatchAccount,
                            OptionId::BatchTimeLimit, OptionId::BatchLicenses})
    if (invocation.Has(id))
      throw CommandError(ExitStatus::WrongUse,
                         std::string(OptionOf(id).name) + " is for --on slurm");
  return std::make_unique<LocalPieces>(atOnce, seconds);
}

void AddOptions(const Invocation& invocation, std::vector<std::string>& words) {
  for (const auto& [id, value] : invocation.options) {
    if (IsOwnOption(id)) continue;
    const OptionRow& option = OptionOf(id);
    if (*option.value == '\0') {
      words.emplace_back(option.name);
      continue;
    }
    // Joined, so that a value may begin with a dash.
    if (id != OptionId::FontReplacement)
      words.push_back(std::string(option.name) + "=" + value);
    else
      for (const std::string& font : invocation.fonts)
        words.push_back(std::string(option.name) + "=" + font);
  }
}

std::string FullDirectory(const std::string& given) {
  // The runs may have another working directory than the reader of the record.
  std::error_code error;
  const auto full = std::filesystem::absolute(given, error);
  if (error) throw CommandError(ExitStatus::JobFailed, "'" + given + "': " + error.message());
  std::string directory = full.lexically_normal();
  return directory.ends_with('/') ? directory : directory + "/";
}

bool HasRecord(const std::string& directory) {
  return os::IsDirectory(os::FromNative(directory + BatchRecordName));
}

}  // namespace rastrel::cli
