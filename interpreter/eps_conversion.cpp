#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <functional>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "interpreter/declared_box.h"
#include "interpreter/interpreter.h"
#include "interpreter/job_kind.h"
#include "interpreter/page_measure.h"
#include "interpreter/pdf_job.h"
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

// Options of a page that is that box, whatever the file sets.
std::vector<std::string> PageOptions(const Box& box) {
  const auto& [left, bottom, right, top] = box;
  return {"-dFIXEDMEDIA", "-dDEVICEWIDTHPOINTS=" + Points(right - left),
          "-dDEVICEHEIGHTPOINTS=" + Points(top - bottom), "-c",
          "<</Install {" + Points(-left) + " " + Points(-bottom) + " translate}>> setpagedevice"};
}

constexpr std::string_view CountMark = "RastrelPages ";
constexpr std::string_view MeasureMark = "RastrelMeasure ";

// After a file: how many pages it has ended.
constexpr const char* CountPages =
    "(%stderr) (w) file dup (\nRastrelPages ) writestring currentdevice getdeviceprops .dicttomark "
    "/PageCount get 20 string cvs 1 index exch writestring dup (\n) writestring flushfile";
// Before a file and after it: its page as MeasuredPage reads it. The sheet is one that no file
// sets, with the origin in its middle.
constexpr const char* BeginMeasure =
    "<< /HWResolution [2400 2400] /PageSize [240000 240000] /Policies << /PageSize 1 >> /Install { "
    "currentpagedevice /PageSize get 0 get 240000 eq { 120000 dup translate } if } bind "
    "/EndPage { pop pop false } bind >> setpagedevice";
constexpr const char* EndMeasure =
    "(%stderr) (w) file dup (\nRastrelMeasure) writestring "
    "currentpagedevice /PageSize get dup 0 get 240000 eq { pop [0 0] } if "
    "{ 1 index ( ) writestring 20 string cvs 1 index exch writestring } forall "
    "currentdevice getdeviceprops .dicttomark /PageBoundingBox get "
    "{ 1 index ( ) writestring round cvi 20 string cvs 1 index exch writestring } forall "
    "dup (\n) writestring flushfile";

// The text after the last line's mark; nothing where no line begins with it.
std::optional<std::string> LineAfter(std::string_view messages, std::string_view mark) {
  const std::size_t place = messages.rfind("\n" + std::string(mark));
  if (place == std::string_view::npos) return std::nullopt;
  const std::string_view text = messages.substr(place + 1 + mark.size());
  return std::string(text.substr(0, text.find('\n')));
}

// A task on one file, in as many runs as it takes.
class Conversion {
 public:
  Conversion(const EpsLimits& limits, std::string program, TaskPlace& place, int file)
      : m_Limits(limits), m_Place(place), m_End(Clock::now() + limits.time) {
    m_Run.program = std::move(program);
    m_Run.input = file;
    m_Run.outputLimit = limits.bytes;
    m_Run.memoryKibibytes = limits.memoryKibibytes;
    m_Run.workBytes = limits.workBytes;
    m_Run.workFiles = WorkFiles;
  }

  // Runs the file between options. Fails where that does not end well.
  Expected<ShortRunEnd> Run(std::vector<std::string> before,
                            const std::vector<std::string>& after = {}) {
    m_Run.arguments = std::move(before);
    m_Run.arguments.insert(m_Run.arguments.end(), {"-f", "/dev/fd/0"});
    m_Run.arguments.insert(m_Run.arguments.end(), after.begin(), after.end());
    m_Run.time = m_IsFirst ? m_Limits.time
                           : std::chrono::duration_cast<std::chrono::milliseconds>(
                                 std::max(m_End - Clock::now(), Clock::duration(0)));
    if (!m_IsFirst && m_Run.time <= std::chrono::milliseconds(0)) {
      return FailureOf("the interpreter took all of the file's time");
    }
    m_IsFirst = false;
    auto ran = RunToEnd(m_Run, m_Place);
    if (!ran) return ran.Error();
    if (!ran->end.byItself || ran->end.status != 0) {
      return FailureOf("the interpreter ended with " + std::to_string(ran->end.status) + ": " +
                       ErrorLineOf(ran->messages));
    }
    return ran;
  }

 private:
  using Clock = std::chrono::steady_clock;

  const EpsLimits& m_Limits;
  TaskPlace& m_Place;
  Clock::time_point m_End;
  bool m_IsFirst = true;
  ShortRun m_Run;
};

// The options of every PDF that is made. Pages stay as they are turned, however their letters lie.
std::vector<std::string> PdfOptions(EpsLetters letters) {
  std::vector<std::string> options{"-sDEVICE=pdfwrite", "-sstdout=%stderr", "-sOutputFile=%stdout",
                                   "-dAutoRotatePages=/None"};
  if (letters == EpsLetters::Outlines) options.emplace_back("-dNoOutputFonts");
  return options;
}

// The PDF of a run, which is not empty.
Expected<std::string> PdfOf(Expected<ShortRunEnd> ran) {
  if (!ran) return ran.Error();
  if (ran->output.empty()) {
    return FailureOf("the interpreter ended with 0: " + ErrorLineOf(ran->messages));
  }
  return std::move(ran->output);
}

// The page that a file sets, or the box around its marks.
Expected<PageMeasure> MeasureMarks(Conversion& conversion,
                                   const std::optional<PageArea>& declared) {
  const auto measured = conversion.Run(
      {"-sDEVICE=bbox", "-sstdout=%stderr", "-dNOEPS", "-c", BeginMeasure}, {"-c", EndMeasure});
  if (!measured) return measured.Error();
  const auto report = LineAfter(measured->messages, MeasureMark);
  const auto page = report ? MeasuredPage(*report, declared) : std::nullopt;
  if (!page) return FailureOf("its page can't be measured");
  return *page;
}

