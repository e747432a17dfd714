#include "interpreter/ghostscript.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <utility>
#include <vector>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"

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

// In this order: each uses what those before it define.
constexpr std::array PrologFiles{"reports.ps",  "capture.ps",   "match.ps",     "pdftext.ps",
                                 "guard.ps",    "device.ps",    "selection.ps", "sections.ps",
                                 "painting.ps", "lettering.ps", "cutter.ps"};
constexpr std::array MeasuringFiles{"reports.ps", "guard.ps", "picture.ps", "measure.ps"};
constexpr const char* PictureFile = "picture.ps";
constexpr const char* BeginFile = "begin.ps";
constexpr const char* FinishFile = "finish.ps";

constexpr int PixelPipeSize = 1 << 20;

std::string At(Place place) { return "/dev/fd/" + std::to_string(place); }

// What the prolog must know before its first file. Sent through a pipe that is empty afterwards, so
// the job can't read it again.
std::string SetupText(const std::string& word, bool pdf) {
  return "serverdict begin 0 exitserver true setglobal userdict begin\n"
         "/rip.word (" +
         word +
         ") def\n"
         "/rip.modes (" +
         At(Modes) +
         "/) def\n"
         "/rip.pixelfile (" +
         At(Pixels) +
         ") def\n"
         "/rip.planefiles (" +
         At(Planes) +
         "/%04d.tif) def\n"
         "/rip.ispdf " +
         (pdf ? "true" : "false") +
         " def\n"
         "end false setglobal\n";
}

std::vector<std::string> Arguments(const InterpreterRequest& request, const Settings& settings) {
  std::vector<std::string> arguments{"gs",
                                     "-q",
                                     "-dBATCH",
                                     "-dNOPAUSE",
                                     "-dSAFER",
                                     "-dJOBSERVER",
                                     "-sstdout=%stderr",
                                     "-K" + std::to_string(settings.memoryMebibytes * 1024),
                                     request.measure ? "-sDEVICE=bbox" : "-sDEVICE=ppmraw",
                                     "-sOutputFile=" + At(Pixels),
                                     "--permit-file-read=" + At(Modes) + "/*",
                                     "--permit-file-write=" + At(Planes) + "/*"};
  // The prolog's painting operators go to systemdict, and it is closed again before the job begins.
  if (request.cutter) arguments.emplace_back("-dWRITESYSTEMDICT");
  if (request.kind == JobKind::Eps && !request.picture) arguments.emplace_back("-dEPSCrop");
  if (request.kind == JobKind::Pdf && request.picture) {
    arguments.insert(arguments.end(), {"-dUseCropBox", "-dLastPage=1"});
  }
  arguments.emplace_back("-f");
  arguments.push_back(At(Setup));
  const auto add = [&](const char* file) { arguments.push_back(At(Prolog) + "/" + file); };
  if (request.measure) {
    std::ranges::for_each(MeasuringFiles, add);
  } else {
    std::ranges::for_each(PrologFiles, add);
    if (request.picture) add(PictureFile);
    if (request.prefix >= 0) arguments.push_back(At(Prefix));
    add(BeginFile);
  }
  arguments.push_back(At(Job));
  if (request.picture) add(FinishFile);
  return arguments;
}

// Settings of the user's that would change the interpreter's options stay outside; fonts are found
// by the others.
std::vector<std::string> Environment() {
  std::vector<std::string> environment{"TMPDIR=" + At(Temporary), "TEMP=" + At(Temporary),
                                       "LC_ALL=C"};
  for (const char* const name : {"PATH", "HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME",
                                 "XDG_CONFIG_HOME", "FONTCONFIG_FILE", "FONTCONFIG_PATH"}) {
    const std::string value = os::EnvironmentValue(name);
    if (!value.empty()) environment.push_back(std::string(name) + "=" + value);
  }
  return environment;
}

struct Pipe {
  os::FileDescriptor reading;
  os::FileDescriptor writing;
};

Expected<Pipe> MakePipe() {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return Failure{"pipe", {}, errno};
  return Pipe{os::FileDescriptor(ends[0]), os::FileDescriptor(ends[1])};
}

