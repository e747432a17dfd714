#include <sys/mman.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "interpreter/interpreter.h"
#include "interpreter/settings.h"
#include "interpreter/short_run.h"
#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/system_calls.h"

namespace rastrel::interpreter {
namespace {

// A file without a name that holds the bytes: the interpreter goes back and forth in it.
Expected<os::FileDescriptor> FileOf(const std::string& bytes) {
  os::FileDescriptor file(os::Calls().memory_file("eps", MFD_CLOEXEC));
  if (!file.IsOpen()) return Failure{"memfd_create", {}, errno};
  if (const auto written = os::WriteAll(file.Get(), bytes); !written) return written.Error();
  return file;
}

using Box = std::array<double, 4>;

// Four numbers with blanks before them.
std::optional<Box> BoxFrom(std::string_view text) {
  Box box;
  for (double& side : box) {
    const std::size_t begin = text.find_first_not_of(" \t");
    if (begin == std::string_view::npos) return std::nullopt;
    text.remove_prefix(begin);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), side);
    if (error != std::errc() || !std::isfinite(side)) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  }
  return box[0] < box[2] && box[1] < box[3] ? std::optional(box) : std::nullopt;
}

// The last box in a comment.
std::optional<Box> LastBox(std::string_view file, std::string_view comment) {
  std::size_t place = file.rfind(comment);
  while (place != std::string_view::npos) {
    const std::string_view line = file.substr(place, file.find_first_of("\r\n", place) - place);
    if (const auto box = BoxFrom(line.substr(comment.size()))) return box;
    if (place == 0) break;
    place = file.rfind(comment, place - 1);
  }
  return std::nullopt;
}

// The box of a file that only says at its end how large it is: too late for the interpreter, which
// then takes a sheet of paper. Nothing where the beginning says it.
std::optional<Box> BoxAtEnd(std::string_view file) {
  constexpr std::string_view comment = "%%BoundingBox:";
  const std::size_t first = file.find(comment);
  if (first == std::string_view::npos) return std::nullopt;
  std::string_view value = file.substr(first + comment.size());
  value = value.substr(0, value.find_first_of("\r\n"));
  if (value.find("(atend)") == std::string_view::npos) return std::nullopt;
  const auto fine = LastBox(file, "%%HiResBoundingBox:");
  return fine ? fine : LastBox(file, comment);
}

std::string Points(double number) { return os::ShortDecimal(number, 4); }

std::vector<std::string> Arguments(const std::optional<Box>& box) {
  std::vector<std::string> arguments{"-sDEVICE=pdfwrite", "-sstdout=%stderr",
                                     "-sOutputFile=%stdout"};
  if (box) {
    const auto& [left, bottom, right, top] = *box;
    arguments.insert(
        arguments.end(),
        {"-dFIXEDMEDIA", "-dDEVICEWIDTHPOINTS=" + Points(right - left),
         "-dDEVICEHEIGHTPOINTS=" + Points(top - bottom), "-c",
         "<</Install {" + Points(-left) + " " + Points(-bottom) + " translate}>> setpagedevice"});
  } else {
    arguments.emplace_back("-dEPSCrop");
  }
  arguments.insert(arguments.end(), {"-f", "/dev/fd/0"});
  return arguments;
}

}  // namespace

Expected<std::string> PdfFromEps(const std::string& bytes, const EpsLimits& limits,
                                 EpsLetters letters) {
  ShortRun run;
  run.program = FindGhostscript();
  if (run.program.empty()) {
    return FailureOf("Ghostscript is needed for EPS, and there is no program gs on PATH");
  }
  auto place = TaskPlace::Make("rastrel-");
  if (!place) return NotStarted(place.Error());
  const auto input = FileOf(bytes);
  if (!input) return NotStarted(input.Error());
  run.arguments = Arguments(BoxAtEnd(bytes));
  if (letters == EpsLetters::Outlines) {
    run.arguments.insert(run.arguments.begin(), "-dNoOutputFonts");
  }
  run.input = input->Get();
  run.time = limits.time;
  run.outputLimit = limits.bytes;
  run.memoryKibibytes = limits.memoryKibibytes;
  run.workBytes = limits.workBytes;
  run.workFiles = WorkFiles;
  auto ran = RunToEnd(run, *place);
  if (!ran) return ran.Error();
  if (!ran->end.byItself || ran->end.status != 0 || ran->output.empty()) {
    return FailureOf("the interpreter ended with " + std::to_string(ran->end.status) + ": " +
                     ErrorLineOf(ran->messages));
  }
  return std::move(ran->output);
}

}  // namespace rastrel::interpreter
