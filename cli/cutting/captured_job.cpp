#include "cli/cutting/captured_job.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "cli/console/exit_status.h"
#include "cli/console/values.h"
#include "cli/cutting/cut_pipeline.h"
#include "cli/input/pdf_options.h"
#include "cli/installation/installation.h"
#include "cli/installation/job_directory.h"
#include "cli/installation/print_modes.h"
#include "cutting/capture/cut_paths_file.h"
#include "interpreter/guardian.h"
#include "pages/page_info.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::cli {
namespace {

// Coordinates are whole 1/256 pixels: 144 pixels per inch give 0.0007 mm, and a page of whole
// points has whole pixels. They go with the directory. (RGB, since the PDF code that cut paths are
// taken from knows no page in gray.)
// A picture that is printed has a resolution of its own.
constexpr int UsualResolution = 144;
constexpr int PrintResolution = 300;
constexpr int MaximumResolution = 4800;

// Whether the pixels of the page are wanted besides its paths.
bool WantsPicture(const Invocation& invocation) {
  return invocation.Has(OptionId::CutPrint) || invocation.Has(OptionId::CutShow) ||
         invocation.Has(OptionId::Bleed);
}

int ResolutionOf(const Invocation& invocation) {
  if (!WantsPicture(invocation)) return UsualResolution;
  if (!invocation.Has(OptionId::Resolution)) return PrintResolution;
  const auto number =
      WholeNumberOf("--dpi", invocation.ValueOr(OptionId::Resolution, ""), 1, MaximumResolution);
  return static_cast<int>(OrEnd(ExitStatus::WrongUse, number));
}

// Pixels are made if they are printed. A frameless page is blank.
std::string PrefixOf(const Invocation& invocation) {
  constexpr const char* Begin = "serverdict begin 0 exitserver\n";
  constexpr const char* End = "\nInitRIP\n\x04";
  const bool isPrinted = WantsPicture(invocation);
  if (!invocation.Has(OptionId::Mode))
    return Begin + ("3Color " + std::to_string(ResolutionOf(invocation))) + " dup SetXYResolution" +
           (isPrinted ? "" : " (Frameless) DeviceSelect") + End;
  if (!isPrinted || invocation.Has(OptionId::Resolution))
    throw CommandError(
        ExitStatus::WrongUse,
        "--mode is of the picture that --print makes or --show shows, and has its own "
        "resolution");
  const PrintMode mode = ModeOrEnd(invocation.ValueOr(OptionId::Mode, ""));
  return Begin + ("(%Lumiscript%pmodes/" + mode.folder + "/" + mode.name) + ") SelectPrintMode" +
         End;
}

constexpr const char* PrefixName = "capture.psp";
constexpr int MaximumPage = 1'000'000;

// Passes warnings on to the person.
class Listener final : public interpreter::RunListener {
 public:
  explicit Listener(const CutRun& run) : m_Run(run) {}
  void StateReached(interpreter::RunState) override {}
  void Progressed(unsigned) override {}
  void PageMade(unsigned) override {}
  void Warned(const std::string& sentence) override {
    m_Run.Warn(std::string_view(sentence).substr(0, sentence.find_last_not_of('.') + 1));
  }
  void Noted(const std::string&) override {}
  void Printed(const std::string&) override {}

