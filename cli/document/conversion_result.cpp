#include "cli/document/conversion_result.h"

#include <cerrno>
#include <cmath>
#include <filesystem>
#include <optional>
#include <utility>
#include <vector>

#include "cli/console/exit_status.h"
#include "cli/console/standard_streams.h"
#include "cli/console/unwritten_file.h"
#include "cli/input/result_names.h"
#include "cli/input/standard_input.h"
#include "host/cutfile/cut_drawing.h"
#include "host/cutfile/exchange_writer.h"
#include "host/cutfile/json_writer.h"
#include "host/cutfile/plotter_writer.h"
#include "host/document/bitmap_png.h"
#include "host/document/document.h"
#include "host/document/notices.h"
#include "host/render/bitmap_tiff.h"
#include "host/render/document_images.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::cli {
namespace {

namespace fs = std::filesystem;

constexpr int FirstPage = 1;

const document::BitmapShape& BitmapOf(const document::DocumentHost& host,
                                      host::ObjectHandle bitmap) {
  return std::get<document::BitmapShape>(host.GetDocument().Find(bitmap)->shape);
}

// Pixels to the inch of a length in centimetres: a whole number that makes as many, if there is
// one.
double DpiOf(int pixels, double centimetres) {
  const double dpi = pixels * host::CentimetresPerInch / centimetres;
  const double whole = std::round(dpi);
  const double rounding = std::abs(whole * centimetres / host::CentimetresPerInch - pixels);
  return whole >= 1 && rounding <= 0.501 ? whole : dpi;
}

template <typename T>
T OrUnwritten(Expected<T> result) {
  return OrEnd(ExitStatus::NotWritten, std::move(result));
}

}  // namespace

ResultPlace PlaceOfResult(const Invocation& invocation, const ResultFile& result,
                          const InputFile& input) {
  if (result.isOutput) {
    OrEnd(ExitStatus::WrongUse, KeepOutputForResult());
    return {};
  }
  ResultPlace place{result.path, os::Existing::Followed};
  if (result.path.empty())
    place = {ResultNameFor(result.pattern, input.safeName, result.extension),
             UnnamedExisting(invocation)};
  // A failure shows with the place itself.
  if (result.pattern.ends_with('/'))
    static_cast<void>(os::MakePath(os::FromNative(result.pattern)));
  if (const auto free = os::CheckPlace(place.path, place.existing); !free)
    ThrowUnwritten(free.Error());
  return place;
}

std::string ConversionResult::Lines(ResultKind kind) const {
  const auto drawing = OrUnwritten(cutfile::CutDrawingOf(m_Host.GetDocument(), FirstPage));
  switch (kind) {
    case ResultKind::Exchange: return cutfile::ExchangeFileText(drawing);
    case ResultKind::Plotter: return OrUnwritten(cutfile::PlotterFileText(drawing));
    default: return cutfile::JsonFileText(drawing);
  }
}

std::string ConversionResult::Drawn(ResultKind kind) const {
  const auto format = kind == ResultKind::Svg   ? render::ImageFormat::Svg
                      : kind == ResultKind::Pdf ? render::ImageFormat::Pdf
                                                : render::ImageFormat::Png;
  render::ImageOptions options;
  options.page = FirstPage;
  options.blank = false;
  if (format == render::ImageFormat::Png) {
    const document::BitmapShape& bitmap = BitmapOf(m_Host, m_Objects.bitmap);
    options.dpi = DpiOf(bitmap.pixels->width, bitmap.width);
  }
  const render::ImageSource source{m_Host.GetDocument(), m_Host.GetFonts(), m_Host.GetNotices()};
  std::vector<std::string> images = OrUnwritten(render::DrawDocument(source, format, options));
  return std::move(images.front());
}

std::string ConversionResult::Bytes(ResultKind kind) const {
  switch (kind) {
    case ResultKind::Exchange:
    case ResultKind::Plotter:
    case ResultKind::Json: return Lines(kind);
    case ResultKind::Svg:
    case ResultKind::Pdf: return Drawn(kind);
    default: break;
  }
  if (kind == ResultKind::Png && m_Objects.lines != 0) return Drawn(kind);
  const document::BitmapShape& bitmap = BitmapOf(m_Host, m_Objects.bitmap);
  const double dpiX = DpiOf(bitmap.pixels->width, bitmap.width);
  const double dpiY = DpiOf(bitmap.pixels->height, bitmap.height);
  if (kind == ResultKind::Tiff)
    return OrUnwritten(render::TiffOfBitmap(*bitmap.pixels, dpiX, dpiY));
  std::string png = document::PngOfBitmap(*bitmap.pixels, {.dpiX = dpiX, .dpiY = dpiY});
  if (png.empty()) throw CommandError(ExitStatus::NotWritten, "there is no memory for the picture");
  return png;
}

void ConversionResult::Write(const ResultFile& result, const ResultPlace& target,
                             const InputFile& input) const {
  const std::string made = m_Place.Path() + "/result" + result.extension;
  const std::wstring path = os::FromNative(made);
  if (result.kind == ResultKind::Document) {
    OrEnd(ExitStatus::NotWritten, m_Host.Save(path));
  } else {
    const std::string bytes = Bytes(result.kind);
    if (target.path.empty()) return OrEnd(ExitStatus::NotWritten, WriteResult(bytes));
    const auto written = os::ReplaceFile(path, bytes, os::Access::Private);
    if (!written) throw CommandError(ExitStatus::NotWritten, Describe(written.Error()));
  }
  std::error_code ignored;
  fs::permissions(made, static_cast<fs::perms>(input.access & ~os::CurrentUmask()), ignored);
  auto file = os::OutputFile::Take(made, target.path, target.existing);
  const Expected<void> named = file ? file->Commit() : Expected<void>(file.Error());
  if (named) return;
  if (named.Error().error == EEXIST) ThrowUnwritten(named.Error());
  throw CommandError(ExitStatus::NotWritten,
                     "can't write '" + target.path + "': " + WhyUnwritten(named.Error()));
}

}  // namespace rastrel::cli