Expected<os::FileDescriptor> OpenDirectory(const std::string& path) {
  os::FileDescriptor directory(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!directory.IsOpen()) return Failure{"open", path, errno};
  return directory;
}

void MakeNonBlocking(const os::FileDescriptor& descriptor) {
  fcntl(descriptor.Get(), F_SETFL, fcntl(descriptor.Get(), F_GETFL) | O_NONBLOCK);
}

struct Pipes {
  Pipe pixels;
  Pipe reports;
  Pipe setup;
  Pipe job;
};

Expected<Pipes> MakePipes(const std::string& setupText) {
  Pipes pipes;
  for (Pipe* const pipe : {&pipes.pixels, &pipes.reports, &pipes.setup, &pipes.job}) {
    auto made = MakePipe();
    if (!made) return made.Error();
    *pipe = std::move(*made);
  }
  fcntl(pipes.pixels.reading.Get(), F_SETPIPE_SZ, PixelPipeSize);  // a smaller one is only slower
  if (!os::WriteAll(pipes.setup.writing.Get(), setupText)) {
    return Failure{"write", "setup", errno};
  }
  pipes.setup.writing.Reset();
  return pipes;
}

}  // namespace

std::string FindGhostscript() {
  const std::string search = os::EnvironmentValue("PATH");
  std::string_view rest = search;
  while (!rest.empty()) {
    const std::size_t end = rest.find(':');
    std::string candidate = std::string(rest.substr(0, end)) + "/gs";
    rest.remove_prefix(end == rest.npos ? rest.size() : end + 1);
    struct stat state {};
    const bool file = stat(candidate.c_str(), &state) == 0 && S_ISREG(state.st_mode);
    if (file && candidate.front() == '/' && access(candidate.c_str(), X_OK) == 0) return candidate;
  }
  return {};
}

Expected<Interpreter> StartGhostscript(const InterpreterRequest& request,
                                       const RunDirectory& directory, const Settings& settings,
                                       Guardian& guardian) {
  auto pipes = MakePipes(SetupText(request.word, request.kind == JobKind::Pdf));
  if (!pipes) return pipes.Error();
  std::array<os::FileDescriptor, 4> directories;
  const std::array paths{request.ripDirectory + "/System/prolog",
                         request.ripDirectory + "/System/pmodes", directory.Temporary(),
                         directory.Planes()};
  for (std::size_t i = 0; i < paths.size(); ++i) {
    auto opened = OpenDirectory(paths[i]);
    if (!opened) return opened.Error();
    directories[i] = std::move(*opened);
  }
  ProcessRequest process;
  process.executable = request.program;
  process.arguments = Arguments(request, settings);
  process.environment = Environment();
  process.directory = directory.Temporary();
  process.fileSizeLimit = settings.totalMebibytes << 20;
  process.processorLimit = settings.processorSeconds;
  process.descriptors.assign(Place::Count, -1);
  process.descriptors[1] = pipes->reports.writing.Get();
  process.descriptors[2] = pipes->reports.writing.Get();
  process.descriptors[Pixels] = pipes->pixels.writing.Get();
  process.descriptors[Setup] = pipes->setup.reading.Get();
  process.descriptors[Prefix] = request.prefix;
  process.descriptors[Job] = request.pdf >= 0 ? request.pdf : pipes->job.reading.Get();
  for (std::size_t i = 0; i < directories.size(); ++i) {
    process.descriptors[Prolog + i] = directories[i].Get();
  }
  auto started = GuardedProcess::Start(process, guardian);
  if (!started) return started.Error();
  Interpreter interpreter{std::move(*started), std::move(pipes->pixels.reading),
                          std::move(pipes->reports.reading), os::FileDescriptor()};
  MakeNonBlocking(interpreter.pixels);
  MakeNonBlocking(interpreter.reports);
  if (request.pdf < 0) {
    interpreter.job = std::move(pipes->job.writing);
    MakeNonBlocking(interpreter.job);
  }
  return interpreter;
}

}  // namespace rastrel::interpreter
