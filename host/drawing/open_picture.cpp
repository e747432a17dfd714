#include "host/drawing/open_picture.h"

#include <utility>

#include "host/document/measure_text.h"
#include "host/drawing/picture_formats.h"

namespace rastrel::drawing {

using document::GraphicKind;
using graphics::LargestGraphicFile;
using graphics::LargestGraphicSide;

namespace {

constexpr double PointsPerCentimetre = 72 / 2.54;

OpenedPicture OpenKind(GraphicKind kind, const std::shared_ptr<const std::string>& bytes) {
  switch (kind) {
    case GraphicKind::Svg: return OpenSvg(*bytes);
    case GraphicKind::Png: return OpenPng(*bytes);
    case GraphicKind::Jpeg: return OpenJpeg(*bytes);
    case GraphicKind::Tiff: return OpenTiff(*bytes);
    case GraphicKind::Pdf: return OpenPdf(bytes);
    case GraphicKind::Eps:
    case GraphicKind::PostScript: break;
  }
  return FailureOf("it is of no kind that is drawn");
}

}  // namespace

Expected<void> CheckPictureSize(double width, double height) {
  width /= PointsPerCentimetre;
  height /= PointsPerCentimetre;
  for (const double side : {width, height}) {
    if (!(side > 0) || side > LargestGraphicSide) {
      return FailureOf("its size of " + document::SizeText(width, height) +
                       " can't be had: sides must be above 0 and at most " +
                       document::MeasureText(LargestGraphicSide) + " cm");
    }
  }
  return {};
}

Expected<std::unique_ptr<Picture>> OpenPicture(GraphicKind kind,
                                               std::shared_ptr<const std::string> bytes) {
  if (bytes->size() > LargestGraphicFile) {
    return FailureOf("it has " + std::to_string(bytes->size()) + " bytes; " +
                     std::to_string(LargestGraphicFile) + " are the most");
  }
  auto picture = OpenKind(kind, bytes);
  if (!picture) return picture.Error();
  const auto size = CheckPictureSize((*picture)->Width(), (*picture)->Height());
  if (!size) return size.Error();
  (*picture)->SetFile(std::move(bytes));
  return picture;
}

}  // namespace rastrel::drawing
