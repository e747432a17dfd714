#include "host/layout/plates.h"

#include <algorithm>
#include <string>
#include <utility>

#include "host/document/measure_text.h"
#include "host/document/plate_layout.h"
#include "host/layout/placing.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::layout {

using document::Document;
using document::PlateShape;

namespace {

constexpr int WhiteReference = 0xFFFFFF;

int FirstPage(const Document& document) {
  const int last = document.HighestPage();
  return last > 0 ? last + 1 : std::max(document.DisplayPage(), 1);
}

int NewSheetLayer(Document& document) {
  const int number = document.NextEmptyLayer();
  document.AddSheetLayer({number, L"Layer " + std::to_wstring(number)});
  return number;
}

// The panes of a plate object and of those that continue it.
std::vector<PlacedPlate> PanesOf(const Document& document, document::ObjectHandle handle) {
  std::vector<PlacedPlate> plates;
  while (const document::Object* object = document.Find(handle)) {
    const auto& shape = std::get<PlateShape>(object->shape);
    for (const CWorldRect& pane : shape.panes) {
      plates.push_back({pane, object->attributes.pages.first, object->attributes.sheetLayer});
    }
    handle = shape.continuation;
  }
  return plates;
}

}  // namespace

Expected<PlateSize> SizeOf(document::DocumentHost& host, double width, double height) {
  if (!IsLength(width) || !IsLength(height) || width < 0 || height < 0) {
    return FailureOf("its plates are " + document::SizeText(width, height) +
                     ", which no plate can be");
  }
  const document::SignBlank& blank = host.GetDocument().Blank();
  const PlateSize size{width > 0 ? width : blank.width, height > 0 ? height : blank.height};
  if (width == 0 || height == 0) {
    host.GetNotices().Add(L"the template gives its plates no " +
                          std::wstring(width > 0    ? L"height"
                                       : height > 0 ? L"width"
                                                    : L"size") +
                          L": they are " +
                          os::WideFromUtf8(document::SizeText(size.width, size.height)) +
                          L", as the blank");
  }
  return size;
}

CVKColor Black() { return {0, COLORSPACE_RGB, 0, 0}; }

Expected<std::vector<PlacedPlate>> AddPlates(Document& document, document::Notices& notices,
                                             std::size_t count, double width, double height) {
  PlateShape shape;
  shape.width = width;
  shape.height = height;
  shape.wanted = static_cast<int>(std::min<std::size_t>(count, document::MaximumPanes));
  shape.fromBottom = document.Blank().origin == 7;
  shape.start = document::StartOnEmptyPage(document.Blank(), shape.margins, shape.fromBottom);
  shape.placed = true;
  const document::SignBlank& blank = document.Blank();
  if (document::Capacity(shape, blank) == 0) {
    return FailureOf("a plate of " + document::SizeText(width, height) +
                     " does not fit on the blank of " +
                     document::SizeText(blank.width, blank.height));
  }
  if (count > static_cast<std::size_t>(document::MaximumPanes)) {
    return FailureOf("the template has " + std::to_string(count) +
                     " plates, and a document holds " + std::to_string(document::MaximumPanes));
  }
  document::LayPanes(shape, document.Blank(), count);
  const int page = FirstPage(document);
  if (page > Document::LastPage) return FailureOf("the document has no pages left");
  document::Attributes attributes;
  attributes.layer = CVKColor(WhiteReference, COLORSPACE_RGB, 0, 0);
  attributes.lineColor = Black();
  attributes.lineStyle = {0, LINESTYLE_NONE};
  const PlacedPlate place{{}, page, NewSheetLayer(document)};
  const document::ObjectHandle plate =
      AddToPlate(document, notices, std::move(shape), attributes, place);
  if (plate == 0) return FailureOf("the document is full");
  document::GrowPlate(document, plate, count);
  std::vector<PlacedPlate> plates = PanesOf(document, plate);
  if (plates.size() < count) {
    notices.AddLoss(std::to_wstring(count - plates.size()) +
                    L" plates are left out: the document has no pages left for them");
  }
  return plates;
}

document::ObjectHandle AddToPlate(Document& document, document::Notices& notices,
                                  document::Shape shape, document::Attributes attributes,
                                  const PlacedPlate& plate) {
  attributes.sheetLayer = plate.sheetLayer;
  attributes.pages = {plate.page, plate.page};
  attributes.traits = DBTRAIT_VISIBLE | DBTRAIT_SELECTABLE | DBTRAIT_IN_DOCUMENT;
  const document::ObjectHandle handle = document.Create(std::move(shape), attributes);
  if (document.Insert(handle, host::DocumentRoot)) return handle;
  notices.AddLoss(L"the document is full: what comes after is left out");
  return 0;
}

}  // namespace rastrel::layout
