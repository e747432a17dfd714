#include "cli/document/cut_command.h"

#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "cli/console/cancelled.h"
#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/converting/queue_diagnosis.h"
#include "cli/document/conversion_files.h"
#include "cli/document/conversion_session.h"
#include "host/cutfile/cut_drawing.h"
#include "host/document/document.h"
#include "host/document/document_store.h"
#include "host/graphics/placed_file.h"
#include "interpreter/interpreter.h"
#include "rastrel/conversion/cut/generate_cut_data.h"
#include "rastrel/platform/host/generic_item.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/host/placed_graphics.h"
#include "rastrel/platform/mfc/archive.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::cli {
namespace {

// Curves become straight lines that lie at most half a pixel beside them.
constexpr int UsualResolution = 300;

struct PictureSize {
  double width;
  double height;
};

// The size of the queue program's picture in centimetres, where it may be another than that of the
// placed file. That is the first page of a PDF, and of PostScript the box that its comments declare
// or the box around the marks of all its pages; the picture is of one page.
std::optional<PictureSize> OwnPictureSize(const document::GraphicShape& placed,
                                          const InputFile& input,
                                          const ConversionRequest& request) {
  const bool isSame = document::IsPostScript(placed.kind)
                          ? interpreter::DeclaredArea(*placed.bytes).has_value()
                          : request.page.value_or(1) == 1;
  if (isSame) return std::nullopt;
  const BOUNDS page = MeasuredPage(input, request);
  return PictureSize{std::abs(page.xmax - page.xmin), std::abs(page.ymax - page.ymin)};
}

// The file in the document, with its cut colors.
host::ObjectHandle Place(ConversionHost& host, const InputFile& input,
                         const ConversionRequest& request) {
  document::Document& document = host.GetDocument();
  const std::wstring path = os::FromNative(input.path);
  const host::ObjectHandle handle =
      OrEnd(ExitStatus::BadInput, graphics::PlaceFile(document, path));
  auto& shape = std::get<document::GraphicShape>(document.Edit(handle)->shape);
  if (const auto size = OwnPictureSize(shape, input, request)) {
    shape.width = size->width;
    shape.height = size->height;
  }
  OrEnd(
      ExitStatus::JobFailed,
      graphics::SetPlacedCuts(document, handle, {.cut = request.cut, .halfCut = request.halfCut}));
  const BOUNDS bounds = document.Bounds(handle);
  document::SignBlank blank = document.Blank();
  blank.width = bounds.xmax - bounds.xmin;
  blank.height = bounds.ymax - bounds.ymin;
  document.SetBlank(blank);
  return handle;
}

// By the library's function for the file's kind. 0 for no lines and after any failure.
host::ObjectHandle Generate(ConversionHost& host, host::ObjectHandle placed, const InputFile& input,
                            const ConversionRequest& request) {
  CGenericItem* item = host.GetObjectStore()->DBGetObjectElement(placed)->GetPlaceholderItem();
  const std::wstring path = os::FromNative(input.path);
  const int resolution = request.resolution.value_or(UsualResolution);
  const int preview = request.preview ? 1 : 0;
  if (auto* eps = dynamic_cast<CGenericEPS*>(item))
    return GenerateEPSCutData(eps, resolution, preview, path.c_str());
  if (auto* pdf = dynamic_cast<CGenericPDF*>(item))
    return GeneratePDFCutData(pdf, resolution, preview, path.c_str());
  if (auto* postScript = dynamic_cast<CGenericPS*>(item))
    return GeneratePSCutData(postScript, resolution, preview, path.c_str());
  throw CommandError(ExitStatus::BadInput, "the file was placed as no PostScript, EPS or PDF");
}

// The lines as an object of the document, above the picture of the file if that is wanted.
host::ObjectHandle AddLines(ConversionHost& host, host::ObjectHandle placed,
                            host::ObjectHandle lines, bool preview) {
  graphics::PlaceCutResult(dynamic_cast<document::DocumentStore&>(*host.GetObjectStore()), placed,
                           lines);
  if (!preview) host.GetDocument().Destroy(placed);
  host.GetObjectStore()->DSAddObject(lines);
  return lines;
}

struct Counts {
  std::int64_t cut = 0;
  std::int64_t cutThrough = 0;
  std::int64_t lines = 0;
};

Counts CountsOf(const ConversionHost& host) {
  Counts counts;
  const auto drawing = OrEnd(ExitStatus::NotWritten, cutfile::CutDrawingOf(host.GetDocument(), 1));
  for (const cutfile::CutObject& object : drawing.objects) {
    const auto runs = static_cast<std::int64_t>(object.runs.size());
    switch (object.kind) {
      case cutfile::CutKind::Cut: counts.cut += runs; break;
      case cutfile::CutKind::CutThrough: counts.cutThrough += runs; break;
      case cutfile::CutKind::Line: counts.lines += runs; break;
    }
  }
  return counts;
}

ExitStatus WriteDone(const ConversionHost& host, const ResultPlace& place, bool json) {
  if (!json) {
    if (!place.path.empty()) WriteOutPath(place.path);
    return ExitStatus::Done;
  }
  const Counts counts = CountsOf(host);
  JsonLine("done")
      .Add("exit", 0)
      .Add("paths", std::vector<std::string>{place.path.empty() ? "-" : place.path})
      .AddNumber("width_cm", host.GetDocument().Blank().width)
      .AddNumber("height_cm", host.GetDocument().Blank().height)
      .Add("cut", counts.cut)
      .Add("cut_through", counts.cutThrough)
      .Add("lines", counts.lines)
      .Write();
  return ExitStatus::Done;
}

host::ObjectHandle LinesOrEnd(ConversionHost& host, host::ObjectHandle placed,
                              const InputFile& input, const ConversionRequest& request) {
  try {
    return Generate(host, placed, input, request);
  } catch (const CArchiveException& failure) {
    throw CommandError(ExitStatus::NoCutLines,
                       std::string("the cut lines can't be read: ") + failure.what());
  }
}

}  // namespace

ExitStatus CutCommand(const Invocation& invocation) {
  if (invocation.operands.size() > 1) return ConvertFileByFile(invocation);
  ConversionSession session(invocation);
  const ConversionRequest& request = session.Request();
  ConversionHost& host = session.Host();
  const host::ObjectHandle placed = Place(host, session.Input(), request);
  const host::ObjectHandle lines = LinesOrEnd(host, placed, session.Input(), request);
  const ConversionReport report = session.End(ConversionEnd::Ran);
  if (report.IsCancelled()) return WriteCancelled(request.json);
  WriteQueueWarnings(request.json);
  if (lines == 0) report.ThrowWithoutLines();
  session.Write({.lines = AddLines(host, placed, lines, request.preview)});
  return WriteDone(host, session.Target(), request.json);
}

}  // namespace rastrel::cli
