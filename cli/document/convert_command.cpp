#include "cli/document/convert_command.h"

#include <filesystem>
#include <string>
#include <variant>

#include "cli/console/cancelled.h"
#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/console/stop_signals.h"
#include "cli/converting/queue_diagnosis.h"
#include "cli/document/bitmap_conversion.h"
#include "cli/document/conversion_host.h"
#include "cli/document/conversion_place.h"
#include "cli/document/conversion_report.h"
#include "cli/document/conversion_request.h"
#include "cli/document/conversion_result.h"
#include "cli/document/conversion_views.h"
#include "cli/installation/installation.h"
#include "cli/installation/job_directory.h"
#include "host/document/document.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/terminal.h"

namespace rastrel::cli {
namespace {

// The bitmap is added first, and then the lines.
ConvertedObjects ObjectsOf(const document::Document& document) {
  ConvertedObjects objects;
  for (const host::ObjectHandle handle : document.Members(host::DocumentRoot)) {
    const bool bitmap = std::holds_alternative<document::BitmapShape>(document.Find(handle)->shape);
    (bitmap ? objects.bitmap : objects.lines) = handle;
  }
  return objects;
}

// The page is the bitmap, whose upper left corner the lines count from.
void LayOut(ConversionHost& host, const ConvertedObjects& objects) {
  document::Document& document = host.GetDocument();
  const BOUNDS bounds = document.Bounds(objects.bitmap);
  document::SignBlank blank = document.Blank();
  blank.width = bounds.xmax - bounds.xmin;
  blank.height = bounds.ymax - bounds.ymin;
  document.SetBlank(blank);
  if (objects.lines == 0) return;
  host.GetObjectStore()->DBApplyTM(objects.lines, {.tx = bounds.xmin, .ty = bounds.ymax});
}

ExitStatus WriteDone(const ConversionHost& host, const ConvertedObjects& objects,
                     const ResultPlace& place, bool json) {
  if (!json) {
    if (!place.path.empty()) WriteOutPath(place.path);
    return ExitStatus::Done;
  }
  const document::Document& document = host.GetDocument();
  const auto& bitmap = std::get<document::BitmapShape>(document.Find(objects.bitmap)->shape);
  JsonLine("done")
      .Add("exit", 0)
      .Add("paths", std::vector<std::string>{place.path.empty() ? "-" : place.path})
      .Add("width", bitmap.pixels->width)
      .Add("height", bitmap.pixels->height)
      .AddNumber("width_cm", document.Blank().width)
      .AddNumber("height_cm", document.Blank().height)
      .AddFlag("cut_lines", objects.lines != 0)
      .Write();
  return ExitStatus::Done;
}

// The objects, or the reason why there is no bitmap.
ConvertedObjects ObjectsOrEnd(const ConversionHost& host, const ConversionReport& report,
                              bool wantsLines) {
  const ConvertedObjects objects = ObjectsOf(host.GetDocument());
  if (objects.bitmap == 0) report.ThrowWithoutResult();
  if (wantsLines && objects.lines == 0) report.ThrowIfArchiveIsDamaged();
  return objects;
}

// Somebody must be there to answer, and something to be asked.
void CheckAnswers(const ConversionRequest& request, const InputFile& input) {
  if (!request.ask) return;
  if (!os::IsTerminalDevice(os::StandardHandle(os::StandardStream::Input)) ||
      !os::IsTerminalDevice(os::StandardHandle(os::StandardStream::Error)))
    throw CommandError(ExitStatus::WrongUse,
                       "--ask: input and standard error are not both a terminal");
  if (input.extension == ".pdf")
    throw CommandError(ExitStatus::WrongUse,
                       "--ask: a PDF has no questions; give --size, --dpi and --cut-color");
}

}  // namespace

ExitStatus ConvertCommand(const Invocation& invocation) {
  const ConversionRequest request = OrEnd(ExitStatus::WrongUse, ReadConversionRequest(invocation));
  const auto pdf = OrEnd(ExitStatus::WrongUse, ApplyPdfOptions(invocation, request));
  ConversionViews views(request.json);
  // A request to end is one to cancel, from the first moment on.
  const auto signals =
      OrEnd(ExitStatus::JobFailed, TakeStopSignals([&views](int) { views.RequestStop(); }));
  OrEnd(ExitStatus::NotInstalled, MakeSureOfDataRoot());
  OrEnd(ExitStatus::NotInstalled, CheckQueueProgram());
  if (request.window) OrEnd(ExitStatus::NotInstalled, views.UseWindow());
  ConversionPlace place(OrEnd(ExitStatus::NotInstalled, JobDirectory::Create(false)));
  const InputFile input = place.Inspect(invocation);
  CheckPage(request, input);
  CheckAnswers(request, input);
  const ResultPlace target = PlaceOfResult(invocation, request.result, input);
  ConversionHost host(request.window || request.ask);
  host::SetHost(&host);
  host.SetDialogViews(&views);
  const ConversionEnd end = RunBitmapConversion(input, request, host, views);
  place.LeaveRipDirectory();
  const ConversionReport report(end, views, place);
  if (report.IsCancelled()) return WriteCancelled(request.json);
  WriteQueueWarnings(request.json);
  const ConvertedObjects objects = ObjectsOrEnd(host, report, request.cut.enabled != 0);
  LayOut(host, objects);
  if (request.result.kind == ResultKind::Tiff && objects.lines != 0)
    report.Note(request.json, "a TIFF has no cut lines; .svg, .pdf and .rdoc have them");
  ConversionResult(host, objects, place).Write(request.result, target, input);
  return WriteDone(host, objects, target, request.json);
}

}  // namespace rastrel::cli
