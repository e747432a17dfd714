#include "interpreter/run_start.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>
#include <vector>

#include "interpreter/password.h"
#include "interpreter/pdf_job.h"
#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/pipe.h"

namespace rastrel::interpreter {
namespace {

// Numbers of the interpreter's descriptors, by their place in ProcessRequest::descriptors.
enum Place : std::size_t {
  Pixels = 3,
  Setup,
  Prefix,
  Job,
  Prolog,
  Modes,
  Temporary,
  Planes,
  Count
};

// In this order: each uses definitions of those before it.
constexpr std::array PrologFiles{"reports.ps",   "capture.ps",   "names.ps",     "match.ps",
                                 "pdflayers.ps", "asking.ps",    "pdftext.ps",   "guard.ps",
                                 "chosen.ps",    "device.ps",    "selection.ps", "sections.ps",
                                 "painting.ps",  "lettering.ps", "cutter.ps",    "picture.ps"};
constexpr std::span<const char* const> PictureFiles{PrologFiles};
constexpr std::span<const char* const> PrintFiles = PictureFiles.first(PrologFiles.size() - 1);
constexpr std::array MeasuringFiles{"reports.ps", "guard.ps", "chosen.ps", "picture.ps",
                                    "measure.ps"};
constexpr const char* BeginFile = "begin.ps";
constexpr const char* FinishFile = "finish.ps";
constexpr const char* MediaBoxFile = "mediabox.ps";
constexpr const char* PdfPagesFile = "pdfpages.ps";

constexpr int PixelPipeSize = 1 << 20;

std::string At(Place place) { return "/dev/fd/" + std::to_string(place); }

// As an array, or null.
std::string AreaText(const std::optional<PageArea>& area) {
  if (!area) return "null";
  std::string text = "[ ";
  for (const double side : {area->left, area->bottom, area->right, area->top})
    text += os::ShortDecimal(side, 6) + " ";
  return text + "]";
}

// The values that the prolog needs before its first file. Sent through a pipe that is empty
// afterwards, so the job can't read it again.
std::string SetupText(const RunStart& start) {
  const bool pdf = start.kind == JobKind::Pdf;
  // Of a PDF the interpreter itself draws the chosen page alone.
  const std::uint64_t page = start.script.isFirstPage && !pdf ? start.page : 1;
  return "serverdict begin 0 exitserver true setglobal userdict begin\n" +
         (pdf ? PasswordText(start.pdfPassword) : std::string()) + "/rip.word (" + start.word +
         ") def\n"
         "/rip.modes (" +
         At(Modes) +
         "/) def\n"
         "/rip.errorfile (" +
         (start.reportLink.empty() ? std::string("%stderr") : At(Planes) + "/" + start.reportLink) +
         ") def\n"
         "/rip.pixelfile (" +
         At(Pixels) +
         ") def\n"
         "/rip.planefiles (" +
         At(Planes) +
         "/%04d.tif) def\n"
         "/rip.ispdf " +
         (pdf ? "true" : "false") +
         " def\n"
         "/rip.asks " +
         (start.asks ? "true" : "false") +
         " def\n"
         "/rip.askswidth " +
         (start.asksWidth ? "true" : "false") +
         " def\n"
         "/rip.area " +
         AreaText(start.area) +
         " def\n"
         "/rip.threads " +
         std::to_string(start.threads > 1 ? start.threads : 0) +
         " def\n"
         "/rip.page " +
         std::to_string(page) +
         " def\n"
         "end false setglobal\n";
}

// Of a PDF.
PageRange PagesOf(const RunStart& start) {
  if (!start.script.isFirstPage) return start.pdfPages;
  const auto page = static_cast<unsigned>(start.page);
  return {page, page};
}

std::vector<std::string> Arguments(const RunStart& start) {
  std::vector<std::string> arguments{"-dJOBSERVER",
                                     "-sstdout=%stderr",
                                     std::string("-sDEVICE=") + start.script.device,
                                     "-sOutputFile=" + At(Pixels),
                                     "--permit-file-read=" + At(Modes) + "/*",
                                     "--permit-file-write=" + At(Planes) + "/*"};
  // The prolog's painting operators go to systemdict, and it is closed again before the job begins.
  if (start.setsCutColor) arguments.emplace_back("-dWRITESYSTEMDICT");
  if (start.kind == JobKind::Eps && !start.script.isFirstPage) arguments.emplace_back("-dEPSCrop");
  // EPS without a box. The interpreter would put out a sheet of its own for it, without showpage.
  if (start.kind == JobKind::PostScript) arguments.emplace_back("-dNOEPS");
  const bool pdf = start.kind == JobKind::Pdf;
  if (pdf) {
    for (std::string& option : BoxOptions(start.pdfBox)) arguments.push_back(std::move(option));
    const PageRange pages = PagesOf(start);
    if (pages.first > 0) {
      arguments.push_back("-dFirstPage=" + std::to_string(pages.first));
      arguments.push_back("-dLastPage=" + std::to_string(pages.last));
    }
  }
  arguments.emplace_back("-f");
  arguments.push_back(At(Setup));
  const auto add = [&](const char* file) { arguments.push_back(At(Prolog) + "/" + file); };
  std::ranges::for_each(start.script.prologFiles, add);
  if (pdf && start.pdfBox == PdfBox::Media) add(MediaBoxFile);
  if (pdf && !start.script.isFirstPage) add(PdfPagesFile);
  if (start.script.runsPrefix) {
    if (start.prefix >= 0) arguments.push_back(At(Prefix));
    add(BeginFile);
  }
  arguments.push_back(At(Job));
  // A PDF ends its pages itself. Without any, showpage would make an empty one.
  if (start.script.isFirstPage && !pdf) add(FinishFile);
  return arguments;
}

Expected<os::FileDescriptor> OpenDirectory(const std::string& path) {
  os::FileDescriptor directory(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!directory.IsOpen()) return Failure{"open", path, errno};
  return directory;
}

// It opens the files and directories again by their descriptors' names, and pipes as well, but the
// walls let pipes through.
std::vector<WallPath> FilesOf(const std::vector<int>& descriptors) {
  std::vector<WallPath> files;
  for (const Place place : {Prefix, Job, Prolog, Modes, Temporary, Planes}) {
    const bool writes = place == Temporary || place == Planes;
    if (descriptors[place] < 0) continue;
    files.push_back({{}, writes ? WallAccess::Write : WallAccess::Read, descriptors[place]});
  }
  return files;
}

// A pipe that stays blocking would be waited for without end.
Expected<void> MakeNonBlocking(const os::FileDescriptor& descriptor) {
  const int flags = fcntl(descriptor.Get(), F_GETFL);
  if (flags >= 0 && fcntl(descriptor.Get(), F_SETFL, flags | O_NONBLOCK) == 0) return {};
  return Failure{"fcntl", "the interpreter's pipe", errno};
}

struct Pipes {
  os::Pipe pixels;
  os::Pipe reports;
  os::Pipe setup;
  os::Pipe job;
  os::Pipe answers;
};

Expected<Pipes> MakePipes(const std::string& setupText) {
  Pipes pipes;
  for (os::Pipe* const pipe :
       {&pipes.pixels, &pipes.reports, &pipes.setup, &pipes.job, &pipes.answers}) {
    auto made = os::MakePipe(0);
    if (!made) return made.Error();
    *pipe = std::move(*made);
  }
  fcntl(pipes.pixels.reading.Get(), F_SETPIPE_SZ, PixelPipeSize);  // a smaller one is only slower
  const auto written = os::WriteAll(pipes.setup.writing.Get(), setupText);
  if (!written) return FailureAt("setup", written.Error());
  pipes.setup.writing.Reset();
  return pipes;
}

}  // namespace

const RunScript& PrintScript() {
  static constexpr RunScript Script{"ppmraw", PrintFiles, true, false};
  return Script;
}

const RunScript& OpenPageScript() {
  static constexpr RunScript Script{"ppmraw", PrintFiles, true, true};
  return Script;
}

const RunScript& PictureScript() {
  static constexpr RunScript Script{"ppmraw", PictureFiles, true, true};
  return Script;
}

const RunScript& MeasureScript() {
  static constexpr RunScript Script{"bbox", MeasuringFiles, false, true};
  return Script;
}

Expected<RunningInterpreter> StartRun(const RunStart& start, const RunDirectory& directory,
                                      const Settings& settings, Guardian& guardian) {
  auto pipes = MakePipes(SetupText(start));
  if (!pipes) return pipes.Error();
  std::array<os::FileDescriptor, 4> directories;
  const std::array paths{start.ripDirectory + "/System/prolog",
                         start.ripDirectory + "/System/pmodes", directory.Temporary(),
                         directory.Planes()};
  for (std::size_t i = 0; i < paths.size(); ++i) {
    auto opened = OpenDirectory(paths[i]);
    if (!opened) return opened.Error();
    directories[i] = std::move(*opened);
  }
  GhostscriptRequest request;
  request.program = start.program;
  request.arguments = Arguments(start);
  request.temporary = At(Temporary);
  request.directory = directory.Temporary();
  request.limits = {settings.processorSeconds, settings.memoryMebibytes * 1024,
                    settings.totalMebibytes << 20, start.threads};
  request.descriptors.assign(Place::Count, -1);
  if (start.asks) request.descriptors[0] = pipes->answers.reading.Get();
  request.descriptors[1] = pipes->reports.writing.Get();
  request.descriptors[2] = pipes->reports.writing.Get();
  request.descriptors[Pixels] = pipes->pixels.writing.Get();
  request.descriptors[Setup] = pipes->setup.reading.Get();
  request.descriptors[Prefix] = start.prefix;
  request.descriptors[Job] = start.pdf >= 0 ? start.pdf : pipes->job.reading.Get();
  for (std::size_t i = 0; i < directories.size(); ++i) {
    request.descriptors[Prolog + i] = directories[i].Get();
  }
  request.files = FilesOf(request.descriptors);
  request.isSmall = start.isSmall;
  auto started = StartGhostscript(request, guardian);
  if (!started) return started.Error();
  RunningInterpreter interpreter{std::move(*started), std::move(pipes->pixels.reading),
                                 std::move(pipes->reports.reading), os::FileDescriptor(),
                                 std::move(pipes->answers.writing)};
  for (const os::FileDescriptor* const end : {&interpreter.pixels, &interpreter.reports})
    if (auto made = MakeNonBlocking(*end); !made) return made.Error();
  if (start.pdf < 0) {
    interpreter.job = std::move(pipes->job.writing);
    if (auto made = MakeNonBlocking(interpreter.job); !made) return made.Error();
  }
  return interpreter;
}

}  // namespace rastrel::interpreter
