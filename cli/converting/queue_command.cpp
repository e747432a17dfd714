#include "cli/converting/queue_command.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <set>
#include <vector>

#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/console/stop_signals.h"
#include "cli/converting/conversion_settings.h"
#include "cli/converting/queue_diagnosis.h"
#include "cli/converting/queue_view.h"
#include "cli/input/input_file.h"
#include "cli/installation/installation.h"
#include "cli/installation/job_directory.h"
#include "cli/job/keep_files_host.h"
#include "rastrel/conversion/prepend.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

namespace fs = std::filesystem;

std::set<fs::path> NamesIn(const std::string& directory) {
  std::set<fs::path> names;
  for (const auto& entry : fs::directory_iterator(directory)) names.insert(entry.path().filename());
  return names;
}

[[noreturn]] void FailToWriteHeader(int error) {
  throw CommandError(ExitStatus::JobFailed,
                     "the job header can't be written: " + DescribeError(error));
}

std::string HeaderBeside(const std::string& path) {
  return fs::path(path).replace_extension(".jhdr");
}

// A PDF's header lies beside it. One that the user has put there stays in force without options.
void WriteHeaderBeside(const ConversionSettings& settings, const std::string& source,
                       const std::string& copy) {
  std::error_code error;
  if (!settings.Any() && fs::exists(HeaderBeside(source), error)) {
    if (!fs::copy_file(HeaderBeside(source), HeaderBeside(copy), error))
      FailToWriteHeader(error.value());
    return;
  }
  const auto file = os::CreateForWriting(os::FromNative(HeaderBeside(copy)));
  if (!file) FailToWriteHeader(file.Error().error);
  const auto written = os::WriteAll(file->Get(), os::AnsiFromWide(settings.Header()));
  if (!written) FailToWriteHeader(written.Error().error);
}

// Puts the header in front of the copy, unless it has one and no option asks for another.
void WriteHeader(const ConversionSettings& settings, const InputFile& input,
                 const std::string& copy) {
  if (input.extension == ".pdf") {
    WriteHeaderBeside(settings, input.path, copy);
  } else if (settings.Any() || HeaderOf(copy).empty()) {
    if (!conversion::PrependToFile(os::FromNative(copy).c_str(), settings.Header()))
      FailToWriteHeader(errno);
  }
}

std::string OutputDirectory(const Invocation& invocation) {
  std::string directory = invocation.ValueOr(OptionId::Output, ".");
  std::error_code error;
  fs::create_directories(directory, error);
  if (!fs::is_directory(directory))
    throw CommandError(ExitStatus::WrongUse, "the files can't be put into '" + directory +
                                                 "': no such directory, and it can't be made");
  return directory;
}

void Move(const fs::path& from, const fs::path& to) {
  std::error_code error;
  fs::rename(from, to, error);
  if (!error) return;
  // Another file system, or a directory in the way.
  fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::overwrite_existing, error);
  if (error)
    throw CommandError(ExitStatus::JobFailed, "can't put '" + from.filename().string() +
                                                  "' into '" + to.parent_path().string() +
                                                  "': " + DescribeError(error.value()));
}

// The results of the program, moved.
std::vector<std::string> TakeResults(const std::string& directory, const std::set<fs::path>& before,
                                     const std::string& target) {
  std::vector<std::string> paths;
  for (const fs::path& name : NamesIn(directory)) {
    if (before.contains(name)) continue;
    const fs::path path = target == "." ? name : fs::path(target) / name;
    Move(fs::path(directory) / name, path);
    paths.push_back(path.string());
  }
  return paths;
}

ExitStatus WriteDone(const std::vector<std::string>& paths, bool json) {
  if (json) {
    JsonLine("done").Add("exit", 0).Add("paths", paths).Write();
  } else {
    for (const std::string& path : paths) WriteOutPath(path);
  }
  return ExitStatus::Done;
}

ExitStatus WriteCancelled(bool json) {
  if (json) {
    JsonLine("cancelled").Add("exit", static_cast<int>(ExitStatus::Cancelled)).Write();
  } else {
    WriteErrorLine("rastrel: cancelled; what was unfinished has been removed");
  }
  return ExitStatus::Cancelled;
}

[[noreturn]] void Fail() {
  const std::string why = LastErrorOfQueue();
  throw CommandError(ExitStatus::JobFailed,
                     why.empty() ? "the conversion failed; the application log in '" +
                                       RipDirectory() + "' tells more"
                                 : "the conversion failed: " + why);
}

}  // namespace

ExitStatus QueueCommand(const Invocation& invocation) {
  const bool json = invocation.Has(OptionId::Json);
  QueueView view(json);
  // A request to end is one to cancel, from the first moment on.
  const auto signals =
      OrEnd(ExitStatus::JobFailed, TakeStopSignals([&view](int) { view.RequestStop(); }));
  const ConversionSettings settings =
      OrEnd(ExitStatus::WrongUse, ReadConversionSettings(invocation));
  const InputFile input = OrEnd(ExitStatus::BadInput, InspectInput(invocation.operand, "convert"));
  OrEnd(ExitStatus::NotInstalled, MakeSureOfDataRoot());
  OrEnd(ExitStatus::NotInstalled, CheckQueueProgram());
  if (invocation.Has(OptionId::Window)) OrEnd(ExitStatus::NotInstalled, view.UseWindow());
  const std::string target = OutputDirectory(invocation);
  std::optional<KeepFilesHost> keeping;
  if (invocation.Has(OptionId::KeepPs)) keeping.emplace();
  const bool keep = KeepsFiles();

  const JobDirectory directory = OrEnd(ExitStatus::NotInstalled, JobDirectory::Create(keep));
  const std::string copy = OrEndByCode(
      ExitStatus::JobFailed, directory.CopyIn(input.path, input.safeName + input.extension));
  WriteHeader(settings, input, copy);
  const std::set<fs::path> before = NamesIn(directory.Path());
  CQProgressDlg dialog(os::FromNative(copy).c_str(), nullptr);
  const int result = view.Show(dialog);
  if (keep) WriteErrorLine("the working copy is kept in: " + directory.Path());
  if (result == host::OkCommand)
    return WriteDone(TakeResults(directory.Path(), before, target), json);
  if (view.IsCancelled()) return WriteCancelled(json);
  Fail();
}

}  // namespace rastrel::cli