 private:
  const CutRun& m_Run;
};

// A job that fails as a program is a bad file to a person.
Failure ForPerson(const std::string& operand, Failure failure) {
  if (failure.code == FailureCode::BadProgram) failure.code = FailureCode::BadInput;
  failure.why = "can't take the paths of '" + operand + "': " + Describe(failure);
  failure.what.clear();
  failure.where.clear();
  failure.error = 0;
  failure.line = 0;
  return failure;
}

Expected<interpreter::RunRequest> RequestOf(const CutRun& run, const CaptureWish& wish,
                                            const std::string& directory) {
  interpreter::RunRequest request;
  request.ripDirectory = RipDirectory();
  std::vector<std::string> complaints;
  request.settings = interpreter::Settings::FromEnvironment(complaints);
  for (const std::string& complaint : complaints) run.Warn(complaint);
  request.settings.parallelPages = false;
  if (run.invocation.Has(OptionId::ChosenPage)) {
    const auto page =
        WholeNumberOf("--page", run.invocation.ValueOr(OptionId::ChosenPage, ""), 1, MaximumPage);
    request.settings.page = static_cast<std::uint64_t>(OrEnd(ExitStatus::WrongUse, page));
  }
  const std::string prefix = directory + "/" + PrefixName;
  if (auto made = os::ReplaceFile(os::FromNative(prefix), PrefixOf(run.invocation)); !made)
    return made.Error();
  auto opened = interpreter::OpenPrefix(prefix);
  if (!opened) return opened.Error();
  request.prefix = std::move(opened->file);
  auto job = interpreter::OpenJob(run.invocation.operand);
  if (!job) return job.Error();
  request.job = *std::move(job);
  request.wantsCut = wish.wants ? wish.wants : [](const interpreter::AskedPaint&) { return true; };
  request.asksLineWidth = wish.asksLineWidth;
  return request;
}

// Number of the page's directory. Of a PDF the one page alone is made. PostScript is run to its
// end, since only a print crops EPS to its box and measures a page that the job leaves open.
Expected<unsigned> MakePage(interpreter::RunRequest request,
                            const interpreter::RunDirectory& directory, const CutRun& run,
                            interpreter::Guardian& guardian) {
  Listener listener(run);
  const auto wanted = static_cast<unsigned>(request.settings.page);
  if (request.job.layout.kind == interpreter::JobKind::Pdf) {
    const auto made =
        interpreter::PrintFirstPage(std::move(request), directory, listener, guardian);
    if (!made) return made.Error();
    return 1U;
  }
  const auto pages = interpreter::PrintPages(std::move(request), directory, listener, guardian);
  if (!pages) return pages.Error();
  if (wanted > *pages)
    return FailureOf(
        "it has no page " + std::to_string(wanted) + "; it has " + std::to_string(*pages),
        FailureCode::BadInput);
  return wanted;
}

Expected<std::string> PageText(const std::string& pageDirectory, const char* name) {
  return os::ReadWholeFile(os::FromNative(pageDirectory + "/" + name),
                           cutting::MaximumCutPathsBytes);
}

// The layers have a file of their own, if there are any.
Expected<cutting::CutJob> JobIn(const std::string& pageDirectory) {
  const auto paths = PageText(pageDirectory, pages::CutPathsName);
  if (!paths) return paths.Error();
  auto job = cutting::ReadCutPaths(*paths, pages::CutPathsName);
  if (!job) return job;
  const auto layers = PageText(pageDirectory, pages::CutLayersName);
  if (!layers && layers.Error().error == ENOENT) return job;
  if (!layers) return layers.Error();
  const auto read = cutting::ReadCutLayers(*layers, pages::CutLayersName, *job);
  if (!read) return read.Error();
  return job;
}

Expected<cutting::CutJob> Capture(CutRun& run, const CaptureWish& wish, const std::string& place) {
  auto request = RequestOf(run, wish, place);
  if (!request) return request.Error();
  auto guardian = interpreter::Guardian::Start(interpreter::HeldStreams::Error);
  if (!guardian) return guardian.Error();
  const auto directory = interpreter::RunDirectory::MakeIn(place, *guardian);
  if (!directory) return directory.Error();
  const auto page = MakePage(*std::move(request), *directory, run, *guardian);
  if (!page) return page.Error();
  const std::string pageDirectory = directory->Path() + "/" + pages::PageName(*page);
  if (WantsPicture(run.invocation)) {
    auto picture = OpenPagePicture(pageDirectory);
    if (!picture) return picture.Error();
    run.picture = std::make_shared<PagePicture>(*std::move(picture));
  }
  return JobIn(pageDirectory);
}

}  // namespace

Expected<cutting::CutJob> CapturedJob(CutRun& run, const CaptureWish& wish) {
  OrEnd(ExitStatus::NotInstalled, LayOutQuietly());
  const PdfOptions pdf = OrEnd(ExitStatus::WrongUse, PdfOptions::Apply(run.invocation));
  const auto place = JobDirectory::Create(false);
  if (!place) throw CommandError(ExitStatus::NotInstalled, Describe(place.Error()));
  auto job = Capture(run, wish, place->Path());
  if (!job) return ForPerson(run.invocation.operand, job.Error());
  return job;
}

}  // namespace rastrel::cli
