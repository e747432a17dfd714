#include "cli/document/separate_command.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/console/cancelled.h"
#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/console/stop_signals.h"
#include "cli/console/values.h"
#include "cli/converting/queue_diagnosis.h"
#include "cli/document/separation_files.h"
#include "cli/document/separation_run.h"
#include "cli/input/input_file.h"
#include "cli/input/pdf_options.h"
#include "cli/input/standard_input.h"
#include "cli/installation/installation.h"
#include "cli/installation/job_directory.h"
#include "cli/job/terminal_views.h"
#include "host/document/notices.h"
#include "rastrel/platform/host/settings.h"
#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/native_file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

constexpr int HighestResolution = 4800;
constexpr std::uint32_t MaximumOutputFile = 260;  // characters that the library reads

// The child that separates takes the resolution from the environment.
void SetResolution(const Invocation& invocation) {
  const std::string dpi = invocation.ValueOr(OptionId::SeparationDpi, "");
  if (dpi.empty()) return;
  OrEnd(ExitStatus::WrongUse, WholeNumberOf("--dpi", dpi, 1, HighestResolution));
  OrEnd(ExitStatus::JobFailed, os::SetEnvironmentValue("RASTREL_SEPARATION_DPI", dpi.c_str()));
}

// The job that was printed to the separation printer last. It goes when it was taken, as the
// setting "Delete" has it.
class PrintedJob {
 public:
  PrintedJob() {
    wchar_t file[MaximumOutputFile + 1] = {};
    GetStringKorvane(L"Separation", L"Output File", file, MaximumOutputFile + 1, DS_USER, nullptr);
    m_File = file;
    if (m_File.empty() || !os::Exists(m_File))
      throw CommandError(ExitStatus::BadInput,
                         "nothing is printed to 'Separation': name a file, or print one with "
                         "`rastrel print FILE --printer Separation`");
  }
  ~PrintedJob() {
    if (GetIntKorvane(L"Separation", L"Delete", 1, DS_USER, nullptr) != 0)
      static_cast<void>(os::RemoveFile(m_File));
  }
  PrintedJob(const PrintedJob&) = delete;
  PrintedJob& operator=(const PrintedJob&) = delete;

  [[nodiscard]] std::string Path() const { return os::ToNative(m_File); }

 private:
  std::wstring m_File;
};

// The operand's path: of standard input that of a copy in the directory.
std::string InputPath(const Invocation& invocation, std::optional<JobDirectory>& directory,
                      std::optional<PrintedJob>& printed) {
  if (!invocation.hasOperand) return printed.emplace().Path();
  if (invocation.operand != StandardInputOperand) return invocation.operand;
  directory.emplace(OrEnd(ExitStatus::NotInstalled, JobDirectory::Create(false)));
  return OrEnd(ExitStatus::BadInput,
               TakeStandardInput(directory->Path(), invocation.ValueOr(OptionId::Title, "")));
}

void WriteJson(const std::vector<SeparatedPlane>& planes) {
  std::vector<std::string> paths;
  for (const SeparatedPlane& plane : planes) {
    JsonLine("plane")
        .Add("name", plane.name)
        .Add("colour", plane.color)
        .Add("page", plane.page)
        .Add("width", plane.width)
        .Add("height", plane.height)
        .AddNumber("dpi", plane.xResolution)
        .AddNumber("coverage", plane.coverage)
        .AddNumber("area", plane.area)
        .Add("paths", plane.files)
        .Write();
    for (const std::string& path : plane.files)
      if (std::ranges::find(paths, path) == paths.end()) paths.push_back(path);
  }
  JsonLine("done").Add("exit", 0).Add("paths", paths).Write();
}

void WriteTable(const std::vector<SeparatedPlane>& planes) {
  std::vector<std::string> paths;
  for (const SeparatedPlane& plane : planes) {
    WriteOutLine("page " + std::to_string(plane.page) + ": " + plane.name + ", " +
                 os::ShortDecimal(plane.coverage, 2) + " %, " + os::ShortDecimal(plane.area, 2) +
                 " cm2");
    for (const std::string& path : plane.files)
      if (std::ranges::find(paths, path) == paths.end()) paths.push_back(path);
  }
  for (const std::string& path : paths) WriteOutPath(path);
}

void WriteWarnings(const document::Notices& notices, bool json) {
  std::vector<std::string> texts = QueueWarnings().Take();
  for (const auto* list : {&notices.Texts(), &notices.Losses()})
    for (const std::wstring& text : *list) texts.push_back(os::Utf8FromWide(text));
  for (const std::string& text : texts) {
    if (json) {
      JsonLine("warning").Add("text", text).Write();
    } else {
      WriteErrorLine("warning: " + text);
    }
  }
}

}  // namespace

ExitStatus SeparateCommand(const Invocation& invocation) {
  const PdfOptions pdf = OrEnd(ExitStatus::WrongUse, PdfOptions::Apply(invocation));
  SetResolution(invocation);
  const bool json = invocation.Has(OptionId::Json);
  TerminalViews views(json);
  // A request to end is one to cancel, from the first moment on.
  const auto signals =
      OrEnd(ExitStatus::JobFailed, TakeStopSignals([&views](int) { views.RequestStop(); }));
  OrEnd(ExitStatus::NotInstalled, MakeSureOfDataRoot());
  std::optional<JobDirectory> standardInput;
  std::optional<PrintedJob> printed;
  const InputFile input =
      OrEnd(ExitStatus::BadInput,
            InspectInput(InputPath(invocation, standardInput, printed), "separate"));
  OrEnd(ExitStatus::NotInstalled, CheckQueueProgram());
  const SeparationOutput output = SeparationOutputOf(invocation);

  SeparationRun run(input.path, input.safeName);
  if (!run.Separate(views)) return WriteCancelled(json);
  std::vector<SeparatedPlane> planes = run.Planes();
  WriteSeparation(run, output, invocation, input.safeName, planes);
  WriteWarnings(run.Host().GetNotices(), json);
  if (json) {
    WriteJson(planes);
  } else {
    WriteTable(planes);
  }
  return run.Host().GetNotices().Losses().empty() ? ExitStatus::Done : ExitStatus::JobFailed;
}

}  // namespace rastrel::cli
