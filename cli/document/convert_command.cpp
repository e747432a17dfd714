#include "cli/document/convert_command.h"

#include <string>
#include <variant>
#include <vector>

#include "cli/console/cancelled.h"
#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/converting/queue_diagnosis.h"
#include "cli/document/bitmap_conversion.h"
#include "cli/document/conversion_files.h"
#include "cli/document/conversion_session.h"
#include "host/document/document.h"
#include "rastrel/platform/host/object_store.h"

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

}  // namespace

ExitStatus ConvertCommand(const Invocation& invocation) {
  if (invocation.operands.size() > 1) return ConvertFileByFile(invocation);
  ConversionSession session(invocation);
  const ConversionRequest& request = session.Request();
  const ConversionEnd end =
      RunBitmapConversion(session.Input(), request, session.Host(), session.Views());
  const ConversionReport report = session.End(end);
  if (report.IsCancelled()) return WriteCancelled(request.json);
  WriteQueueWarnings(request.json);
  const ConvertedObjects objects = ObjectsOrEnd(session.Host(), report, request.cut.enabled != 0);
  LayOut(session.Host(), objects);
  if (request.result.kind == ResultKind::Tiff && objects.lines != 0)
    report.Note(request.json, "a TIFF has no cut lines; .svg, .pdf and .rdoc have them");
  session.Write(objects);
  return WriteDone(session.Host(), objects, session.Target(), request.json);
}

}  // namespace rastrel::cli