// PostScript that ends no page: its marks are one, as large as a print of it would be.
Expected<std::string> PdfOfOpenPage(Conversion& conversion, const std::string& bytes,
                                    EpsLetters letters) {
  const auto page = MeasureMarks(conversion, FindDeclaredBox(bytes, bytes));
  if (!page) return page.Error();
  if (!page->marked) return FailureOf("it has neither marks nor showpage, so there is no page");
  std::vector<std::string> options = PdfOptions(letters);
  options.emplace_back("-dNOEPS");
  const auto& [left, bottom, right, top] = page->box;
  for (std::string& option : PageOptions({left, bottom, right, top})) {
    options.push_back(std::move(option));
  }
  return PdfOf(conversion.Run(std::move(options), {"-c", "showpage"}));
}

Expected<std::string> ConvertPostScript(Conversion& conversion, const std::string& bytes,
                                        EpsLetters letters) {
  const JobLayout layout =
      FindJobLayout(std::string_view(bytes).substr(0, JobHeadSize), bytes.size());
  const auto box = BoxAtEnd(bytes);
  std::vector<std::string> options = PdfOptions(letters);
  if (box) {
    for (std::string& option : PageOptions(*box)) options.push_back(std::move(option));
  } else if (layout.kind == JobKind::PostScript && !layout.section) {
    // EPS whose box holds nothing: the interpreter would put out a sheet of its own for it.
    options.emplace_back("-dNOEPS");
  } else {
    options.emplace_back("-dEPSCrop");
  }
  auto ran = conversion.Run(std::move(options), {"-c", CountPages});
  const auto pages = ran ? LineAfter(ran->messages, CountMark) : std::nullopt;
  return pages == "0" ? PdfOfOpenPage(conversion, bytes, letters) : PdfOf(std::move(ran));
}

// The last messages may say that the page is not all there.
Expected<std::string> OutlinePdf(Conversion& conversion) {
  std::vector<std::string> options = PdfOptions(EpsLetters::Outlines);
  for (const char* const option : {"-dFirstPage=1", "-dLastPage=1"}) options.emplace_back(option);
  for (std::string& option : BoxOptions(PdfBox::Crop)) options.push_back(std::move(option));
  auto ran = conversion.Run(std::move(options));
  if (!ran) return ran.Error();
  PdfMessages messages;
  std::string_view rest = ran->messages;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find('\n'), rest.size() - 1);
    messages.Take(rest.substr(0, end));
    rest.remove_prefix(end + 1);
  }
  if (messages.IsLocked() || !messages.FirstError().empty()) return messages.WhyNoPage();
  return PdfOf(std::move(ran));
}

using Task = std::function<Expected<std::string>(Conversion&)>;

Expected<std::string> Convert(const std::string& bytes, const EpsLimits& limits,
                              const std::string& kind, const Task& task) {
  std::string program = FindGhostscript();
  if (program.empty()) {
    return FailureOf("Ghostscript is needed for " + kind + ", and there is no program gs on PATH");
  }
  auto place = TaskPlace::Make("rastrel-");
  if (!place) return NotStarted(place.Error());
  const auto input = FileOf(bytes);
  if (!input) return NotStarted(input.Error());
  Conversion conversion(limits, std::move(program), *place, input->Get());
  return task(conversion);
}

}  // namespace

Expected<std::string> PdfFromEps(const std::string& bytes, const EpsLimits& limits,
                                 EpsLetters letters) {
  return Convert(bytes, limits, "EPS", [&](Conversion& conversion) {
    return ConvertPostScript(conversion, bytes, letters);
  });
}

std::optional<PageArea> DeclaredArea(const std::string& bytes) {
  const JobLayout layout =
      FindJobLayout(std::string_view(bytes).substr(0, JobHeadSize), bytes.size());
  const std::string_view part = std::string_view(bytes).substr(
      std::min<std::uint64_t>(layout.offset, bytes.size()), layout.length);
  return FindDeclaredBox(part, part);
}

Expected<PageArea> PictureArea(const std::string& bytes, const EpsLimits& limits) {
  if (const auto declared = DeclaredArea(bytes)) return *declared;
  PageArea area;
  const auto measured =
      Convert(bytes, limits, "PostScript", [&](Conversion& conversion) -> Expected<std::string> {
        const auto page = MeasureMarks(conversion, std::nullopt);
        if (!page) return page.Error();
        area = page->box;
        return std::string();
      });
  if (!measured) return measured.Error();
  return area;
}

Expected<std::string> PdfOfArea(const std::string& bytes, const PageArea& area,
                                const EpsLimits& limits) {
  return Convert(bytes, limits, "PostScript", [&](Conversion& conversion) {
    std::vector<std::string> options = PdfOptions(EpsLetters::Keep);
    options.emplace_back("-dNOEPS");
    for (std::string& option : PageOptions({area.left, area.bottom, area.right, area.top})) {
      options.push_back(std::move(option));
    }
    const std::vector<std::string> before = options;
    auto ran = conversion.Run(std::move(options), {"-c", CountPages});
    const auto pages = ran ? LineAfter(ran->messages, CountMark) : std::nullopt;
    return PdfOf(pages == "0" ? conversion.Run(before, {"-c", "showpage"}) : std::move(ran));
  });
}

Expected<std::string> OutlinedPdf(const std::string& bytes, const EpsLimits& limits) {
  return Convert(bytes, limits, "the letters of a PDF", OutlinePdf);
}

}  // namespace rastrel::interpreter
