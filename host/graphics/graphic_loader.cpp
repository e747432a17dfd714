#include "host/graphics/graphic_loader.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "host/graphics/picture.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::graphics {

namespace {

constexpr double CentimetresPerPoint = 2.54 / 72;

Expected<document::GraphicShape> ShapeOf(const std::wstring& path, const DrawingLimits& limits) {
  auto read = os::ReadWholeFile(path, LargestGraphicFile);
  if (!read) return read.Error();
  const auto kind = KindOf(*read);
  if (!kind) return FailureOf("it is neither SVG, PNG, JPEG, TIFF, PDF nor EPS");
  document::GraphicShape shape;
  shape.kind = *kind;
  const os::PathParts parts = os::SplitPath(path);
  shape.name = parts.name + parts.extension;
  shape.bytes = std::make_shared<const std::string>(std::move(*read));
  const auto size = MeasurePicture(shape.kind, shape.bytes, limits);
  if (!size) return size.Error();
  shape.width = size->width * CentimetresPerPoint;
  shape.height = size->height * CentimetresPerPoint;
  return shape;
}

}  // namespace

int LoadGraphic(document::Document& document, document::Notices& notices, const std::wstring& path,
                const DrawingLimits& limits) {
  auto shape = ShapeOf(path, limits);
  if (!shape) {
    notices.AddLoss(path + L" can't be placed: " + os::WideFromUtf8(Describe(shape.Error())));
    return 0;
  }
  document::Attributes attributes;
  const int page = std::max(document.DisplayPage(), 1);
  attributes.pages = {page, page};
  const document::ObjectHandle object = document.Create(std::move(*shape), attributes);
  if (!document.Insert(object, host::DocumentRoot)) {
    notices.AddLoss(path + L" can't be placed: the document is full");
    return 0;
  }
  document.DeselectAll();
  document.Select(object);
  return 1;
}

}  // namespace rastrel::graphics
