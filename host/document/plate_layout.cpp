#include "host/document/plate_layout.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "host/document/measure_text.h"

namespace rastrel::document {

namespace {

// The room that a pane may lack: sizes come from inches, and their sums are not exact.
constexpr double Tolerance = 1e-6;

// How many lengths with gaps between them fit into a room.
std::size_t Fitting(double room, double length, double gap) {
  if (!(length > 0) || !(length + gap > 0) || room + Tolerance < length) return 0;
  const double count = std::floor((room + gap + Tolerance) / (length + gap));
  return count >= MaximumPanes ? static_cast<std::size_t>(MaximumPanes)
                               : static_cast<std::size_t>(std::max(count, 1.0));
}

std::size_t Columns(const PlateShape& plate, const SignBlank& blank) {
  return Fitting(blank.width - plate.margins.right - plate.start.x, plate.width,
                 plate.horizontalGap);
}

double RoomAbove(const PlateShape& plate, const SignBlank& blank, std::optional<double> reach) {
  if (plate.fromBottom) {
    const double edge = blank.height - plate.margins.top;
    return std::min(edge, reach.value_or(edge)) - plate.start.y;
  }
  const double edge = plate.margins.bottom;
  return plate.start.y - std::max(edge, reach.value_or(edge));
}

const PlateShape* PlateOf(const Document& document, ObjectHandle handle) {
  const Object* object = document.Find(handle);
  return object ? std::get_if<PlateShape>(&object->shape) : nullptr;
}

PlateShape& PlateToChange(Document& document, ObjectHandle handle) {
  return std::get<PlateShape>(document.Edit(handle)->shape);
}

int PageOf(const Document& document, ObjectHandle handle) {
  return document.Find(handle)->attributes.pages.first;
}

// The edge of a plate's panes at which the next plate may begin.
double FarEdge(const PlateShape& plate) {
  double edge = plate.start.y;
  for (const CWorldRect& pane : {plate.panes.front(), plate.panes.back()}) {
    edge = plate.fromBottom ? std::max(edge, pane.top) : std::min(edge, pane.bottom);
  }
  return edge;
}

// Moves a new plate to a start and a page.
void Place(Document& document, ObjectHandle handle, const CWorldPoint& start, int page) {
  PlateShape& plate = PlateToChange(document, handle);
  plate.start = start;
  plate.placed = true;
  LayPanes(plate, document.Blank(), plate.panes.size());
  document.SetPages(handle, {page, page});
}

void PlaceBeside(Document& document, ObjectHandle handle, ObjectHandle before) {
  const PlateShape& plate = *PlateOf(document, handle);
  const CWorldPoint home = StartOnEmptyPage(document.Blank(), plate.margins, plate.fromBottom);
  const int shown = document.DisplayPage();
  const PlateShape* neighbour = PlateOf(document, before);
  if (!neighbour || neighbour->panes.empty() || PageOf(document, before) < shown) {
    Place(document, handle, home, std::max(shown, 1));
    return;
  }
  PlateShape tried = plate;
  const double gap = plate.fromBottom ? plate.verticalGap : -plate.verticalGap;
  tried.start = {home.x, FarEdge(*neighbour) + gap};
  if (neighbour->fromBottom == plate.fromBottom &&
      Capacity(tried, document.Blank()) >= plate.panes.size()) {
    Place(document, handle, tried.start, PageOf(document, before));
  } else {
    Place(document, handle, home, document.HighestPage() + 1);
  }
}

// The y that a plate's rows must not cross, because a later plate of its page is there.
std::optional<double> ReachOf(const Document& document, ObjectHandle handle) {
  const auto plates = document.SharedPlateObjects();
  const int page = PageOf(document, handle);
  for (auto later = std::ranges::find(plates->rbegin(), plates->rend(), handle).base();
       later != plates->end(); ++later) {
    if (PageOf(document, *later) != page) continue;
    const PlateShape& other = *PlateOf(document, *later);
    return other.fromBottom ? other.start.y - other.verticalGap : other.start.y + other.verticalGap;
  }
  return std::nullopt;
}

// A plate of the same kind on a page of its own, with as many panes as fit there.
ObjectHandle Continue(Document& document, ObjectHandle handle, std::size_t count) {
  const Object& original = *document.Find(handle);
  PlateShape plate = std::get<PlateShape>(original.shape);
  Attributes attributes = original.attributes;
  plate.start = StartOnEmptyPage(document.Blank(), plate.margins, plate.fromBottom);
  plate.panes.clear();
  plate.continuation = 0;
  plate.placed = true;
  plate.wanted = static_cast<int>(LayPanes(plate, document.Blank(), count));
  if (plate.wanted == 0) return 0;
  const int page = document.HighestPage() + 1;
  if (page > Document::LastPage) return 0;
  attributes.pages = {page, page};
  attributes.sheetLayer = document.NextEmptyLayer();
  document.AddSheetLayer(
      {attributes.sheetLayer, L"Layer " + std::to_wstring(attributes.sheetLayer)});
  const ObjectHandle next = document.Create(std::move(plate), attributes);
  if (!document.Insert(next, host::DocumentRoot)) return 0;
  PlateToChange(document, handle).continuation = next;
  return next;
}

}  // namespace

CWorldPoint StartOnEmptyPage(const SignBlank& blank, const CWorldRect& margins, bool fromBottom) {
  return {margins.left, fromBottom ? margins.bottom : blank.height - margins.top};
}

std::size_t Capacity(const PlateShape& plate, const SignBlank& blank, std::optional<double> reach) {
  const std::size_t rows = Fitting(RoomAbove(plate, blank, reach), plate.height, plate.verticalGap);
  return std::min<std::size_t>(Columns(plate, blank) * rows, MaximumPanes);
}

CWorldRect PaneAt(const PlateShape& plate, const SignBlank& blank, std::size_t number) {
  const std::size_t columns = std::max<std::size_t>(Columns(plate, blank), 1);
  const auto column = static_cast<double>(number % columns);
  const std::size_t rowNumber = number / columns;
  const auto row = static_cast<double>(rowNumber);
  const double left = plate.start.x + column * (plate.width + plate.horizontalGap);
  const double step = row * (plate.height + plate.verticalGap);
  const double bottom =
      plate.fromBottom ? plate.start.y + step : plate.start.y - step - plate.height;
  return {left, bottom + plate.height, left + plate.width, bottom};
}

std::size_t LayPanes(PlateShape& plate, const SignBlank& blank, std::size_t count,
                     std::optional<double> reach) {
  const std::size_t fitting = std::min(count, Capacity(plate, blank, reach));
  plate.panes.clear();
  plate.panes.reserve(fitting);
  for (std::size_t i = 0; i < fitting; ++i) plate.panes.push_back(PaneAt(plate, blank, i));
  return fitting;
}

Expected<void> CheckPaneFits(const SignBlank& blank, PlateShape plate) {
  const CWorldRect& margins = plate.margins;
  for (const double measure : {plate.width, plate.height, margins.left, margins.top, margins.right,
                               margins.bottom, plate.horizontalGap, plate.verticalGap}) {
    if (!std::isfinite(measure)) return FailureOf("a measure of the plate is not a number");
  }
  const std::string size = SizeText(plate.width, plate.height);
  if (plate.width <= 0 || plate.height <= 0) {
    return FailureOf("a plate of " + size + " has no area");
  }
  plate.start = StartOnEmptyPage(blank, margins, false);
  if (Capacity(plate, blank) > 0) return {};
  return FailureOf("a plate of " + size + " does not fit on the blank of " +
                   SizeText(blank.width, blank.height) + " with margins of " +
                   MeasureText(margins.left) + ", " + MeasureText(margins.top) + ", " +
                   MeasureText(margins.right) + " and " + MeasureText(margins.bottom) +
                   " cm (left, top, right, bottom)");
}

ObjectHandle PlaceNewPlates(Document& document) {
  const auto plates = document.SharedPlateObjects();
  auto first = plates->end();
  while (first != plates->begin() && !PlateOf(document, *std::prev(first))->placed) --first;
  for (auto plate = first; plate != plates->end(); ++plate) {
    PlaceBeside(document, *plate, plate == plates->begin() ? 0 : *std::prev(plate));
  }
  return plates->empty() ? 0 : plates->back();
}

void GrowPlate(Document& document, ObjectHandle handle, std::size_t count) {
  count = std::min<std::size_t>(count, MaximumPanes);
  while (handle != 0 && count > 0) {
    PlateShape& plate = PlateToChange(document, handle);
    const std::size_t fitting =
        std::min(count, Capacity(plate, document.Blank(), ReachOf(document, handle)));
    // Panes that are there stay, also if a smaller blank would hold fewer.
    const std::size_t had = plate.panes.size();
    for (std::size_t i = had; i < fitting; ++i) {
      plate.panes.push_back(PaneAt(plate, document.Blank(), i));
    }
    if (count < had) plate.panes.resize(count);
    plate.wanted = static_cast<int>(plate.panes.size());
    count -= std::min(count, plate.panes.size());
    if (count == 0) return;
    const ObjectHandle next = plate.continuation;
    handle = document.Holds(next) ? next : Continue(document, handle, count);
  }
}

}  // namespace rastrel::document
