#include "cli/converting/queue_command.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <set>
#include <vector>

#include "cli/console/cancelled.h"
#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/console/stop_signals.h"
#include "cli/console/unwritten_file.h"
#include "cli/converting/conversion_settings.h"
#include "cli/converting/queue_diagnosis.h"
#include "cli/converting/queue_view.h"
#include "cli/input/input_file.h"
#include "cli/input/pdf_options.h"
#include "cli/installation/installation.h"
#include "cli/installation/job_directory.h"
#include "cli/job/keep_files_host.h"
#include "rastrel/conversion/prepend.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/native_file.h"
#include "rastrel/platform/os/output_file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/process.h"
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
    const auto copied =
        os::CopyNativeFile(HeaderBeside(source), HeaderBeside(copy), os::Access::Private);
    if (!copied) FailToWriteHeader(copied.Error().error);
    return;
  }
  const auto written = os::ReplaceFile(os::FromNative(HeaderBeside(copy)),
                                       os::AnsiFromWide(settings.Header()), os::Access::Private);
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
  if (directory == StandardOutputName)
    throw CommandError(ExitStatus::WrongUse,
                       "a conversion makes several files, and standard output takes one: name a "
                       "directory");
  std::error_code error;
  fs::create_directories(directory, error);
  if (!fs::is_directory(directory))
    throw CommandError(ExitStatus::WrongUse, "the files can't be put into '" + directory +
                                                 "': no such directory, and it can't be made");
  return directory;
}

// Where a result goes; a name alone for the working directory.
std::string PlaceOf(const fs::path& name, const std::string& directory) {
  return directory == "." ? name.string() : (fs::path(directory) / name).string();
}

// The results that every conversion has are looked for before it, which takes long.
void CheckPlaces(const InputFile& input, const std::string& directory, os::Existing existing) {
  if (existing != os::Existing::Refused) return;
  for (const char* ending : {".cfm", "_Color.bmp"}) {
    const auto place = os::CheckPlace(PlaceOf(input.safeName + ending, directory), existing);
    if (!place) ThrowUnwritten(place.Error());
  }
}

// Whoever may read a directory may search it.
fs::perms OfDirectory(unsigned access) {
  return static_cast<fs::perms>(access | (access & 0444U) >> 2U);
}

// The results are as private as the job. No link leads out of them: its target is not changed.
void GiveAccess(const fs::path& result, unsigned access) {
  const auto give = [access](const fs::path& path, const fs::file_status& state) {
    std::error_code ignored;
    if (fs::is_directory(state)) fs::permissions(path, OfDirectory(access), ignored);
    if (fs::is_regular_file(state)) fs::permissions(path, static_cast<fs::perms>(access), ignored);
  };
  std::error_code error;
  give(result, fs::symlink_status(result, error));
  if (!fs::is_directory(fs::symlink_status(result, error))) return;
  for (fs::recursive_directory_iterator entry(result, error), last; !error && entry != last;
       entry.increment(error)) {
    std::error_code ignored;
    give(entry->path(), entry->symlink_status(ignored));
  }
}

// The results of the program, moved: all of them or none.
std::vector<std::string> TakeResults(const std::string& directory, const std::set<fs::path>& before,
                                     const std::string& target, os::Existing existing,
                                     unsigned access) {
  std::vector<std::string> paths;
  std::vector<os::OutputFile> files;
  for (const fs::path& name : NamesIn(directory)) {
    if (before.contains(name)) continue;
    GiveAccess(fs::path(directory) / name, access & ~os::CurrentUmask());
    paths.push_back(PlaceOf(name, target));
    auto file = os::OutputFile::Take(fs::path(directory) / name, paths.back(), existing);
    if (!file) ThrowUnwritten(FailureAt(paths.back(), file.Error()));
    files.push_back(*std::move(file));
  }
  if (const auto named = os::OutputFile::CommitAll(files); !named) ThrowUnwritten(named.Error());
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

[[noreturn]] void Fail() {
  const std::string why = LastErrorOfQueue();
  throw CommandError(ExitStatus::JobFailed,
                     why.empty() ? "the conversion failed; the application log in '" +
                                       RipDirectory() + "' tells more"
                                 : "the conversion failed: " + why);
}

}  // namespace

ExitStatus QueueCommand(const Invocation& invocation) {
  const PdfOptions pdf = OrEnd(ExitStatus::WrongUse, PdfOptions::Apply(invocation));
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
  const os::Existing existing = UnnamedExisting(invocation);
  CheckPlaces(input, target, existing);
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
  if (!view.IsCancelled()) WriteQueueWarnings(json);
  if (result == host::OkCommand)
    return WriteDone(TakeResults(directory.Path(), before, target, existing, input.access), json);
  if (view.IsCancelled()) return WriteCancelled(json);
  Fail();
}

}  // namespace rastrel::cli
